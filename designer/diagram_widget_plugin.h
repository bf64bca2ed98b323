#pragma once
// Qt Designer's face of vde::DiagramWidget: the widget in the widget box under "velDiagEdit",
// made by Designer through this interface, with its properties in the property editor.

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

class VdeDiagramWidgetPlugin : public QObject, public QDesignerCustomWidgetInterface {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
    Q_INTERFACES(QDesignerCustomWidgetInterface)
public:
    explicit VdeDiagramWidgetPlugin(QObject* parent = nullptr);

    QString name() const override;
    QString group() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QString includeFile() const override;
    QIcon icon() const override;
    bool isContainer() const override;
    QWidget* createWidget(QWidget* parent) override;
    bool isInitialized() const override;
    void initialize(QDesignerFormEditorInterface* core) override;
    QString domXml() const override;

private:
    bool FInitialized = false;
};
