// veldiag validate: loads each file as the library does and says "OK" or the typed error with
// its byte offset (binary form) or line (text form).
#include "cli_support.h"
#include "commands.h"
#include "diagram_surface.h"

namespace veldiag {

int RunValidate(const QStringList& args) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Loads every FILE (binary .dgm, or the text form .ini/.txt) and prints one line per "
        "file on stdout: \"FILE: OK\", or \"FILE: <error type>: <message>\" naming the byte "
        "offset or the line where the error was met. The exit status is 0 only when every file "
        "is valid. A binary file of four bytes or fewer, or one without the diagram signature, "
        "is not valid."));
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("Diagram files."),
                                 QStringLiteral("FILE..."));
    ParseCommand(parser, args, 1, -1);
    int status = kExitOk;
    for (const QString& file : parser.positionalArguments()) {
        try {
            DiagramSurface surface;
            surface.LoadFile(file);
            Out(QStringLiteral("%1: OK").arg(file));
        } catch (const std::exception& e) {
            Out(QStringLiteral("%1: %2: %3").arg(file, ErrorTypeName(e), ErrorText(e)));
            status = kExitFailed;
        }
    }
    return status;
}

} // namespace veldiag
