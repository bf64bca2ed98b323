#include "velDiagEdit/platform/dialog_service.h"

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <algorithm>
#include <map>

namespace vde {

// ---- Buttons, types, filters ----------------------------------------------------------------

TModalResult ButtonModalResult(TMsgDlgBtn b) {
    switch (b) {
    case mbYes:
        return mrYes;
    case mbNo:
        return mrNo;
    case mbOK:
        return mrOk;
    case mbCancel:
        return mrCancel;
    case mbAbort:
        return mrAbort;
    case mbRetry:
        return mrRetry;
    case mbIgnore:
        return mrIgnore;
    case mbAll:
        return mrAll;
    case mbNoToAll:
        return mrNoToAll;
    case mbYesToAll:
        return mrYesToAll;
    case mbHelp:
        return mrHelp;
    case mbClose:
        return mrClose;
    }
    return mrNone;
}

TMsgDlgBtn DefaultMsgDlgButton(TMsgDlgButtons buttons) {
    if (HasButton(buttons, mbOK))
        return mbOK;
    if (HasButton(buttons, mbYes))
        return mbYes;
    return mbRetry;
}

TMsgDlgBtn CancelMsgDlgButton(TMsgDlgButtons buttons) {
    if (HasButton(buttons, mbCancel))
        return mbCancel;
    if (HasButton(buttons, mbNo))
        return mbNo;
    return mbOK;
}

QString MsgDlgTypeName(TMsgDlgType t) {
    switch (t) {
    case mtWarning:
        return QStringLiteral("Warning");
    case mtError:
        return QStringLiteral("Error");
    case mtInformation:
        return QStringLiteral("Information");
    case mtConfirmation:
        return QStringLiteral("Confirmation");
    case mtCustom:
        return QStringLiteral("Custom");
    }
    return QString::number(int(t));
}

QString MsgDlgButtonName(TMsgDlgBtn b) {
    static const char* const names[] = {"Yes",    "No",  "OK",      "Cancel",   "Abort", "Retry",
                                        "Ignore", "All", "NoToAll", "YesToAll", "Help",  "Close"};
    return size_t(b) < std::size(names) ? QString::fromLatin1(names[b]) : QString::number(int(b));
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

QStringList FileFilterToQt(const QString& Filter) {
    static const QRegularExpression trailingMasks(QStringLiteral("\\s*\\([^()]*\\)\\s*$"));
    QStringList result;
    const QStringList parts = Filter.split(QLatin1Char('|'));
    if (Filter.isEmpty())
        return result;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        QString description = parts[i];
        description.remove(trailingMasks);
        QString masks = i + 1 < parts.size() ? parts[i + 1].trimmed() : QString();
        if (masks.isEmpty())
            masks = QStringLiteral("*");
        masks.replace(QLatin1Char(';'), QLatin1Char(' '));
        if (description.trimmed().isEmpty())
            description = masks;
        result << QStringLiteral("%1 (%2)").arg(description.trimmed(), masks.simplified());
    }
    return result;
}

bool TOpenDialog::Execute() {
    return DialogService().ExecuteOpenDialog(*this);
}

bool TSaveDialog::Execute() {
    return DialogService().ExecuteSaveDialog(*this);
}

// ---- The service in force -------------------------------------------------------------------

namespace {
IDialogService* g_service = nullptr;

TQtDialogService& QtService() {
    static TQtDialogService s;
    return s;
}
} // namespace

IDialogService& DialogService() {
    return g_service ? *g_service : QtService();
}

void SetDialogService(IDialogService* service) {
    g_service = service;
}

TScopedDialogService::TScopedDialogService(IDialogService* s) : FPrevious(g_service) {
    SetDialogService(s);
}

TScopedDialogService::~TScopedDialogService() {
    SetDialogService(FPrevious);
}

bool IDialogService::EditSizeValue(int32_t& Size, int32_t AMin, int32_t AMax, int32_t AInc,
                                   const QString& ACaption) {
    TSizeParamRec rec{Size, AMin, AMax, AInc};
    if (!EditSizeValue(rec, ACaption, Point(-1, -1)))
        return false;
    Size = rec.Size;
    return true;
}

TModalResult IDialogService::MessageDlg(const QString& Msg, TMsgDlgType DlgType,
                                        TMsgDlgButtons Buttons, int HelpCtx) {
    return MessageDlg(Msg, DlgType, Buttons, HelpCtx, DefaultMsgDlgButton(Buttons));
}

// ---- Qt dialogs -----------------------------------------------------------------------------

namespace {
// A message box that tells a press of a button from the window being closed.
class TMessageBox : public QMessageBox {
public:
    using QMessageBox::QMessageBox;
    bool ClosedByWindow = false;

protected:
    void closeEvent(QCloseEvent* event) override {
        ClosedByWindow = true;
        QMessageBox::closeEvent(event);
        if (!event->isAccepted())
            ClosedByWindow = false;
    }
};

QMessageBox::StandardButton StandardButtonFor(TMsgDlgBtn b) {
    switch (b) {
    case mbYes:
        return QMessageBox::Yes;
    case mbNo:
        return QMessageBox::No;
    case mbOK:
        return QMessageBox::Ok;
    case mbCancel:
        return QMessageBox::Cancel;
    case mbAbort:
        return QMessageBox::Abort;
    case mbRetry:
        return QMessageBox::Retry;
    case mbIgnore:
        return QMessageBox::Ignore;
    case mbNoToAll:
        return QMessageBox::NoToAll;
    case mbYesToAll:
        return QMessageBox::YesToAll;
    case mbHelp:
        return QMessageBox::Help;
    case mbClose:
        return QMessageBox::Close;
    case mbAll:
        break;
    }
    return QMessageBox::NoButton;
}

QMessageBox::Icon IconFor(TMsgDlgType t) {
    switch (t) {
    case mtWarning:
        return QMessageBox::Warning;
    case mtError:
        return QMessageBox::Critical;
    case mtInformation:
        return QMessageBox::Information;
    case mtConfirmation:
        return QMessageBox::Question;
    case mtCustom:
        break;
    }
    return QMessageBox::NoIcon;
}

QString TitleFor(TMsgDlgType t) {
    switch (t) {
    case mtWarning:
        return QStringLiteral("Warning");
    case mtError:
        return QStringLiteral("Error");
    case mtInformation:
        return QStringLiteral("Information");
    case mtConfirmation:
        return QStringLiteral("Confirm");
    case mtCustom:
        break;
    }
    return QApplication::applicationDisplayName();
}

// Shows a message box with the buttons of the set; the modal result of the button pressed, or
// mrCancel when the window was closed.
TModalResult RunMessageBox(const QString& title, const QString& text, QMessageBox::Icon icon,
                           TMsgDlgButtons buttons, TMsgDlgBtn defaultButton,
                           TMsgDlgBtn escapeButton) {
    if (buttons == 0)
        buttons = MsgDlgButtons({mbOK});
    TMessageBox box(icon, title, text, QMessageBox::NoButton, DialogOwner());
    std::map<QAbstractButton*, TModalResult> results;
    std::map<TMsgDlgBtn, QPushButton*> shown;
    for (int i = mbYes; i <= mbClose; ++i) {
        const auto b = TMsgDlgBtn(i);
        if (!HasButton(buttons, b))
            continue;
        QPushButton* button = nullptr;
        if (b == mbAll)
            button = box.addButton(QStringLiteral("&All"), QMessageBox::AcceptRole);
        else
            button = box.addButton(StandardButtonFor(b));
        button->setObjectName(MsgDlgButtonName(b));
        results[button] = ButtonModalResult(b);
        shown[b] = button;
    }
    if (auto it = shown.find(defaultButton); it != shown.end())
        box.setDefaultButton(it->second);
    if (auto it = shown.find(escapeButton); it != shown.end())
        box.setEscapeButton(it->second);
    box.exec();
    if (box.ClosedByWindow)
        return mrCancel;
    const auto it = results.find(box.clickedButton());
    return it != results.end() ? it->second : mrCancel;
}
} // namespace

bool TQtDialogService::EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption,
                                         TPoint Pos) {
    return vde::EditSegmentParams(Rec, ACaption, Pos);
}

