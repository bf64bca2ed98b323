#pragma once
// The dialog service that shows real modal Qt dialogs, each on the application's active window
// (or the screen without one). It is the default service from the moment the library loads.

#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QStringList>

namespace vde {

// A file filter in the "Description|mask;mask|Description|mask" form turned into Qt's name
// filters, one per pair: "Diagram files (*.dgm)|*.dgm" -> {"Diagram files (*.dgm)"}.
VELDIAGEDIT_EXPORT QStringList FileFilterToQt(const QString& Filter);

// Message boxes and input queries are Qt's own; the value dialogs are this folder's forms.
class VELDIAGEDIT_EXPORT TQtDialogService : public IDialogService {
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
    // A warning box with the buttons Overwrite, Reload, Save as copy and Cancel.
    TConflictChoice AskSaveConflict(const QString& Msg) override;
};

// The one Qt service, which the registry falls back on.
VELDIAGEDIT_EXPORT TQtDialogService& QtDialogService();

} // namespace vde
