#include "common/db_test_util.h"

#include <cstdio>

#include "velDiagEdit/platform/dataset.h"

#include <QAtomicInteger>
#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <stdexcept>

namespace vde::test {

namespace {

QAtomicInteger<int> gCounter;

QString Unique(const QString& base) {
    return QStringLiteral("%1_%2_%3")
        .arg(base)
        .arg(QCoreApplication::applicationPid())
        .arg(gCounter.fetchAndAddRelaxed(1));
}

QString ScriptPath() {
    const QString src = qEnvironmentVariable("VDE_SOURCE_DIR");
    return src.isEmpty() ? QString() : src + QStringLiteral("/scripts/pg_test_server.sh");
}

} // namespace

QStringList HostileValues() {
    QString longValue;
    while (longValue.size() < 10000)
        longValue += QStringLiteral("ab'\\;%_\"-");
    longValue.truncate(10000);
    return {QStringLiteral("it's"),
            QStringLiteral("say \"hi\""),
            QStringLiteral("back\\slash\\\\"),
            QStringLiteral("semi;colon"),
            QStringLiteral("dash -- comment"),
            QStringLiteral("%"),
            QStringLiteral("_"),
            QStringLiteral("a%"),
            QStringLiteral("a_c"),
            QStringLiteral("'); DROP TABLE sentinel; --"),
            QString::fromUtf8("non-BMP \xF0\x9F\x98\x80 \xF0\x9D\x84\x9E"),
            QStringLiteral(" padded "),
            QString(),
            longValue};
}

QString MissingServerMessage() {
    const bool ci = !qEnvironmentVariableIsEmpty("CI");
    return QStringLiteral(
               "No PostgreSQL server for the storage tests%1: VDE_PG_URL is not set, and "
               "VDE_REQUIRE_PG says one is needed. ./test.sh starts a throwaway server by "
               "itself; to run the tests by hand start one with\n"
               "  eval \"$(scripts/pg_test_server.sh start)\"\n"
               "(needs the Debian package postgresql) and stop it afterwards with\n"
               "  scripts/pg_test_server.sh stop \"$VDE_PG_DIR\"")
        .arg(ci ? QStringLiteral(" under CI") : QString());
}

bool SkipPostgreSQL() {
    if (!qEnvironmentVariableIsEmpty("VDE_PG_URL") ||
        !qEnvironmentVariableIsEmpty("VDE_REQUIRE_PG"))
        return false;
    static bool told = false;
    if (!told) {
        told = true;
        std::fprintf(stderr,
                     "Note: the PostgreSQL cases are skipped: VDE_PG_URL is not set. ./test.sh "
                     "starts a throwaway server by itself; to run them by hand start one with\n"
                     "  eval \"$(scripts/pg_test_server.sh start)\"\n"
                     "(needs the Debian package postgresql), and stop it afterwards with\n"
                     "  scripts/pg_test_server.sh stop \"$VDE_PG_DIR\"\n"
                     "Set VDE_REQUIRE_PG=1 to make a missing server fail them instead.\n");
    }
    return true;
}

TestDatabase::TestDatabase(DbKind kind, const QString& pgUrl)
    : FKind(kind), FConnectionName(Unique(QStringLiteral("vde_test_conn"))) {
    TDatabaseUrl url;
    if (kind == DbKind::SQLite) {
        FDir = std::make_unique<QTemporaryDir>();
        if (!FDir->isValid()) {
            FError = QStringLiteral("cannot make a temporary folder");
            return;
        }
        url.Driver = QStringLiteral("QSQLITE");
        url.DatabaseName = FDir->filePath(QStringLiteral("config.db"));
    } else {
        const QString text = pgUrl.isEmpty() ? qEnvironmentVariable("VDE_PG_URL") : pgUrl;
        if (text.isEmpty()) {
            FError = MissingServerMessage();
            return;
        }
        url = ParseDatabaseUrl(text);
    }
    QSqlDatabase db = AddDatabase(url, FConnectionName);
    if (!db.open()) {
        FError = QStringLiteral("cannot open the %1 test database: %2")
                     .arg(kind == DbKind::SQLite ? "SQLite" : "PostgreSQL", db.lastError().text());
        return;
    }
    if (kind == DbKind::SQLite)
        Exec(QStringLiteral("PRAGMA foreign_keys = ON"));
}

TestDatabase::~TestDatabase() {
    {
        QSqlDatabase db = QSqlDatabase::database(FConnectionName, false);
        if (db.isValid()) {
            if (!db.isOpen())
                db.open();
            QSqlQuery q(db);
            for (auto it = FTables.rbegin(); it != FTables.rend(); ++it)
                q.exec(QStringLiteral("DROP TABLE IF EXISTS %1").arg(Quote(*it)));
            db.close();
        }
    }
    for (const QString& c : FOtherConnections) {
        QSqlDatabase::database(c, false).close();
        QSqlDatabase::removeDatabase(c);
    }
    QSqlDatabase::removeDatabase(FConnectionName);
}

QSqlDatabase TestDatabase::Db() const {
    return QSqlDatabase::database(FConnectionName, false);
}

QString TestDatabase::AddConnection() {
    const QString name = Unique(QStringLiteral("vde_test_conn"));
    QSqlDatabase db = QSqlDatabase::cloneDatabase(FConnectionName, name);
    FOtherConnections << name;
    if (!db.open())
        throw std::runtime_error("cannot open a second connection: " +
                                 db.lastError().text().toStdString());
    if (FKind == DbKind::SQLite)
        QSqlQuery(db).exec(QStringLiteral("PRAGMA foreign_keys = ON"));
    return name;
}

QString TestDatabase::NewTableName(const QString& base) {
    const QString name = Unique(base);
    FTables << name;
    return name;
}

QString TestDatabase::Quote(const QString& identifier) const {
    QString s = identifier;
    s.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + s + QLatin1Char('"');
}

void TestDatabase::Exec(const QString& sql) const {
    QSqlQuery q(Db());
    if (!q.exec(sql))
        throw std::runtime_error(
            QStringLiteral("%1\n  failed: %2").arg(sql, q.lastError().text()).toStdString());
}

void TestDatabase::CreateConfigTable(const QString& name, const QString& extra) {
    const QString id = FKind == DbKind::SQLite ? QStringLiteral("\"id\" INTEGER PRIMARY KEY")
                                               : QStringLiteral("\"id\" SERIAL PRIMARY KEY");
    Exec(QStringLiteral("CREATE TABLE %1 (%2, \"Section\" TEXT, \"Key\" TEXT%3)")
             .arg(Quote(name), id, extra.isEmpty() ? QString() : QStringLiteral(", ") + extra));
}

QVariantList TestDatabase::Column(const QString& table, const QString& column) const {
    QSqlQuery q(Db());
    if (!q.exec(
            QStringLiteral("SELECT %1 FROM %2 ORDER BY \"id\"").arg(Quote(column), Quote(table))))
        throw std::runtime_error(q.lastError().text().toStdString());
    QVariantList r;
    while (q.next())
        r << q.value(0);
    return r;
}

int TestDatabase::RowCount(const QString& table) const {
    QSqlQuery q(Db());
    if (!q.exec(QStringLiteral("SELECT COUNT(*) FROM %1").arg(Quote(table))) || !q.next())
        throw std::runtime_error(q.lastError().text().toStdString());
    return q.value(0).toInt();
}

// --- PrivatePgServer

PrivatePgServer::PrivatePgServer() : FScript(ScriptPath()) {
    if (FScript.isEmpty()) {
        FError = QStringLiteral("VDE_SOURCE_DIR is not set, so the server script is not found");
        return;
    }
    QString out;
    if (!Run({QStringLiteral("start")}, &out))
        return;
    const auto dir = QRegularExpression(QStringLiteral("VDE_PG_DIR='([^']*)'")).match(out);
    const auto url = QRegularExpression(QStringLiteral("VDE_PG_URL='([^']*)'")).match(out);
    if (!dir.hasMatch() || !url.hasMatch()) {
        FError = QStringLiteral("unexpected output of the server script: ") + out;
        return;
    }
    FDir = dir.captured(1);
    FUrl = url.captured(1);
}

PrivatePgServer::~PrivatePgServer() {
    if (!FDir.isEmpty())
        Run({QStringLiteral("stop"), FDir});
}

bool PrivatePgServer::Halt() {
    return Run({QStringLiteral("halt"), FDir});
}

bool PrivatePgServer::Crash() {
    return Run({QStringLiteral("crash"), FDir});
}

bool PrivatePgServer::Resume() {
    return Run({QStringLiteral("resume"), FDir});
}

bool PrivatePgServer::Run(const QStringList& args, QString* out) {
    QProcess p;
    p.start(FScript, args);
    if (!p.waitForFinished(120000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        FError =
            QStringLiteral("%1 %2 failed: %3")
                .arg(FScript, args.join(' '), QString::fromLocal8Bit(p.readAllStandardError()));
        return false;
    }
    if (out)
        *out = QString::fromLocal8Bit(p.readAllStandardOutput());
    return true;
}

} // namespace vde::test
