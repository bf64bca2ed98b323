#include "velDiagEdit/dialogs/scripted_dialog_service.h"

#include "velDiagEdit/dialogs/edit_segment_params.h"

#include <algorithm>
#include <iterator>

namespace vde {

QString DialogKindName(TDialogKind k) {
    static const char* const names[] = {"EditSegmentParams", "EditSizeValue",   "SelectItem",
                                        "InputQuery",        "InputBox",        "ShowMessage",
                                        "MessageDlg",        "ErrorMessageDlg", "QueryMessageDlg",
                                        "OpenDialog",        "SaveDialog",      "SaveConflict"};
    return size_t(k) < std::size(names) ? QString::fromLatin1(names[k]) : QString::number(int(k));
}

namespace {
QString ButtonSetText(TMsgDlgButtons buttons) {
    QStringList names;
    for (int b = mbYes; b <= mbClose; ++b)
        if (HasButton(buttons, TMsgDlgBtn(b)))
            names << MsgDlgButtonName(TMsgDlgBtn(b));
    return QLatin1Char('[') + names.join(QLatin1Char(',')) + QLatin1Char(']');
}
} // namespace

TDialogAnswer TDialogAnswer::Segment(int32_t Size, int32_t Angle) {
    TDialogAnswer a;
    a.Kind = dkEditSegmentParams;
    a.Size = Size;
    a.Angle = Angle;
    return a;
}

TDialogAnswer TDialogAnswer::SizeValue(int32_t Size) {
    TDialogAnswer a;
    a.Kind = dkEditSizeValue;
    a.Size = Size;
    return a;
}

TDialogAnswer TDialogAnswer::Item(int Index) {
    TDialogAnswer a;
    a.Kind = dkSelectItem;
    a.Index = Index;
    return a;
}

TDialogAnswer TDialogAnswer::Query(const QString& Text) {
    TDialogAnswer a;
    a.Kind = dkInputQuery;
    a.Text = Text;
    return a;
}

TDialogAnswer TDialogAnswer::Box(const QString& Text) {
    TDialogAnswer a;
    a.Kind = dkInputBox;
    a.Text = Text;
    return a;
}

TDialogAnswer TDialogAnswer::Message() {
    TDialogAnswer a;
    a.Kind = dkShowMessage;
    return a;
}

TDialogAnswer TDialogAnswer::Modal(TModalResult Result) {
    TDialogAnswer a;
    a.Kind = dkMessageDlg;
    a.Result = Result;
    return a;
}

TDialogAnswer TDialogAnswer::Error(TModalResult Result) {
    TDialogAnswer a;
    a.Kind = dkErrorMessageDlg;
    a.Result = Result;
    return a;
}

TDialogAnswer TDialogAnswer::Question(bool Yes) {
    TDialogAnswer a;
    a.Kind = dkQueryMessageDlg;
    a.Confirmed = Yes;
    return a;
}

TDialogAnswer TDialogAnswer::Open(const QString& FileName) {
    TDialogAnswer a;
    a.Kind = dkOpenDialog;
    a.Text = FileName;
    return a;
}

TDialogAnswer TDialogAnswer::Save(const QString& FileName) {
    TDialogAnswer a;
    a.Kind = dkSaveDialog;
    a.Text = FileName;
    return a;
}

TDialogAnswer TDialogAnswer::Conflict(TConflictChoice Choice) {
    TDialogAnswer a;
    a.Kind = dkSaveConflict;
    a.Choice = Choice;
    a.Confirmed = Choice != ccCancel;
    return a;
}

TDialogAnswer TDialogAnswer::Cancel(TDialogKind Kind) {
    TDialogAnswer a;
    a.Kind = Kind;
    a.Confirmed = false;
    return a;
}

namespace {
QString Quoted(const QString& s) {
    return QLatin1Char('"') + s + QLatin1Char('"');
}
} // namespace

QString TDialogRequest::Describe() const {
    const QString kind = DialogKindName(Kind);
    const QString pos = QStringLiteral("Pos=%1,%2").arg(Pos.X).arg(Pos.Y);
    switch (Kind) {
    case dkEditSegmentParams:
        return QStringLiteral("%1 %2 Size=%3 Angle=%4 OnlySize=%5 %6")
            .arg(kind, Quoted(Caption))
            .arg(Size)
            .arg(Angle)
            .arg(int(OnlySize))
            .arg(pos);
    case dkEditSizeValue:
        return QStringLiteral("%1 %2 Size=%3 Min=%4 Max=%5 Inc=%6 %7")
            .arg(kind, Quoted(Caption))
            .arg(Size)
            .arg(AMin)
            .arg(AMax)
            .arg(AInc)
            .arg(pos);
    case dkSelectItem:
        return QStringLiteral("%1 %2 [%3] Default=%4")
            .arg(kind, Quoted(Caption), Items.join(QLatin1Char('|')))
            .arg(Default);
    case dkInputQuery:
    case dkInputBox:
        return QStringLiteral("%1 %2 %3 %4")
            .arg(kind, Quoted(Caption), Quoted(Prompt), Quoted(Text));
    case dkShowMessage:
    case dkErrorMessageDlg:
        return QStringLiteral("%1 %2").arg(kind, Quoted(Text));
    case dkMessageDlg:
        return QStringLiteral("%1 %2 %3 %4 Default=%5 Help=%6")
            .arg(kind, Quoted(Text), MsgDlgTypeName(DlgType), ButtonSetText(Buttons),
                 MsgDlgButtonName(DefaultButton))
            .arg(HelpCtx);
    case dkQueryMessageDlg:
        return QStringLiteral("%1 %2 %3").arg(kind, Quoted(Text), Quoted(Caption));
    case dkSaveConflict:
        return QStringLiteral("%1 %2").arg(kind, Quoted(Text));
    case dkOpenDialog:
    case dkSaveDialog:
        return QStringLiteral("%1 %2 Dir=%3 Ext=%4 Filter=%5")
            .arg(kind, Quoted(Text), Quoted(InitialDir), Quoted(DefaultExt), Quoted(Filter));
    }
    return kind;
}

TScriptedDialogService& TScriptedDialogService::Expect(const TDialogAnswer& answer) {
    FAnswers.push_back(answer);
    return *this;
}

QStringList TScriptedDialogService::Log() const {
    QStringList log;
    for (const TDialogRequest& r : FAsked)
        log << r.Describe();
    return log;
}

void TScriptedDialogService::Fail(const QString& message) {
    FFailures << message;
    if (OnFailure)
        OnFailure(message);
    throw EDialogScriptError(message);
}

TDialogAnswer TScriptedDialogService::Take(const TDialogRequest& request) {
    FAsked.push_back(request);
    if (FAnswers.empty())
        Fail(QStringLiteral("Unexpected prompt, no answer left: %1").arg(request.Describe()));
    if (FAnswers.front().Kind != request.Kind)
        Fail(QStringLiteral("Unexpected prompt: %1; the next answer is for %2")
                 .arg(request.Describe(), DialogKindName(FAnswers.front().Kind)));
    const TDialogAnswer answer = FAnswers.front();
    FAnswers.pop_front();
    return answer;
}

bool TScriptedDialogService::EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption,
                                               TPoint Pos) {
    TDialogRequest r;
    r.Kind = dkEditSegmentParams;
    r.Caption = ACaption;
    r.Size = Rec.Size;
    r.Angle = Rec.Angle;
    r.OnlySize = Rec.OnlySize;
    r.Pos = Pos;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return false;
    // What the dialog would give back: values held to its ranges, and with only the size
    // editable the angle it was opened with.
    const int32_t limit = SegmentAngleLimitFor(Rec);
    const int32_t angle = Rec.OnlySize ? Rec.Angle : a.Angle;
    Rec.Size = std::clamp(a.Size, SegmentSizeMin, SegmentSizeMax);
    Rec.Angle = std::clamp(angle, -limit, limit);
    return true;
}

