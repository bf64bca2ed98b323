// The demo host: a main window with one tab per named diagram, run through the package's
// functions the way any host runs them. The diagrams live beside the program as <name>.dgm; on
// the first start they are copied there from the sample diagrams. The "Diagram" menu switches
// design mode for the current tab or for all, saves all, and saves or loads the current tab
// through the file dialogs. The "Edit" menu undoes and redoes the current tab's steps, named
// after them ("Undo Add Segment"), and cuts, copies and pastes its selection. The library's other
// demo pages follow as further tabs.
//
// The diagrams are edited directly (wires dragged from marker to marker, rubber band, moves
// without Shift, an 8-pixel grid); View > Direct editing goes back to the classic gestures.
// Each diagram sits in a scroll area that follows its extent; View > Zoom In / Zoom Out / Actual
// Size (Ctrl++, Ctrl+-, Ctrl+0, or Ctrl+wheel on the surface) zoom it, the status bar shows the
// zoom and what the mouse would do, and closing the window with unsaved steps asks to save them.
//
// --database sqlite:PATH or --database postgresql://USER@HOST:PORT/DB?table=NAME keeps the
// diagrams in that table instead (made when missing); a diagram with no record there yet starts
// from its sample and is stored at once.
//
// With no display (offscreen platform) every tab is rendered to a PNG file instead: demo.png for
// the first diagram, in design mode with its context menu open, and demo-<n>.png for the others.
#include "appearance.h"
#include "config_table.h"
#include "demo_pages.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QKeySequence>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPainter>
#include <QPalette>
#include <QScrollArea>
#include <QStatusBar>
#include <QTabWidget>
#include <QUndoGroup>
#include <QVBoxLayout>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

// A diagram tab: a host panel, the canvas its wires are drawn with, and its command module.
struct DiagramTab {
    QString Name;
    QString Sample; // copied beside the program when there is no diagram file yet
    QWidget* Panel = nullptr;
    std::unique_ptr<vde::TCanvas> Canvas;
    vde::TdmDiagActions* Module = nullptr;
    // Above the diagram while someone else's save waits for Reload or Keep mine.
    vde::TChangedElsewhereBar* Bar = nullptr;
};

class DemoWindow : public QMainWindow {
public:
    DemoWindow() {
        setWindowTitle(QStringLiteral("velDiagEdit demo"));
        tabs = new QTabWidget(this);
        setCentralWidget(tabs);
        diagrams.resize(2);
        diagrams[0].Name = QStringLiteral("Adder");
        diagrams[0].Sample = QStringLiteral("half_adder.dgm");
        diagrams[1].Name = QStringLiteral("Latch");
        diagrams[1].Sample = QStringLiteral("rs_latch.dgm");
        for (DiagramTab& d : diagrams) {
            d.Panel = new QWidget;
            d.Panel->setObjectName(d.Name + QStringLiteral("Panel"));
            QPalette pal = d.Panel->palette();
            pal.setColor(QPalette::Window, Qt::white);
            d.Panel->setPalette(pal);
            d.Panel->setAutoFillBackground(true);
            d.Canvas = std::make_unique<vde::TCanvas>();
            d.Canvas->SetHandle(d.Panel);
            // The surface grows with its diagram; the area scrolls it.
            auto* area = new QScrollArea;
            area->setWidgetResizable(true);
            area->setWidget(d.Panel);
            auto* page = new QWidget;
            auto* column = new QVBoxLayout(page);
            column->setContentsMargins(0, 0, 0, 0);
            column->setSpacing(0);
            d.Bar = new vde::TChangedElsewhereBar(page);
            column->addWidget(d.Bar);
            column->addWidget(area, 1);
            tabs->addTab(page, d.Name);
        }
        for (const DemoPage& page : DemoPages())
            pages.push_back(tabs->addTab(page.Create(), page.Title));
        BuildMenu();
        BuildEditMenu();
        BuildViewMenu();
        connect(tabs, &QTabWidget::currentChanged, this, [this] { ShowState(); });
        resize(900, 620);
    }

