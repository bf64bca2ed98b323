#pragma once
// The bar a host shows above a diagram that someone else saved while it has unsaved changes here
// (TDiagStorageEvents::ChangedElsewhere): "Changed by someone else" with the buttons Reload and
// Keep mine, in the language of the library's translations (it follows a change of language).
//
// The bar starts hidden. ShowFor(Name) shows it for the diagram Name; a click on Reload calls
// ReloadChangedDiagram(Name), one on Keep mine KeepMyDiagram(Name), and either hides it again
// (ChangedElsewhere for a newer version shows it again). Reload errors are not raised out of
// the click: they are shown through the dialog service and the bar stays.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QFrame>
#include <QString>

class QLabel;
class QPushButton;

namespace vde {

class VELDIAGEDIT_EXPORT TChangedElsewhereBar : public QFrame {
    Q_OBJECT
public:
    explicit TChangedElsewhereBar(QWidget* Parent = nullptr);

    void ShowFor(const QString& Name);
    // The diagram the bar is shown for; empty while hidden.
    const QString& DiagramName() const { return FName; }
    QPushButton* ReloadButton() const { return FReload; }
    QPushButton* KeepButton() const { return FKeep; }
    QLabel* Label() const { return FLabel; }
    // For a host's status line after TDiagStorageEvents::Reloaded.
    static QString ReloadedText(const QString& Name);

signals:
    // After the answer was carried out.
    void Answered(const QString& Name, bool Reloaded);

private:
    void Retranslate();
    QString FName;
    QLabel* FLabel = nullptr;
    QPushButton* FReload = nullptr;
    QPushButton* FKeep = nullptr;
};

} // namespace vde
