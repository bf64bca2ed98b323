#pragma once
// Where the storage process tests keep the diagram "Chart": files beside a program folder, a
// text file, a SQLite file or a PostgreSQL table; and how a test reads it without the hosts.

#include "common/db_test_util.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <memory>
#include <ostream>
#include <string>

namespace vde::test {

enum class Medium { File, Text, SQLite, PostgreSQL };

inline std::string NameOf(Medium m) {
    switch (m) {
    case Medium::File:
        return "File";
    case Medium::Text:
        return "TextFile";
    case Medium::SQLite:
        return "SQLite";
    case Medium::PostgreSQL:
        return "PostgreSQL";
    }
    return "?";
}

inline void PrintTo(Medium m, std::ostream* os) {
    *os << NameOf(m);
}

struct MediumName {
    template <class Info> std::string operator()(const Info& info) const {
        return NameOf(info.param);
    }
};

inline QByteArray ReadFile(const QString& name) {
    QFile f(name);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Where the hosts keep the diagram, and how the test reads it without them.
class Storage {
public:
    Storage(Medium m, const QString& dir) : FMedium(m), FDir(dir) {
        if (m == Medium::SQLite) {
            FConnection = QStringLiteral("driver_sqlite_%1").arg(quintptr(this));
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), FConnection);
            db.setDatabaseName(dir + QStringLiteral("/config.db"));
            if (!db.open())
                FError = db.lastError().text();
            FTable = QStringLiteral("Config");
            Exec(QStringLiteral("CREATE TABLE \"Config\" (\"id\" INTEGER PRIMARY KEY, "
                                "\"Section\" TEXT NOT NULL, \"Key\" TEXT NOT NULL, "
                                "\"BinData\" BLOB, UNIQUE (\"Section\", \"Key\"))"));
            FUrl = QStringLiteral("sqlite:%1/config.db?table=Config").arg(dir);
        } else if (m == Medium::PostgreSQL) {
            FDb = std::make_unique<TestDatabase>(DbKind::PostgreSQL);
            FError = FDb->Error();
            if (!FError.isEmpty())
                return;
            FConnection = FDb->ConnectionName();
            FTable = FDb->NewTableName(QStringLiteral("Config"));
            FDb->CreateConfigTable(FTable, QStringLiteral("\"BinData\" BYTEA, UNIQUE "
                                                          "(\"Section\", \"Key\")"));
            FUrl = qEnvironmentVariable("VDE_PG_URL") + QStringLiteral("?table=") + FTable;
        }
    }
    ~Storage() {
        if (FMedium == Medium::SQLite) {
            QSqlDatabase::database(FConnection, false).close();
            QSqlDatabase::removeDatabase(FConnection);
        }
    }
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    const QString& Error() const { return FError; }
    const QString& Url() const { return FUrl; }
    bool IsTable() const { return FMedium == Medium::SQLite || FMedium == Medium::PostgreSQL; }

    // The host's options for this storage.
    QStringList Args() const {
        QStringList a{QStringLiteral("--medium")};
        switch (FMedium) {
        case Medium::File:
            return a << QStringLiteral("file") << QStringLiteral("--dir") << FDir;
        case Medium::Text:
            return a << QStringLiteral("text") << QStringLiteral("--dir") << FDir;
        case Medium::SQLite:
            return a << QStringLiteral("sqlite") << QStringLiteral("--database") << FUrl;
        case Medium::PostgreSQL:
            return a << QStringLiteral("postgresql") << QStringLiteral("--database") << FUrl;
        }
        return a;
    }

    // The stored diagram `name`, empty when there is none.
    QByteArray Stored(const QString& name = QStringLiteral("Chart")) const {
        if (FMedium == Medium::File)
            return ReadFile(FDir + QLatin1Char('/') + name + QStringLiteral(".dgm"));
        if (FMedium == Medium::Text)
            return ReadFile(FDir + QLatin1Char('/') + name + QStringLiteral(".txt"));
        QSqlQuery q(QSqlDatabase::database(FConnection));
        q.prepare(QStringLiteral("SELECT \"BinData\" FROM \"%1\" WHERE \"Section\" = ? AND "
                                 "\"Key\" = 'DiagramChart'")
                      .arg(FTable));
        q.addBindValue(QStringLiteral("frmMain.frmConfig.") + name);
        if (!q.exec())
            return QByteArray("query failed: ") + q.lastError().text().toUtf8();
        return q.next() ? q.value(0).toByteArray() : QByteArray();
    }

    // SQLite's own rollback journal can outlive a killed writer when its transaction had
    // committed but the journal was not yet deleted (a zeroed header, so no reader rolls it
    // back); the next write removes it.
    void WriteOnce() {
        if (FMedium == Medium::SQLite)
            Exec(QStringLiteral("UPDATE \"Config\" SET \"Key\" = \"Key\""));
    }

    // Every file in the folder the diagram is kept in.
    QStringList Files() const {
        return QDir(FDir).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

private:
    void Exec(const QString& sql) {
        QSqlQuery q(QSqlDatabase::database(FConnection));
        if (!q.exec(sql))
            FError = q.lastError().text();
    }

    Medium FMedium;
    QString FDir, FUrl, FTable, FConnection, FError;
    std::unique_ptr<TestDatabase> FDb;
};

inline QString Word(const QString& line, int i) {
    return line.split(QLatin1Char(' ')).value(i);
}

} // namespace vde::test
