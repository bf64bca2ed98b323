// veldiag convert: between the binary form, which holds everything, and the text form, which
// lists blocks only (name, kind, bounds). Both directions go through the container's own
// readers and writers, so the output is byte for byte what the library itself saves.
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <QFileInfo>
#include <QTemporaryDir>

namespace veldiag {

namespace {

DiagramForm ParseForm(const QString& value) {
    if (value == QLatin1String("binary"))
        return DiagramForm::Binary;
    if (value == QLatin1String("text"))
        return DiagramForm::Text;
    throw UsageError(QStringLiteral("--to \"%1\" is neither binary nor text").arg(value));
}

// What the text form cannot keep of a loaded diagram, one line per kind of loss.
QStringList DroppedByText(DiagramSurface& s) {
    QStringList lost;
    vde::TDiagContainer& dc = s.Container();
    if (dc.ConList && dc.ConList->Count() > 0)
        lost << QStringLiteral("%1 connection(s)").arg(dc.ConList->Count());
    if (!s.Controls().empty())
        lost << QStringLiteral("the bounds of %1 foreign control(s)").arg(s.Controls().size());
    if (!dc.SelInfo.IsZero() || dc.SelObj)
        lost << QStringLiteral("the selection");
    if (dc.ObjList && dc.ObjList->Count() > 0)
        lost << QStringLiteral("the block properties other than name, kind and bounds (markers, "
                               "labels, keys, margins)");
    return lost;
}

} // namespace

int RunConvert(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Converts IN into OUT between the binary form (.dgm) and the text form (.ini/.txt), "
        "each chosen by extension (other extensions are binary) or by --from/--to. The text "
        "form holds blocks only; converting to it says on stderr what was dropped. Converting "
        "from it gives each block its kind's defaults. OUT is replaced only when complete."));
    parser.addPositionalArgument(QStringLiteral("IN"), QStringLiteral("The diagram to read."));
    parser.addPositionalArgument(QStringLiteral("OUT"), QStringLiteral("The file to write."));
    const QCommandLineOption from(QStringLiteral("from"),
                                  QStringLiteral("The form of IN: binary or text."),
                                  QStringLiteral("FORM"));
    const QCommandLineOption to(QStringLiteral("to"),
                                QStringLiteral("The form of OUT: binary or text."),
                                QStringLiteral("FORM"));
    parser.addOptions({from, to});
    ParseCommand(parser, args, 2, 2);
    const QString in = parser.positionalArguments().at(0);
    const QString out = parser.positionalArguments().at(1);
    const DiagramForm inForm =
        parser.isSet(from) ? ParseForm(parser.value(from)) : FormByExtension(in);
    const DiagramForm outForm =
        parser.isSet(to) ? ParseForm(parser.value(to)) : FormByExtension(out);

    DiagramSurface surface;
    surface.LoadFile(in, inForm);
    if (outForm == DiagramForm::Binary) {
        WriteFileAtomically(out, surface.SaveBinary());
        return kExitOk;
    }
    const QStringList lost = DroppedByText(surface);
    // The container writes the text form to a file of its own naming; it is made in a scratch
    // folder and then copied into place atomically.
    QTemporaryDir scratch;
    if (!scratch.isValid())
        throw vde::EFCreateError(
            QStringLiteral("Cannot make a temporary folder: %1").arg(scratch.errorString()));
    const QString tmp = scratch.filePath(QStringLiteral("diagram.txt"));
    surface.Container().SaveDiagramToText(tmp);
    QFile f(tmp);
    if (!f.open(QIODevice::ReadOnly))
        throw vde::EFOpenError(QStringLiteral("Cannot read \"%1\": %2").arg(tmp, f.errorString()));
    WriteFileAtomically(out, f.readAll());
    for (const QString& l : lost)
        Err(QStringLiteral("veldiag convert: the text form drops %1").arg(l));
    return kExitOk;
}

} // namespace veldiag
