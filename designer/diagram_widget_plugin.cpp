#include "diagram_widget_plugin.h"

#include <velDiagEdit/package/diagram_widget.h>

#include <QIcon>
#include <QPainter>
#include <QPixmap>

VdeDiagramWidgetPlugin::VdeDiagramWidgetPlugin(QObject* parent) : QObject(parent) {}

QString VdeDiagramWidgetPlugin::name() const {
    return QStringLiteral("vde::DiagramWidget");
}

QString VdeDiagramWidgetPlugin::group() const {
    return QStringLiteral("velDiagEdit");
}

QString VdeDiagramWidgetPlugin::toolTip() const {
    return QStringLiteral("A block diagram of a logic circuit");
}

QString VdeDiagramWidgetPlugin::whatsThis() const {
    return QStringLiteral("Shows a velDiagEdit diagram file (.dgm); in design mode the user edits "
                          "it with the mouse and the context menus.");
}

QString VdeDiagramWidgetPlugin::includeFile() const {
    return QStringLiteral("velDiagEdit/package/diagram_widget.h");
}

// A small AND gate with two inputs and an output, drawn rather than shipped as a file.
QIcon VdeDiagramWidgetPlugin::icon() const {
    QPixmap pm(22, 22);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setPen(QPen(Qt::black, 1));
    p.setBrush(QColor(0xC0, 0xC0, 0xC0));
    p.drawRect(6, 3, 10, 16);
    p.drawLine(1, 7, 6, 7);
    p.drawLine(1, 15, 6, 15);
    p.drawLine(16, 11, 21, 11);
    p.drawText(QRect(6, 3, 10, 16), Qt::AlignCenter, QStringLiteral("&"));
    return QIcon(pm);
}

bool VdeDiagramWidgetPlugin::isContainer() const {
    return false;
}

QWidget* VdeDiagramWidgetPlugin::createWidget(QWidget* parent) {
    return new vde::DiagramWidget(parent);
}

bool VdeDiagramWidgetPlugin::isInitialized() const {
    return FInitialized;
}

void VdeDiagramWidgetPlugin::initialize(QDesignerFormEditorInterface*) {
    FInitialized = true;
}

QString VdeDiagramWidgetPlugin::domXml() const {
    return QStringLiteral(R"(<ui language="c++">
 <widget class="vde::DiagramWidget" name="diagramWidget">
  <property name="geometry">
   <rect><x>0</x><y>0</y><width>400</width><height>300</height></rect>
  </property>
  <property name="diagramFile"><string notr="true"/></property>
  <property name="designMode"><bool>false</bool></property>
  <property name="followPalette"><bool>false</bool></property>
  <property name="directEditing"><bool>false</bool></property>
 </widget>
 <customwidgets>
  <customwidget>
   <class>vde::DiagramWidget</class>
   <extends>QWidget</extends>
   <header location="global">velDiagEdit/package/diagram_widget.h</header>
  </customwidget>
 </customwidgets>
</ui>
)");
}
