#include "velDiagEdit/platform/ini_file.h"

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/stored_bytes.h"

#include <QFile>

namespace vde {

namespace {

bool IsBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

QString TrimBlanks(QStringView s) {
    qsizetype b = 0, e = s.size();
    while (b < e && IsBlank(s[b]))
        ++b;
    while (e > b && IsBlank(s[e - 1]))
        --e;
    return s.mid(b, e - b).toString();
}

} // namespace

TIniFile TIniFile::LoadFromFile(const QString& FileName) {
    // What a writer killed in the middle of a save left beside the file goes first.
    RemoveStaleSaves(FileName);
    QFile f(FileName);
    if (!f.exists())
        return {};
    if (!f.open(QIODevice::ReadOnly))
        throw EFOpenError(
            QStringLiteral("Cannot open file \"%1\": %2").arg(FileName, f.errorString()));
    return FromUtf8(f.readAll());
}

TIniFile TIniFile::FromUtf8(const QByteArray& Text) {
    TIniFile ini;
    QByteArrayView bytes(Text);
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes = bytes.sliced(3);
    const QString text = QString::fromUtf8(bytes);
    int lineNo = 0;
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype end = text.indexOf(QLatin1Char('\n'), start);
        if (end < 0)
            end = text.size();
        QStringView line = QStringView(text).mid(start, end - start);
        start = end + 1;
        ++lineNo;
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        qsizetype first = 0;
        while (first < line.size() && IsBlank(line[first]))
            ++first;
        if (first == line.size())
            continue;
        const QChar lead = line[first];
        if (lead == QLatin1Char('[')) {
            QStringView name = line.mid(first + 1);
            const qsizetype close = name.indexOf(QLatin1Char(']'));
            if (close >= 0)
                name = name.left(close);
            ini.FSections.push_back({TrimBlanks(name), {}, lineNo});
            continue;
        }
        if (lead == QLatin1Char(';') || lead == QLatin1Char('#') || ini.FSections.empty())
            continue;
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        ini.FSections.back().Entries.emplace_back(TrimBlanks(line.left(eq)),
                                                  TrimBlanks(line.mid(eq + 1)));
    }
    return ini;
}

QStringList TIniFile::ReadSections() const {
    QStringList names;
    names.reserve(qsizetype(FSections.size()));
    for (const TSection& s : FSections)
        names << s.Name;
    return names;
}

QStringList TIniFile::ReadSectionValues(int Index) const {
    QStringList lines;
    for (const auto& [key, value] : Section(Index).Entries)
        lines << key + QLatin1Char('=') + value;
    return lines;
}

QString TIniFile::ReadString(int Index, const QString& Key, const QString& Default) const {
    for (const auto& [key, value] : Section(Index).Entries)
        if (key.compare(Key, Qt::CaseInsensitive) == 0)
            return value;
    return Default;
}

int TIniFile::AddSection(const QString& Name) {
    FSections.push_back({Name, {}, 0});
    return int(FSections.size()) - 1;
}

void TIniFile::AddValue(int Index, const QString& Key, const QString& Value) {
    FSections[size_t(Index)].Entries.emplace_back(Key, Value);
}

QByteArray TIniFile::ToUtf8() const {
    QString text;
    for (const TSection& s : FSections) {
        text += QLatin1Char('[') + s.Name + QLatin1String("]\n");
        for (const auto& [key, value] : s.Entries)
            text += key + QLatin1Char('=') + value + QLatin1Char('\n');
    }
    return text.toUtf8();
}

void TIniFile::SaveToFile(const QString& FileName) const {
    SaveBytesToFile(FileName, ToUtf8());
}

void SaveBytesToFile(const QString& FileName, const QByteArray& Bytes) {
    ReplaceFileBytes(FileName, Bytes);
}

} // namespace vde
