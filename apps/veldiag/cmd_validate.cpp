// veldiag validate: loads each file as the library does and says what it found. A file that does
// not load (or holds no diagram) is an error; a diagram that loads but holds something the
// library quietly passes over (blocks sharing a key, a wire that ends at no block or at a
// marker its block does not have, a junction on a segment that does not exist, a text section
// that makes no block) gives warnings, each naming where it is.
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <QFile>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <unordered_map>

namespace veldiag {

namespace {

// Where each block and connection record of a container stream starts. Read with the library's
// own readers into scratch lists; empty when the stream cannot be read that far.
struct RecordOffsets {
    std::vector<int64_t> Blocks, Connections;
};

RecordOffsets OffsetsOf(const QByteArray& bytes) {
    RecordOffsets o;
    try {
        vde::TMemoryStream s(std::vector<uint8_t>(bytes.begin(), bytes.end()));
        s.SetPosition(4);
        const int32_t blockCount = s.ReadInt32();
        // A count of -1 hands the reading of the count to the list.
        int64_t at = s.Position() + (blockCount == -1 ? 4 : 0);
        QWidget scratch;
        vde::TDiagObjectList blocks(&scratch);
        blocks.LoadFromStream(
            s,
            [&](QObject*) {
                o.Blocks.push_back(at);
                at = s.Position();
            },
            blockCount);
        const int32_t connectionCount = s.ReadInt32();
        at = s.Position() + (connectionCount == -1 ? 4 : 0);
        vde::TDiagConnectList connections(static_cast<vde::TCanvas*>(nullptr));
        connections.LoadFromStream(
            s,
            [&](vde::TDiagConnection*) {
                o.Connections.push_back(at);
                at = s.Position();
            },
            connectionCount);
    } catch (const vde::Exception&) {
        // The load itself names the error.
    }
    return o;
}

QString At(const std::vector<int64_t>& offsets, int i) {
    return size_t(i) < offsets.size() ? QStringLiteral(" (byte offset %1)").arg(offsets[size_t(i)])
                                      : QString();
}

QString MarkerName(int index) {
    return index < 0 ? QStringLiteral("input %1").arg(-int64_t(index))
                     : QStringLiteral("output %1").arg(index);
}

QStringList CheckBinary(DiagramSurface& surface, const QByteArray& bytes) {
    QStringList found;
    vde::TDiagContainer& dc = surface.Container();
    if (!dc.ObjList || !dc.ConList)
        return found;
    const RecordOffsets offsets = OffsetsOf(bytes);
    const std::vector<vde::TDiagObject*> blocks = dc.ObjList->All();

    // Blocks sharing a key: every look-up takes the earliest.
    std::unordered_map<vde::TObjKey, int> first;
    for (int i = 0; i < int(blocks.size()); ++i) {
        const vde::TObjKey key = blocks[size_t(i)]->GetObjKey();
        const auto [it, fresh] = first.emplace(key, i);
        if (!fresh)
            found << QStringLiteral("block %1%2 has key %3, which block %4 holds already; wires "
                                    "and the selection find block %4")
                         .arg(i)
                         .arg(At(offsets.Blocks, i))
                         .arg(key)
                         .arg(it->second);
    }

    const vde::TDiagConnectList& wires = *dc.ConList;
    const auto checkEnd = [&](int i, const vde::TDiagConnection* c, bool source) {
        const QString where = QStringLiteral("connection %1%2: its %3")
                                  .arg(i)
                                  .arg(At(offsets.Connections, i))
                                  .arg(source ? QStringLiteral("start") : QStringLiteral("end"));
        const vde::TObjKey key = source ? c->GetSrcKey() : c->GetDstKey();
        vde::TDiagObject* block = source ? c->GetSrcObject() : c->GetDstObject();
        const int marker = source ? c->FSrcConIdx : c->FDstConIdx;
        const vde::LongRec cross = source ? c->FSrcCrossInfo : c->FDstCrossInfo;
        if (!cross.IsZero()) {
            const int on = int(cross.Hi) - 1, segment = int(cross.Lo) - 1;
            const vde::TDiagConnection* other =
                cross.Hi != 0 && on < wires.Count() ? wires.Items(on) : nullptr;
            if (!other || cross.Lo == 0 || int64_t(segment) + 2 > int64_t(other->FPoints.size()))
                found << QStringLiteral("%1 lies on segment %2 of connection %3, which does not "
                                        "exist")
                             .arg(where)
                             .arg(segment)
                             .arg(on);
        }
        if (!block) {
            if (key != 0)
                found << QStringLiteral("%1 is at block key %2, which no block holds")
                             .arg(where)
                             .arg(key);
            else if (cross.IsZero())
                found << QStringLiteral("%1 is at no block and on no wire").arg(where);
            return;
        }
        if (!block->GetMarkersPtr(marker))
            found << QStringLiteral("%1 is at %2 of block %3 (key %4), which has %5 inputs and %6 "
                                    "outputs")
                         .arg(where, marker == 0 ? QStringLiteral("no marker") : MarkerName(marker))
                         .arg(dc.ObjList->IndexOf(block))
                         .arg(block->GetObjKey())
                         .arg(block->FInputs.size())
                         .arg(block->FOutputs.size());
    };
    for (int i = 0; i < wires.Count(); ++i) {
        const vde::TDiagConnection* c = wires.Items(i);
        if (!c)
            continue;
        checkEnd(i, c, true);
        checkEnd(i, c, false);
    }
    return found;
}

// The text form: the reader skips what makes no block; say so, with the section's line. A file
// with no section at all holds no diagram.
QStringList CheckText(const QString& fileName) {
    QFile f(fileName);
    if (!f.open(QIODevice::ReadOnly))
        throw vde::EFOpenError(
            QStringLiteral("Cannot open file \"%1\": %2").arg(fileName, f.errorString()));
    const QByteArray bytes = f.readAll();
    const vde::TIniFile text = vde::TIniFile::FromUtf8(bytes);
    QStringList found;
    // Lines before the first section are not part of any block.
    const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    for (int n = 0; n < lines.size(); ++n) {
        const QString line = lines[n].trimmed();
        if (line.startsWith(QLatin1Char('[')))
            break;
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) ||
            line.startsWith(QLatin1Char('#')))
            continue;
        const QString shown = line.size() > 40 ? line.left(40) + QStringLiteral("...") : line;
        if (text.SectionCount() == 0)
            throw ToolError(QStringLiteral("not a diagram file"),
                            QStringLiteral("line %1 (\"%2\") is not part of any [section], and "
                                           "the file has no section")
                                .arg(n + 1)
                                .arg(shown));
        found << QStringLiteral("line %1 (\"%2\") comes before the first section and is ignored")
                     .arg(n + 1)
                     .arg(shown);
    }
    if (text.SectionCount() == 0)
        throw ToolError(QStringLiteral("not a diagram file"),
                        QStringLiteral("the file holds no [section], so no block"));
    for (int i = 0; i < text.SectionCount(); ++i) {
        const vde::TIniFile::TSection& s = text.Section(i);
        const QString where = QStringLiteral("section [%1] (line %2)").arg(s.Name).arg(s.Line);
        const QString type = text.ReadString(i, QStringLiteral("Type"));
        if (text.ReadString(i, QStringLiteral("Bounds")).isEmpty()) {
            found << QStringLiteral("%1 has no Bounds and makes no block").arg(where);
            continue;
        }
        if (type.isEmpty()) {
            found << QStringLiteral("%1 has no Type and makes no block").arg(where);
            continue;
        }
        const int kind = vde::GetEnumValue<vde::TDiagObjectType>(type);
        if (kind <= int(vde::doNone) || kind > int(vde::doRSTrigger))
            found << QStringLiteral("%1: \"%2\" is no block type (doText, doAndLogic, doOrLogic, "
                                    "doRSTrigger); the section makes no block")
                         .arg(where, type);
    }
    return found;
}

} // namespace

