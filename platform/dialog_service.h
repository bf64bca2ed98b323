#pragma once
// Every prompt the system shows goes through one replaceable dialog service: the value dialogs,
// input queries, message boxes and the open/save file dialogs. By default these are real modal
// Qt dialogs; tests install a scripted service that answers from a queue and records what was
// asked, so that no test ever blocks on a window nobody closes.

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/types.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <vector>

namespace vde {

struct TSegmentParamRec; // dialogs/edit_segment_params.h
struct TSizeParamRec;    // dialogs/edit_size_value.h

// The result a modal dialog ends with.
using TModalResult = int;
constexpr TModalResult mrNone = 0, mrOk = 1, mrCancel = 2, mrAbort = 3, mrRetry = 4, mrIgnore = 5,
                       mrYes = 6, mrNo = 7, mrClose = 8, mrHelp = 9, mrTryAgain = 10,
                       mrContinue = 11, mrAll = 12, mrNoToAll = 13, mrYesToAll = 14;

enum TMsgDlgType : uint8_t { mtWarning, mtError, mtInformation, mtConfirmation, mtCustom };

enum TMsgDlgBtn : uint8_t {
    mbYes,
    mbNo,
    mbOK,
    mbCancel,
    mbAbort,
    mbRetry,
    mbIgnore,
    mbAll,
    mbNoToAll,
    mbYesToAll,
    mbHelp,
    mbClose
};

// A set of TMsgDlgBtn, one bit per button.
using TMsgDlgButtons = uint16_t;
constexpr TMsgDlgButtons MsgDlgButtons(std::initializer_list<TMsgDlgBtn> buttons) {
    TMsgDlgButtons set = 0;
    for (TMsgDlgBtn b : buttons)
        set = TMsgDlgButtons(set | (1u << b));
    return set;
}
constexpr bool HasButton(TMsgDlgButtons set, TMsgDlgBtn b) {
    return (set >> b) & 1u;
}
constexpr TMsgDlgButtons mbYesNo = MsgDlgButtons({mbYes, mbNo});
constexpr TMsgDlgButtons mbYesNoCancel = MsgDlgButtons({mbYes, mbNo, mbCancel});
constexpr TMsgDlgButtons mbOKCancel = MsgDlgButtons({mbOK, mbCancel});

// The modal result that pressing a button gives.
TModalResult ButtonModalResult(TMsgDlgBtn b);
// The button that takes the default when the caller names none: OK, else Yes, else Retry.
TMsgDlgBtn DefaultMsgDlgButton(TMsgDlgButtons buttons);
// The button that Escape presses: Cancel, else No, else OK.
TMsgDlgBtn CancelMsgDlgButton(TMsgDlgButtons buttons);
QString MsgDlgTypeName(TMsgDlgType t);  // "Warning", ..., "Custom"
QString MsgDlgButtonName(TMsgDlgBtn b); // "Yes", "No", "OK", ...

// A file filter in the "Description|mask;mask|Description|mask" form turned into Qt's name
// filters, one per pair: "Diagram files (*.dgm)|*.dgm" -> {"Diagram files (*.dgm)"}.
QStringList FileFilterToQt(const QString& Filter);

// The state of an open or save dialog that a module keeps between uses. FileName is the full
// path chosen after a confirmed Execute; InitialDir is where the dialog opens.
class TFileDialog {
public:
    QString FileName;
    QString InitialDir;
    QString DefaultExt; // without the dot, e.g. "dgm"
    QString Filter;     // "Diagram files (*.dgm)|*.dgm"
    QString Title;      // empty: the dialog's own title
};

class TOpenDialog : public TFileDialog {
public:
    bool Execute();
};

class TSaveDialog : public TFileDialog {
public:
    bool Execute();
};

class IDialogService {
public:
    virtual ~IDialogService() = default;