bool TQtDialogService::EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos) {
    return vde::EditSizeValue(Rec, ACaption, Pos);
}

int TQtDialogService::SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                                          int Default) {
    return vde::SelectItemFromArray(ACaption, Items, Default);
}

bool TQtDialogService::InputQuery(const QString& ACaption, const QString& APrompt, QString& Value) {
    QInputDialog dlg(DialogOwner());
    dlg.setInputMode(QInputDialog::TextInput);
    dlg.setWindowTitle(ACaption);
    dlg.setLabelText(APrompt);
    dlg.setTextValue(Value);
    if (dlg.exec() != QDialog::Accepted)
        return false;
    Value = dlg.textValue();
    return true;
}

QString TQtDialogService::InputBox(const QString& ACaption, const QString& APrompt,
                                   const QString& ADefault) {
    QString value = ADefault;
    return InputQuery(ACaption, APrompt, value) ? value : ADefault;
}

void TQtDialogService::ShowMessage(const QString& Msg) {
    RunMessageBox(QApplication::applicationDisplayName(), Msg, QMessageBox::NoIcon,
                  MsgDlgButtons({mbOK}), mbOK, mbOK);
}

TModalResult TQtDialogService::MessageDlg(const QString& Msg, TMsgDlgType DlgType,
                                          TMsgDlgButtons Buttons, int, TMsgDlgBtn DefaultButton) {
    return RunMessageBox(TitleFor(DlgType), Msg, IconFor(DlgType), Buttons, DefaultButton,
                         CancelMsgDlgButton(Buttons));
}

