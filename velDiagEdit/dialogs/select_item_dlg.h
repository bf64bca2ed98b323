#pragma once
// The item selection dialog: one of a list of strings, as a column of radio buttons.

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QStringList>

namespace vde {

class VELDIAGEDIT_EXPORT TfmSelectItem : public TDialogForm {
    Q_OBJECT
public:
    explicit TfmSelectItem(QWidget* owner);

    // When the radio group does not hold the focus, the focus moves on to the next control.
    void FormShow();

    TRadioGroup* RadioGroup1;
    TDialogButton* bbOk;
    TDialogButton* bbCancel;
    int SecretKeyCode = 0;

protected:
    void showEvent(QShowEvent* event) override;
};

// Shows the items as radio buttons, 33 pixels each, with Default checked (item 0 when Default
// is not an item's index); the index checked when left with OK, -1 otherwise.
VELDIAGEDIT_EXPORT int SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                                           int Default);

} // namespace vde
