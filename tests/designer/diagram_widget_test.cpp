// vde::DiagramWidget on its own: defaults, properties, loading and saving, and going away with a
// diagram open in design mode.

#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/package/diagram_widget.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/streams.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

using namespace vde;

namespace {

const QString kAdder = QStringLiteral(VDE_EXAMPLES_DIR "/half_adder.dgm");

QByteArray FileBytes(const QString& name) {
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

TEST(DiagramWidget, StartsEmptyOutOfDesignModeInItsOwnColours) {
    DiagramWidget w;
    ASSERT_NE(w.container(), nullptr);
    EXPECT_EQ(w.container()->GetParent(), w.panel());
    EXPECT_EQ(w.panel()->parentWidget(), &w);
    EXPECT_FALSE(w.designMode());
    EXPECT_FALSE(w.followPalette());
    EXPECT_FALSE(w.directEditing());
    EXPECT_TRUE(w.diagramFile().isEmpty());
    EXPECT_EQ(w.container()->ObjList->Count(), 0);
    // Its context menus are the command module's.
    EXPECT_EQ(w.container()->pmObjects.data(), w.actions()->pmObjects);
}

TEST(DiagramWidget, ADiagramFileLoadsAndSavesByteForByte) {
    DiagramWidget w;
    QSignalSpy changed(&w, &DiagramWidget::diagramFileChanged);
    w.setDiagramFile(kAdder);
    EXPECT_TRUE(w.loadError().isEmpty());
    EXPECT_EQ(w.diagramFile(), kAdder);
    EXPECT_EQ(changed.count(), 1);
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString copy = dir.filePath(QStringLiteral("copy.dgm"));
    w.saveDiagram(copy);
    EXPECT_EQ(FileBytes(copy), FileBytes(kAdder));
    // An empty name clears the diagram.
    w.setDiagramFile(QString());
    EXPECT_EQ(w.container()->ObjList->Count(), 0);
    EXPECT_EQ(w.container()->ConList->Count(), 0);
}

TEST(DiagramWidget, AFileThatDoesNotLoadLeavesTheDiagramAndSaysWhy) {
    DiagramWidget w;
    w.setDiagramFile(kAdder);
    const int blocks = w.container()->ObjList->Count();
    w.setDiagramFile(QStringLiteral(VDE_EXAMPLES_DIR "/no such file.dgm"));
    EXPECT_TRUE(w.loadError().contains(QStringLiteral("no such file.dgm")))
        << w.loadError().toStdString();
    EXPECT_EQ(w.container()->ObjList->Count(), blocks);
    // Called by a host, the same raises the typed error.
    EXPECT_THROW(w.loadDiagram(QStringLiteral(VDE_EXAMPLES_DIR "/no such file.dgm")), EFOpenError);
    w.setDiagramFile(kAdder);
    EXPECT_TRUE(w.loadError().isEmpty());
}

TEST(DiagramWidget, DesignModeAndPaletteGoToTheContainer) {
    DiagramWidget w;
    w.setDesignMode(true);
    EXPECT_TRUE(w.container()->GetDesignMode());
    EXPECT_TRUE(w.designMode());
    w.setFollowPalette(true);
    EXPECT_TRUE(w.container()->GetFollowPalette());
    w.setDirectEditing(true);
    EXPECT_TRUE(w.container()->DirectEditing());
    EXPECT_TRUE(w.property("directEditing").toBool());
    w.setDesignMode(false);
    EXPECT_FALSE(w.container()->GetDesignMode());
}

TEST(DiagramWidget, GoesAwayWithADiagramOpenInDesignModeAndShown) {
    auto w = std::make_unique<DiagramWidget>();
    w->setDiagramFile(kAdder);
    w->setDesignMode(true);
    w->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(w.get()));
    w->container()->ObjList->Items(0)->SetSelected(true);
    QPointer<QWidget> panel = w->panel();
    w.reset();
    EXPECT_TRUE(panel.isNull());
}

TEST(DiagramWidget, TwoWidgetsKeepTheirDiagramsApart) {
    DiagramWidget a, b;
    a.setDiagramFile(kAdder);
    b.setDiagramFile(QStringLiteral(VDE_EXAMPLES_DIR "/rs_latch.dgm"));
    EXPECT_TRUE(b.loadError().isEmpty());
    QTemporaryDir dir;
    a.saveDiagram(dir.filePath(QStringLiteral("a.dgm")));
    b.saveDiagram(dir.filePath(QStringLiteral("b.dgm")));
    EXPECT_EQ(FileBytes(dir.filePath(QStringLiteral("a.dgm"))), FileBytes(kAdder));
    EXPECT_EQ(FileBytes(dir.filePath(QStringLiteral("b.dgm"))),
              FileBytes(QStringLiteral(VDE_EXAMPLES_DIR "/rs_latch.dgm")));
}