    // The three value dialogs; true on OK with the record updated, false with it untouched.
    virtual bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos) = 0;
    virtual bool EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos) = 0;
    // The integer form: the record form centred, Size written back only on OK.
    bool EditSizeValue(int32_t& Size, int32_t AMin, int32_t AMax, int32_t AInc,
                       const QString& ACaption);
    // The index picked, -1 when cancelled.
    virtual int SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                                    int Default) = 0;

    // True on OK with Value replaced by the text entered; false with Value untouched.
    virtual bool InputQuery(const QString& ACaption, const QString& APrompt, QString& Value) = 0;
    // The text entered on OK, ADefault otherwise.
    virtual QString InputBox(const QString& ACaption, const QString& APrompt,
                             const QString& ADefault) = 0;
    virtual void ShowMessage(const QString& Msg) = 0;
    // Closing the window without a button gives mrCancel.
    virtual TModalResult MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons,
                                    int HelpCtx, TMsgDlgBtn DefaultButton) = 0;
    TModalResult MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons,
                            int HelpCtx);
    // An error message with the single button OK.
    virtual TModalResult ErrorMessageDlg(const QString& Msg) = 0;
    // A Yes/No question without an icon, No the default; true exactly when Yes was pressed.
    virtual bool QueryMessageDlg(const QString& Msg, const QString& ACaption) = 0;

    // True when confirmed, with Dialog.FileName the full path chosen.
    virtual bool ExecuteOpenDialog(TFileDialog& Dialog) = 0;
    virtual bool ExecuteSaveDialog(TFileDialog& Dialog) = 0;
};

// The service in force: the Qt one unless another was installed.
IDialogService& DialogService();
// Installs `service` (not owned); nullptr goes back to the Qt one.
void SetDialogService(IDialogService* service);

// Installs a service for the lifetime of the guard and then puts back the one before it.
class TScopedDialogService {
public:
    explicit TScopedDialogService(IDialogService* s);
    ~TScopedDialogService();
    TScopedDialogService(const TScopedDialogService&) = delete;
    TScopedDialogService& operator=(const TScopedDialogService&) = delete;

private:
    IDialogService* FPrevious;
};

// Real modal dialogs, each on the application's active window (or the screen without one).
class TQtDialogService : public IDialogService {
public:
    using IDialogService::EditSizeValue;
    using IDialogService::MessageDlg;
    bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos) override;
    bool EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos) override;
    int SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                            int Default) override;
    bool InputQuery(const QString& ACaption, const QString& APrompt, QString& Value) override;
    QString InputBox(const QString& ACaption, const QString& APrompt,
                     const QString& ADefault) override;
    void ShowMessage(const QString& Msg) override;
    TModalResult MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons,
                            int HelpCtx, TMsgDlgBtn DefaultButton) override;
    TModalResult ErrorMessageDlg(const QString& Msg) override;
    bool QueryMessageDlg(const QString& Msg, const QString& ACaption) override;
    bool ExecuteOpenDialog(TFileDialog& Dialog) override;
    bool ExecuteSaveDialog(TFileDialog& Dialog) override;
};

// ---- Scripted service for tests -------------------------------------------------------------

enum TDialogKind : uint8_t {
    dkEditSegmentParams,
    dkEditSizeValue,
    dkSelectItem,
    dkInputQuery,
    dkInputBox,
    dkShowMessage,
    dkMessageDlg,
    dkErrorMessageDlg,
    dkQueryMessageDlg,
    dkOpenDialog,
    dkSaveDialog
};
QString DialogKindName(TDialogKind k); // "EditSegmentParams", "InputQuery", ...

// What the scripted user does at one prompt.
struct TDialogAnswer {
    TDialogKind Kind = dkShowMessage;
    bool Confirmed = true;        // OK / Yes / Execute; false: Cancel or the window closed
    QString Text;                 // InputQuery, InputBox: the text typed; file dialogs: the file
    int32_t Size = 0;             // EditSegmentParams, EditSizeValue: the size typed
    int32_t Angle = 0;            // EditSegmentParams: the angle typed
    int Index = -1;               // SelectItem: the item picked
    TModalResult Result = mrNone; // MessageDlg, ErrorMessageDlg: the button pressed

