// A host program for the storage tests that need real processes: it keeps one diagram, "Chart",
// through the package functions, in files beside a program folder, in a text file, or in a
// configuration table (SQLite or PostgreSQL).
//
//   vde_storage_host session --medium file|sqlite|postgresql (--dir DIR | --database URL)
//                            [--check] [--answer none|overwrite|reload|copy]
//     reads commands from standard input and answers each with one line:
//       load      -> "loaded <fingerprint> <x>,<y>;<x>,<y>..." (the blocks' places)
//       add X Y   -> "added <blocks>"           an AND gate at (X, Y), one undo step
//       save      -> "saved <fingerprint>", after "resolved <answer> <copy>" for an answered
//                    conflict; "conflict <remembered> <stored>" when the save raised it;
//                    "error <message>"
//       quit
//     A fingerprint "-" is the empty one (nothing stored). --answer none (the default) leaves
//     the process without a dialog service, so a conflict raises.
//
//   vde_storage_host show --medium file|sqlite|postgresql (--dir DIR | --database URL)
//                         [--live] [--check] [--answer ...]
//     the diagram's panel in a shown scroll area, with the event loop running (live reload, when
//     --live turns it on, works through it); commands come on standard input as for session,
//     plus:
//       places      -> "places <fingerprint> <blocks>"   what is shown now, nothing loaded
//       select I    -> "selected <key>"                  the I-th block is the selected one
//       scroll X Y  -> "view <x>,<y> <selected keys>"    the scroll area's position
//       view        -> "view <x>,<y> <selected keys>"    ("-" for no selected block)
//       reload      -> "places ..."                     the answer Reload to a change elsewhere
//       keep        -> "kept"                           the answer Keep mine
//       canundo     -> "canundo 0|1"                    whether there is a step to undo
//     and prints, whenever they happen:
//       "reloaded <fingerprint> <blocks>"  the diagram was reloaded after a save elsewhere
//       "changed <name>"                   a save elsewhere met unsaved changes here
//
//   vde_storage_host churn --medium file|text|sqlite (--dir DIR | --database URL)
//                          --versions DIR [--side N]
//     builds a sheet of N x N gates (default 100: 10,000 blocks), writes the two stored forms it
//     will alternate between to DIR/a and DIR/b, then saves them alternately until killed,
//     printing "ready <ms>" (the first save's time) after the first save.
//
//   vde_storage_host outage --medium postgresql --database URL --versions DIR [--side N]
//                           [--check]
//     builds the same sheet and writes the two versions to DIR/a and DIR/b, then reads commands:
//       run   -> saves versions 0, 1, 2, ... (even: a, odd: b), each marked as changed first,
//                printing "saving <i>" before and "saved <i> <still marked 0|1> <ms>" after
//                each, until a save fails: "failed <i> <still marked 0|1> <ms> <message>";
//                then it waits for the next command
//       retry -> saves again without marking: "saved <i> <still marked 0|1> <ms>" or "failed ..."
//       quit

#include "common/large_diagram.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollArea>
#include <QScrollBar>
#include <QSocketNotifier>
#include <QSqlDatabase>
#include <QSqlError>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <unistd.h>

using namespace vde;

