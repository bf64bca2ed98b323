#include "velDiagEdit/dialogs/edit_size_value.h"

#include "velDiagEdit/dialogs/qt_dialog_service.h"

namespace vde {

TfmEditSizeValue::TfmEditSizeValue(QWidget* owner) : TDialogForm(owner) {
    setObjectName(QStringLiteral("fmEditSizeValue"));
    setWindowTitle(tr("Edit Size"));
    SetClientSize(325, 74);

    lbeSize = new TLabeledEdit(this, QStringLiteral("lbeSize"), tr("Value"), QStringLiteral("10"));
    lbeSize->SetBounds(32, 32, 75, 21);
    udSize = new TUpDown(this, QStringLiteral("udSize"));
    udSize->SetBounds(107, 32, 16, 21);
    udSize->SetMin(0);
    udSize->SetMax(500);
    udSize->SetIncrement(10);
    udSize->SetPosition(10);
    udSize->SetAssociate(lbeSize);

    btnOk = new TDialogButton(this, QStringLiteral("btnOk"), tr("Ok"), mrOk);
    btnOk->SetBounds(136, 30, 75, 25);
    btnOk->setDefault(true);
    btnCancel = new TDialogButton(this, QStringLiteral("btnCancel"), tr("Cancel"), mrCancel);
    btnCancel->SetBounds(224, 30, 75, 25);

    CentreOnOwner();
}

void TfmEditSizeValue::AcceptParams(const TSizeParamRec& Rec, const QString& ACaption, TPoint Pos) {
    // The range first, so that the position is clamped to the new one.
    udSize->SetMin(Rec.AMin);
    udSize->SetMax(Rec.AMax);
    udSize->SetIncrement(Rec.AInc);
    udSize->SetPosition(Rec.Size);
    if (!ACaption.isEmpty())
        setWindowTitle(ACaption);
    if (Pos.X >= 0)
        SetLeft(Pos.X);
    if (Pos.Y >= 0)
        SetTop(Pos.Y);
}

void TfmEditSizeValue::SaveParams(TSizeParamRec& Rec) {
    Rec.Size = udSize->Position();
}

bool EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos, const TNotifyEvent&) {
    TfmEditSizeValue form(DialogOwner());
    form.AcceptParams(Rec, ACaption, Pos);
    if (form.ShowModal() != mrOk)
        return false;
    form.SaveParams(Rec);
    return true;
}

bool EditSizeValue(int32_t& Size, int32_t AMin, int32_t AMax, int32_t AInc, const QString& ACaption,
                   const TNotifyEvent&) {
    // The service's integer form over the real dialog, so the two forms cannot drift apart.
    return QtDialogService().EditSizeValue(Size, AMin, AMax, AInc, ACaption);
}

} // namespace vde
