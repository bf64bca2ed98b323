#pragma once
// The demo host's configuration table for --database: the connection set up from the URL, the
// table made when it is missing, and the dataset over it.

#include <velDiagEdit/platform/dataset.h>

#include <QString>
#include <memory>

class ConfigTable {
public:
    // url: sqlite:PATH or postgresql://USER@HOST:PORT/DB, optionally with ?table=NAME
    // ("vde_config" when none is named). Raises vde::EDatabaseError when it cannot be used.
    explicit ConfigTable(const QString& url);
    ~ConfigTable();
    ConfigTable(const ConfigTable&) = delete;
    ConfigTable& operator=(const ConfigTable&) = delete;

    vde::TDataSet* DataSet() const { return FData.get(); }
    // "table NAME of DATABASE", for messages.
    const QString& Where() const { return FWhere; }

private:
    QString FConnection;
    QString FWhere;
    std::unique_ptr<vde::TDataSet> FData;
};
