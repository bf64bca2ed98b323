#include "velDiagEdit/platform/dialog_service.h"

#include <iterator>

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

QString ConflictChoiceName(TConflictChoice c) {
    switch (c) {
    case ccCancel:
        return QStringLiteral("Cancel");
    case ccOverwrite:
        return QStringLiteral("Overwrite");
    case ccReload:
        return QStringLiteral("Reload");
    case ccSaveAsCopy:
        return QStringLiteral("Save as copy");
    }
    return QString::number(int(c));
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
IDialogService* g_default = nullptr;
} // namespace

IDialogService& DialogService() {
    if (g_service)
        return *g_service;
    if (!g_default)
        throw EInvalidOperation(QStringLiteral("No dialog service is installed"));
    return *g_default;
}

bool HasDialogService() {
    return g_service || g_default;
}

IDialogService* DefaultDialogService() {
    return g_default;
}

void SetDialogService(IDialogService* service) {
    g_service = service;
}

void SetDefaultDialogService(IDialogService* service) {
    g_default = service;
}

// A service that goes away while in force must not be called afterwards.
IDialogService::~IDialogService() {
    if (g_service == this)
        g_service = nullptr;
    if (g_default == this)
        g_default = nullptr;
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

TConflictChoice IDialogService::AskSaveConflict(const QString& Msg) {
    const QStringList items = {ConflictChoiceName(ccOverwrite), ConflictChoiceName(ccReload),
                               ConflictChoiceName(ccSaveAsCopy)};
    switch (SelectItemFromArray(Msg, items, 2)) {
    case 0:
        return ccOverwrite;
    case 1:
        return ccReload;
    case 2:
        return ccSaveAsCopy;
    default:
        return ccCancel;
    }
}

TModalResult IDialogService::MessageDlg(const QString& Msg, TMsgDlgType DlgType,
                                        TMsgDlgButtons Buttons, int HelpCtx) {
    return MessageDlg(Msg, DlgType, Buttons, HelpCtx, DefaultMsgDlgButton(Buttons));
}
} // namespace vde
