#pragma once
// Stored bytes as several writers see them: a fingerprint that tells whether the bytes in a file
// or a record are still the ones a reader saw, and a file write that replaces the file only when
// it still holds what was seen.
//
// A fingerprint is the SHA-256 of the bytes in lower-case hex (64 characters). No bytes at all
// (a missing file, an empty file, a record with an empty or null blob, no record) have the empty
// fingerprint: "nothing stored".

#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QString>
#include <cstdint>

namespace vde {

VELDIAGEDIT_EXPORT QString ContentFingerprint(const void* Data, int64_t Size);
VELDIAGEDIT_EXPORT QString ContentFingerprint(const QByteArray& Bytes);
// The fingerprint of what the file holds now; empty for a missing or empty file. EFOpenError for
// a file that exists but cannot be read.
VELDIAGEDIT_EXPORT QString FileFingerprint(const QString& FileName);
// The first characters of a fingerprint for messages ("nothing stored" for the empty one).
VELDIAGEDIT_EXPORT QString ShortFingerprint(const QString& Fingerprint);

// Replaces what FileName holds by Bytes in one step: the bytes go to a file without a name in the
// same folder, which is synced, linked as "<file>.vde-save-XXXXXX" and renamed over the file,
// keeping its permissions. A failed or interrupted write leaves the old file whole. Only a
// process killed between the link and the rename (microseconds) leaves the linked file behind;
// RemoveStaleSaves removes such files, and every replace and conditional write of the file
// calls it first. EFCreateError when the file cannot be written (the same messages as the
// platform's other file writers). Where files without a name are not available, a named
// temporary file is written instead.
VELDIAGEDIT_EXPORT void ReplaceFileBytes(const QString& FileName, const QByteArray& Bytes);
// Removes the "<file>.vde-save-XXXXXX" files beside FileName whose writer is gone (a live
// writer holds a lock on its file); gives how many went.
VELDIAGEDIT_EXPORT int RemoveStaleSaves(const QString& FileName);

// What a conditional write found and did.
struct TConditionalWrite {
    bool Written = false;
    // The fingerprint of what was stored when the write was decided (before it).
    QString Found;
};

// Writes Bytes to FileName as ReplaceFileBytes does. The file's fingerprint is compared
// with Expected just before the rename, while a lock on the file's folder keeps every other
// conditional writer of that folder out: when they differ nothing is written. EFCreateError when
// the file cannot be written or the lock cannot be had within 10 s.
VELDIAGEDIT_EXPORT TConditionalWrite WriteFileIfUnchanged(const QString& FileName,
                                                          const QByteArray& Bytes,
                                                          const QString& Expected);

} // namespace vde
