#include "velDiagEdit/simulation/vcd.h"

#include <QSet>
#include <algorithm>

namespace vde {

namespace {

// Identifier codes: printable characters ! .. ~ as digits of a base-94 number.
QByteArray Code(size_t i) {
    QByteArray s;
    do {
        s.append(char('!' + i % 94));
        i /= 94;
    } while (i > 0);
    return s;
}

QByteArray Identifier(const QString& name) {
    QString s;
    for (QChar c : name)
        s += (c.isSpace() || c.unicode() < 33 || c.unicode() == 127) ? QLatin1Char('_') : c;
    if (s.isEmpty())
        s = QStringLiteral("_");
    return s.toUtf8();
}

} // namespace

QByteArray SimRecordToVcd(const TSimRecord& Record, const QString& Scope) {
    QByteArray out;
    out += "$version velDiagEdit simulation $end\n";
    out += "$timescale 1ns $end\n";
    out += "$scope module " + Identifier(Scope) + " $end\n";
    QSet<QByteArray> used;
    std::vector<QByteArray> codes;
    for (size_t i = 0; i < Record.Traces.size(); ++i) {
        const QByteArray base = Identifier(Record.Traces[i].Name);
        QByteArray name = base;
        for (int n = 2; used.contains(name); ++n)
            name = base + '_' + QByteArray::number(n);
        used.insert(name);
        codes.push_back(Code(i));
        out += "$var wire 1 " + codes.back() + ' ' + name + " $end\n";
    }
    out += "$upscope $end\n";
    out += "$enddefinitions $end\n";
    out += "#0\n$dumpvars\n";
    for (size_t i = 0; i < Record.Traces.size(); ++i)
        out += (Record.Traces[i].ValueAt(0) ? '1' : '0') + codes[i] + '\n';
    out += "$end\n";
    // Every change after step 0, step by step, traces in record order within a step.
    std::vector<std::pair<int64_t, size_t>> events;
    for (size_t i = 0; i < Record.Traces.size(); ++i)
        for (const TSimChange& c : Record.Traces[i].Changes)
            if (c.Step > 0 && c.Step < Record.Steps)
                events.emplace_back(c.Step, i);
    // Traces were added in record order: ordering by (step, trace) keeps it within a step.
    std::sort(events.begin(), events.end(), [](const auto& a, const auto& b) { return a < b; });
    int64_t at = 0;
    for (const auto& [step, i] : events) {
        if (step != at) {
            out += '#' + QByteArray::number(step) + '\n';
            at = step;
        }
        out += (Record.Traces[i].ValueAt(step) ? '1' : '0') + codes[i] + '\n';
    }
    if (Record.Steps > at)
        out += '#' + QByteArray::number(Record.Steps) + '\n';
    return out;
}

} // namespace vde
