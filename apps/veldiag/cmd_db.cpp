// veldiag db: diagrams between files and a host's configuration table. The record of a
// diagram is found exactly as the table storage module finds it (its own key builder makes the
// "Section;Key" fields and the "frmMain.<tab>.<name>|DiagramChart" values), and its blob column
// is "BinData", or "BinData_" + suffix. The bytes move unchanged through the blob codec; both
// directions check that they are a diagram before anything is written.
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace veldiag {

namespace {

const QString kConnection = QStringLiteral("veldiag");

// The options every db subcommand takes.
struct DbOptions {
    QCommandLineOption Database{QStringLiteral("database"),
                                QStringLiteral("sqlite:PATH or postgresql://USER@HOST:PORT/DB, "
                                               "optionally with ?table=NAME."),
                                QStringLiteral("URL")};
    QCommandLineOption Table{QStringLiteral("table"),
                             QStringLiteral("The configuration table (default: the URL's "
                                            "?table=, else Config)."),
                             QStringLiteral("NAME")};
    QCommandLineOption Tab{QStringLiteral("tab"),
                           QStringLiteral("The tab part of the section (default frmConfig)."),
                           QStringLiteral("TAB"), QStringLiteral("frmConfig")};
    QCommandLineOption Suffix{QStringLiteral("suffix"),
                              QStringLiteral("The data column is BinData_SUFFIX (default: "
                                             "BinData)."),
                              QStringLiteral("SUFFIX")};
    void AddTo(QCommandLineParser& p) const { p.addOptions({Database, Table, Tab, Suffix}); }
};

// The database of the command line, its table name and the tab; checked before anything opens.
struct Target {
    vde::TDatabaseUrl Url;
    QString TableName;
    QString Tab;
    QString Suffix;
};

Target TargetOf(const QCommandLineParser& p, const DbOptions& o) {
    if (!p.isSet(o.Database))
        throw UsageError(QStringLiteral("no database given (--database URL)"));
    Target t;
    t.Url = vde::ParseDatabaseUrl(p.value(o.Database));
    t.TableName = p.isSet(o.Table) ? p.value(o.Table) : t.Url.TableName;
    if (t.TableName.isEmpty())
        t.TableName = QStringLiteral("Config");
    t.Tab = p.value(o.Tab);
    // "|" separates the key values of a record: the library refuses such a tab.
    if (t.Tab.contains(QLatin1Char('|')))
        throw UsageError(QStringLiteral("tab name \"%1\" holds \"|\"").arg(t.Tab));
    t.Suffix = p.value(o.Suffix);
    return t;
}

bool IsSqlite(const vde::TDatabaseUrl& url) {
    return url.Driver == QLatin1String("QSQLITE");
}

// An open connection, for the lifetime of one command. SQLite makes a missing file on opening:
// only a command that creates (db init) may open one, and if that command fails the file it made
// goes again.
class Connection {
public:
    Connection(const vde::TDatabaseUrl& url, bool mayCreate) {
        if (IsSqlite(url) && !QFileInfo::exists(url.DatabaseName)) {
            if (!mayCreate)
                throw ToolError(QStringLiteral("no database"),
                                QStringLiteral("there is no SQLite file \"%1\" (make one with "
                                               "\"veldiag db init --database sqlite:%1\")")
                                    .arg(url.DatabaseName));
            FMadeFile = url.DatabaseName;
        }
        QSqlDatabase db = vde::AddDatabase(url, kConnection);
        if (!db.open())
            throw vde::EDatabaseError(
                QStringLiteral("Cannot open the database: %1").arg(db.lastError().text()));
    }
    ~Connection() {
        {
            QSqlDatabase db = QSqlDatabase::database(kConnection, false);
            if (db.isOpen())
                db.close();
        }
        QSqlDatabase::removeDatabase(kConnection);
        if (!FMadeFile.isEmpty() && !FDone)
            QFile::remove(FMadeFile);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    // The command succeeded: a file it made stays.
    void Done() { FDone = true; }

private:
    QString FMadeFile;
    bool FDone = false;
};

// An open connection and the table, for the lifetime of one command.
class Table {
public:
    explicit Table(const Target& target) : FConnection(target.Url, false) {
        FData = std::make_unique<vde::TDataSet>(kConnection, target.TableName);
        FData->Open();
        vde::SetDataFieldSuffix(target.Suffix);
        FTab = target.Tab;
    }
    ~Table() { FData.reset(); }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    vde::TDataSet& Data() { return *FData; }
    const QString& Tab() const { return FTab; }

    // The key fields and values of the diagram, made by the table storage module itself.
    std::pair<QString, QString> Keys(const QString& name) {
        vde::TdmTableDiagActions module(nullptr, FData.get(), QStringLiteral("veldiag"));
        module.FTabName = FTab;
        module.GenKeyFieldsAndValues(name);
        return {module.KeyFields, module.KeyValues};
    }

    vde::TField& DataField() {
        const QString name = vde::DataFieldName();
        vde::TField* f = FData->FindField(name);
        if (!f || !f->IsBlob())
            throw vde::EDatabaseError(QStringLiteral("Table \"%1\" has no blob column \"%2\"")
                                          .arg(FData->TableName(), name));
        return *f;
    }

private:
    Connection FConnection;
    std::unique_ptr<vde::TDataSet> FData;
    QString FTab;
};

void CheckName(const QString& name) {
    if (name.isEmpty() || name.contains(QLatin1Char('|')))
        throw UsageError(QStringLiteral("diagram name \"%1\" is empty or holds \"|\"").arg(name));
}

QVariantList Values(const QString& keyValues) {
    QVariantList v;
    for (const QString& s : keyValues.split(QLatin1Char('|')))
        v << s;
    return v;
}

int Get(const QStringList& args) {
    QCommandLineParser parser;
    DbOptions o;
    parser.setApplicationDescription(QStringLiteral(
        "Writes the diagram NAME of the table into the binary file OUT, byte for byte as "
        "stored, and prints the stored bytes' fingerprint (SHA-256, 64 hex digits) on standard "
        "output (on standard error when OUT is -), for a later put --if-fingerprint. A missing "
        "record, an empty column or bytes that are not a diagram are errors and write nothing; "
        "the table is not changed."));
    parser.addPositionalArgument(QStringLiteral("NAME"), QStringLiteral("The diagram's name."));
    parser.addPositionalArgument(QStringLiteral("OUT"), QStringLiteral("The file to write."));
    o.AddTo(parser);
    ParseCommand(parser, args, 2, 2);
    const QString name = parser.positionalArguments().at(0);
    CheckName(name);
    Table t(TargetOf(parser, o));
    const auto [fields, values] = t.Keys(name);
    vde::TField& field = t.DataField();
    if (!t.Data().Locate(fields, Values(values)))
        throw vde::EDatabaseError(QStringLiteral("No diagram \"%1\" in tab \"%2\" of table \"%3\"")
                                      .arg(name, t.Tab(), t.Data().TableName()));
    vde::TBytes bytes;
    if (vde::ReadBlobData(&field, bytes) <= 0)
        throw vde::EDatabaseError(
            QStringLiteral("The diagram \"%1\" in tab \"%2\" holds no data").arg(name, t.Tab()));
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    DiagramSurface check;
    check.LoadBinary(data);
    const QString out = parser.positionalArguments().at(1);
    WriteFileAtomically(out, data);
    const QString fingerprint = vde::ContentFingerprint(data);
    if (out == QLatin1String("-"))
        Err(fingerprint);
    else
        Out(fingerprint);
    return kExitOk;
}

int Put(const QStringList& args) {
    QCommandLineParser parser;
    DbOptions o;
    parser.setApplicationDescription(QStringLiteral(
        "Stores the diagram FILE (binary .dgm, or the text form .ini/.txt, which is converted) "
        "as NAME in the table: the record is found or appended and its data column replaced in "
        "one transaction. A file that is not a diagram is an error and changes nothing. With "
        "--if-fingerprint H the diagram is stored only while the stored one still has the "
        "fingerprint H (as db get printed it; \"none\" for no diagram stored yet), compared in "
        "the same transaction as the write; otherwise nothing is written and the exit status "
        "is 3. With it, the new fingerprint is printed."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The diagram file."));
    parser.addPositionalArgument(QStringLiteral("NAME"), QStringLiteral("The diagram's name."));
    const QCommandLineOption ifFingerprint(
        QStringLiteral("if-fingerprint"),
        QStringLiteral("Store only over the diagram with this fingerprint (\"none\": only "
                       "where nothing is stored)."),
        QStringLiteral("H"));
    parser.addOption(ifFingerprint);
    o.AddTo(parser);
    ParseCommand(parser, args, 2, 2);
    QString expected;
    if (parser.isSet(ifFingerprint)) {
        expected = parser.value(ifFingerprint).trimmed().toLower();
        static const QRegularExpression hex(QStringLiteral("^[0-9a-f]{64}$"));
        if (expected == QLatin1String("none"))
            expected.clear();
        else if (!hex.match(expected).hasMatch())
            throw UsageError(QStringLiteral("--if-fingerprint \"%1\" is neither 64 hex digits "
                                            "nor \"none\"")
                                 .arg(parser.value(ifFingerprint)));
    }
    const QString file = parser.positionalArguments().at(0);
    const QString name = parser.positionalArguments().at(1);
    CheckName(name);
    const Target target = TargetOf(parser, o);
    QByteArray data;
    {
        DiagramSurface surface;
        if (FormByExtension(file) == DiagramForm::Binary) {
            QFile f(file);
            if (!f.open(QIODevice::ReadOnly))
                throw vde::EFOpenError(
                    QStringLiteral("Cannot open file \"%1\": %2").arg(file, f.errorString()));
            data = f.readAll();
            surface.LoadBinary(data);
        } else {
            surface.LoadFile(file, DiagramForm::Text);
            data = surface.SaveBinary();
        }
    }
    Table t(target);
    const auto [fields, values] = t.Keys(name);
    vde::TField& field = t.DataField();
    if (parser.isSet(ifFingerprint)) {
        const vde::TConditionalWrite w =
            t.Data().WriteBlobIfUnchanged(fields, Values(values), &field, data, expected);
        if (!w.Written) {
            Err(QStringLiteral("veldiag db put: the diagram \"%1\" changed: stored now %2, not "
                               "%3; nothing was written")
                    .arg(name, w.Found.isEmpty() ? QStringLiteral("none") : w.Found,
                         expected.isEmpty() ? QStringLiteral("none") : expected));
            return kExitConflict;
        }
        vde::NotifyDiagramSaved(&t.Data(), values);
        Out(vde::ContentFingerprint(data));
        return kExitOk;
    }
    vde::TMemoryStream stream(std::vector<uint8_t>(data.begin(), data.end()));
    stream.SetPosition(0);
    vde::WriteDataFromStream(&field, &stream, fields, values);
    vde::NotifyDiagramSaved(&t.Data(), values);
    return kExitOk;
}

// SIGINT and SIGTERM end a watch through the event loop: the handler only writes to a pipe.
int gSignalPipe[2] = {-1, -1};

void OnStopSignal(int) {
    const char c = 1;
    [[maybe_unused]] const ssize_t n = ::write(gSignalPipe[1], &c, 1);
}

int Watch(const QStringList& args) {
    QCommandLineParser parser;
    DbOptions o;
    parser.setApplicationDescription(QStringLiteral(
        "Watches the diagram NAME of the table and prints a line \"TIME NAME FINGERPRINT\" (UTC "
        "time in ISO 8601 with milliseconds; \"none\" when nothing is stored) each time the "
        "stored diagram changes, until interrupted (SIGINT or SIGTERM: exit status 0) or, with "
        "--count N, after N changes. On PostgreSQL it listens to the notifications that saves "
        "send; on SQLite it watches the database file and reads the record every --interval "
        "milliseconds as well. A line \"watching NAME FINGERPRINT\" goes to standard error "
        "once the watch is in place. The table is not changed."));
    parser.addPositionalArgument(QStringLiteral("NAME"), QStringLiteral("The diagram's name."));
    const QCommandLineOption count(QStringLiteral("count"),
                                   QStringLiteral("Stop after N changes (default: never)."),
                                   QStringLiteral("N"));
    const QCommandLineOption interval(
        QStringLiteral("interval"),
        QStringLiteral("SQLite: read the record every MS milliseconds as well (default 1000)."),
        QStringLiteral("MS"), QStringLiteral("1000"));
    parser.addOption(count);
    parser.addOption(interval);
    o.AddTo(parser);
    ParseCommand(parser, args, 1, 1);
    const QString name = parser.positionalArguments().at(0);
    CheckName(name);
    bool ok = true;
    const int maxChanges = parser.isSet(count) ? parser.value(count).toInt(&ok) : 0;
    if (!ok || maxChanges < 0 || (parser.isSet(count) && maxChanges == 0))
        throw UsageError(
            QStringLiteral("--count \"%1\" is not a positive number").arg(parser.value(count)));
    const int pollMs = parser.value(interval).toInt(&ok);
    if (!ok || pollMs < 10 || pollMs > 3600000)
        throw UsageError(QStringLiteral("--interval \"%1\" is not a number of milliseconds "
                                        "from 10 to 3600000")
                             .arg(parser.value(interval)));
    const Target target = TargetOf(parser, o);
    Table t(target);
    const auto [fields, values] = t.Keys(name);
    vde::TField& field = t.DataField();
    const auto stored = [&, fields = fields, values = values]() -> QString {
        if (!t.Data().Locate(fields, Values(values)))
            return QString();
        vde::TBytes bytes;
        if (vde::ReadBlobData(&field, bytes) <= 0)
            return QString();
        return vde::ContentFingerprint(bytes.data(), int64_t(bytes.size()));
    };
    const auto shown = [](const QString& f) { return f.isEmpty() ? QStringLiteral("none") : f; };

    if (::pipe(gSignalPipe) != 0)
        throw ToolError(QStringLiteral("cannot watch"), QStringLiteral("no pipe for signals"));
    struct sigaction sa = {};
    sa.sa_handler = OnStopSignal;
    sigemptyset(&sa.sa_mask);
    ::sigaction(SIGINT, &sa, nullptr);
    ::sigaction(SIGTERM, &sa, nullptr);
    QSocketNotifier stop(gSignalPipe[0], QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, [] { QCoreApplication::exit(kExitOk); });

    QString last = stored();
    int changes = 0;
    int rc = kExitOk;
    const auto check = [&] {
        try {
            const QString now = stored();
            if (now == last)
                return;
            last = now;
            Out(QStringLiteral("%1 %2 %3")
                    .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), name,
                         shown(now)));
            std::fflush(stdout);
            if (maxChanges > 0 && ++changes >= maxChanges)
                QCoreApplication::exit(kExitOk);
        } catch (const vde::Exception& e) {
            // A database locked by a writer for a moment: the next event or poll reads again.
            Err(QStringLiteral("veldiag db watch: %1").arg(e.Message()));
        }
    };
    QTimer poll;
    QFileSystemWatcher files;
    QSqlDatabase db = QSqlDatabase::database(kConnection, false);
    const QString channel = QString::fromLatin1(vde::kDiagramSavedChannel);
    if (IsSqlite(target.Url)) {
        const QString file = QFileInfo(target.Url.DatabaseName).absoluteFilePath();
        const auto watch = [&files, file] {
            for (const QString& f :
                 {file, file + QStringLiteral("-wal"), QFileInfo(file).absolutePath()})
                if (QFileInfo::exists(f) && !files.files().contains(f) &&
                    !files.directories().contains(f))
                    files.addPath(f);
        };
        watch();
        // watch is local to this block: the handlers keep their own copies.
        QObject::connect(&files, &QFileSystemWatcher::fileChanged, [watch, &check] {
            watch();
            check();
        });
        QObject::connect(&files, &QFileSystemWatcher::directoryChanged, [watch, &check] {
            watch();
            check();
        });
        QObject::connect(&poll, &QTimer::timeout, check);
        poll.start(pollMs);
    } else {
        QSqlDriver* driver = db.driver();
        if (!driver->subscribeToNotification(channel))
            throw vde::EDatabaseError(QStringLiteral("Cannot listen on \"%1\": %2")
                                          .arg(channel, driver->lastError().text()));
        QObject::connect(driver, &QSqlDriver::notification,
                         [&](const QString& n, QSqlDriver::NotificationSource, const QVariant& p) {
                             if (n == channel && p.toString() == values)
                                 check();
                         });
        // A notification that came while a read of ours ran waits in the client library's
        // queue with no socket activity to announce it; the driver's handler drains it.
        QObject::connect(&poll, &QTimer::timeout, [driver, &db, &check, &channel] {
            if (!db.isOpen())
                return;
            if (!driver->subscribedToNotifications().contains(channel)) {
                driver->subscribeToNotification(channel);
                check();
                return;
            }
            QMetaObject::invokeMethod(driver, "_q_handleNotification", Qt::DirectConnection);
        });
        poll.start(1000);
    }
    Err(QStringLiteral("watching %1 %2").arg(name, shown(last)));
    rc = QCoreApplication::exec();
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    ::close(gSignalPipe[0]);
    ::close(gSignalPipe[1]);
    return rc;
}

int List(const QStringList& args) {
    QCommandLineParser parser;
    DbOptions o;
    parser.setApplicationDescription(QStringLiteral(
        "Prints the names of the diagrams stored in the tab, one a line, sorted, with the "
        "size of their data in bytes."));
    o.AddTo(parser);
    ParseCommand(parser, args, 0, 0);
    Table t(TargetOf(parser, o));
    vde::TDataSet& d = t.Data();
    vde::TField* section = d.FindField(QStringLiteral("Section"));
    vde::TField* key = d.FindField(QStringLiteral("Key"));
    if (!section || !key)
        throw vde::EDatabaseError(
            QStringLiteral("Table \"%1\" has no Section or Key column").arg(d.TableName()));
    const vde::TField& data = t.DataField();
    // Names go through the driver's quoting; the one value is bound.
    QSqlDatabase db = QSqlDatabase::database(kConnection, false);
    QSqlDriver* drv = db.driver();
    const auto q = [drv](const QString& n, QSqlDriver::IdentifierType type) {
        return drv->escapeIdentifier(n, type);
    };
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.prepare(QStringLiteral("SELECT %1, %2 FROM %3 WHERE %4 = ?")
                           .arg(q(section->FieldName(), QSqlDriver::FieldName),
                                q(data.FieldName(), QSqlDriver::FieldName),
                                q(d.TableName(), QSqlDriver::TableName),
                                q(key->FieldName(), QSqlDriver::FieldName))))
        throw vde::EDatabaseError(QStringLiteral("Cannot list table \"%1\": %2")
                                      .arg(d.TableName(), query.lastError().text()));
    query.addBindValue(QStringLiteral("DiagramChart"));
    if (!query.exec())
        throw vde::EDatabaseError(QStringLiteral("Cannot list table \"%1\": %2")
                                      .arg(d.TableName(), query.lastError().text()));
    const QString prefix = QStringLiteral("frmMain.%1.").arg(t.Tab());
    std::vector<std::pair<QString, qsizetype>> found;
    while (query.next()) {
        const QString s = query.value(0).toString();
        if (s.startsWith(prefix))
            found.emplace_back(s.mid(prefix.size()), query.value(1).toByteArray().size());
    }
    std::sort(found.begin(), found.end());
    for (const auto& [n, size] : found)
        Out(QStringLiteral("%1\t%2").arg(n).arg(size));
    return kExitOk;
}

int Init(const QStringList& args) {
    QCommandLineParser parser;
    DbOptions o;
    parser.setApplicationDescription(QStringLiteral(
        "Creates the configuration table (Config unless --table or the URL's ?table= names "
        "another) with an integer primary key id, Section and Key (text, unique together) and "
        "the data column BinData, or BinData_SUFFIX: the layout docs/storage.md gives. A SQLite "
        "file is made when missing, and removed again if the table cannot be made. A table that "
        "exists already is left as it is when it has those columns."));
    o.AddTo(parser);
    ParseCommand(parser, args, 0, 0);
    const Target target = TargetOf(parser, o);
    Connection connection(target.Url, true);
    QSqlDatabase db = QSqlDatabase::database(kConnection, false);
    QSqlDriver* drv = db.driver();
    const auto q = [drv](const QString& n, QSqlDriver::IdentifierType type) {
        return drv->escapeIdentifier(n, type);
    };
    const QString dataColumn = target.Suffix.isEmpty() ? QStringLiteral("BinData")
                                                       : QStringLiteral("BinData_") + target.Suffix;
    const QStringList wanted = {QStringLiteral("id"), QStringLiteral("Section"),
                                QStringLiteral("Key"), dataColumn};
    if (db.tables().contains(target.TableName)) {
        const QSqlRecord have = db.record(target.TableName);
        for (const QString& column : wanted)
            if (have.indexOf(column) < 0)
                throw vde::EDatabaseError(
                    QStringLiteral("Table \"%1\" exists already, without the column \"%2\"")
                        .arg(target.TableName, column));
        connection.Done();
        Err(QStringLiteral("veldiag db init: table \"%1\" exists already with its columns; "
                           "nothing changed")
                .arg(target.TableName));
        return kExitOk;
    }
    const bool sqlite = IsSqlite(target.Url);
    const auto sql = [&](const QString& blobType) {
        return QStringLiteral(
                   "CREATE TABLE %1 (%2 %3 PRIMARY KEY, %4 TEXT NOT NULL, %5 TEXT NOT NULL, "
                   "%6 %7, UNIQUE (%4, %5))")
            .arg(q(target.TableName, QSqlDriver::TableName), q(wanted[0], QSqlDriver::FieldName),
                 sqlite ? QStringLiteral("INTEGER") : QStringLiteral("SERIAL"),
                 q(wanted[1], QSqlDriver::FieldName), q(wanted[2], QSqlDriver::FieldName),
                 q(wanted[3], QSqlDriver::FieldName), blobType);
    };
    QSqlQuery query(db);
    // The server compresses a stored diagram; its default method (pglz) costs more than the
    // rest of a save, lz4 a fraction of it. A server without lz4 gets the default.
    const bool made = sqlite ? query.exec(sql(QStringLiteral("BLOB")))
                             : (query.exec(sql(QStringLiteral("BYTEA COMPRESSION lz4"))) ||
                                query.exec(sql(QStringLiteral("BYTEA"))));
    if (!made)
        throw vde::EDatabaseError(QStringLiteral("Cannot create table \"%1\": %2")
                                      .arg(target.TableName, query.lastError().text()));
    connection.Done();
    return kExitOk;
}

} // namespace

int RunDb(const QStringList& args) {
    const QString sub = args.size() > 1 ? args.at(1) : QString();
    QStringList rest = args.mid(2);
    rest.prepend(QStringLiteral("veldiag db %1").arg(sub));
    if (sub == QLatin1String("get"))
        return Get(rest);
    if (sub == QLatin1String("put"))
        return Put(rest);
    if (sub == QLatin1String("list"))
        return List(rest);
    if (sub == QLatin1String("init"))
        return Init(rest);
    if (sub == QLatin1String("watch"))
        return Watch(rest);
    if (sub == QLatin1String("--help") || sub == QLatin1String("-h")) {
        Out(QStringLiteral(
            "Usage: veldiag db init|get|put|list|watch --database URL [options] ...\n"
            "\n"
            "Copies diagrams between files and a configuration table, keyed as the library's\n"
            "table storage keys them (Section = frmMain.<tab>.<name>, Key = DiagramChart, the\n"
            "data in BinData or BinData_<suffix>).\n"
            "\n"
            "  init            create the table (and a SQLite file) if there is none\n"
            "  get NAME OUT    write the stored diagram NAME into the file OUT and print its\n"
            "                  fingerprint\n"
            "  put FILE NAME   store the diagram file FILE as NAME (--if-fingerprint H: only\n"
            "                  over the diagram get printed H for; exit status 3 otherwise)\n"
            "  list            list the diagrams of the tab\n"
            "  watch NAME      print a line each time the stored diagram NAME changes\n"
            "                  (--count N: stop after N changes)\n"
            "\n"
            "'veldiag db <subcommand> --help' describes a subcommand."));
        return kExitOk;
    }
    throw UsageError(
        sub.isEmpty()
            ? QStringLiteral("missing subcommand: init, get, put, list or watch")
            : QStringLiteral("unknown subcommand \"%1\": init, get, put, list or watch").arg(sub));
}

} // namespace veldiag
