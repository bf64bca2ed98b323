// veldiag dump: everything a diagram holds, as readable text or as a JSON document whose
// schema is described in docs/cli.md. Object keys come out sorted and arrays keep the stored
// order, so the same diagram always dumps to the same bytes.
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <velDiagEdit/geometry/codecs.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace veldiag {

namespace {

constexpr int kDumpVersion = 1;

QJsonObject RectJson(const vde::TRect& r) {
    return {{QStringLiteral("left"), r.Left},
            {QStringLiteral("top"), r.Top},
            {QStringLiteral("right"), r.Right},
            {QStringLiteral("bottom"), r.Bottom}};
}

// A segment address: Hi = connection index + 1, Lo = segment index + 1; 0 = none.
QJsonValue SegmentJson(vde::LongRec lr) {
    if (lr.IsZero())
        return QJsonValue::Null;
    return QJsonObject{{QStringLiteral("connection"), int(lr.Hi) - 1},
                       {QStringLiteral("segment"), int(lr.Lo) - 1}};
}

QJsonArray MarkersJson(const vde::TDotMarkers& markers, int sign) {
    QJsonArray a;
    for (size_t i = 0; i < markers.size(); ++i) {
        const vde::TDotMarker& m = markers[i];
        a.append(QJsonObject{{QStringLiteral("index"), sign * int(i + 1)},
                             {QStringLiteral("x"), m.P.X},
                             {QStringLiteral("y"), m.P.Y},
                             {QStringLiteral("type"), vde::GoodMarkerTypeName(int(m.IOType))},
                             {QStringLiteral("size"), int(m.Size)}});
    }
    return a;
}

QJsonObject DumpJson(DiagramSurface& s) {
    vde::TDiagContainer& dc = s.Container();
    QJsonArray blocks;
    if (dc.ObjList) {
        for (int i = 0; i < dc.ObjList->Count(); ++i) {
            const vde::TDiagObject* b = dc.ObjList->Items(i);
            QJsonArray labels;
            for (const vde::TDiagLabel& l : b->FLabels)
                labels.append(QJsonObject{{QStringLiteral("x"), l.Start.X},
                                          {QStringLiteral("y"), l.Start.Y},
                                          {QStringLiteral("height"), int(l.Height)},
                                          {QStringLiteral("text"), l.Text}});
            blocks.append(QJsonObject{
                {QStringLiteral("index"), i},
                {QStringLiteral("name"), b->objectName()},
                {QStringLiteral("kind"), vde::GoodDiagObjTypeName(int(b->GetDiagObjType()))},
                {QStringLiteral("key"), double(b->GetObjKey())},
                {QStringLiteral("bounds"), RectJson(b->BoundsRect())},
                {QStringLiteral("deltaWidth"), b->GetDeltaWidth()},
                {QStringLiteral("selected"), b->GetSelected()},
                {QStringLiteral("inputs"), MarkersJson(b->FInputs, -1)},
                {QStringLiteral("outputs"), MarkersJson(b->FOutputs, 1)},
                {QStringLiteral("labels"), labels}});
        }
    }
    QJsonArray connections;
    if (dc.ConList) {
        for (int i = 0; i < dc.ConList->Count(); ++i) {
            const vde::TDiagConnection* c = dc.ConList->Items(i);
            QJsonArray points;
            for (const vde::TPoint& p : c->FPoints)
                points.append(QJsonArray{p.X, p.Y});
            connections.append(QJsonObject{
                {QStringLiteral("index"), i},
                {QStringLiteral("source"),
                 QJsonObject{{QStringLiteral("key"), double(c->FSrcKey)},
                             {QStringLiteral("marker"), c->FSrcConIdx},
                             {QStringLiteral("onSegment"), SegmentJson(c->FSrcCrossInfo)}}},
                {QStringLiteral("destination"),
                 QJsonObject{{QStringLiteral("key"), double(c->FDstKey)},
                             {QStringLiteral("marker"), c->FDstConIdx},
                             {QStringLiteral("onSegment"), SegmentJson(c->FDstCrossInfo)}}},
                {QStringLiteral("points"), points},
                {QStringLiteral("selectedSegment"), c->GetSelectedIndex()}});
        }
    }
    QJsonArray controls;
    for (const StoredControl& c : s.Controls())
        controls.append(QJsonObject{{QStringLiteral("name"), c.Name},
                                    {QStringLiteral("bounds"), RectJson(c.Bounds)}});
    const QJsonValue selectedBlock =
        dc.SelObj ? QJsonValue(double(dc.SelObj->GetObjKey())) : QJsonValue(QJsonValue::Null);
    return QJsonObject{{QStringLiteral("format"), QStringLiteral("veldiag-dump")},
                       {QStringLiteral("version"), kDumpVersion},
                       {QStringLiteral("blocks"), blocks},
                       {QStringLiteral("connections"), connections},
                       {QStringLiteral("controls"), controls},
                       {QStringLiteral("selection"),
                        QJsonObject{{QStringLiteral("segment"), SegmentJson(dc.SelInfo)},
                                    {QStringLiteral("block"), selectedBlock}}}};
}

QString Rect(const vde::TRect& r) {
    return QStringLiteral("%1,%2,%3,%4").arg(r.Left).arg(r.Top).arg(r.Right).arg(r.Bottom);
}

QString Segment(vde::LongRec lr) {
    return lr.IsZero()
               ? QStringLiteral("none")
               : QStringLiteral("connection %1 segment %2").arg(int(lr.Hi) - 1).arg(int(lr.Lo) - 1);
}

QString Marker(int index) {
    return index == 0  ? QStringLiteral("none")
           : index < 0 ? QStringLiteral("input %1").arg(-index)
                       : QStringLiteral("output %1").arg(index);
}

QStringList DumpText(DiagramSurface& s) {
    QStringList lines;
    const auto Line = [&lines](const QString& l) { lines << l; };
    vde::TDiagContainer& dc = s.Container();
    const int nb = dc.ObjList ? dc.ObjList->Count() : 0;
    Line(QStringLiteral("Blocks: %1").arg(nb));
    for (int i = 0; i < nb; ++i) {
        const vde::TDiagObject* b = dc.ObjList->Items(i);
        Line(QStringLiteral("  [%1] %2  %3  key %4  bounds %5%6")
                 .arg(i)
                 .arg(b->objectName(), vde::GoodDiagObjTypeName(int(b->GetDiagObjType())))
                 .arg(b->GetObjKey())
                 .arg(Rect(b->BoundsRect()),
                      b->GetSelected() ? QStringLiteral("  selected") : QString()));
        const auto markers = [&Line](const vde::TDotMarkers& ms, int sign) {
            for (size_t k = 0; k < ms.size(); ++k)
                Line(QStringLiteral("      %1 at %2,%3  %4  size %5")
                         .arg(Marker(sign * int(k + 1)))
                         .arg(ms[k].P.X)
                         .arg(ms[k].P.Y)
                         .arg(vde::GoodMarkerTypeName(int(ms[k].IOType)))
                         .arg(int(ms[k].Size)));
        };
        markers(b->FInputs, -1);
        markers(b->FOutputs, 1);
        for (const vde::TDiagLabel& l : b->FLabels)
            Line(QStringLiteral("      label \"%1\" at %2,%3  height %4")
                     .arg(l.Text)
                     .arg(l.Start.X)
                     .arg(l.Start.Y)
                     .arg(int(l.Height)));
    }
    const int nc = dc.ConList ? dc.ConList->Count() : 0;
    Line(QStringLiteral("Connections: %1").arg(nc));
    for (int i = 0; i < nc; ++i) {
        const vde::TDiagConnection* c = dc.ConList->Items(i);
        QStringList pts;
        for (const vde::TPoint& p : c->FPoints)
            pts << QStringLiteral("%1,%2").arg(p.X).arg(p.Y);
        Line(QStringLiteral("  [%1] from key %2 %3 to key %4 %5")
                 .arg(i)
                 .arg(c->FSrcKey)
                 .arg(Marker(c->FSrcConIdx))
                 .arg(c->FDstKey)
                 .arg(Marker(c->FDstConIdx)));
        if (!c->FSrcCrossInfo.IsZero())
            Line(QStringLiteral("      starts on %1").arg(Segment(c->FSrcCrossInfo)));
        if (!c->FDstCrossInfo.IsZero())
            Line(QStringLiteral("      ends on %1").arg(Segment(c->FDstCrossInfo)));
        Line(QStringLiteral("      points %1").arg(pts.join(QLatin1Char(' '))));
    }
    const std::vector<StoredControl> controls = s.Controls();
    Line(QStringLiteral("Controls: %1").arg(controls.size()));
    for (const StoredControl& c : controls)
        Line(QStringLiteral("  %1  bounds %2").arg(c.Name, Rect(c.Bounds)));
    Line(QStringLiteral("Selection: segment %1; block %2")
             .arg(Segment(dc.SelInfo), dc.SelObj
                                           ? QStringLiteral("key %1").arg(dc.SelObj->GetObjKey())
                                           : QStringLiteral("none")));
    return lines;
}

} // namespace

int RunDump(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Prints the whole content of FILE (binary .dgm, or the text form .ini/.txt): blocks "
        "(kind, name, key, bounds, markers with types and sizes, labels), connections (ends by "
        "block key and marker, points), foreign controls and the selection. --json gives a "
        "stable JSON document (see docs/cli.md)."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The diagram file."));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Print a JSON document instead of text."));
    const QCommandLineOption output(
        {QStringLiteral("o"), QStringLiteral("output")},
        QStringLiteral("Write to OUT (replaced only when complete) instead of stdout."),
        QStringLiteral("OUT"));
    parser.addOptions({json, output});
    ParseCommand(parser, args, 1, 1);
    DiagramSurface surface;
    surface.LoadFile(parser.positionalArguments().at(0));
    if (parser.isSet(json)) {
        const QByteArray doc = QJsonDocument(DumpJson(surface)).toJson(QJsonDocument::Indented);
        if (parser.isSet(output))
            WriteFileAtomically(parser.value(output), doc);
        else
            std::fwrite(doc.constData(), 1, size_t(doc.size()), stdout);
        return kExitOk;
    }
    const QByteArray text =
        (DumpText(surface).join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8();
    if (parser.isSet(output))
        WriteFileAtomically(parser.value(output), text);
    else
        std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return kExitOk;
}

} // namespace veldiag