    // The host's start: the list, then one diagram per tab, loaded from beside the program. The
    // last one made is the current diagram of the package and the only one in design mode.
    // With a database URL the diagrams are kept in that table instead.
    void OpenDiagrams(const QString& database = QString()) {
        if (!database.isEmpty()) {
            table = Guarded(QStringLiteral("Opening %1").arg(database),
                            [&] { return std::make_unique<ConfigTable>(database); });
            if (table)
                setWindowTitle(windowTitle() + QStringLiteral(" - ") + table->Where());
        }
        vde::CreateDiagActionsList(this, table ? table->DataSet() : nullptr,
                                   table ? QStringLiteral("DemoConfig") : QString());
        // Two windows on one table (or one folder) do not overwrite each other's work unasked.
        vde::SetConflictCheck(true);
        connect(vde::DiagStorageEvents(), &vde::TDiagStorageEvents::ConflictResolved, this,
                [this](const QString& name, int choice, const QString& copy) {
                    statusBar()->showMessage(
                        copy.isEmpty()
                            ? QStringLiteral("%1: %2").arg(
                                  name, vde::ConflictChoiceName(vde::TConflictChoice(choice)))
                            : QStringLiteral("%1: your version was saved as %2").arg(name, copy));
                });
        // Someone else's save reloads an unchanged diagram at once, or asks through the bar.
        vde::SetLiveReload(true);
        connect(vde::DiagStorageEvents(), &vde::TDiagStorageEvents::ChangedElsewhere, this,
                [this](const QString& name) {
                    for (DiagramTab& d : diagrams)
                        if (d.Name.compare(name, Qt::CaseInsensitive) == 0 && d.Bar)
                            d.Bar->ShowFor(d.Name);
                });
        connect(vde::DiagStorageEvents(), &vde::TDiagStorageEvents::Reloaded, this,
                [this](const QString& name) {
                    statusBar()->showMessage(vde::TChangedElsewhereBar::ReloadedText(name));
                });
        for (DiagramTab& d : diagrams) {
            if (!table)
                SeedFile(d);
            d.Module = Guarded(QStringLiteral("Loading %1").arg(d.Name), [&] {
                return vde::CreateAndLoadDiagActions(d.Name, d.Panel, d.Canvas.get(), false);
            });
            if (table)
                SeedRecord(d);
            if (d.Module && d.Module->DiagContr) {
                vde::TDiagContainer* dc = d.Module->DiagContr.get();
                undoGroup.addStack(dc->UndoStack());
                dc->SetGridSize(kGrid);
                dc->SetDirectEditing(directEditing && directEditing->isChecked());
                connect(dc, &vde::TDiagContainer::hintChanged, this, [this, dc](const QString& h) {
                    DiagramTab* cur = Current();
                    if (cur && cur->Module && cur->Module->DiagContr.get() == dc && !h.isEmpty())
                        statusBar()->showMessage(h);
                });
                connect(dc, &vde::TDiagContainer::designModeChanged, this,
                        [this](bool) { ShowState(); });
                connect(dc, &vde::TDiagContainer::zoomChanged, this,
                        [this](double) { ShowZoom(); });
            }
        }
        ShowState();
    }

