// A form made in Qt Designer with the widget on it, compiled by uic: setting it up loads the
// example diagram the form names (relative to the working directory, the examples folder) and
// sets the widget's other properties.

#include "ui_diagram_form.h"

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/streams.h"

#include <QFile>
#include <gtest/gtest.h>

TEST(DesignerForm, SettingUpTheFormLoadsTheDiagramItNames) {
    QWidget form;
    Ui::DiagramForm ui;
    ui.setupUi(&form);
    ASSERT_NE(ui.diagram, nullptr);
    EXPECT_TRUE(ui.diagram->loadError().isEmpty()) << ui.diagram->loadError().toStdString();
    EXPECT_EQ(ui.diagram->diagramFile(), QStringLiteral("half_adder.dgm"));
    EXPECT_TRUE(ui.diagram->designMode());
    EXPECT_TRUE(ui.diagram->followPalette());
    // The widget holds the file's diagram: its stream is the file's bytes.
    vde::TMemoryStream s;
    ui.diagram->container()->SaveToStream(s);
    QFile f(QStringLiteral("half_adder.dgm"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray file = f.readAll();
    EXPECT_EQ(std::vector<uint8_t>(file.begin(), file.end()), s.Bytes());
    // examples/half_adder.txt, the text form of the same diagram, lists seven blocks.
    EXPECT_EQ(ui.diagram->container()->ObjList->Count(), 7);
}