namespace {

const QString kName = QStringLiteral("Chart");

void Say(const QString& line) {
    std::fputs(line.toUtf8().constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

QString Print(const QString& fingerprint) {
    return fingerprint.isEmpty() ? QStringLiteral("-") : fingerprint;
}

// Answers every conflict the same way.
class TFixedAnswer : public TScriptedDialogService {
public:
    explicit TFixedAnswer(TConflictChoice c) : FChoice(c) {}
    TConflictChoice AskSaveConflict(const QString&) override { return FChoice; }

private:
    TConflictChoice FChoice;
};

bool WriteAll(const QString& name, const QByteArray& bytes) {
    QFile f(name);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

QByteArray ReadFile(const QString& name) {
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

QByteArray StreamOf(TDiagContainer& dc) {
    TMemoryStream s;
    dc.SaveToStream(s);
    return QByteArray(reinterpret_cast<const char*>(s.Memory()), qsizetype(s.Bytes().size()));
}

QString PlacesOf(TDiagContainer& dc) {
    QStringList places;
    for (int i = 0; i < dc.ObjList->Count(); ++i) {
        const QPoint p = dc.ObjList->Items(i)->pos();
        places << QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
    }
    return places.join(QLatin1Char(';'));
}

// One host's commands; false once it is to quit.
class TCommands {
public:
    TCommands(TdmDiagActions* m, QWidget& panel, TCanvas& canvas, QScrollArea* area)
        : FModule(m), FPanel(panel), FCanvas(canvas), FArea(area) {
        FAnd.Tag = doAndLogic;
        QObject::connect(DiagStorageEvents(), &TDiagStorageEvents::ConflictResolved,
                         [](const QString&, int choice, const QString& copy) {
                             const char* names[] = {"Cancel", "Overwrite", "Reload", "SaveAsCopy"};
                             Say(QStringLiteral("resolved %1 %2")
                                     .arg(QLatin1String(names[choice & 3]),
                                          copy.isEmpty() ? QStringLiteral("-") : copy));
                         });
        QObject::connect(DiagStorageEvents(), &TDiagStorageEvents::Reloaded,
                         [this](const QString&) {
                             Say(QStringLiteral("reloaded %1 %2")
                                     .arg(Print(FModule->GetStoredFingerprint()),
                                          PlacesOf(*FModule->DiagContr)));
                         });
        QObject::connect(DiagStorageEvents(), &TDiagStorageEvents::ChangedElsewhere,
                         [](const QString& name) { Say(QStringLiteral("changed ") + name); });
    }

    bool Run(const std::string& line) {
        const QStringList words =
            QString::fromStdString(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (words.isEmpty())
            return true;
        const QString& cmd = words[0];
        TdmDiagActions*& m = FModule;
        try {
            if (cmd == QLatin1String("load")) {
                m = CreateAndLoadDiagActions(kName, &FPanel, &FCanvas, true);
                Say(QStringLiteral("loaded %1 %2")
                        .arg(Print(m->GetStoredFingerprint()), PlacesOf(*m->DiagContr)));
            } else if (cmd == QLatin1String("add") && words.size() == 3 && m) {
                m->DiagContr->FClickPoint = {words[1].toInt(), words[2].toInt()};
                m->DiagContr->CreateDiagObEvent(&FAnd);
                Say(QStringLiteral("added %1").arg(m->DiagContr->ObjList->Count()));
            } else if (cmd == QLatin1String("save") && m) {
                SaveDiagActionsDiagrams(QString());
                Say(QStringLiteral("saved %1").arg(Print(m->GetStoredFingerprint())));
            } else if (cmd == QLatin1String("places") && m) {
                Places();
            } else if (cmd == QLatin1String("select") && words.size() == 2 && m) {
                TDiagContainer& dc = *m->DiagContr;
                TDiagObject* b = dc.ObjList->Items(words[1].toInt());
                dc.ObjList->DeselectAll(b);
                b->SetSelected(true);
                dc.SelObj = b;
                Say(QStringLiteral("selected %1").arg(b->GetObjKey()));
            } else if (cmd == QLatin1String("scroll") && words.size() == 3 && FArea) {
                FArea->horizontalScrollBar()->setValue(words[1].toInt());
                FArea->verticalScrollBar()->setValue(words[2].toInt());
                View();
            } else if (cmd == QLatin1String("view") && FArea && m) {
                View();
            } else if (cmd == QLatin1String("reload") && m) {
                ReloadChangedDiagram(kName);
                Places();
            } else if (cmd == QLatin1String("canundo") && m) {
                Say(QStringLiteral("canundo %1").arg(CanUndoDiagram() ? 1 : 0));
            } else if (cmd == QLatin1String("keep") && m) {
                KeepMyDiagram(kName);
                Say(QStringLiteral("kept"));
            } else if (cmd == QLatin1String("quit")) {
                return false;
            } else {
                Say(QStringLiteral("error unknown command %1").arg(QString::fromStdString(line)));
            }
        } catch (const EDiagramConflict& e) {
            Say(QStringLiteral("conflict %1 %2").arg(Print(e.Expected()), Print(e.Stored())));
        } catch (const Exception& e) {
            Say(QStringLiteral("error ") + e.Message());
        }
        return true;
    }

private:
    void Places() {
        Say(QStringLiteral("places %1 %2")
                .arg(Print(FModule->GetStoredFingerprint()), PlacesOf(*FModule->DiagContr)));
    }
    void View() {
        QStringList keys;
        if (FModule && FModule->DiagContr)
            for (TDiagObject* b : FModule->DiagContr->SelectedBlocks())
                keys << QString::number(b->GetObjKey());
        Say(QStringLiteral("view %1,%2 %3")
                .arg(FArea->horizontalScrollBar()->value())
                .arg(FArea->verticalScrollBar()->value())
                .arg(keys.isEmpty() ? QStringLiteral("-") : keys.join(QLatin1Char(','))));
    }

    TdmDiagActions* FModule;
    QWidget& FPanel;
    TCanvas& FCanvas;
    QScrollArea* FArea;
    TMenuItem FAnd{nullptr};
};

int Session(TdmDiagActions* m, QWidget& panel, TCanvas& canvas) {
    TCommands commands(m, panel, canvas, nullptr);
    std::string line;
    while (std::getline(std::cin, line))
        if (!commands.Run(line))
            return 0;
    return 0;
}

// The commands come through the event loop, so that the watchers and notifications are served
// between them.
int Show(TdmDiagActions* m, QWidget& panel, TCanvas& canvas, QScrollArea& area) {
    TCommands commands(m, panel, canvas, &area);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    std::string pending;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buf[4096];
        const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
        if (n <= 0) {
            input.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        pending.append(buf, size_t(n));
        for (size_t eol; (eol = pending.find('\n')) != std::string::npos;) {
            const std::string line = pending.substr(0, eol);
            pending.erase(0, eol + 1);
            if (!commands.Run(line)) {
                input.setEnabled(false);
                QCoreApplication::quit();
                return;
            }
        }
    });
    return QCoreApplication::exec();
}

int Churn(TdmDiagActions* m, const QString& medium, const QString& dir, const QString& versions,
          int side) {
    TDiagContainer& dc = *m->DiagContr;
    test::FillLargeDiagram(dc, side);
    // The two versions differ in the place of one more block that has no wires (a block with
    // wires would reroute them, differently each time it moves).
    TDiagObject* first = dc.CreateObjByDiagType(doAndLogic, {10, -200, 70, -130});
    const QRect a = first->geometry();
    const QRect b = a.translated(7, 3);
    const bool text = medium == QLatin1String("text");
    const QString textFile = dir + QStringLiteral("/Chart.txt");
    auto version = [&](int i) {
        const QRect& r = i % 2 ? b : a;
        first->SetBounds(r.x(), r.y(), r.width(), r.height());
    };
    for (int i = 0; i < 2; ++i) {
        version(i);
        const QString name = versions + (i ? QStringLiteral("/b") : QStringLiteral("/a"));
        if (text)
            dc.SaveDiagramToText(name);
        else if (!WriteAll(name, StreamOf(dc)))
            return 2;
    }
    auto save = [&] {
        if (text) {
            dc.SaveDiagramToText(textFile);
        } else {
            EnableDesignMode(true, false); // marks the diagram to be saved
            SaveDiagActionsDiagrams(QString());
        }
    };
    QElapsedTimer t;
    t.start();
    version(0);
    save();
    Say(QStringLiteral("ready %1").arg(t.elapsed()));
    for (int i = 1;; ++i) {
        version(i);
        // Each version's bytes are the same every time, or the test could not tell.
        if (i < 4 && !text &&
            StreamOf(dc) !=
                ReadFile(versions + (i % 2 ? QStringLiteral("/b") : QStringLiteral("/a")))) {
            Say(QStringLiteral("error the versions change from save to save"));
            return 3;
        }
        save();
    }
}

// Saves to a table whose server the test stops and starts again while a save is under way.
int Outage(TdmDiagActions* m, const QString& versions, int side) {
    TDiagContainer& dc = *m->DiagContr;
    test::FillLargeDiagram(dc, side);
    TDiagObject* first = dc.CreateObjByDiagType(doAndLogic, {10, -200, 70, -130});
    const QRect a = first->geometry();
    const QRect b = a.translated(7, 3);
    auto version = [&](int i) {
        const QRect& r = i % 2 ? b : a;
        first->SetBounds(r.x(), r.y(), r.width(), r.height());
    };
    for (int i = 0; i < 2; ++i) {
        version(i);
        if (!WriteAll(versions + (i ? QStringLiteral("/b") : QStringLiteral("/a")), StreamOf(dc)))
            return 2;
    }
    // Each save reports how it ended; false when it raised.
    int current = -1;
    auto save = [&] {
        QElapsedTimer t;
        t.start();
        try {
            SaveDiagActionsDiagrams(QString());
        } catch (const Exception& e) {
            Say(QStringLiteral("failed %1 %2 %3 %4")
                    .arg(current)
                    .arg(int(m->GetNeedSave()))
                    .arg(t.elapsed())
                    .arg(QString(e.Message()).replace(QLatin1Char('\n'), QLatin1Char(' '))));
            return false;
        }
        Say(QStringLiteral("saved %1 %2 %3")
                .arg(current)
                .arg(int(m->GetNeedSave()))
                .arg(t.elapsed()));
        return true;
    };
    std::string line;
    while (std::getline(std::cin, line)) {
        if (line == "run") {
            for (;;) {
                ++current;
                version(current);
                EnableDesignMode(true, false); // marks the diagram to be saved
                Say(QStringLiteral("saving %1").arg(current));
                if (!save())
                    break;
            }
        } else if (line == "retry") {
            save();
        } else if (line == "quit") {
            return 0;
        } else {
            Say(QStringLiteral("error unknown command %1").arg(QString::fromStdString(line)));
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser p;
    const QCommandLineOption medium(QStringLiteral("medium"), QString(), QStringLiteral("M"));
    const QCommandLineOption dirOpt(QStringLiteral("dir"), QString(), QStringLiteral("DIR"));
    const QCommandLineOption database(QStringLiteral("database"), QString(), QStringLiteral("URL"));
    const QCommandLineOption check(QStringLiteral("check"));
    const QCommandLineOption live(QStringLiteral("live"));
    const QCommandLineOption answer(QStringLiteral("answer"), QString(), QStringLiteral("A"),
                                    QStringLiteral("none"));
    const QCommandLineOption versions(QStringLiteral("versions"), QString(), QStringLiteral("D"));
    const QCommandLineOption side(QStringLiteral("side"), QString(), QStringLiteral("N"),
                                  QStringLiteral("100"));
    p.addOptions({medium, dirOpt, database, check, live, answer, versions, side});
    p.addPositionalArgument(QStringLiteral("mode"), QString());
    p.process(app);
    const QString mode = p.positionalArguments().value(0);
    const QString kind = p.value(medium);
    try {
        std::unique_ptr<TDataSet> data;
        if (p.isSet(database)) {
            const TDatabaseUrl url = ParseDatabaseUrl(p.value(database));
            QSqlDatabase db = AddDatabase(url, QStringLiteral("host"));
            if (!db.open()) {
                Say(QStringLiteral("error cannot open the database: ") + db.lastError().text());
                return 1;
            }
            data = std::make_unique<TDataSet>(QStringLiteral("host"), url.TableName);
            data->Open();
        } else {
            SetHostProgramPath(p.value(dirOpt) + QStringLiteral("/host"));
        }
        const QString a = p.value(answer);
        std::unique_ptr<TFixedAnswer> service;
        if (a == QLatin1String("none")) {
            SetDefaultDialogService(nullptr);
        } else {
            service = std::make_unique<TFixedAnswer>(a == QLatin1String("overwrite") ? ccOverwrite
                                                     : a == QLatin1String("reload")  ? ccReload
                                                                                    : ccSaveAsCopy);
            SetDialogService(service.get());
        }
        QObject owner;
        // Shown in a scroll area far smaller than the panel, so that there is a view to keep.
        QScrollArea area;
        auto* shownPanel = new QWidget;
        shownPanel->resize(3000, 3000);
        area.setWidget(shownPanel);
        area.resize(400, 300);
        QWidget hiddenPanel;
        QWidget& panel = mode == QLatin1String("show") ? *shownPanel : hiddenPanel;
        if (mode == QLatin1String("show"))
            area.show();
        TCanvas canvas;
        canvas.SetHandle(&panel);
        CreateDiagActionsList(&owner, data.get(), data ? QStringLiteral("Config") : QString());
        SetConflictCheck(p.isSet(check));
        SetLiveReload(p.isSet(live));
        // Nothing is read before the first "load": two hosts started together would otherwise
        // both append the missing record, and the second would fail on the unique keys.
        TdmDiagActions* m =
            CreateAndLoadDiagActionsEx(kName, QString(), &panel, &canvas, true, false);
        int rc = 2;
        if (mode == QLatin1String("session"))
            rc = Session(m, panel, canvas);
        else if (mode == QLatin1String("show"))
            rc = Show(m, panel, canvas, area);
        else if (mode == QLatin1String("churn"))
            rc = Churn(m, kind, p.value(dirOpt), p.value(versions), p.value(side).toInt());
        else if (mode == QLatin1String("outage"))
            rc = Outage(m, p.value(versions), p.value(side).toInt());
        FreeDiagActionsList();
        return rc;
    } catch (const Exception& e) {
        Say(QStringLiteral("error ") + e.Message());
        return 1;
    }
}
