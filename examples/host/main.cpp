// A host window with one diagram on its panel, kept beside the program as Main.dgm.
#include <velDiagEdit/velDiagEdit.h>

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QMainWindow window;
    auto* panel = new QWidget; // the host's panel becomes the diagram surface
    window.setCentralWidget(panel);
    vde::TCanvas canvas; // the wires are drawn on the panel
    canvas.SetHandle(panel);

    vde::CreateDiagActionsList(&window); // once; diagrams are files beside the program
    vde::TdmDiagActions* diagram =
        vde::CreateAndLoadDiagActions("Main", panel, &canvas, /*ADesignMode=*/true);
    // Right-click the panel for the menus; vde::EnableDesignMode(false, true) shows only.
    // Undo/Redo from the diagram's undo stack, named after each step ("Undo Add Segment").
    QMenu* edit = window.menuBar()->addMenu("&Edit");
    edit->addAction(diagram->DiagContr->UndoStack()->createUndoAction(&window));
    edit->addAction(diagram->DiagContr->UndoStack()->createRedoAction(&window));
    window.show();
    const bool offscreen = QGuiApplication::platformName() == "offscreen";
    const int rc = offscreen ? 0 : app.exec();

    vde::SaveDiagActionsDiagrams(""); // every diagram to <program dir>/<name>.dgm
    vde::FreeDiagActionsList();       // before the window and its panels go
    return rc;
}