bool TScriptedDialogService::EditSizeValue(TSizeParamRec& Rec, const QString& ACaption,
                                           TPoint Pos) {
    TDialogRequest r;
    r.Kind = dkEditSizeValue;
    r.Caption = ACaption;
    r.Size = Rec.Size;
    r.AMin = Rec.AMin;
    r.AMax = Rec.AMax;
    r.AInc = Rec.AInc;
    r.Pos = Pos;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return false;
    Rec.Size = std::clamp(a.Size, std::min(Rec.AMin, Rec.AMax), std::max(Rec.AMin, Rec.AMax));
    return true;
}

int TScriptedDialogService::SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                                                int Default) {
    TDialogRequest r;
    r.Kind = dkSelectItem;
    r.Caption = ACaption;
    r.Items = Items;
    r.Default = Default;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return -1;
    if (a.Index < 0 || a.Index >= Items.size())
        Fail(QStringLiteral("Item %1 cannot be picked from %2 items: %3")
                 .arg(a.Index)
                 .arg(Items.size())
                 .arg(r.Describe()));
    return a.Index;
}

bool TScriptedDialogService::InputQuery(const QString& ACaption, const QString& APrompt,
                                        QString& Value) {
    TDialogRequest r;
    r.Kind = dkInputQuery;
    r.Caption = ACaption;
    r.Prompt = APrompt;
    r.Text = Value;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return false;
    Value = a.Text;
    return true;
}

