// A diagram of 10,000 blocks and 20,000 wires saved to and loaded from a configuration table
// (SQLite in a temporary file; PostgreSQL at VDE_PG_URL), against the same diagram in a file.
// The "bytes" benchmarks move only the stored bytes, the others the whole diagram as the host's
// save and load do (container stream + storage).

#include "bench_cleanup.h"

#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/commands/bin_utils.h"
#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/platform/streams.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <memory>

using namespace vde;

namespace {

// The last: PostgreSQL with its blob column compressed by lz4 instead of the default pglz.
enum Store { stFile, stSQLite, stPostgreSQL, stPostgreSQLLz4 };

// One host panel with a table module holding the large diagram, and its storage.
struct LargeDiagram {
    QTemporaryDir dir;
    QWidget panel;
    TCanvas canvas;
    QObject owner;
    QString connection;
    QString table;
    std::unique_ptr<TDataSet> data;
    std::unique_ptr<TdmTableDiagActions> dm;
    std::vector<uint8_t> bytes;
    QString file;
    QString error;

    explicit LargeDiagram(Store store) {
        canvas.SetHandle(&panel);
        panel.resize(2000, 2000);
        file = dir.filePath(QStringLiteral("large.dgm"));
        if (store != stFile && !OpenDatabase(store))
            return;
        dm = std::make_unique<TdmTableDiagActions>(&owner, data.get(), QStringLiteral("Bench"));
        dm->SetName(QStringLiteral("Large"));
        dm->CreateContainer(&panel, &canvas);
        TDiagContainer& dc = *dm->DiagContr;
        std::vector<TDiagObject*> all;
        for (int i = 0; i < 10000; ++i) {
            const int x = (i % 100) * 200, y = (i / 100) * 150;
            all.push_back(dc.ObjList->CreateObjByDiagType(doAndLogic, {x, y, x + 60, y + 100}));
        }
        for (int i = 0; i < 20000; ++i) {
            TDiagObject* s = all[size_t(i % 10000)];
            TDiagObject* d = all[size_t((i * 7 + 1) % 10000)];
            new TDiagObjConnection(dc.ConList.get(), s, 1, d, -1 - (i & 1), {10, 10}, 0, 0, 0);
        }
        TMemoryStream s;
        dc.SaveToStream(s);
        bytes = s.Bytes();
        if (store != stFile) {
            dm->LoadDiagram(QString()); // appends the record; the empty stream changes nothing
            dm->FNeedSave = true;
            dm->SaveDiagram(QString());
        } else {
            dc.SaveDiagramToFile(file);
        }
    }

    ~LargeDiagram() {
        dm.reset();
        data.reset();
        if (!connection.isEmpty()) {
            {
                QSqlDatabase db = QSqlDatabase::database(connection, false);
                QSqlQuery(db).exec(QStringLiteral("DROP TABLE IF EXISTS \"%1\"").arg(table));
                db.close();
            }
            QSqlDatabase::removeDatabase(connection);
        }
    }

