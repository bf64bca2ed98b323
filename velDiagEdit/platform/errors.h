#pragma once
// Typed errors mirroring the platform's error classes; every one carries a readable message.

#include "velDiagEdit/velDiagEdit_export.h"
#include <QString>
#include <stdexcept>
#include <string>

namespace vde {

class VELDIAGEDIT_EXPORT Exception : public std::runtime_error {
public:
    explicit Exception(const QString& message)
        : std::runtime_error(message.toStdString()), FMessage(message) {}
    const QString& Message() const { return FMessage; }

private:
    QString FMessage;
};

#define VDE_DECLARE_ERROR(Name, Base)                                                              \
    class VELDIAGEDIT_EXPORT Name : public Base {                                                  \
    public:                                                                                        \
        using Base::Base;                                                                          \
    };

VDE_DECLARE_ERROR(EConvertError, Exception)
VDE_DECLARE_ERROR(EStreamError, Exception)
VDE_DECLARE_ERROR(EReadError, EStreamError)
VDE_DECLARE_ERROR(EWriteError, EStreamError)
VDE_DECLARE_ERROR(EFOpenError, EStreamError)
VDE_DECLARE_ERROR(EFCreateError, EStreamError)
VDE_DECLARE_ERROR(EListError, Exception)
VDE_DECLARE_ERROR(EInvalidCast, Exception)
VDE_DECLARE_ERROR(EComponentError, Exception)
VDE_DECLARE_ERROR(EDatabaseError, Exception)
VDE_DECLARE_ERROR(EInvalidOperation, Exception)

#undef VDE_DECLARE_ERROR

// A record that cannot be read: names what was wrong and the byte offset where it was met.
class VELDIAGEDIT_EXPORT EFormatError : public EReadError {
public:
    EFormatError(const QString& what, int64_t offset)
        : EReadError(QStringLiteral("%1 at byte offset %2").arg(what).arg(offset)),
          FOffset(offset) {}
    int64_t Offset() const { return FOffset; }

private:
    int64_t FOffset;
};

// A save refused because the stored diagram is no longer the one that was loaded: someone else
// saved it (or deleted it) in between. Nothing was written. Record names the place (a file, or a
// table record as its key values); the fingerprints are those of platform/stored_bytes.h, the
// empty one meaning nothing stored there.
class VELDIAGEDIT_EXPORT EDiagramConflict : public Exception {
public:
    EDiagramConflict(const QString& message, const QString& record, const QString& expected,
                     const QString& stored)
        : Exception(message), FRecord(record), FExpected(expected), FStored(stored) {}
    const QString& Record() const { return FRecord; }
    // What was loaded from (or last saved to) the record.
    const QString& Expected() const { return FExpected; }
    // What the record held when the save was refused.
    const QString& Stored() const { return FStored; }

private:
    QString FRecord, FExpected, FStored;
};

} // namespace vde
