#include "velDiagEdit/dialogs/select_item_dlg.h"

#include <QRadioButton>
#include <QStyle>

namespace vde {

TfmSelectItem::TfmSelectItem(QWidget* owner) : TDialogForm(owner) {
    setObjectName(QStringLiteral("fmSelectItem"));
    setWindowTitle(QStringLiteral("fmSelectItem"));
    SetClientSize(209, 135);

    RadioGroup1 = new TRadioGroup(this, QStringLiteral("RadioGroup1"));
    RadioGroup1->SetBounds(8, 1, 185, 97);

    bbOk = new TDialogButton(this, QStringLiteral("bbOk"), tr("OK"), mrOk);
    bbOk->SetBounds(16, 104, 75, 25);
    bbOk->setDefault(true);
    bbOk->setIcon(style()->standardIcon(QStyle::SP_DialogOkButton));
    bbCancel = new TDialogButton(this, QStringLiteral("bbCancel"), tr("Отмена"), mrCancel);
    bbCancel->SetBounds(112, 104, 75, 25);
    bbCancel->setIcon(style()->standardIcon(QStyle::SP_DialogCancelButton));
}

void TfmSelectItem::showEvent(QShowEvent* event) {
    // Centred on the screen at the size it is shown with.
    CentreOnScreen();
    TDialogForm::showEvent(event);
    // The radio group is the active control.
    RadioGroup1->FocusItem();
    FormShow();
}

void TfmSelectItem::FormShow() {
    QWidget* focused = focusWidget();
    if (focused != RadioGroup1 && !RadioGroup1->isAncestorOf(focused))
        focusNextChild();
}

int SelectItemFromArray(const QString& ACaption, const QStringList& Items, int Default) {
    int result = -1;
    TfmSelectItem form(DialogOwner());
    form.setWindowTitle(ACaption);
    const int high = int(Items.size()) - 1;
    const int groupHeight = 33 * (high + 1);
    form.RadioGroup1->SetBounds(form.RadioGroup1->x(), form.RadioGroup1->y(),
                                form.RadioGroup1->width(), groupHeight);
    const int buttonTop = form.RadioGroup1->y() + groupHeight + 6;
    form.bbOk->move(form.bbOk->x(), buttonTop);
    form.bbCancel->move(form.bbCancel->x(), buttonTop);
    form.SetClientSize(form.ClientWidth(), groupHeight + 39);
    for (const QString& item : Items)
        form.RadioGroup1->AddItem(item);
    form.RadioGroup1->SetItemIndex(Default >= 0 && Default <= high ? Default : 0);
    if (form.ShowModal() == mrOk)
        result = form.RadioGroup1->ItemIndex();
    return result;
}

} // namespace vde
