// veldiag: diagrams from the command line. Renders them to pictures, converts between the binary
// and the text form, validates, dumps their content, copies them to and from a database
// table and simulates their circuits. It never needs a display: the offscreen platform is used
// unless the caller chose one.
#include "cli_support.h"
#include "commands.h"

#include <velDiagEdit/platform/errors.h>

#include <QApplication>
#include <cstdio>
#include <cstdlib>

namespace {

struct Command {
    const char* Name;
    int (*Run)(const QStringList&);
    const char* Summary;
};

const Command kCommands[] = {
    {"render", veldiag::RunRender, "draw a diagram into a PNG, SVG or PDF file"},
    {"convert", veldiag::RunConvert,
     "convert between the binary (.dgm) and the text (.ini/.txt) form"},
    {"validate", veldiag::RunValidate, "load diagram files and report OK or the error"},
    {"dump", veldiag::RunDump, "print a diagram's whole content, readable or as JSON"},
    {"db", veldiag::RunDb, "copy diagrams between files and a configuration table"},
    {"simulate", veldiag::RunSimulate,
     "run a diagram's circuit on stimuli; write its timing chart or a VCD"},
};

void PrintUsage(std::FILE* to) {
    std::fprintf(to, "Usage: veldiag <command> [options] [arguments]\n"
                     "\n"
                     "Commands:\n");
    for (const Command& c : kCommands)
        std::fprintf(to, "  %-9s %s\n", c.Name, c.Summary);
    std::fprintf(to, "\n'veldiag <command> --help' describes a command.\n");
}

} // namespace

int main(int argc, char** argv) {
    // Offscreen unless the caller chose a platform: the tool never needs a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt wants a runtime folder and warns on every start without one; it would take this one.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", QByteArray("/tmp/runtime-") + qgetenv("USER"));
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("veldiag"));
    QApplication::setApplicationVersion(QStringLiteral(VELDIAG_VERSION));

    const QStringList all = QApplication::arguments();
    if (all.size() < 2) {
        PrintUsage(stderr);
        return veldiag::kExitUsage;
    }
    const QString name = all.at(1);
    if (name == QLatin1String("--help") || name == QLatin1String("-h") ||
        name == QLatin1String("help")) {
        PrintUsage(stdout);
        return veldiag::kExitOk;
    }
    if (name == QLatin1String("--version")) {
        veldiag::Out(QStringLiteral("veldiag %1").arg(QApplication::applicationVersion()));
        return veldiag::kExitOk;
    }
    for (const Command& c : kCommands) {
        if (name != QLatin1String(c.Name))
            continue;
        QStringList args = all.mid(2);
        args.prepend(QStringLiteral("veldiag %1").arg(name));
        try {
            return c.Run(args);
        } catch (const veldiag::UsageError& e) {
            veldiag::Err(QStringLiteral("veldiag %1: %2").arg(name, e.Message()));
            return veldiag::kExitUsage;
        } catch (const std::exception& e) {
            veldiag::Err(QStringLiteral("veldiag %1: %2").arg(name, veldiag::ErrorWords(e)));
            return veldiag::kExitFailed;
        }
    }
    veldiag::Err(QStringLiteral("veldiag: unknown command \"%1\"").arg(name));
    PrintUsage(stderr);
    return veldiag::kExitUsage;
}
