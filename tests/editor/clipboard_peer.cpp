// Not a test by itself: the other process of the clipboard test. It builds a diagram of two gates
// and a wire, selects the gates and copies them, prints "copied <bytes>" and keeps the clipboard
// (as the owner of the selection it must stay to serve it) until the file named by its argument
// appears, or 30 seconds pass.

#include <velDiagEdit/velDiagEdit.h>

#include <QApplication>
#include <QFile>
#include <QTimer>
#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc < 2)
        return 2;
    const QString done = QString::fromLocal8Bit(argv[1]);
    QWidget panel;
    panel.resize(400, 300);
    vde::TCanvas canvas;
    canvas.SetHandle(&panel);
    vde::TDiagContainer dc(&panel, &canvas, nullptr);
    vde::TDiagObject* a = dc.CreateObjByDiagType(vde::doAndLogic, {40, 50, 100, 120});
    vde::TDiagObject* b = dc.CreateObjByDiagType(vde::doOrLogic, {220, 90, 280, 160});
    auto* w = new vde::TDiagObjConnection(dc.ConList.get(), a, 1, b, -1, {12, 10}, 0, 0, 0);
    w->FSrcKey = a->GetObjKey();
    w->FDstKey = b->GetObjKey();
    a->SetSelected(true);
    b->SetSelected(true);
    if (!dc.CopySelection())
        return 3;
    std::printf("copied %d\n", int(dc.SelectionBytes().size()));
    std::fflush(stdout);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &app, [&done] {
        if (QFile::exists(done))
            QApplication::quit();
    });
    poll.start(20);
    QTimer::singleShot(30000, &app, &QApplication::quit);
    return app.exec();
}
