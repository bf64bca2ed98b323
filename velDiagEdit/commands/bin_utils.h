#pragma once
// Moves raw bytes between a dataset field and memory, as a byte array or a stream, optionally
// first finding (or appending) the record that key fields and key values name. The bytes are
// stored exactly as handed in: no header, length prefix, chunking or compression.
//
// Key fields: field names separated by ";" ("Section;Key"). Key values: the values in the same
// order separated by "|"; each is compared and stored as a string. The field's own dataset is the
// table worked on. Results are byte counts, -1 meaning that nothing was done. Errors of the
// dataset (closed dataset, unknown field, failed post) pass through as EDatabaseError; a write
// that fails leaves the dataset in browse state with the record's old bytes.

#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QString>
#include <QVariant>
#include <cstdint>
#include <vector>

namespace vde {

using TBytes = std::vector<uint8_t>;

// The blob's bytes into `data` (left untouched for an empty blob); -1 for no field, a non-blob
// field or a null blob.
VELDIAGEDIT_EXPORT int32_t ReadBlobData(TField* field, TBytes& data);
// Replaces the blob of the current record with `data` and posts (an empty array stores an empty,
// non-null blob); a pending edit or insert is posted first. -1 for no field or a non-blob field.
VELDIAGEDIT_EXPORT int32_t WriteBlobData(TField* field, const TBytes& data);

// On the record the keys name (appended when missing): asBlob reads the blob as ReadBlobData; a
// fixed-size field is read in native format into an array of its DataSize.
VELDIAGEDIT_EXPORT int32_t ReadDataToArray(TField* field, TBytes& data, const QString& keyFields,
                                           const QString& keyValues, bool asBlob);
// On the record the keys name (appended when missing): asBlob writes as WriteBlobData; otherwise
// the array is stored as the field's value in native format and posted.
VELDIAGEDIT_EXPORT int32_t WriteDataFromArray(TField* field, const TBytes& data,
                                              const QString& keyFields, const QString& keyValues,
                                              bool asBlob);
VELDIAGEDIT_EXPORT void ReadDataToStream(TField* field, TStream* stream, const QString& keyFields,
                                         const QString& keyValues);
VELDIAGEDIT_EXPORT void WriteDataFromStream(TField* field, TStream* stream,
                                            const QString& keyFields, const QString& keyValues);

// The routines under the keyed variants.

// Locates the record whose key fields hold the "|"-separated values, appending (and posting) it
// when there is none; `located` receives the values as string variants.
VELDIAGEDIT_EXPORT void LocateOrAppendRecord(TDataSet* dataSet, const QString& keyFields,
                                             const QString& keyValues, QVariantList& located);
// Replaces the stream's contents with the blob's bytes, ending after them; a blob of 0 bytes
// leaves the stream as it was. -1 for no stream, no field or a non-blob field.
VELDIAGEDIT_EXPORT int32_t ReadBlobToStream(TField* field, TStream* stream);
// Replaces the blob with the source stream's bytes from its current position and posts. -1 (and
// nothing changed) for no stream, no field or a non-blob field.
VELDIAGEDIT_EXPORT int32_t WriteBlobFromStream(TField* field, TStream* stream);

} // namespace vde
