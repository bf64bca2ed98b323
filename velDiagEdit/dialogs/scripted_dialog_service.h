#pragma once
// A dialog service for tests: answers every prompt from a queue and records what was asked, so
// that no test ever blocks on a window nobody closes.

#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace vde {

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
    dkSaveDialog,
    dkSaveConflict
};
VELDIAGEDIT_EXPORT QString DialogKindName(TDialogKind k); // "EditSegmentParams", "InputQuery", ...

// What the scripted user does at one prompt.
struct VELDIAGEDIT_EXPORT TDialogAnswer {
    TDialogKind Kind = dkShowMessage;
    bool Confirmed = true;        // OK / Yes / Execute; false: Cancel or the window closed
    QString Text;                 // InputQuery, InputBox: the text typed; file dialogs: the file
    int32_t Size = 0;             // EditSegmentParams, EditSizeValue: the size typed
    int32_t Angle = 0;            // EditSegmentParams: the angle typed
    int Index = -1;               // SelectItem: the item picked
    TModalResult Result = mrNone; // MessageDlg, ErrorMessageDlg: the button pressed
    TConflictChoice Choice = ccCancel; // SaveConflict: the answer

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
    static TDialogAnswer Conflict(TConflictChoice Choice);
    // Cancel pressed (or the window closed) at a prompt of this kind.
    static TDialogAnswer Cancel(TDialogKind Kind);
};

// One prompt as it was asked.
struct VELDIAGEDIT_EXPORT TDialogRequest {
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
class VELDIAGEDIT_EXPORT EDialogScriptError : public Exception {
public:
    using Exception::Exception;
};

// Answers every prompt from a FIFO of answers, each for one kind of prompt. A prompt of another
// kind than the next answer, or a prompt with no answer left, or an answer no user could give
// (an item that is not in the list, a button that is not shown), is recorded in Failures, passed
// to OnFailure when set, and thrown as EDialogScriptError: never answered with a default.
// The value dialogs keep the values inside their ranges as the real dialogs do.
class VELDIAGEDIT_EXPORT TScriptedDialogService : public IDialogService {
public:
    using IDialogService::EditSizeValue;
    using IDialogService::MessageDlg;

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
    TConflictChoice AskSaveConflict(const QString& Msg) override;

private:
    TDialogAnswer Take(const TDialogRequest& request);
    [[noreturn]] void Fail(const QString& message);
    bool ExecuteFileDialog(TDialogKind kind, TFileDialog& Dialog);

    std::deque<TDialogAnswer> FAnswers;
    std::vector<TDialogRequest> FAsked;
    QStringList FFailures;
};

} // namespace vde
