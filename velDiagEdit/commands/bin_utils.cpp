#include "velDiagEdit/commands/bin_utils.h"

#include "velDiagEdit/platform/errors.h"

#include <QStringList>
#include <limits>

namespace vde {

namespace {

int32_t ByteCount(int64_t n) {
    if (n > std::numeric_limits<int32_t>::max())
        throw EDatabaseError(
            QStringLiteral("%1 bytes are more than a blob transfer can count").arg(n));
    return static_cast<int32_t>(n);
}

// A pending edit or insert is posted, then the current record is put in edit state.
void StartWrite(TDataSet* ds) {
    if (ds->State() == dsEdit || ds->State() == dsInsert)
        ds->Post();
    ds->Edit();
}

// Runs a write; if it fails, the dataset drops the unposted change, so that the record keeps its
// old bytes and no later call posts a half-made value by accident.
template <class F> auto Guarded(TDataSet* ds, F&& write) {
    try {
        return write();
    } catch (...) {
        ds->Cancel();
        throw;
    }
}

// The keyed variants' common start: the record of the keys is current, or False.
bool GoToKeyedRecord(TDataSet* ds, const QString& keyFields, const QString& keyValues) {
    QVariantList located;
    LocateOrAppendRecord(ds, keyFields, keyValues, located);
    return ds->Locate(keyFields, located);
}

} // namespace

int32_t ReadBlobData(TField* field, TBytes& data) {
    if (!field || !field->IsBlob() || field->IsNull())
        return -1;
    auto blob = field->DataSet()->CreateBlobStream(field, bmRead);
    const int32_t n = ByteCount(blob->Size());
    if (n > 0) {
        data.resize(size_t(n));
        blob->ReadBuffer(data.data(), n);
    }
    return n;
}

int32_t WriteBlobData(TField* field, const TBytes& data) {
    if (!field || !field->IsBlob())
        return -1;
    TDataSet* ds = field->DataSet();
    StartWrite(ds);
    return Guarded(ds, [&] {
        int32_t result = 0;
        {
            auto blob = ds->CreateBlobStream(field, bmWrite);
            if (!data.empty()) {
                blob->WriteBuffer(data.data(), int64_t(data.size()));
                result = ByteCount(int64_t(data.size()));
            }
        }
        ds->Post();
        return result;
    });
}

int32_t ReadBlobToStream(TField* field, TStream* stream) {
    if (!stream || !field || !field->IsBlob())
        return -1;
    auto blob = field->DataSet()->CreateBlobStream(field, bmRead);
    const int32_t n = ByteCount(blob->Size());
    if (n > 0) {
        stream->SetSize(0);
        stream->CopyFrom(*blob, n);
    }
    return n;
}

int32_t WriteBlobFromStream(TField* field, TStream* stream) {
    if (!stream || !field || !field->IsBlob())
        return -1;
    TDataSet* ds = field->DataSet();
    StartWrite(ds);
    return Guarded(ds, [&] {
        int32_t n = 0;
        {
            auto blob = ds->CreateBlobStream(field, bmWrite);
            n = ByteCount(stream->Size());
            if (n > 0) {
                blob->SetSize(0);
                blob->CopyFrom(*stream, n);
            }
        }
        ds->Post();
        return n;
    });
}

void LocateOrAppendRecord(TDataSet* dataSet, const QString& keyFields, const QString& keyValues,
                          QVariantList& located) {
    const QStringList values = keyValues.split(QLatin1Char('|'));
    located.clear();
    for (const QString& v : values)
        located.append(QVariant(v));
    if (dataSet->Locate(keyFields, located))
        return;
    const QStringList names = keyFields.split(QLatin1Char(';'));
    dataSet->Append();
    Guarded(dataSet, [&] {
        // Locate has already refused fewer values than key fields.
        for (qsizetype i = 0; i < names.size(); ++i)
            dataSet->SetFieldValue(names[i], QVariant(values[i]));
        dataSet->Post();
        return 0;
    });
    dataSet->Refresh();
}

int32_t ReadDataToArray(TField* field, TBytes& data, const QString& keyFields,
                        const QString& keyValues, bool asBlob) {
    if (!field)
        return -1;
    TDataSet* ds = field->DataSet();
    if (!GoToKeyedRecord(ds, keyFields, keyValues))
        return -1;
    if (asBlob)
        return ReadBlobData(field, data);
    data.resize(size_t(field->DataSize()));
    field->GetData(data.data(), int64_t(data.size()));
    return ByteCount(int64_t(data.size()));
}

int32_t WriteDataFromArray(TField* field, const TBytes& data, const QString& keyFields,
                           const QString& keyValues, bool asBlob) {
    if (!field)
        return -1;
    TDataSet* ds = field->DataSet();
    if (!GoToKeyedRecord(ds, keyFields, keyValues))
        return -1;
    if (asBlob)
        return WriteBlobData(field, data);
    ds->Edit();
    return Guarded(ds, [&] {
        // An empty array still stores a value (empty text), never null.
        static const uint8_t none = 0;
        field->SetData(data.empty() ? &none : data.data(), int64_t(data.size()));
        ds->Post();
        return ByteCount(int64_t(data.size()));
    });
}

void ReadDataToStream(TField* field, TStream* stream, const QString& keyFields,
                      const QString& keyValues) {
    if (!field)
        return;
    TDataSet* ds = field->DataSet();
    if (!GoToKeyedRecord(ds, keyFields, keyValues))
        return;
    ReadBlobToStream(field, stream);
}

void WriteDataFromStream(TField* field, TStream* stream, const QString& keyFields,
                         const QString& keyValues) {
    if (!field)
        return;
    TDataSet* ds = field->DataSet();
    if (!GoToKeyedRecord(ds, keyFields, keyValues))
        return;
    WriteBlobFromStream(field, stream);
}

} // namespace vde
