#include "velDiagEdit/simulation/stimuli.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <algorithm>
#include <cmath>

namespace vde {

namespace {

bool IsBlank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('_');
}

// A whole number from Text[from, to) without sign, at most kMaxSimSteps; -1 when it is not one.
int64_t ReadCount(const QString& Text, qsizetype from, qsizetype to) {
    if (from >= to)
        return -1;
    int64_t v = 0;
    for (qsizetype i = from; i < to; ++i) {
        const QChar c = Text.at(i);
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return -1;
        v = v * 10 + (c.unicode() - '0');
        if (v > kMaxSimSteps)
            return -1;
    }
    return v;
}

class WaveformReader {
public:
    WaveformReader(const QString& text, int line, int column)
        : T(text), FLine(line), FColumn(column) {}

    [[noreturn]] void Fail(const QString& what, qsizetype at) const {
        throw EStimulusError(what, FLine, FColumn + int(at));
    }

    qsizetype SkipSpaces(qsizetype i, qsizetype end) const {
        while (i < end && T.at(i).isSpace())
            ++i;
        return i;
    }
    qsizetype TrimEnd(qsizetype from, qsizetype end) const {
        while (end > from && T.at(end - 1).isSpace())
            --end;
        return end;
    }

    const QString& T;
    int FLine;
    int FColumn;
};

} // namespace

TSimWaveform TSimWaveform::Constant(bool Value) {
    TSimWaveform w;
    w.FKind = wkConstant;
    w.FConstant = Value;
    return w;
}

TSimWaveform TSimWaveform::Clock(int64_t Period) {
    if (Period < 2 || Period > kMaxSimSteps)
        throw EConvertError(QStringLiteral("A clock period must be from 2 to %1 steps, not %2")
                                .arg(kMaxSimSteps)
                                .arg(Period));
    TSimWaveform w;
    w.FKind = wkClock;
    w.FPeriod = Period;
    return w;
}

TSimWaveform TSimWaveform::Changes(const std::vector<std::pair<int64_t, bool>>& Changes) {
    for (size_t i = 0; i < Changes.size(); ++i) {
        if (Changes[i].first < 0 || Changes[i].first > kMaxSimSteps)
            throw EConvertError(QStringLiteral("A change at step %1 is outside 0..%2")
                                    .arg(Changes[i].first)
                                    .arg(kMaxSimSteps));
        if (i > 0 && Changes[i].first <= Changes[i - 1].first)
            throw EConvertError(QStringLiteral("The change at step %1 does not come after step %2")
                                    .arg(Changes[i].first)
                                    .arg(Changes[i - 1].first));
    }
    TSimWaveform w;
    w.FKind = wkChanges;
    w.FChanges = Changes;
    return w;
}

TSimWaveform TSimWaveform::Parse(const QString& Text, int Line, int Column) {
    const WaveformReader r(Text, Line, Column);
    const qsizetype n = Text.size();
    const qsizetype first = r.SkipSpaces(0, n);
    const qsizetype last = r.TrimEnd(first, n);
    if (first == last)
        r.Fail(QStringLiteral("An empty waveform: give bits (\"0011\"), a clock (\"clock 4\") or "
                              "changes (\"0, 1@8\")"),
               first);

    // "clock P"
    if (Text.mid(first, 5).compare(QLatin1String("clock"), Qt::CaseInsensitive) == 0) {
        const qsizetype num = r.SkipSpaces(first + 5, last);
        if (num == first + 5)
            r.Fail(QStringLiteral("\"clock\" needs its period in steps after a space"), num);
        const int64_t period = ReadCount(Text, num, last);
        if (period < 2)
            r.Fail(QStringLiteral("A clock period must be a whole number of steps from 2 to %1")
                       .arg(kMaxSimSteps),
                   num);
        return Clock(period);
    }

    // "v, v@step, ..."
    if (Text.indexOf(QLatin1Char('@')) >= 0 || Text.indexOf(QLatin1Char(',')) >= 0) {
        std::vector<std::pair<int64_t, bool>> changes;
        qsizetype pos = first;
        while (pos <= last) {
            qsizetype comma = Text.indexOf(QLatin1Char(','), pos);
            if (comma < 0 || comma > last)
                comma = last;
            const qsizetype a = r.SkipSpaces(pos, comma);
            const qsizetype b = r.TrimEnd(a, comma);
            if (a == b)
                r.Fail(QStringLiteral("An empty change: each change is 0 or 1, then @ and a step"),
                       a);
            const QChar v = Text.at(a);
            if (v != QLatin1Char('0') && v != QLatin1Char('1'))
                r.Fail(QStringLiteral("A change's value must be 0 or 1"), a);
            int64_t step = 0;
            const qsizetype at = r.SkipSpaces(a + 1, b);
            if (at == b) {
                if (!changes.empty())
                    r.Fail(QStringLiteral("Only the first change may leave out its step "
                                          "(write %1@step)")
                               .arg(v),
                           a);
            } else {
                if (Text.at(at) != QLatin1Char('@'))
                    r.Fail(QStringLiteral("Expected @ and a step after the value"), at);
                const qsizetype num = r.SkipSpaces(at + 1, b);
                step = ReadCount(Text, num, b);
                if (step < 0)
                    r.Fail(QStringLiteral("A step must be a whole number from 0 to %1")
                               .arg(kMaxSimSteps),
                           num);
                if (!changes.empty() && step <= changes.back().first)
                    r.Fail(QStringLiteral("Step %1 does not come after step %2")
                               .arg(step)
                               .arg(changes.back().first),
                           num);
            }
            changes.emplace_back(step, v == QLatin1Char('1'));
            pos = comma + 1;
        }
        TSimWaveform w;
        w.FKind = wkChanges;
        w.FChanges = std::move(changes);
        return w;
    }

    // Bits, one per step; spaces and underscores only group them.
    TSimWaveform w;
    w.FKind = wkBits;
    for (qsizetype i = first; i < last; ++i) {
        const QChar c = Text.at(i);
        if (c == QLatin1Char('0') || c == QLatin1Char('1'))
            w.FBits.push_back(c == QLatin1Char('1') ? 1 : 0);
        else if (!IsBlank(c))
            r.Fail(
                QStringLiteral("Unexpected \"%1\": a bit string has only 0, 1 and spaces").arg(c),
                i);
        if (int64_t(w.FBits.size()) > kMaxSimSteps)
            r.Fail(QStringLiteral("A bit string longer than %1 steps").arg(kMaxSimSteps), i);
    }
    return w;
}