QString TScriptedDialogService::InputBox(const QString& ACaption, const QString& APrompt,
                                         const QString& ADefault) {
    TDialogRequest r;
    r.Kind = dkInputBox;
    r.Caption = ACaption;
    r.Prompt = APrompt;
    r.Text = ADefault;
    const TDialogAnswer a = Take(r);
    return a.Confirmed ? a.Text : ADefault;
}

void TScriptedDialogService::ShowMessage(const QString& Msg) {
    TDialogRequest r;
    r.Kind = dkShowMessage;
    r.Text = Msg;
    Take(r);
}

TModalResult TScriptedDialogService::MessageDlg(const QString& Msg, TMsgDlgType DlgType,
                                                TMsgDlgButtons Buttons, int HelpCtx,
                                                TMsgDlgBtn DefaultButton) {
    TDialogRequest r;
    r.Kind = dkMessageDlg;
    r.Text = Msg;
    r.DlgType = DlgType;
    r.Buttons = Buttons;
    r.HelpCtx = HelpCtx;
    r.DefaultButton = DefaultButton;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return mrCancel;
    const TMsgDlgButtons shown = Buttons ? Buttons : MsgDlgButtons({mbOK});
    for (int b = mbYes; b <= mbClose; ++b)
        if (HasButton(shown, TMsgDlgBtn(b)) && ButtonModalResult(TMsgDlgBtn(b)) == a.Result)
            return a.Result;
    Fail(QStringLiteral("No button of %1 gives the modal result %2")
             .arg(r.Describe())
             .arg(a.Result));
}

TModalResult TScriptedDialogService::ErrorMessageDlg(const QString& Msg) {
    TDialogRequest r;
    r.Kind = dkErrorMessageDlg;
    r.Text = Msg;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return mrCancel;
    if (a.Result != mrOk)
        Fail(QStringLiteral("An error message has only OK, not the modal result %1: %2")
                 .arg(a.Result)
                 .arg(r.Describe()));
    return mrOk;
}

bool TScriptedDialogService::QueryMessageDlg(const QString& Msg, const QString& ACaption) {
    TDialogRequest r;
    r.Kind = dkQueryMessageDlg;
    r.Text = Msg;
    r.Caption = ACaption;
    return Take(r).Confirmed;
}

bool TScriptedDialogService::ExecuteFileDialog(TDialogKind kind, TFileDialog& Dialog) {
    TDialogRequest r;
    r.Kind = kind;
    r.Caption = Dialog.Title;
    r.Text = Dialog.FileName;
    r.InitialDir = Dialog.InitialDir;
    r.DefaultExt = Dialog.DefaultExt;
    r.Filter = Dialog.Filter;
    const TDialogAnswer a = Take(r);
    if (!a.Confirmed)
        return false;
    Dialog.FileName = a.Text;
    return true;
}

bool TScriptedDialogService::ExecuteOpenDialog(TFileDialog& Dialog) {
    return ExecuteFileDialog(dkOpenDialog, Dialog);
}

bool TScriptedDialogService::ExecuteSaveDialog(TFileDialog& Dialog) {
    return ExecuteFileDialog(dkSaveDialog, Dialog);
}

TConflictChoice TScriptedDialogService::AskSaveConflict(const QString& Msg) {
    TDialogRequest r;
    r.Kind = dkSaveConflict;
    r.Text = Msg;
    const TDialogAnswer a = Take(r);
    return a.Confirmed ? a.Choice : ccCancel;
}

} // namespace vde
