#pragma once
// The segment parameter dialog: the size and the angle of a connection segment.

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <cstdint>

namespace vde {

// Size range of the dialog and the angle limit (doubled when only the size is edited).
constexpr int32_t SegmentSizeMin = 0, SegmentSizeMax = 500, SegmentAngleLimit = 180;
// The angle range the dialog offers for the record: +-SegmentAngleLimit, doubled when only the
// size is edited (harmless: the angle is then disabled).
constexpr int32_t SegmentAngleLimitFor(const TSegmentParamRec& Rec) {
    return SegmentAngleLimit * (int32_t(Rec.OnlySize) + 1);
}

class VELDIAGEDIT_EXPORT TfmEditSegmentParams : public TDialogForm {
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
VELDIAGEDIT_EXPORT bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption,
                                          TPoint Pos, const TNotifyEvent& Event = {});

} // namespace vde