bool TSimWaveform::ValueAt(int64_t Step) const {
    if (Step < 0)
        return false;
    switch (FKind) {
    case wkConstant:
        return FConstant;
    case wkBits:
        if (FBits.empty())
            return false;
        return FBits[size_t(std::min<int64_t>(Step, int64_t(FBits.size()) - 1))] != 0;
    case wkClock:
        return Step % FPeriod >= FPeriod - FPeriod / 2;
    case wkChanges: {
        auto it = std::upper_bound(
            FChanges.begin(), FChanges.end(), Step,
            [](int64_t s, const std::pair<int64_t, bool>& c) { return s < c.first; });
        if (it == FChanges.begin())
            return false;
        return std::prev(it)->second;
    }
    }
    return false;
}

QString TSimWaveform::Text() const {
    switch (FKind) {
    case wkConstant:
        return FConstant ? QStringLiteral("1") : QStringLiteral("0");
    case wkBits: {
        QString s;
        for (size_t i = 0; i < FBits.size(); ++i) {
            if (i > 0 && i % 4 == 0)
                s += QLatin1Char(' ');
            s += FBits[i] ? QLatin1Char('1') : QLatin1Char('0');
        }
        return s;
    }
    case wkClock:
        return QStringLiteral("clock %1").arg(FPeriod);
    case wkChanges: {
        QStringList parts;
        for (const auto& [step, v] : FChanges)
            parts << QStringLiteral("%1@%2").arg(v ? 1 : 0).arg(step);
        return parts.isEmpty() ? QStringLiteral("0") : parts.join(QStringLiteral(", "));
    }
    }
    return {};
}

// --- stimuli files

namespace {

// Line and column (from 1) of a byte offset in UTF-8 text; columns count characters.
std::pair<int, int> LineColumn(const QByteArray& b, qsizetype offset) {
    int line = 1, column = 1;
    offset = std::clamp<qsizetype>(offset, 0, b.size());
    for (qsizetype i = 0; i < offset; ++i) {
        const auto c = uint8_t(b.at(i));
        if (c == '\n') {
            ++line;
            column = 1;
        } else if ((c & 0xC0) != 0x80) {
            ++column;
        }
    }
    return {line, column};
}

// Finds where the members of the top object and of its "signals" object stand in the text,
// which QJsonDocument has already accepted as JSON, so that shape errors can be placed.
class PositionScan {
public:
    explicit PositionScan(const QByteArray& b) : B(b) {}

    struct Member {
        QString Key;
        qsizetype KeyAt = 0;
        qsizetype ValueAt = 0;
    };
    std::vector<Member> Top;
    std::vector<Member> Signals;
    qsizetype RootAt = 0;

    void Run() {
        Spaces();
        RootAt = I;
        if (Peek() != '{')
            return;
        Object(Top, true);
    }

private:
    char Peek() const { return I < B.size() ? B.at(I) : '\0'; }
    void Spaces() {
        while (I < B.size() &&
               (B.at(I) == ' ' || B.at(I) == '\t' || B.at(I) == '\n' || B.at(I) == '\r'))
            ++I;
    }
    QString String() {
        const qsizetype start = I;
        ++I; // opening quote
        while (I < B.size() && B.at(I) != '"') {
            if (B.at(I) == '\\')
                ++I;
            ++I;
        }
        ++I; // closing quote
        const QByteArray wrapped = '[' + B.mid(start, I - start) + ']';
        return QJsonDocument::fromJson(wrapped).array().at(0).toString();
    }
    void SkipValue() {
        if (Peek() == '"') {
            String();
            return;
        }
        int depth = 0;
        while (I < B.size()) {
            const char c = B.at(I);
            if (c == '"') {
                String();
                continue;
            }
            if (c == '{' || c == '[')
                ++depth;
            else if (c == '}' || c == ']') {
                if (depth == 0)
                    return;
                --depth;
                if (depth == 0) {
                    ++I;
                    return;
                }
            } else if (depth == 0 && (c == ',')) {
                return;
            }
            ++I;
        }
    }
    void Object(std::vector<Member>& into, bool top) {
        ++I; // {
        for (;;) {
            Spaces();
            if (Peek() == '}' || I >= B.size()) {
                ++I;
                return;
            }
            Member m;
            m.KeyAt = I;
            m.Key = String();
            Spaces();
            ++I; // :
            Spaces();
            m.ValueAt = I;
            if (top && m.Key == QLatin1String("signals") && Peek() == '{') {
                Signals.clear();
                Object(Signals, false);
            } else {
                SkipValue();
            }
            into.push_back(m);
            Spaces();
            if (Peek() == ',')
                ++I;
        }
    }

