// Demo page: a diagram made and kept through the package functions a host calls. Started with
// --database sqlite:PATH or --database postgresql://USER@HOST:PORT/DB?table=NAME, the diagram
// lives in a record of that table (made if missing); without it, in Chart1.dgm beside the demo
// program. A first run draws a small diagram; "Save" (and, without a display, the run itself)
// writes it back, and the next run loads it from where it was kept.
#include "demo_pages.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QVBoxLayout>
#include <cstdio>
#include <memory>

using namespace vde;

namespace {

const QString kConnection = QStringLiteral("vde_demo_config");

QString& DatabaseUrl() {
    static QString url;
    return url;
}

// The host's side of table storage: the connection, the table (made when missing) and the
// dataset over it.
std::unique_ptr<TDataSet> OpenConfigTable(const QString& text, QString& where) {
    TDatabaseUrl url = ParseDatabaseUrl(text);
    if (url.TableName.isEmpty())
        url.TableName = QStringLiteral("vde_config");
    QSqlDatabase db = AddDatabase(url, kConnection);
    if (!db.open())
        throw EDatabaseError(QStringLiteral("Cannot open %1: %2").arg(text, db.lastError().text()));
    const bool sqlite = url.Driver == QLatin1String("QSQLITE");
    const QString table = db.driver()->escapeIdentifier(url.TableName, QSqlDriver::TableName);
    QSqlQuery q(db);
    if (!q.exec(
            QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (\"id\" %2, \"Section\" TEXT NOT NULL, "
                           "\"Key\" TEXT NOT NULL, \"BinData\" %3, UNIQUE (\"Section\", \"Key\"))")
                .arg(table,
                     sqlite ? QStringLiteral("INTEGER PRIMARY KEY")
                            : QStringLiteral("SERIAL PRIMARY KEY"),
                     sqlite ? QStringLiteral("BLOB") : QStringLiteral("BYTEA"))))
        throw EDatabaseError(QStringLiteral("Cannot make the table %1: %2")
                                 .arg(url.TableName, q.lastError().text()));
    where = QStringLiteral("table %1 of %2").arg(url.TableName, url.DatabaseName);
    return std::make_unique<TDataSet>(kConnection, url.TableName);
}

class StoredDiagramPage : public QWidget {
public:
    StoredDiagramPage() {
        auto* layout = new QVBoxLayout(this);
        FNote = new QLabel;
        FNote->setWordWrap(true);
        layout->addWidget(FNote);
        FPanel = new QFrame;
        FPanel->setObjectName(QStringLiteral("chartPanel"));
        FPanel->setFrameStyle(QFrame::Box | QFrame::Plain);
        FPanel->setAutoFillBackground(true);
        QPalette pal = FPanel->palette();
        pal.setColor(QPalette::Window, Qt::white);
        FPanel->setPalette(pal);
        layout->addWidget(FPanel, 1);
        auto* buttons = new QHBoxLayout;
        auto* save = new QPushButton(QStringLiteral("Save"));
        buttons->addWidget(save);
        buttons->addStretch(1);
        layout->addLayout(buttons);
        FCanvas.SetHandle(FPanel);
        connect(save, &QPushButton::clicked, this, [this] { Save(); });
        Start();
    }

    ~StoredDiagramPage() override {
        // The modules go before the dataset they use, the dataset before its connection.
        FreeDiagActionsList();
        FData.reset();
        if (QSqlDatabase::contains(kConnection)) {
            QSqlDatabase::database(kConnection, false).close();
            QSqlDatabase::removeDatabase(kConnection);
        }
    }

    void Save() {
        if (FWhere.isEmpty())
            return; // the storage could not be set up; that was said already
        try {
            SaveDiagActionsDiagrams(QString());
            Say(QStringLiteral("Saved to %1.").arg(FWhere));
        } catch (const Exception& e) {
            Say(QStringLiteral("Cannot save: %1").arg(e.Message()));
        }
    }

private:
    void Start() {
        try {
            QString where = QStringLiteral("Chart1.dgm beside the demo program");
            if (!DatabaseUrl().isEmpty())
                FData = OpenConfigTable(DatabaseUrl(), where);
            FWhere = where;
            CreateDiagActionsList(this, FData.get(),
                                  FData ? QStringLiteral("DemoConfig") : QString(), QString());
            TdmDiagActions* m = CreateAndLoadDiagActionsEx(
                QStringLiteral("Chart1"), QStringLiteral("frmDemo"), FPanel, &FCanvas, true, true);
            if (!m)
                return;
            const bool loaded = m->DiagContr->ObjList->Count() > 0;
            if (!loaded)
                Draw(*m->DiagContr);
            Say((loaded ? QStringLiteral("Loaded from %1.")
                        : QStringLiteral("Nothing stored in %1 yet: a new diagram."))
                    .arg(where) +
                QStringLiteral(" Design mode is on: right-click for the menus; Save writes the "
                               "diagram back."));
        } catch (const Exception& e) {
            Say(QStringLiteral("Storage unavailable: %1").arg(e.Message()));
        }
    }

    // Two inputs into an AND gate whose output goes to a lamp.
    static void Draw(TDiagContainer& dc) {
        auto make = [&dc](TDiagObjectType kind, int x, int y) {
            dc.FClickPoint = {x, y};
            TDiagObject* b = dc.CreateObjectAtMousePos(kind);
            dc.AssignObjEvents(b);
            return b;
        };
        auto text = [&make](int x, int y, int inputs, int outputs) {
            auto* t = static_cast<TDiagText*>(make(doText, x, y));
            t->SetInCount(inputs);
            t->SetOutCount(outputs);
            return t;
        };
        TDiagObject* a = text(30, 40, 0, 1);
        TDiagObject* b = text(30, 170, 0, 1);
        TDiagObject* gate = make(doAndLogic, 260, 90);
        TDiagObject* lamp = text(460, 100, 1, 0);
        new TDiagObjConnection(dc.ConList.get(), a, 1, gate, -1, {10, 10}, 0, 0, 0);
        new TDiagObjConnection(dc.ConList.get(), b, 1, gate, -2, {10, 10}, 0, 0, 0);
        new TDiagObjConnection(dc.ConList.get(), gate, 1, lamp, -1, {10, 10}, 0, 0, 0);
        dc.GetParent()->update();
    }

    void Say(const QString& text) {
        FNote->setText(text);
        std::fprintf(stderr, "Stored diagram: %s\n", qPrintable(text));
    }

    QLabel* FNote = nullptr;
    QFrame* FPanel = nullptr;
    TCanvas FCanvas;
    std::unique_ptr<TDataSet> FData;
    QString FWhere;
};

const bool registered = RegisterDemoPage(
    60, QStringLiteral("Stored diagram"), [] { return new StoredDiagramPage; },
    // Without a display the run saves, so that the next run finds the diagram where it was kept.
    [](QWidget* page) { static_cast<StoredDiagramPage*>(page)->Save(); });

} // namespace

void SetDemoDatabaseUrl(const QString& url) {
    DatabaseUrl() = url;
}