TModalResult TQtDialogService::ErrorMessageDlg(const QString& Msg) {
    return MessageDlg(Msg, mtError, MsgDlgButtons({mbOK}), 0, mbOK);
}

bool TQtDialogService::QueryMessageDlg(const QString& Msg, const QString& ACaption) {
    return RunMessageBox(ACaption, Msg, QMessageBox::NoIcon, mbYesNo, mbNo, mbNo) == mrYes;
}

namespace {
bool RunFileDialog(TFileDialog& d, bool open) {
    QFileDialog dlg(DialogOwner(), d.Title);
    dlg.setAcceptMode(open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dlg.setFileMode(open ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    const QStringList filters = FileFilterToQt(d.Filter);
    if (!filters.isEmpty())
        dlg.setNameFilters(filters);
    dlg.setDefaultSuffix(d.DefaultExt);
    if (!d.InitialDir.isEmpty())
        dlg.setDirectory(d.InitialDir);
    if (!d.FileName.isEmpty())
        dlg.selectFile(d.FileName);
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty())
        return false;
    d.FileName = dlg.selectedFiles().constFirst();
    return true;
}
} // namespace

bool TQtDialogService::ExecuteOpenDialog(TFileDialog& Dialog) {
    return RunFileDialog(Dialog, true);
}

bool TQtDialogService::ExecuteSaveDialog(TFileDialog& Dialog) {
    return RunFileDialog(Dialog, false);
}

// ---- Scripted dialogs -----------------------------------------------------------------------

QString DialogKindName(TDialogKind k) {
    static const char* const names[] = {"EditSegmentParams", "EditSizeValue",   "SelectItem",
                                        "InputQuery",        "InputBox",        "ShowMessage",
                                        "MessageDlg",        "ErrorMessageDlg", "QueryMessageDlg",
                                        "OpenDialog",        "SaveDialog"};
    return size_t(k) < std::size(names) ? QString::fromLatin1(names[k]) : QString::number(int(k));
}

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
    case dkOpenDialog:
    case dkSaveDialog:
        return QStringLiteral("%1 %2 Dir=%3 Ext=%4 Filter=%5")
            .arg(kind, Quoted(Text), Quoted(InitialDir), Quoted(DefaultExt), Quoted(Filter));
    }
    return kind;
}

TScriptedDialogService::~TScriptedDialogService() {
    if (g_service == this)
        SetDialogService(nullptr);
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
    const int32_t limit = SegmentAngleLimit * (int32_t(Rec.OnlySize) + 1);
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

} // namespace vde
