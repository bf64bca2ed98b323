#pragma once
// The segment parameter dialog: the size and the angle of a connection segment.

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/types.h"

#include <QString>
#include <cstdint>

namespace vde {

struct TSegmentParamRec {
    int32_t Size = 0;      // segment length, pixels
    int32_t Angle = 0;     // angle as shown and edited, degrees
    bool OnlySize = false; // only the size may be edited
};

// Size range of the dialog and the angle limit (doubled when only the size is edited).
constexpr int32_t SegmentSizeMin = 0, SegmentSizeMax = 500, SegmentAngleLimit = 180;

class TfmEditSegmentParams : public TDialogForm {
    Q_OBJECT
public:
    explicit TfmEditSegmentParams(QWidget* owner);

    void AcceptParams(const TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos);
    void SaveParams(TSegmentParamRec& Rec);

    TLabeledEdit* lbeSize;
    TUpDown* udSize;
    TLabeledEdit* lbeAngle;
    TUpDown* udAngle;
    TDialogButton* btnOk;
    TDialogButton* btnCancel;
};

// Shows the dialog modally on the application's active window. On OK the record takes the
// values shown and the result is true; otherwise the record is untouched. Event is not used.
bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos,
                       const TNotifyEvent& Event = {});

} // namespace vde
