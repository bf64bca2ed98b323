// The Qt Designer plugin as Designer uses it: loaded with QPluginLoader, asked for its widget
// box entry, and made to create vde::DiagramWidget, whose properties it then sets.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/package/diagram_widget.h"

#include <QDomDocument>
#include <QMetaProperty>
#include <QPluginLoader>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <gtest/gtest.h>

namespace {

// The plugin file: the one built beside the tests, or the one VDE_DESIGNER_PLUGIN_FILE names
// (the install test points it at the installed copy).
QString PluginFile() {
    const QString given = qEnvironmentVariable("VDE_DESIGNER_PLUGIN_FILE");
    return given.isEmpty() ? QStringLiteral(VDE_DESIGNER_PLUGIN) : given;
}

QDesignerCustomWidgetInterface* Plugin(QPluginLoader& loader) {
    QObject* instance = loader.instance();
    EXPECT_NE(instance, nullptr) << loader.errorString().toStdString();
    return qobject_cast<QDesignerCustomWidgetInterface*>(instance);
}

} // namespace

TEST(DesignerPlugin, OffersTheWidgetUnderVelDiagEditInTheWidgetBox) {
    QPluginLoader loader(PluginFile());
    QDesignerCustomWidgetInterface* plugin = Plugin(loader);
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(loader.metaData().value(QStringLiteral("IID")).toString(),
              QStringLiteral("org.qt-project.Qt.QDesignerCustomWidgetInterface"));
    EXPECT_EQ(plugin->name(), QStringLiteral("vde::DiagramWidget"));
    EXPECT_EQ(plugin->group(), QStringLiteral("velDiagEdit"));
    EXPECT_EQ(plugin->includeFile(), QStringLiteral("velDiagEdit/package/diagram_widget.h"));
    EXPECT_FALSE(plugin->isContainer());
    EXPECT_FALSE(plugin->icon().isNull());
    // The entry Designer drops onto a form.
    QDomDocument dom;
    ASSERT_TRUE(dom.setContent(plugin->domXml()));
    const QDomElement widget = dom.documentElement().firstChildElement(QStringLiteral("widget"));
    EXPECT_EQ(widget.attribute(QStringLiteral("class")), QStringLiteral("vde::DiagramWidget"));
}

TEST(DesignerPlugin, CreatesTheWidgetOnTheFormAndSetsItsProperties) {
    QPluginLoader loader(PluginFile());
    QDesignerCustomWidgetInterface* plugin = Plugin(loader);
    ASSERT_NE(plugin, nullptr);
    plugin->initialize(nullptr);
    EXPECT_TRUE(plugin->isInitialized());
    QWidget form;
    QWidget* w = plugin->createWidget(&form);
    auto* diagram = qobject_cast<vde::DiagramWidget*>(w);
    ASSERT_NE(diagram, nullptr);
    EXPECT_EQ(w->parentWidget(), &form);
    // The property editor lists what a form can set, and sets it by name.
    const QMetaObject* mo = w->metaObject();
    for (const char* name : {"designMode", "diagramFile", "followPalette"}) {
        const int i = mo->indexOfProperty(name);
        ASSERT_GE(i, 0) << name;
        EXPECT_TRUE(mo->property(i).isWritable()) << name;
        EXPECT_TRUE(mo->property(i).isDesignable()) << name;
    }
    EXPECT_EQ(diagram->container()->ObjList->Count(), 0);
    ASSERT_TRUE(w->setProperty("diagramFile", QStringLiteral(VDE_EXAMPLES_DIR "/half_adder.dgm")));
    EXPECT_TRUE(diagram->loadError().isEmpty()) << diagram->loadError().toStdString();
    EXPECT_GT(diagram->container()->ObjList->Count(), 3);
    EXPECT_GT(diagram->container()->ConList->Count(), 3);
    ASSERT_TRUE(w->setProperty("designMode", true));
    EXPECT_TRUE(diagram->container()->GetDesignMode());
    ASSERT_TRUE(w->setProperty("followPalette", true));
    EXPECT_TRUE(diagram->container()->GetFollowPalette());
    delete w;
}