    // Unsaved steps in any diagram: save them, throw them away, or stay.
    void closeEvent(QCloseEvent* e) override {
        bool dirty = false;
        for (const DiagramTab& d : diagrams)
            if (d.Module && d.Module->DiagContr && !d.Module->DiagContr->UndoStack()->isClean())
                dirty = true;
        if (!dirty || QGuiApplication::platformName() == QLatin1String("offscreen")) {
            e->accept();
            return;
        }
        const auto answer = QMessageBox::question(
            this, QStringLiteral("velDiagEdit demo"),
            QStringLiteral("Some diagrams have changes that are not saved. Save them?"),
            QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
        if (answer == QMessageBox::Cancel) {
            e->ignore();
            return;
        }
        if (answer == QMessageBox::Save) {
            for (DiagramTab& d : diagrams)
                if (d.Module)
                    d.Module->FNeedSave = true;
            const bool saved = Guarded(QStringLiteral("Saving"), [] {
                vde::SaveDiagActionsDiagrams(QString());
                return true;
            });
            if (!saved) {
                e->ignore();
                return;
            }
        }
        e->accept();
    }

    // The host's end: every module goes before the panels do, and before the table they use.
    void CloseDiagrams() {
        vde::FreeDiagActionsList();
        table.reset();
    }

    DiagramTab* Current() {
        const int i = tabs->currentIndex();
        return i >= 0 && i < int(diagrams.size()) ? &diagrams[size_t(i)] : nullptr;
    }

    QTabWidget* tabs = nullptr;
    std::vector<DiagramTab> diagrams;
    std::vector<int> pages;
    QAction* designHere = nullptr;
    QAction* directEditing = nullptr;
    QAction* zoomIn = nullptr;
    QAction* zoomOut = nullptr;
    QAction* zoomActual = nullptr;
    QLabel* zoomLabel = nullptr;
    static constexpr int kGrid = 8;
    std::unique_ptr<ConfigTable> table;
    QUndoGroup undoGroup;

private:
    void BuildMenu() {
        QMenu* m = menuBar()->addMenu(QStringLiteral("&Diagram"));
        designHere = m->addAction(QStringLiteral("&Design mode (this tab)"));
        designHere->setCheckable(true);
        connect(designHere, &QAction::toggled, this, [this](bool on) {
            if (DiagramTab* d = Current(); d && d->Module && d->Module->GetDesignMode() != on)
                d->Module->SetDesignMode(on);
            ShowState();
        });
        m->addAction(QStringLiteral("Design mode on &all tabs"), this, [this] {
            vde::EnableDesignMode(true, true);
            ShowState();
        });
        m->addAction(QStringLiteral("Design mode &off on all tabs"), this, [this] {
            vde::EnableDesignMode(false, true);
            ShowState();
        });
        m->addSeparator();
        m->addAction(QStringLiteral("&Save all"), this, [this] {
            // A table module writes only what is marked as to be saved, and a save clears the
            // mark while design mode stays on: what was edited since must be marked again.
            for (DiagramTab& d : diagrams)
                if (d.Module && d.Module->DiagContr && !d.Module->DiagContr->UndoStack()->isClean())
                    d.Module->FNeedSave = true;
            Guarded(QStringLiteral("Saving"), [] {
                vde::SaveDiagActionsDiagrams(QString());
                return true;
            });
        });
        m->addAction(QStringLiteral("Save tab &to ..."), this, [this] {
            if (DiagramTab* d = Current(); d && d->Module)
                Guarded(QStringLiteral("Saving"), [d] {
                    d->Module->SaveDiagramToFile();
                    return true;
                });
        });
        m->addAction(QStringLiteral("&Load tab from ..."), this, [this] {
            if (DiagramTab* d = Current(); d && d->Module)
                Guarded(QStringLiteral("Loading"), [d] {
                    d->Module->LoadDiagramFromFile();
                    return true;
                });
        });
        m->addSeparator();
        m->addAction(QStringLiteral("E&xit"), this, &QWidget::close);
    }

    // Undo and redo of the current tab's diagram, the texts following its steps. Without
    // shortcuts of their own: in design mode the surface takes Ctrl+Z, Ctrl+Shift+Z and Ctrl+Y.
    void BuildEditMenu() {
        QMenu* m = menuBar()->addMenu(QStringLiteral("&Edit"));
        m->addAction(undoGroup.createUndoAction(this));
        m->addAction(undoGroup.createRedoAction(this));
        // The clipboard of the current tab; in direct editing the surface has Ctrl+X, Ctrl+C and
        // Ctrl+V for the same.
        m->addSeparator();
        QAction* cut = m->addAction(QStringLiteral("Cu&t"), this, [this] {
            if (vde::TDiagContainer* dc = CurrentContainer())
                dc->CutSelection();
        });
        QAction* copy = m->addAction(QStringLiteral("&Copy"), this, [this] {
            if (vde::TDiagContainer* dc = CurrentContainer())
                dc->CopySelection();
        });
        QAction* paste = m->addAction(QStringLiteral("&Paste"), this, [this] {
            if (vde::TDiagContainer* dc = CurrentContainer())
                dc->PasteClipboard();
        });
        connect(m, &QMenu::aboutToShow, this, [this, cut, copy, paste] {
            vde::TDiagContainer* dc = CurrentContainer();
            const bool design = dc && dc->GetDesignMode();
            const bool selected = design && !dc->SelectedBlocks().empty();
            cut->setEnabled(selected);
            copy->setEnabled(dc && !dc->SelectedBlocks().empty());
            paste->setEnabled(design && dc->CanPaste());
        });
    }

    vde::TDiagContainer* CurrentContainer() {
        DiagramTab* d = Current();
        return d && d->Module && d->Module->DiagContr ? d->Module->DiagContr.get() : nullptr;
    }

    void BuildViewMenu() {
        QMenu* m = menuBar()->addMenu(QStringLiteral("&View"));
        directEditing = m->addAction(QStringLiteral("&Direct editing"));
        directEditing->setCheckable(true);
        directEditing->setChecked(true);
        connect(directEditing, &QAction::toggled, this, [this](bool on) {
            for (DiagramTab& d : diagrams)
                if (d.Module && d.Module->DiagContr)
                    d.Module->DiagContr->SetDirectEditing(on);
            ShowState();
        });
        m->addSeparator();
        // The surface takes these keys itself while it has the focus; the menu serves the rest.
        const auto zoom = [this](void (vde::TDiagContainer::*step)()) {
            if (DiagramTab* d = Current(); d && d->Module && d->Module->DiagContr)
                (d->Module->DiagContr.get()->*step)();
        };
        zoomIn = m->addAction(QStringLiteral("Zoom &In"));
        zoomIn->setShortcuts(
            {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)});
        connect(zoomIn, &QAction::triggered, this, [zoom] { zoom(&vde::TDiagContainer::ZoomIn); });
        zoomOut = m->addAction(QStringLiteral("Zoom &Out"));
        zoomOut->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Minus));
        connect(zoomOut, &QAction::triggered, this,
                [zoom] { zoom(&vde::TDiagContainer::ZoomOut); });
        zoomActual = m->addAction(QStringLiteral("&Actual Size"));
        zoomActual->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
        connect(zoomActual, &QAction::triggered, this, [this] {
            if (DiagramTab* d = Current(); d && d->Module && d->Module->DiagContr)
                d->Module->DiagContr->SetZoom(1.0);
        });
        zoomLabel = new QLabel(this);
        statusBar()->addPermanentWidget(zoomLabel);
    }

    // The current diagram's zoom in the status bar; the zoom acts in direct editing only.
    void ShowZoom() {
        DiagramTab* d = Current();
        vde::TDiagContainer* dc = d && d->Module ? d->Module->DiagContr.get() : nullptr;
        const bool can = dc && directEditing && directEditing->isChecked();
        for (QAction* a : {zoomIn, zoomOut, zoomActual})
            if (a)
                a->setEnabled(can);
        if (zoomLabel)
            zoomLabel->setText(can ? QStringLiteral("%1%").arg(std::lround(dc->Zoom() * 100))
                                   : QString());
    }

    void ShowState() {
        DiagramTab* d = Current();
        undoGroup.setActiveStack(
            d && d->Module && d->Module->DiagContr ? d->Module->DiagContr->UndoStack() : nullptr);
        const bool on = d && d->Module && d->Module->GetDesignMode();
        if (designHere) {
            const QSignalBlocker block(designHere);
            designHere->setEnabled(d && d->Module);
            designHere->setChecked(on);
        }
        const bool direct = directEditing && directEditing->isChecked();
        ShowZoom();
        if (d)
            statusBar()->showMessage(
                QStringLiteral("%1: %2 (right-click the surface in design mode for its menu)")
                    .arg(d->Name, !on      ? QStringLiteral("view")
                                  : direct ? QStringLiteral("design mode, direct editing: drag "
                                                            "from a marker to draw a wire")
                                           : QStringLiteral("design mode")));
        else
            statusBar()->clearMessage();
    }

    // The package's functions raise typed errors to the host; this host shows them.
    template <class F> auto Guarded(const QString& what, F&& f) -> decltype(f()) {
        try {
            return f();
        } catch (const vde::Exception& e) {
            const QString text = QStringLiteral("%1 failed: %2").arg(what, e.Message());
            // Without a display nobody could close a message box.
            if (QGuiApplication::platformName() == QLatin1String("offscreen"))
                std::fprintf(stderr, "%s\n", qPrintable(text));
            else
                QMessageBox::critical(this, QStringLiteral("velDiagEdit demo"), text);
        }
        return decltype(f())();
    }

    // A diagram with no record in the table yet starts from its sample, stored at once.
    void SeedRecord(const DiagramTab& d) {
        vde::TDiagContainer* dc = d.Module ? d.Module->DiagContr.get() : nullptr;
        if (!dc || !dc->ObjList || dc->ObjList->Count() > 0)
            return;
        Guarded(QStringLiteral("Storing %1").arg(d.Name), [&] {
            dc->LoadDiagramFromFile(QStringLiteral(VDE_EXAMPLES_DIR "/") + d.Sample);
            d.Module->FNeedSave = true;
            vde::SaveDiagActionsDiagrams(d.Name);
            return true;
        });
    }

    static void SeedFile(const DiagramTab& d) {
        const QString file =
            vde::ExtractFilePath(vde::HostProgramPath()) + d.Name + QStringLiteral(".dgm");
        if (!QFileInfo::exists(file))
            QFile::copy(QStringLiteral(VDE_EXAMPLES_DIR "/") + d.Sample, file);
    }
};

