// Demo page: move and resize handles on the host's own widgets. A host panel holds a line edit
// and a push button, both under move/resize control; the line edit was pressed last, so its
// eight handles surround it. Drag a widget to move it, drag a handle to resize it.
#include "demo_pages.h"
#include "velDiagEdit/handles/move_resize.h"

#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

QWidget* CreateHandlesPage() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("handlesPage"));
    auto* layout = new QVBoxLayout(page);
    auto* note = new QLabel(QStringLiteral(
        "Widgets of the host under move/resize control: drag a widget to move it, drag one of "
        "the eight black handles around the last one pressed to resize it."));
    note->setWordWrap(true);
    layout->addWidget(note);

    // The host's panel: its children are placed by hand, so they can be moved and resized.
    auto* host = new QFrame;
    host->setObjectName(QStringLiteral("hostPanel"));
    host->setFrameStyle(QFrame::Box | QFrame::Plain);
    host->setAutoFillBackground(true);
    QPalette pal = host->palette();
    pal.setColor(QPalette::Window, QColor(0xF4, 0xF4, 0xF0));
    host->setPalette(pal);
    layout->addWidget(host, 1);

    auto* edit = new QLineEdit(QStringLiteral("A line edit under move/resize control"), host);
    edit->setObjectName(QStringLiteral("lineEdit"));
    edit->setGeometry(60, 50, 260, 28);
    auto* button = new QPushButton(QStringLiteral("A push button"), host);
    button->setObjectName(QStringLiteral("pushButton"));
    button->setGeometry(60, 130, 140, 32);

    // The module lives as long as the page; its handles are made after the host's widgets, so
    // they stand in front of them.
    auto* moveResize = new vde::TdmMoveResize(page);
    moveResize->setObjectName(QStringLiteral("moveResize"));
    moveResize->CreateNodes(host, host);
    moveResize->AssignControlEvents(edit, false);
    moveResize->AssignControlEvents(button, false);
    moveResize->PositionNodes(edit);
    return page;
}

const bool registered = RegisterDemoPage(50, QStringLiteral("Move and resize"), &CreateHandlesPage);

} // namespace
