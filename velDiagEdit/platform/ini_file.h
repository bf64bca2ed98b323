#pragma once
// An INI-style text file of our own. Qt's QSettings sorts sections by name and merges
// repeated ones; the diagram text form needs them in file order, each as written.
//
// Reading: UTF-8 (a leading byte-order mark is skipped, bytes that are not UTF-8 read as
// U+FFFD); lines end in "\n" or "\r\n". A line whose first non-blank character is "[" opens a
// section named by the text up to the first "]" (or the line's end), trimmed. Every such line
// opens a new section, even when an earlier one has the same name. Inside a section, a line
// "key=value" is one entry (key and value trimmed of blanks); blank lines, lines starting with
// ";" or "#", lines without "=" and lines before the first section are ignored. Keys are
// matched ignoring letter case; the first entry of a key wins.
//
// Writing: UTF-8 without byte-order mark, every line ended by "\n", no blank lines.

#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <utility>
#include <vector>

namespace vde {

class VELDIAGEDIT_EXPORT TIniFile {
public:
    struct TSection {
        QString Name;
        // In file order.
        std::vector<std::pair<QString, QString>> Entries;
        // 1-based line of the section header in the file it was read from (0 when built).
        int Line = 0;
    };

    TIniFile() = default;

    // A missing file reads as empty; a file that exists but cannot be read raises EFOpenError
    // naming the path and the reason.
    static TIniFile LoadFromFile(const QString& FileName);
    static TIniFile FromUtf8(const QByteArray& Text);

    // Section names in file order, repeats included.
    QStringList ReadSections() const;
    int SectionCount() const { return int(FSections.size()); }
    const TSection& Section(int Index) const { return FSections[size_t(Index)]; }
    // "key=value" lines of the section, in file order.
    QStringList ReadSectionValues(int Index) const;
    // The value of the section's first entry whose key equals Key ignoring case; Default when
    // there is none.
    QString ReadString(int Index, const QString& Key, const QString& Default = {}) const;

    // Appends a section (a name already used is not merged) and returns its index.
    int AddSection(const QString& Name);
    void AddValue(int Index, const QString& Key, const QString& Value);

    QByteArray ToUtf8() const;
    // Replaces the file atomically; EFCreateError with the path and the reason on failure.
    void SaveToFile(const QString& FileName) const;

private:
    std::vector<TSection> FSections;
};

// Writes Bytes to FileName atomically (ReplaceFileBytes, platform/stored_bytes.h): a failed or
// interrupted write leaves the old file whole. EFCreateError names the path and the reason.
VELDIAGEDIT_EXPORT void SaveBytesToFile(const QString& FileName, const QByteArray& Bytes);

} // namespace vde
