#include "velDiagEdit/dialogs/qt_dialog_service.h"

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
#include <array>

namespace vde {

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

TQtDialogService& QtDialogService() {
    static TQtDialogService s;
    return s;
}

namespace {
// The real dialogs answer every prompt unless a host or a test installs another service.
const bool registeredAsDefault = [] {
    SetDefaultDialogService(&QtDialogService());
    return true;
}();
} // namespace

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
        return QCoreApplication::translate("vde::TQtDialogService", "Warning");
    case mtError:
        return QCoreApplication::translate("vde::TQtDialogService", "Error");
    case mtInformation:
        return QCoreApplication::translate("vde::TQtDialogService", "Information");
    case mtConfirmation:
        return QCoreApplication::translate("vde::TQtDialogService", "Confirm");
    case mtCustom:
        return QApplication::applicationDisplayName();
    }
    return MsgDlgTypeName(t);
}

// Shows a message box with the buttons of the set; the modal result of the button pressed, or
// mrCancel when the window was closed.
TModalResult RunMessageBox(const QString& title, const QString& text, QMessageBox::Icon icon,
                           TMsgDlgButtons buttons, TMsgDlgBtn defaultButton,
                           TMsgDlgBtn escapeButton) {
    if (buttons == 0)
        buttons = MsgDlgButtons({mbOK});
    TMessageBox box(icon, title, text, QMessageBox::NoButton, DialogOwner());
    // The button shown for each TMsgDlgBtn, null where it is not in the set.
    std::array<QPushButton*, mbClose + 1> shown{};
    for (int i = mbYes; i <= mbClose; ++i) {
        const auto b = TMsgDlgBtn(i);
        if (!HasButton(buttons, b))
            continue;
        QPushButton* button = nullptr;
        if (b == mbAll)
            button = box.addButton(QCoreApplication::translate("vde::TQtDialogService", "&All"),
                                   QMessageBox::AcceptRole);
        else
            button = box.addButton(StandardButtonFor(b));
        button->setObjectName(MsgDlgButtonName(b));
        shown[b] = button;
    }
    if (size_t(defaultButton) < shown.size() && shown[defaultButton])
        box.setDefaultButton(shown[defaultButton]);
    if (size_t(escapeButton) < shown.size() && shown[escapeButton])
        box.setEscapeButton(shown[escapeButton]);
    box.exec();
    if (box.ClosedByWindow)
        return mrCancel;
    for (size_t b = 0; b < shown.size(); ++b)
        if (shown[b] && shown[b] == box.clickedButton())
            return ButtonModalResult(TMsgDlgBtn(b));
    return mrCancel;
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

TConflictChoice TQtDialogService::AskSaveConflict(const QString& Msg) {
    QMessageBox box(DialogOwner());
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(
        QCoreApplication::translate("vde::TQtDialogService", "Changed by someone else"));
    box.setText(Msg);
    QPushButton* overwrite =
        box.addButton(QCoreApplication::translate("vde::TQtDialogService", "Overwrite"),
                      QMessageBox::DestructiveRole);
    QPushButton* reload = box.addButton(
        QCoreApplication::translate("vde::TQtDialogService", "Reload"), QMessageBox::ResetRole);
    QPushButton* copy =
        box.addButton(QCoreApplication::translate("vde::TQtDialogService", "Save as copy"),
                      QMessageBox::AcceptRole);
    QPushButton* cancel = box.addButton(QMessageBox::Cancel);
    box.setDefaultButton(copy);
    box.setEscapeButton(cancel);
    box.exec();
    const QAbstractButton* clicked = box.clickedButton();
    if (clicked == overwrite)
        return ccOverwrite;
    if (clicked == reload)
        return ccReload;
    if (clicked == copy)
        return ccSaveAsCopy;
    return ccCancel;
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

} // namespace vde
