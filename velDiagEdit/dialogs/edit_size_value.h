#pragma once
// The size value dialog: one integer within a range, stepped by an increment.

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <cstdint>

namespace vde {

class VELDIAGEDIT_EXPORT TfmEditSizeValue : public TDialogForm {
    Q_OBJECT
public:
    explicit TfmEditSizeValue(QWidget* owner);

    void AcceptParams(const TSizeParamRec& Rec, const QString& ACaption, TPoint Pos);
    void SaveParams(TSizeParamRec& Rec);

    TLabeledEdit* lbeSize;
    TUpDown* udSize;
    TDialogButton* btnOk;
    TDialogButton* btnCancel;
};

// Shows the dialog modally on the application's active window. On OK Rec.Size takes the value
// shown and the result is true; otherwise the record is untouched. Event is not used.
VELDIAGEDIT_EXPORT bool EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos,
                                      const TNotifyEvent& Event = {});
// The same, centred, for a bare integer: Size is written back only on OK.
VELDIAGEDIT_EXPORT bool EditSizeValue(int32_t& Size, int32_t AMin, int32_t AMax, int32_t AInc,
                                      const QString& ACaption, const TNotifyEvent& Event = {});

} // namespace vde