    static TDialogAnswer Segment(int32_t Size, int32_t Angle);
    static TDialogAnswer SizeValue(int32_t Size);
    static TDialogAnswer Item(int Index);
    static TDialogAnswer Query(const QString& Text);
    static TDialogAnswer Box(const QString& Text);
    static TDialogAnswer Message(); // ShowMessage acknowledged
    static TDialogAnswer Modal(TModalResult Result);
    static TDialogAnswer Error(TModalResult Result = mrOk);
    static TDialogAnswer Question(bool Yes);
    static TDialogAnswer Open(const QString& FileName);
    static TDialogAnswer Save(const QString& FileName);
    // Cancel pressed (or the window closed) at a prompt of this kind.
    static TDialogAnswer Cancel(TDialogKind Kind);
};

// One prompt as it was asked.
struct TDialogRequest {
    TDialogKind Kind = dkShowMessage;
    QString Caption; // caption or title as passed (empty: the dialog's own)
    QString Prompt;  // InputQuery, InputBox
    QString Text;    // message text, value shown, default, or file name proposed
    int32_t Size = 0, Angle = 0;
    bool OnlySize = false;
    int32_t AMin = 0, AMax = 0, AInc = 0;
    TPoint Pos{-1, -1};
    QStringList Items;
    int Default = 0;
    TMsgDlgType DlgType = mtCustom;
    TMsgDlgButtons Buttons = 0;
    int HelpCtx = 0;
    TMsgDlgBtn DefaultButton = mbOK;
    QString InitialDir, DefaultExt, Filter;

    // One line, e.g. `InputQuery "Segment Index" "Con,Idx" "1,2"`.
    QString Describe() const;
};

// A scripted prompt that does not match the script: the test is wrong or the code is.
class EDialogScriptError : public Exception {
public:
    using Exception::Exception;
};

// Answers every prompt from a FIFO of answers, each for one kind of prompt. A prompt of another
// kind than the next answer, or a prompt with no answer left, or an answer no user could give
// (an item that is not in the list, a button that is not shown), is recorded in Failures, passed
// to OnFailure when set, and thrown as EDialogScriptError: never answered with a default.
// The value dialogs keep the values inside their ranges as the real dialogs do.
class TScriptedDialogService : public IDialogService {
public:
    using IDialogService::EditSizeValue;
    using IDialogService::MessageDlg;
    ~TScriptedDialogService() override;

    TScriptedDialogService& Expect(const TDialogAnswer& answer);
    size_t Pending() const { return FAnswers.size(); }
    const std::vector<TDialogRequest>& Asked() const { return FAsked; }
    QStringList Log() const; // Describe() of every prompt asked, in order
    const QStringList& Failures() const { return FFailures; }
    std::function<void(const QString&)> OnFailure;

    bool EditSegmentParams(TSegmentParamRec& Rec, const QString& ACaption, TPoint Pos) override;
    bool EditSizeValue(TSizeParamRec& Rec, const QString& ACaption, TPoint Pos) override;
    int SelectItemFromArray(const QString& ACaption, const QStringList& Items,
                            int Default) override;
    bool InputQuery(const QString& ACaption, const QString& APrompt, QString& Value) override;
    QString InputBox(const QString& ACaption, const QString& APrompt,
                     const QString& ADefault) override;
    void ShowMessage(const QString& Msg) override;
    TModalResult MessageDlg(const QString& Msg, TMsgDlgType DlgType, TMsgDlgButtons Buttons,
                            int HelpCtx, TMsgDlgBtn DefaultButton) override;
    TModalResult ErrorMessageDlg(const QString& Msg) override;
    bool QueryMessageDlg(const QString& Msg, const QString& ACaption) override;
    bool ExecuteOpenDialog(TFileDialog& Dialog) override;
    bool ExecuteSaveDialog(TFileDialog& Dialog) override;

private:
    TDialogAnswer Take(const TDialogRequest& request);
    [[noreturn]] void Fail(const QString& message);
    bool ExecuteFileDialog(TDialogKind kind, TFileDialog& Dialog);

    std::deque<TDialogAnswer> FAnswers;
    std::vector<TDialogRequest> FAsked;
    QStringList FFailures;
};

} // namespace vde