QImage Picture(QMainWindow& window) {
    QImage img(window.size(), QImage::Format_ARGB32);
    img.fill(Qt::white);
    window.render(&img);
    return img;
}

// The first diagram in design mode, one gate selected and the objects menu open over it.
QImage DesignModePicture(DemoWindow& window) {
    DiagramTab& d = window.diagrams.front();
    window.tabs->setCurrentIndex(0);
    window.designHere->setChecked(true);
    QApplication::processEvents();
    vde::TDiagContainer* dc = d.Module ? d.Module->DiagContr.get() : nullptr;
    if (!dc || !dc->ObjList || dc->ObjList->Count() == 0)
        return Picture(window);
    vde::TDiagObject* gate = dc->ObjList->Items(dc->ObjList->Count() / 2);
    gate->SetSelected(true);
    dc->SelObj = gate;
    QApplication::processEvents();
    QMenu* menu = d.Module->pmObjects->Menu();
    const QPoint at = gate->mapToGlobal(QPoint(gate->width() / 2, gate->height() / 2));
    menu->popup(at);
    menu->setActiveAction(d.Module->mnuCreate);
    if (QMenu* sub = d.Module->mnuCreate->menu())
        sub->popup(menu->mapToGlobal(menu->actionGeometry(d.Module->mnuCreate).topRight()));
    QApplication::processEvents();
    QImage img = Picture(window);
    QPainter p(&img);
    for (QMenu* m : {menu, d.Module->mnuCreate->menu()})
        if (m && m->isVisible())
            m->render(&p, window.mapFromGlobal(m->pos()));
    p.end();
    for (QMenu* m : {d.Module->mnuCreate->menu(), menu})
        if (m)
            m->hide();
    return img;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QCommandLineParser options;
    options.addHelpOption();
    const QCommandLineOption database(QStringLiteral("database"),
                                      QStringLiteral("Keep the diagrams in a table: sqlite:PATH or "
                                                     "postgresql://USER@HOST:PORT/DB?table=NAME."),
                                      QStringLiteral("url"));
    options.addOption(database);
    AddAppearanceOptions(options);
    options.process(app);
    DemoWindow window;
    window.OpenDiagrams(options.value(database));
    AddAppearanceMenu(&window, options);

    const bool offscreen = QGuiApplication::platformName() == QLatin1String("offscreen");
    if (!offscreen) {
        window.show();
        const int rc = app.exec();
        window.CloseDiagrams();
        return rc;
    }
    window.show();
    const auto pages = DemoPages();
    for (int i = 0; i < window.tabs->count(); ++i) {
        window.tabs->setCurrentIndex(i);
        QApplication::processEvents();
        const int page = i - int(window.diagrams.size());
        if (page >= 0 && pages[size_t(page)].AfterShow)
            pages[size_t(page)].AfterShow(window.tabs->widget(i));
        QApplication::processEvents();
        const QImage img = i == 0 ? DesignModePicture(window) : Picture(window);
        const QString name =
            i == 0 ? QStringLiteral("demo.png") : QStringLiteral("demo-%1.png").arg(i + 1);
        img.save(name);
        std::printf("%s: %s\n", qPrintable(window.tabs->tabText(i)),
                    qPrintable(QFileInfo(name).absoluteFilePath()));
    }
    window.CloseDiagrams();
    return 0;
}