    const QByteArray& B;
    qsizetype I = 0;
};

[[noreturn]] void FailAt(const QByteArray& json, qsizetype offset, const QString& what) {
    const auto [line, column] = LineColumn(json, offset);
    throw EStimulusError(what, line, column);
}

} // namespace

TSimStimuli TSimStimuli::ParseJson(const QByteArray& Json) {
    QJsonParseError err;
    const QJsonDocument doc = QJsonDocument::fromJson(Json, &err);
    if (err.error != QJsonParseError::NoError)
        FailAt(Json, err.offset, QStringLiteral("Malformed JSON: %1").arg(err.errorString()));
    PositionScan scan(Json);
    scan.Run();
    if (!doc.isObject())
        FailAt(Json, scan.RootAt,
               QStringLiteral("A stimuli file is one object: {\"steps\": N, \"signals\": {...}}"));

    TSimStimuli result;
    for (size_t i = 0; i < scan.Top.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (scan.Top[j].Key == scan.Top[i].Key)
                FailAt(Json, scan.Top[i].KeyAt,
                       QStringLiteral("Key \"%1\" is given twice").arg(scan.Top[i].Key));
    for (const PositionScan::Member& m : scan.Top) {
        if (m.Key == QLatin1String("steps")) {
            const QJsonValue v = doc.object().value(m.Key);
            const double d = v.toDouble(-1);
            if (!v.isDouble() || d < 0 || d > double(kMaxSimSteps) || std::floor(d) != d)
                FailAt(Json, m.ValueAt,
                       QStringLiteral("\"steps\" must be a whole number from 0 to %1")
                           .arg(kMaxSimSteps));
            result.Steps = int64_t(d);
        } else if (m.Key == QLatin1String("signals")) {
            if (!doc.object().value(m.Key).isObject())
                FailAt(Json, m.ValueAt,
                       QStringLiteral("\"signals\" must be an object of source names and "
                                      "waveforms"));
        } else {
            FailAt(Json, m.KeyAt,
                   QStringLiteral("Unknown key \"%1\" (a stimuli file has \"steps\" and "
                                  "\"signals\")")
                       .arg(m.Key));
        }
    }
    for (size_t i = 0; i < scan.Signals.size(); ++i) {
        const PositionScan::Member& m = scan.Signals[i];
        for (size_t j = 0; j < i; ++j)
            if (scan.Signals[j].Key == m.Key)
                FailAt(Json, m.KeyAt, QStringLiteral("Signal \"%1\" is given twice").arg(m.Key));
        // Duplicate keys were refused above, so the object holds this member's own value.
        const QJsonValue v = doc.object().value(QStringLiteral("signals")).toObject().value(m.Key);
        if (!v.isString())
            FailAt(Json, m.ValueAt,
                   QStringLiteral("The waveform of \"%1\" must be a string").arg(m.Key));
        const auto [line, column] = LineColumn(Json, m.ValueAt);
        // Column + 1: the waveform's text starts after the opening quote.
        result.Signals[m.Key] = TSimWaveform::Parse(v.toString(), line, column + 1);
    }
    return result;
}

TSimStimuli TSimStimuli::LoadFromFile(const QString& FileName) {
    constexpr qint64 kMaxBytes = qint64(16) << 20;
    QFile f(FileName);
    if (!f.open(QIODevice::ReadOnly))
        throw EFOpenError(
            QStringLiteral("Cannot open stimuli file \"%1\": %2").arg(FileName, f.errorString()));
    if (f.size() > kMaxBytes)
        throw EReadError(QStringLiteral("Stimuli file \"%1\" is larger than %2 bytes")
                             .arg(FileName)
                             .arg(kMaxBytes));
    const QByteArray bytes = f.read(kMaxBytes + 1);
    if (bytes.size() > kMaxBytes)
        throw EReadError(QStringLiteral("Stimuli file \"%1\" is larger than %2 bytes")
                             .arg(FileName)
                             .arg(kMaxBytes));
    try {
        return ParseJson(bytes);
    } catch (const EStimulusError& e) {
        throw EStimulusError(QStringLiteral("%1: %2").arg(FileName, e.What()), e.Line(),
                             e.Column());
    }
}

} // namespace vde
