// Demo page: a host panel turned into an editable diagram surface. Blocks of each kind stand on
// it, joined by routed wires and one hand-drawn wire; design mode is on.
// Click a block to select it, click near a marker of a selected block to pick the marker,
// Shift-drag a block to move it (or, near its bottom-right corner, to resize it), right-click a
// block or the surface for the menus; the push button can be moved with the mouse.
#include "demo_pages.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>

using namespace vde;

namespace {

// Everything the page's surface needs, freed before the panel goes (it is created first, so
// Qt frees it first).
class EditorHost : public QObject {
public:
    using QObject::QObject;
    ~EditorHost() override {
        dc.reset();
        canvas.reset();
    }
    std::unique_ptr<TCanvas> canvas;
    std::unique_ptr<TDiagContainer> dc;
    TdmMoveResize* moveResize = nullptr;
    TPopupMenu* connections = nullptr;
    TPopupMenu* objects = nullptr;
};

TMenuItem* AddItem(TMenuItem* parent, const QString& name, const QString& caption,
                   TNotifyEvent onClick, intptr_t tag = 0) {
    auto* item = new TMenuItem(nullptr);
    item->SetName(name);
    item->SetCaption(caption);
    item->Tag = tag;
    item->OnClick = std::move(onClick);
    parent->Add(item);
    return item;
}

// Until the command module exists the menus hold a handful of items; those without a command
// yet say so.
void FillMenus(EditorHost* h) {
    TDiagContainer* dc = h->dc.get();
    const auto later = [](const QString& what) {
        return
            [what](QObject*) { DialogService().ShowMessage(what + QStringLiteral(": not yet")); };
    };
    TMenuItem* create =
        AddItem(h->objects->Items(), QStringLiteral("mnuCreate"), QStringLiteral("Create"), {});
    const TDiagObjectType kinds[] = {doText, doAndLogic, doOrLogic, doRSTrigger};
    const char* names[] = {"Text", "AndLogic", "OrLogic", "RSTrigger"};
    for (int i = 0; i < 4; ++i)
        AddItem(
            create, QStringLiteral("mnu%1").arg(QLatin1String(names[i])), QLatin1String(names[i]),
            [dc](QObject* s) { dc->CreateDiagObEvent(s); }, kinds[i]);
    AddItem(h->objects->Items(), QStringLiteral("mnuDelete"), QStringLiteral("Delete"),
            later(QStringLiteral("Delete")));
    AddItem(h->objects->Items(), QStringLiteral("mnuTitles"), QStringLiteral("Titles..."),
            later(QStringLiteral("Titles")));
    AddItem(h->connections->Items(), QStringLiteral("mnuAddSegment"),
            QStringLiteral("Add segment..."), later(QStringLiteral("Add segment")));
    AddItem(h->connections->Items(), QStringLiteral("mnuDeleteSegment"),
            QStringLiteral("Delete segment"), later(QStringLiteral("Delete segment")));
    AddItem(h->connections->Items(), QStringLiteral("mnuEndConnection"),
            QStringLiteral("End connection"), later(QStringLiteral("End connection")));
}

QWidget* CreateEditorPage() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("editorPage"));
    auto* host = new EditorHost(page);
    auto* layout = new QVBoxLayout(page);
    auto* note = new QLabel(QStringLiteral(
        "A host panel as a diagram surface, in design mode. Click a block to select it, then "
        "near one of its markers to pick the marker; Shift-drag a block to move it, or near its "
        "bottom-right corner to resize it; right-click a block, a wire or the empty surface for "
        "the menus."));
    note->setWordWrap(true);
    layout->addWidget(note);

    auto* panel = new QFrame;
    panel->setObjectName(QStringLiteral("diagramPanel"));
    panel->setFrameStyle(QFrame::Box | QFrame::Plain);
    panel->setAutoFillBackground(true);
    QPalette pal = panel->palette();
    pal.setColor(QPalette::Window, Qt::white);
    panel->setPalette(pal);
    layout->addWidget(panel, 1);
    auto* button = new QPushButton(QStringLiteral("A host button"), panel);
    button->setObjectName(QStringLiteral("hostButton"));
    button->setGeometry(620, 380, 150, 30);

    host->moveResize = new TdmMoveResize(host);
    host->canvas = std::make_unique<TCanvas>();
    host->canvas->SetHandle(panel);
    host->dc = std::make_unique<TDiagContainer>(panel, host->canvas.get(), host->moveResize);
    TDiagContainer* dc = host->dc.get();

    TDiagObject* a = dc->CreateObjByDiagType(doAndLogic, {60, 40, 120, 140});
    TDiagObject* o = dc->CreateObjByDiagType(doOrLogic, {60, 220, 120, 320});
    TDiagObject* rs = dc->CreateObjByDiagType(doRSTrigger, {300, 100, 400, 300});
    TDiagObject* t = dc->CreateObjByDiagType(doText, {540, 60, 690, 110});
    TDiagObject* a2 = dc->CreateObjByDiagType(doAndLogic, {560, 200, 620, 300});
    if (auto* text = dynamic_cast<TDiagText*>(t)) {
        text->SetInCount(2);
        text->SetOutCount(1);
        text->SetTextValues(QStringLiteral("Alarm"));
    }
    if (auto* rst = dynamic_cast<TDiagText*>(rs)) {
        rst->SetInCount(3);
        rst->SetOutCount(2);
        rst->AllOutputsType(itInversion, 1, 1);
    }
    if (auto* gate = dynamic_cast<TDiagText*>(a2))
        gate->AllInputsType(itArrow, 0, -1);
    for (TDiagObject* b : {a, o, rs, t, a2})
        dc->AssignObjEvents(b);
    auto* c1 = dc->ConList.get();
    new TDiagObjConnection(c1, a, 1, rs, -1, TPoint{12, 10}, 0, 0, 0);
    new TDiagObjConnection(c1, o, 1, rs, -3, TPoint{12, 10}, 0, 0, 0);
    new TDiagObjConnection(c1, rs, 1, t, -1, TPoint{14, 10}, 0, 0, 0);
    new TDiagObjConnection(c1, rs, 2, a2, -2, TPoint{14, 10}, 0, 0, 0);
    // A hand-drawn wire being built from the lower gate's second input: out to the left, then
    // down.
    auto* hand = new TDiagObjConnection(c1, o, -2, 30);
    hand->AddSegment(70, -2);

    host->connections = new TPopupMenu(host);
    host->connections->SetName(QStringLiteral("pmConnections"));
    host->objects = new TPopupMenu(host);
    host->objects->SetName(QStringLiteral("pmObjects"));
    FillMenus(host);
    dc->AssignContextMenus(host->connections, host->objects);
    dc->SetDesignMode(true);
    page->setProperty("vdeEditorHost", QVariant::fromValue(static_cast<QObject*>(host)));
    return page;
}

// For the picture: the RS trigger selected with its first input picked, and the last segment
// of the wire from its second output selected.
void SelectForPicture(QWidget* page) {
    auto* host = static_cast<EditorHost*>(page->property("vdeEditorHost").value<QObject*>());
    if (!host || !host->dc)
        return;
    TDiagContainer* dc = host->dc.get();
    TDiagObject* rs = dc->ObjList->Items(2);
    rs->SetSelected(true);
    rs->SetSelMarkerIndex(-1);
    dc->SelObj = rs;
    TDiagConnection* wire = dc->ConList->Items(3);
    const TPoint end = wire->FPoints.back();
    dc->SelectBestSegment({end.X - 6, end.Y + 3});
}

const bool registered =
    RegisterDemoPage(20, QStringLiteral("Editor surface"), &CreateEditorPage, &SelectForPicture);

} // namespace
