#include "config_table.h"

#include <velDiagEdit/platform/errors.h>

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

ConfigTable::ConfigTable(const QString& text) : FConnection(QStringLiteral("vde_demo_config")) {
    vde::TDatabaseUrl url = vde::ParseDatabaseUrl(text);
    if (url.TableName.isEmpty())
        url.TableName = QStringLiteral("vde_config");
    QSqlDatabase db = vde::AddDatabase(url, FConnection);
    if (!db.open())
        throw vde::EDatabaseError(
            QStringLiteral("Cannot open %1: %2").arg(text, db.lastError().text()));
    // The host owns the table; the demo makes one of the recommended shape when it is missing.
    const bool sqlite = url.Driver == QLatin1String("QSQLITE");
    const QString table = db.driver()->escapeIdentifier(url.TableName, QSqlDriver::TableName);
    QSqlQuery q(db);
    const auto make = [&](const QString& blobType) {
        return q.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS %1 (\"id\" %2, \"Section\" TEXT "
                                     "NOT NULL, \"Key\" TEXT NOT NULL, \"BinData\" %3, "
                                     "UNIQUE (\"Section\", \"Key\"))")
                          .arg(table,
                               sqlite ? QStringLiteral("INTEGER PRIMARY KEY")
                                      : QStringLiteral("SERIAL PRIMARY KEY"),
                               blobType));
    };
    // lz4 where the server has it: saves cost a fraction of what the default compression costs.
    if (!(sqlite ? make(QStringLiteral("BLOB"))
                 : make(QStringLiteral("BYTEA COMPRESSION lz4")) || make(QStringLiteral("BYTEA"))))
        throw vde::EDatabaseError(QStringLiteral("Cannot make the table %1: %2")
                                      .arg(url.TableName, q.lastError().text()));
    FWhere = QStringLiteral("table %1 of %2").arg(url.TableName, url.DatabaseName);
    FData = std::make_unique<vde::TDataSet>(FConnection, url.TableName);
}

ConfigTable::~ConfigTable() {
    FData.reset();
    QSqlDatabase::database(FConnection, false).close();
    QSqlDatabase::removeDatabase(FConnection);
}
