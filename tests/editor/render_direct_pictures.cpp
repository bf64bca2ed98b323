// Not a test: writes the pictures of docs/editing.md's direct gestures, made by mouse events on
// a surface with direct editing on: a wire being dragged toward a marker, a rubber band, and the
// view at 200% with the selected block's corner handle.
// Usage: vde_direct_pictures <folder>

#include "velDiagEdit/editor/diag_container.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPalette>
#include <QWidget>
#include <cstdio>

using namespace vde;

namespace {

struct Surface {
    QWidget panel;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    TDiagObject* a = nullptr;
    TDiagObject* o = nullptr;
    TDiagObject* r = nullptr;

    Surface() {
        panel.resize(420, 260);
        QPalette pal = panel.palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel.setPalette(pal);
        panel.setAutoFillBackground(true);
        canvas.SetHandle(&panel);
        dc = std::make_unique<TDiagContainer>(&panel, &canvas, nullptr);
        a = Place(doAndLogic, 40, 30);
        o = Place(doOrLogic, 40, 150);
        r = Place(doRSTrigger, 260, 70);
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        dc->SetGridSize(8);
        panel.show();
        QApplication::processEvents();
    }
    TDiagObject* Place(TDiagObjectType t, int x, int y) {
        dc->FClickPoint = {x, y};
        TDiagObject* b = dc->CreateObjectAtMousePos(t);
        dc->AssignObjEvents(b);
        return b;
    }
    // Where a marker is aimed at, on the surface at the zoom shown.
    QPoint Aim(TDiagObject* b, int m) const {
        TPoint p{};
        b->GetConPoint(m, p, true);
        return QPoint(p.X + (m < 0 ? 2 : -2), p.Y) * dc->Zoom();
    }
    void Mouse(QEvent::Type type, QPoint at) {
        const Qt::MouseButtons held =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, QPointF(at), panel.mapToGlobal(QPointF(at)),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held,
                      Qt::NoModifier);
        QApplication::sendEvent(&panel, &e);
    }
    void Drag(QPoint from, QPoint to, bool release) {
        Mouse(QEvent::MouseButtonPress, from);
        for (int i = 1; i <= 6; ++i)
            Mouse(QEvent::MouseMove, from + (to - from) * i / 6);
        if (release)
            Mouse(QEvent::MouseButtonRelease, to);
        QApplication::processEvents();
    }
    void Key(int key, Qt::KeyboardModifiers mods) {
        QKeyEvent e(QEvent::KeyPress, key, mods);
        QApplication::sendEvent(&panel, &e);
    }
    QImage Render() {
        QImage img(panel.size(), QImage::Format_ARGB32);
        img.fill(Qt::white);
        panel.render(&img);
        return img;
    }
};

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    {
        Surface s;
        // One wire already dropped on a marker, the next one under way toward the latch.
        s.Drag(s.Aim(s.a, 1), s.Aim(s.r, -1), true);
        s.Drag(s.Aim(s.o, 1), s.Aim(s.r, -2), false);
        const QString file = dir.filePath(QStringLiteral("direct_wire.png"));
        s.Render().save(file);
        std::printf("%s\n", qPrintable(file));
        s.Mouse(QEvent::MouseButtonRelease, s.Aim(s.r, -2));
    }
    {
        Surface s;
        s.Drag(s.Aim(s.a, 1), s.Aim(s.r, -1), true);
        s.Drag(s.Aim(s.o, 1), s.Aim(s.r, -2), true);
        s.Drag(QPoint(20, 15), QPoint(200, 250), false);
        const QString file = dir.filePath(QStringLiteral("direct_band.png"));
        s.Render().save(file);
        std::printf("%s\n", qPrintable(file));
        s.Mouse(QEvent::MouseButtonRelease, QPoint(200, 250));
    }
    {
        Surface s;
        s.Drag(s.Aim(s.a, 1), s.Aim(s.r, -1), true);
        s.Drag(s.Aim(s.o, 1), s.Aim(s.r, -2), true);
        // Ctrl++ three times: 125, 150, 200%.
        for (int i = 0; i < 3; ++i)
            s.Key(Qt::Key_Plus, Qt::ControlModifier);
        // Select the AND gate by a click on its body.
        const QPoint body = QPoint(60, 60) * s.dc->Zoom();
        s.Mouse(QEvent::MouseButtonPress, body);
        s.Mouse(QEvent::MouseButtonRelease, body);
        QApplication::processEvents();
        // The part of the view a 560 x 360 window would show.
        QImage img(560, 360, QImage::Format_ARGB32);
        img.fill(Qt::white);
        s.panel.render(&img, QPoint(), QRegion(0, 0, 560, 360));
        const QString file = dir.filePath(QStringLiteral("direct_zoom.png"));
        img.save(file);
        std::printf("%s (zoom %g)\n", qPrintable(file), s.dc->Zoom());
    }
    return 0;
}