    bool OpenDatabase(Store store) {
        TDatabaseUrl url;
        if (store == stSQLite) {
            url.Driver = QStringLiteral("QSQLITE");
            url.DatabaseName = dir.filePath(QStringLiteral("config.db"));
        } else {
            const QString text = qEnvironmentVariable("VDE_PG_URL");
            if (text.isEmpty()) {
                error = QStringLiteral("VDE_PG_URL is not set (scripts/pg_test_server.sh start)");
                return false;
            }
            url = ParseDatabaseUrl(text);
        }
        connection = QStringLiteral("bench_%1").arg(int(store));
        table = QStringLiteral("bench_config_%1_%2")
                    .arg(QCoreApplication::applicationPid())
                    .arg(int(store));
        QSqlDatabase db = AddDatabase(url, connection);
        if (!db.open()) {
            error = db.lastError().text();
            return false;
        }
        const QString id = store == stSQLite ? QStringLiteral("INTEGER PRIMARY KEY")
                                             : QStringLiteral("SERIAL PRIMARY KEY");
        const QString blob = store == stSQLite       ? QStringLiteral("BLOB")
                             : store == stPostgreSQL ? QStringLiteral("BYTEA")
                                                     : QStringLiteral("BYTEA COMPRESSION lz4");
        QSqlQuery q(db);
        if (!q.exec(QStringLiteral("CREATE TABLE \"%1\" (\"id\" %2, \"Section\" TEXT NOT NULL, "
                                   "\"Key\" TEXT NOT NULL, \"BinData\" %3, "
                                   "UNIQUE (\"Section\", \"Key\"))")
                        .arg(table, id, blob))) {
            error = q.lastError().text();
            return false;
        }
        data = std::make_unique<TDataSet>(connection, table);
        return true;
    }
};

LargeDiagram& Diagram(Store store) {
    static std::unique_ptr<LargeDiagram> made[4];
    if (!made[store]) {
        made[store] = std::make_unique<LargeDiagram>(store);
        BenchCleanups().push_back([store] { made[store].reset(); });
    }
    return *made[store];
}

bool Ready(benchmark::State& state, LargeDiagram& d) {
    if (!d.error.isEmpty()) {
        state.SkipWithError(d.error.toUtf8().constData());
        return false;
    }
    return true;
}

void Report(benchmark::State& state, const LargeDiagram& d) {
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(d.bytes.size()));
    state.counters["bytes"] = double(d.bytes.size());
}

// ---- the whole diagram: container stream + storage

void BM_SaveLargeDiagram(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    for (auto _ : state) {
        if (store == stFile) {
            d.dm->DiagContr->SaveDiagramToFile(d.file);
        } else {
            d.dm->FNeedSave = true;
            d.dm->SaveDiagram(QString());
        }
    }
    Report(state, d);
}
BENCHMARK(BM_SaveLargeDiagram)
    ->ArgName("file0_sqlite1_pg2")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

void BM_LoadLargeDiagram(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    for (auto _ : state) {
        if (store == stFile)
            d.dm->DiagContr->LoadDiagramFromFile(d.file);
        else
            d.dm->LoadDiagram(QString());
    }
    Report(state, d);
}
BENCHMARK(BM_LoadLargeDiagram)
    ->ArgName("file0_sqlite1_pg2")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

// ---- the stored bytes only

void BM_WriteLargeDiagramBytes(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    TMemoryStream source(d.bytes);
    for (auto _ : state) {
        if (store == stFile) {
            QSaveFile f(d.file);
            f.open(QIODevice::WriteOnly);
            f.write(reinterpret_cast<const char*>(d.bytes.data()), qint64(d.bytes.size()));
            f.commit();
        } else {
            d.data->Open();
            source.SetPosition(0);
            WriteDataFromStream(d.data->FindField(QStringLiteral("BinData")), &source,
                                QStringLiteral("Section;Key"),
                                QStringLiteral("frmMain.frmConfig.Large|DiagramChart"));
        }
    }
    Report(state, d);
}
BENCHMARK(BM_WriteLargeDiagramBytes)
    ->ArgName("file0_sqlite1_pg2")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

void BM_ReadLargeDiagramBytes(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    for (auto _ : state) {
        TMemoryStream target;
        if (store == stFile) {
            QFile f(d.file);
            f.open(QIODevice::ReadOnly);
            const QByteArray all = f.readAll();
            target.Write(all.constData(), all.size());
        } else {
            d.data->Open();
            ReadDataToStream(d.data->FindField(QStringLiteral("BinData")), &target,
                             QStringLiteral("Section;Key"),
                             QStringLiteral("frmMain.frmConfig.Large|DiagramChart"));
        }
        if (target.Size() != int64_t(d.bytes.size())) {
            state.SkipWithError("the stored bytes are not the diagram's");
            return;
        }
    }
    Report(state, d);
}
BENCHMARK(BM_ReadLargeDiagramBytes)
    ->ArgName("file0_sqlite1_pg2")
    ->DenseRange(0, 2)
    ->Unit(benchmark::kMillisecond);

