#include "velDiagEdit/dialogs/edit_segment_params.h"

namespace vde {

TfmEditSegmentParams::TfmEditSegmentParams(QWidget* owner) : TDialogForm(owner) {
    setObjectName(QStringLiteral("fmEditSegmentParams"));
    setWindowTitle(tr("Edit Params"));
    SetClientSize(275, 120);

    lbeSize =
        new TLabeledEdit(this, QStringLiteral("lbeSize"), tr("Size, pixels"), QStringLiteral("10"));
    lbeSize->SetBounds(32, 32, 73, 21);
    udSize = new TUpDown(this, QStringLiteral("udSize"));
    udSize->SetBounds(105, 32, 16, 21);
    udSize->SetMin(SegmentSizeMin);
    udSize->SetMax(SegmentSizeMax);
    udSize->SetIncrement(10);
    udSize->SetPosition(10);
    udSize->SetAssociate(lbeSize);

    lbeAngle = new TLabeledEdit(this, QStringLiteral("lbeAngle"), tr("Angle, degrees"),
                                QStringLiteral("0"));
    lbeAngle->SetBounds(152, 32, 73, 21);
    udAngle = new TUpDown(this, QStringLiteral("udAngle"));
    udAngle->SetBounds(225, 32, 16, 21);
    udAngle->SetMin(-SegmentAngleLimit);
    udAngle->SetMax(SegmentAngleLimit);
    udAngle->SetIncrement(90);
    udAngle->SetPosition(0);
    udAngle->SetAssociate(lbeAngle);

    btnOk = new TDialogButton(this, QStringLiteral("btnOk"), tr("Ok"), mrOk);
    btnOk->SetBounds(40, 72, 75, 25);
    btnOk->setDefault(true);
    btnCancel = new TDialogButton(this, QStringLiteral("btnCancel"), tr("Cancel"), mrCancel);
    btnCancel->SetBounds(152, 72, 75, 25);

    CentreOnOwner();
}

void TfmEditSegmentParams::AcceptParams(const TSegmentParamRec& Rec, const QString& ACaption,
                                        TPoint Pos) {
    const int32_t limit = SegmentAngleLimitFor(Rec);
    udAngle->SetMin(-limit);
    udAngle->SetMax(limit);
    udSize->SetPosition(Rec.Size);
    udAngle->SetPosition(Rec.Angle);
    udAngle->setEnabled(!Rec.OnlySize);
    lbeAngle->setEnabled(!Rec.OnlySize);
    if (!ACaption.isEmpty())
        setWindowTitle(ACaption);
    if (Pos.X >= 0)
        SetLeft(Pos.X);
    if (Pos.Y >= 0)
        SetTop(Pos.Y);
}

void TfmEditSegmentParams::SaveParams(TSegmentParamRec& Rec) {
    Rec.Size = udSize->Position();
    Rec.Angle = udAngle->Position();
}

bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos,
                       const TNotifyEvent&) {
    TfmEditSegmentParams form(DialogOwner());
    form.AcceptParams(Rec, ACaption, Pos);
    if (form.ShowModal() != mrOk)
        return false;
    form.SaveParams(Rec);
    return true;
}

} // namespace vde
