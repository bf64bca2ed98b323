// veldiag simulate: runs a diagram's circuit on the waveforms of a stimuli file and writes the
// timing chart of its sources and probes (PNG, SVG, PDF) or their value-change dump (VCD).
// Warnings go to stderr and the run goes on; errors of the circuit (a net with two drivers)
// fail the command before anything is written.
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

#include <QFileInfo>

namespace veldiag {

int RunSimulate(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulates the circuit of DIAGRAM (binary .dgm, or the text form .ini/.txt) step by "
        "step. Text blocks with outputs only are the sources, driven by the waveforms of the "
        "stimuli file by their first label; text blocks with inputs only are the probes. Writes "
        "the timing chart of every source and probe (.png, .svg, .pdf) or their value-change "
        "dump (.vcd). The stimuli file is JSON: {\"steps\": 64, \"signals\": {\"CLK\": "
        "\"clock 4\", \"EN\": \"0, 1@8\", \"D\": \"0011 0101\"}}. Warnings go to stderr; a "
        "circuit error (two outputs on one net) fails with status 1 and writes nothing. The "
        "output is replaced only when complete."));
    parser.addPositionalArgument(QStringLiteral("DIAGRAM"), QStringLiteral("The diagram file."));
    const QCommandLineOption stimuli(QStringLiteral("stimuli"),
                                     QStringLiteral("The stimuli file (JSON)."),
                                     QStringLiteral("FILE"));
    const QCommandLineOption steps(
        QStringLiteral("steps"),
        QStringLiteral("Steps to run (overrides the file's \"steps\"; 1 to %1).")
            .arg(vde::kMaxSimSteps),
        QStringLiteral("N"));
    const QCommandLineOption output({QStringLiteral("o"), QStringLiteral("output")},
                                    QStringLiteral("The file to write: .png, .svg, .pdf or .vcd."),
                                    QStringLiteral("OUT"));
    const QCommandLineOption format(QStringLiteral("format"),
                                    QStringLiteral("png, svg, pdf or vcd, whatever OUT's "
                                                   "extension."),
                                    QStringLiteral("FORMAT"));
    parser.addOptions({stimuli, steps, output, format});
    ParseCommand(parser, args, 1, 1);

    const QString in = parser.positionalArguments().at(0);
    if (!parser.isSet(stimuli))
        throw UsageError(QStringLiteral("no stimuli file given (--stimuli FILE)"));
    if (!parser.isSet(output))
        throw UsageError(QStringLiteral("no output file given (-o OUT)"));
    const QString out = parser.value(output);
    const QString fmt =
        (parser.isSet(format) ? parser.value(format) : QFileInfo(out).suffix()).toLower();
    if (fmt != QLatin1String("png") && fmt != QLatin1String("svg") && fmt != QLatin1String("pdf") &&
        fmt != QLatin1String("vcd"))
        throw UsageError(QStringLiteral("cannot tell the output format of \"%1\": use a .png, "
                                        ".svg, .pdf or .vcd file or --format")
                             .arg(out));
    int64_t n = -1;
    if (parser.isSet(steps)) {
        bool ok = false;
        n = parser.value(steps).toLongLong(&ok);
        if (!ok || n < 1 || n > vde::kMaxSimSteps)
            throw UsageError(QStringLiteral("--steps \"%1\" is not a whole number from 1 to %2")
                                 .arg(parser.value(steps))
                                 .arg(vde::kMaxSimSteps));
    }

    const vde::TSimStimuli st = vde::TSimStimuli::LoadFromFile(parser.value(stimuli));
    if (n < 0)
        n = st.Steps;
    if (n < 1)
        throw UsageError(QStringLiteral("the stimuli file gives no \"steps\": use --steps N"));
    if (fmt != QLatin1String("vcd") && n > vde::kMaxSimChartSteps)
        throw UsageError(QStringLiteral("a chart shows at most %1 steps; write a .vcd for %2")
                             .arg(vde::kMaxSimChartSteps)
                             .arg(n));

    DiagramSurface surface;
    surface.LoadFile(in);
    vde::TDiagContainer& dc = surface.Container();
    if (!dc.ObjList || !dc.ConList)
        throw vde::EInvalidOperation(QStringLiteral("The diagram has no blocks to simulate"));
    vde::TDiagSimulator sim(*dc.ObjList, *dc.ConList);
    sim.SetStimuli(st);
    sim.Reset();
    const QString prefix = QStringLiteral("veldiag simulate: ");
    const std::vector<vde::TSimIssue> errors = sim.Errors();
    if (!errors.empty()) {
        for (const vde::TSimIssue& e : errors)
            Err(prefix + QStringLiteral("error: ") + e.Message);
        return kExitFailed;
    }
    sim.Run(n);
    for (const vde::TSimIssue& w : sim.Warnings())
        Err(prefix + QStringLiteral("warning: ") + w.Message);

    const vde::TSimRecord rec = sim.Record();
    if (fmt == QLatin1String("vcd"))
        WriteFileAtomically(out, vde::SimRecordToVcd(rec, QFileInfo(in).completeBaseName()));
    else
        vde::SaveSimChart(out, rec, {}, fmt);
    return kExitOk;
}

} // namespace veldiag