// ---- the host's path: the module's save and load, with and without the conflict check

// For the file, the plain file module's save and load by name (the bytes in memory, then one
// replace of the file; the whole file read, then loaded from memory); for the tables, the table
// module's. Argument 1 switches the conflict check on.
void BM_SaveThroughModule(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    const TScopedHostProgramPath program(d.dir.filePath(QStringLiteral("host")));
    d.dm->SetUseDefaultSaveLoadProc(store == stFile);
    d.dm->SetConflictCheck(state.range(1) != 0);
    // One save first, so that the module knows what is stored.
    d.dm->FNeedSave = true;
    d.dm->SaveDiagram(QString());
    for (auto _ : state) {
        d.dm->FNeedSave = true;
        d.dm->SaveDiagram(QString());
    }
    d.dm->SetConflictCheck(false);
    d.dm->SetUseDefaultSaveLoadProc(false);
    Report(state, d);
}
BENCHMARK(BM_SaveThroughModule)
    ->ArgNames({"file0_sqlite1_pg2_pglz43", "check"})
    ->ArgsProduct({{0, 1, 2, 3}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void BM_LoadThroughModule(benchmark::State& state) {
    const auto store = Store(state.range(0));
    LargeDiagram& d = Diagram(store);
    if (!Ready(state, d))
        return;
    const TScopedHostProgramPath program(d.dir.filePath(QStringLiteral("host")));
    d.dm->SetUseDefaultSaveLoadProc(store == stFile);
    d.dm->FNeedSave = true;
    d.dm->SaveDiagram(QString());
    for (auto _ : state)
        d.dm->LoadDiagram(QString());
    d.dm->SetUseDefaultSaveLoadProc(false);
    Report(state, d);
}
BENCHMARK(BM_LoadThroughModule)
    ->ArgName("file0_sqlite1_pg2_pglz43")
    ->DenseRange(0, 3)
    ->Unit(benchmark::kMillisecond);

// ---- PostgreSQL's blob through Qt's driver, for comparison: the bytes as escaped text

void BM_WritePgBytesThroughQtDriver(benchmark::State& state) {
    LargeDiagram& d = Diagram(stPostgreSQL);
    if (!Ready(state, d))
        return;
    const QByteArray bytes(reinterpret_cast<const char*>(d.bytes.data()),
                           qsizetype(d.bytes.size()));
    QSqlQuery q(QSqlDatabase::database(d.connection));
    q.prepare(
        QStringLiteral("UPDATE \"%1\" SET \"BinData\" = ? WHERE \"Section\" = ?").arg(d.table));
    for (auto _ : state) {
        q.addBindValue(bytes);
        q.addBindValue(QStringLiteral("frmMain.frmConfig.Large"));
        if (!q.exec()) {
            state.SkipWithError(q.lastError().text().toUtf8().constData());
            return;
        }
    }
    Report(state, d);
}
BENCHMARK(BM_WritePgBytesThroughQtDriver)->Unit(benchmark::kMillisecond);

void BM_ReadPgBytesThroughQtDriver(benchmark::State& state) {
    LargeDiagram& d = Diagram(stPostgreSQL);
    if (!Ready(state, d))
        return;
    QSqlQuery q(QSqlDatabase::database(d.connection));
    q.prepare(QStringLiteral("SELECT \"BinData\" FROM \"%1\" WHERE \"Section\" = ?").arg(d.table));
    for (auto _ : state) {
        q.addBindValue(QStringLiteral("frmMain.frmConfig.Large"));
        if (!q.exec() || !q.next() ||
            q.value(0).toByteArray().size() != qsizetype(d.bytes.size())) {
            state.SkipWithError("the stored bytes are not the diagram's");
            return;
        }
    }
    Report(state, d);
}
BENCHMARK(BM_ReadPgBytesThroughQtDriver)->Unit(benchmark::kMillisecond);

} // namespace