int RunValidate(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Loads every FILE (binary .dgm, or the text form .ini/.txt). For each file, one line "
        "\"FILE: warning: ...\" per thing the library passes over quietly (blocks sharing a key; "
        "a wire ending at no block, at a marker its block lacks, or on a segment that does not "
        "exist; a text section that makes no block), each naming where it is, then \"FILE: OK\" "
        "(with the count of warnings), or \"FILE: error: ...\" naming what is wrong and where. "
        "A file that holds no diagram is an error. The exit status is 0 when no file has an "
        "error (and, with --strict, no warning either), 1 otherwise."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Diagram files."),
                                 QStringLiteral("FILE..."));
    const QCommandLineOption strict(QStringLiteral("strict"),
                                    QStringLiteral("Warnings fail the command too."));
    parser.addOption(strict);
    ParseCommand(parser, args, 1, -1);
    // Everything found is printed here, per file; the library's own log lines would repeat it.
    QLoggingCategory::setFilterRules(QStringLiteral("veldiagedit.*.warning=false"));
    int status = kExitOk;
    for (const QString& file : parser.positionalArguments()) {
        try {
            DiagramSurface surface;
            QStringList warnings;
            if (FormByExtension(file) == DiagramForm::Text) {
                warnings = CheckText(file);
                surface.LoadFile(file);
            } else {
                QFile f(file);
                if (!f.open(QIODevice::ReadOnly))
                    throw vde::EFOpenError(
                        QStringLiteral("Cannot open file \"%1\": %2").arg(file, f.errorString()));
                const QByteArray bytes = f.readAll();
                surface.LoadBinary(bytes);
                warnings = CheckBinary(surface, bytes);
            }
            for (const QString& w : warnings)
                Out(QStringLiteral("%1: warning: %2").arg(file, w));
            if (warnings.isEmpty())
                Out(QStringLiteral("%1: OK").arg(file));
            else
                Out(QStringLiteral("%1: OK (%2 warning%3)")
                        .arg(file)
                        .arg(warnings.size())
                        .arg(warnings.size() == 1 ? QString() : QStringLiteral("s")));
            if (!warnings.isEmpty() && parser.isSet(strict))
                status = kExitFailed;
        } catch (const std::exception& e) {
            Out(QStringLiteral("%1: error: %2").arg(file, ErrorWords(e)));
            status = kExitFailed;
        }
    }
    return status;
}

} // namespace veldiag
