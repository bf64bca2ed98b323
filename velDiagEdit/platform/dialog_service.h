#pragma once
// Every prompt the system shows goes through one replaceable dialog service: the value dialogs,
// input queries, message boxes and the open/save file dialogs. This is the interface and the
// place where the service in force is kept; the implementations stand above it: the real modal
// Qt dialogs (dialogs/qt_dialog_service.h, the default) and a scripted one for tests that
// answers from a queue and records what was asked (dialogs/scripted_dialog_service.h).

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <initializer_list>

namespace vde {

// What the segment parameter dialog shows and gives back.
struct TSegmentParamRec {
    int32_t Size = 0;      // segment length, pixels
    int32_t Angle = 0;     // angle as shown and edited, degrees
    bool OnlySize = false; // only the size may be edited
};

// What the size value dialog shows and gives back.
struct TSizeParamRec {
    int32_t Size = 0; // the value
    int32_t AMin = 0; // lowest allowed value
    int32_t AMax = 0; // highest allowed value
    int32_t AInc = 0; // step of the up-down control
};

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
VELDIAGEDIT_EXPORT TModalResult ButtonModalResult(TMsgDlgBtn b);
// The button that takes the default when the caller names none: OK, else Yes, else Retry.
VELDIAGEDIT_EXPORT TMsgDlgBtn DefaultMsgDlgButton(TMsgDlgButtons buttons);
// The button that Escape presses: Cancel, else No, else OK.
VELDIAGEDIT_EXPORT TMsgDlgBtn CancelMsgDlgButton(TMsgDlgButtons buttons);
VELDIAGEDIT_EXPORT QString MsgDlgTypeName(TMsgDlgType t);  // "Warning", ..., "Custom"
VELDIAGEDIT_EXPORT QString MsgDlgButtonName(TMsgDlgBtn b); // "Yes", "No", "OK", ...

// The state of an open or save dialog that a module keeps between uses. FileName is the full
// path chosen after a confirmed Execute; InitialDir is where the dialog opens.
class VELDIAGEDIT_EXPORT TFileDialog {
public:
    QString FileName;
    QString InitialDir;
    QString DefaultExt; // without the dot, e.g. "dgm"
    QString Filter;     // "Diagram files (*.dgm)|*.dgm"
    QString Title;      // empty: the dialog's own title
};

class VELDIAGEDIT_EXPORT TOpenDialog : public TFileDialog {
public:
    bool Execute();
};

class VELDIAGEDIT_EXPORT TSaveDialog : public TFileDialog {
public:
    bool Execute();
};

// The answers to "someone else saved this diagram since you loaded it".
enum TConflictChoice : uint8_t {
    ccCancel,     // nothing is written; the save fails with EDiagramConflict
    ccOverwrite,  // mine is stored, theirs is lost, knowingly
    ccReload,     // mine is dropped, theirs is loaded
    ccSaveAsCopy, // mine goes to a new record or file, theirs stays
};
VELDIAGEDIT_EXPORT QString ConflictChoiceName(TConflictChoice c); // "Cancel", "Overwrite", ...

class VELDIAGEDIT_EXPORT IDialogService {
public:
    // A service destroyed while in force (installed, or the default) is no longer used.
    virtual ~IDialogService();
    IDialogService() = default;
    IDialogService(const IDialogService&) = delete;
    IDialogService& operator=(const IDialogService&) = delete;

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

    // A save found the stored diagram changed by someone else: Msg says which and how. Here the
    // three answers are offered through SelectItemFromArray (Overwrite, Reload, Save as copy;
    // none picked is Cancel), so that every service can answer; a service may show its own.
    virtual TConflictChoice AskSaveConflict(const QString& Msg);
};

// The service in force: the one installed, else the default (the real Qt dialogs, which put
// themselves there when the library loads). EInvalidOperation when there is neither.
VELDIAGEDIT_EXPORT IDialogService& DialogService();
// True when DialogService() has a service to give (one installed, or the default).
VELDIAGEDIT_EXPORT bool HasDialogService();
// The service used while none is installed; nullptr when there is none.
VELDIAGEDIT_EXPORT IDialogService* DefaultDialogService();
// Installs `service` (not owned); nullptr goes back to the default.
VELDIAGEDIT_EXPORT void SetDialogService(IDialogService* service);
// The service used while none is installed (not owned).
VELDIAGEDIT_EXPORT void SetDefaultDialogService(IDialogService* service);

// Installs a service for the lifetime of the guard and then puts back the one before it.
class VELDIAGEDIT_EXPORT TScopedDialogService {
public:
    explicit TScopedDialogService(IDialogService* s);
    ~TScopedDialogService();
    TScopedDialogService(const TScopedDialogService&) = delete;
    TScopedDialogService& operator=(const TScopedDialogService&) = delete;

private:
    IDialogService* FPrevious;
};

} // namespace vde
