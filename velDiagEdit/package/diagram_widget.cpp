#include "velDiagEdit/package/diagram_widget.h"

#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/errors.h"

#include <QLoggingCategory>
#include <QVBoxLayout>

Q_LOGGING_CATEGORY(lcDiagramWidget, "veldiagedit.widget")

namespace vde {

DiagramWidget::DiagramWidget(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    FPanel = new QWidget(this);
    FPanel->setObjectName(QStringLiteral("diagramPanel"));
    FPanel->setAutoFillBackground(true);
    layout->addWidget(FPanel);
    FCanvas = std::make_unique<TCanvas>();
    FCanvas->SetHandle(FPanel);
    FActions = std::make_unique<TdmDiagActions>(nullptr);
    FActions->CreateContainer(FPanel, FCanvas.get());
    // A widget made for forms walks its blocks with Tab in design mode, as its readers expect.
    container()->SetTabSelectsBlocks(true);
}

// The command module holds the container, which must go before the canvas it draws with and the
// panel it is hooked on.
DiagramWidget::~DiagramWidget() {
    FActions.reset();
    FCanvas.reset();
}

TDiagContainer* DiagramWidget::container() const {
    return FActions->DiagContr.get();
}

bool DiagramWidget::designMode() const {
    return FActions->GetDesignMode();
}

void DiagramWidget::setDesignMode(bool on) {
    if (on != designMode())
        FActions->SetDesignMode(on);
}

bool DiagramWidget::followPalette() const {
    return container()->GetFollowPalette();
}

void DiagramWidget::setFollowPalette(bool on) {
    container()->SetFollowPalette(on);
}

bool DiagramWidget::directEditing() const {
    return container()->DirectEditing();
}

void DiagramWidget::setDirectEditing(bool on) {
    container()->SetDirectEditing(on);
}

void DiagramWidget::setDiagramFile(const QString& file) {
    FDiagramFile = file;
    FLoadError.clear();
    try {
        if (file.isEmpty())
            container()->Clear(false);
        else
            container()->LoadDiagramFromFile(file);
    } catch (const Exception& e) {
        FLoadError = e.Message();
        qCWarning(lcDiagramWidget) << "diagram file not loaded:" << FLoadError;
    }
    emit diagramFileChanged(file);
}

void DiagramWidget::loadDiagram(const QString& file) {
    container()->LoadDiagramFromFile(file);
    FDiagramFile = file;
    FLoadError.clear();
    emit diagramFileChanged(file);
}

void DiagramWidget::saveDiagram(const QString& file) {
    container()->SaveDiagramToFile(file);
}

QSize DiagramWidget::sizeHint() const {
    return {400, 300};
}

} // namespace vde
