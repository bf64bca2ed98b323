#pragma once
// A diagram on a form in one widget, for Qt Designer and for hosts that build forms in code:
// the panel the diagram is drawn on, the canvas of its wires, and the diagram's command module
// (its container, context menus, dialogs and move/resize handles).
//
// Ownership: the widget owns all of them and frees them in the order they need: the command
// module (and with it the container, its menus and its move/resize module) first, then the
// canvas, then the panel, a child widget that goes with the widget itself.
//
// Properties a form can set: designMode (edit with the mouse and the context menus),
// diagramFile (the .dgm file shown; setting it loads it), followPalette (colours from the
// panel's palette, see TDiagContainer::SetFollowPalette) and directEditing (wires dragged from
// marker to marker, rubber band selection: TDiagContainer::SetDirectEditing).
//
// Unlike a container made by hand, the widget's container has SetTabSelectsBlocks on: in design
// mode Tab and Shift+Tab walk the blocks.
//
// Setting a property never raises: a file that does not load leaves the diagram as it was, and
// loadError() says why (empty when the last file loaded). loadDiagram and saveDiagram raise the
// typed errors (velDiagEdit/platform/errors.h) as the container's own functions do.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QWidget>
#include <memory>

namespace vde {

class TCanvas;
class TDiagContainer;
class TdmDiagActions;

class VELDIAGEDIT_EXPORT DiagramWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool designMode READ designMode WRITE setDesignMode)
    Q_PROPERTY(QString diagramFile READ diagramFile WRITE setDiagramFile)
    Q_PROPERTY(bool followPalette READ followPalette WRITE setFollowPalette)
    Q_PROPERTY(bool directEditing READ directEditing WRITE setDirectEditing)
public:
    explicit DiagramWidget(QWidget* parent = nullptr);
    ~DiagramWidget() override;

    bool designMode() const;
    void setDesignMode(bool on);
    QString diagramFile() const { return FDiagramFile; }
    // Loads the file (an empty name clears the diagram). A relative name is taken from the
    // current directory.
    void setDiagramFile(const QString& file);
    bool followPalette() const;
    void setFollowPalette(bool on);
    bool directEditing() const;
    void setDirectEditing(bool on);
    // Why the last diagramFile did not load; empty when it did.
    QString loadError() const { return FLoadError; }

    // Raise EStreamError kinds or EReadError, leaving the diagram as it was on a failed load.
    void loadDiagram(const QString& file);
    void saveDiagram(const QString& file);

    // The panel the diagram is drawn on, the container on it and the command module.
    QWidget* panel() const { return FPanel; }
    TDiagContainer* container() const;
    TdmDiagActions* actions() const { return FActions.get(); }

    QSize sizeHint() const override;

signals:
    // After diagramFile was set (loaded or not: see loadError) and after loadDiagram loaded.
    void diagramFileChanged(const QString& file);

private:
    QWidget* FPanel = nullptr;
    std::unique_ptr<TCanvas> FCanvas;
    std::unique_ptr<TdmDiagActions> FActions;
    QString FDiagramFile;
    QString FLoadError;
};

} // namespace vde
