#pragma once
// What every command of the tool shares: exit statuses, the way errors are named on stderr,
// writing an output file atomically, and the parser set-up with the help of each command.

#include <QByteArray>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <exception>
#include <functional>

class QIODevice;

namespace veldiag {

// 0: done; 1: the input or the work failed (a diagram that does not load, a database error);
// 2: the command line itself was wrong; 3: the stored diagram is no longer the one the command
// was told about (db put --if-fingerprint), so nothing was written.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitConflict = 3;

// Raised for a wrong command line; main prints the message and the command's usage line.
class UsageError : public std::exception {
public:
    explicit UsageError(QString message) : FMessage(std::move(message)) {}
    const QString& Message() const { return FMessage; }
    const char* what() const noexcept override { return "usage error"; }

private:
    QString FMessage;
};

// An error of the tool itself, with the words that say what is wrong ("not a diagram file") and
// the details.
class ToolError : public std::exception {
public:
    ToolError(QString lead, QString message)
        : FLead(std::move(lead)), FMessage(std::move(message)) {}
    const QString& Lead() const { return FLead; }
    const QString& Message() const { return FMessage; }
    const char* what() const noexcept override { return "tool error"; }

private:
    QString FLead, FMessage;
};

// The typed error's message; plain standard exceptions give their what().
QString ErrorText(const std::exception& e);
// What went wrong, in words, then the message: "not a diagram file: Invalid file format at byte
// offset 0", "damaged diagram file: Block count 5 is larger than ...", "database error: ...". A
// message that already says it ("Cannot open file ...") stands alone.
QString ErrorWords(const std::exception& e);

// Lines on stdout and stderr (UTF-8, one line each).
void Out(const QString& line);
void Err(const QString& line);

// A parser for one command: its description, --help, and the given options. Parses args
// (args[0] is the program and command, "veldiag render"); --help prints the command's help and
// exits 0; unknown options or a wrong number of positional arguments raise UsageError.
void ParseCommand(QCommandLineParser& parser, const QStringList& args, int minPositional,
                  int maxPositional);

// Writes the file through QSaveFile: the bytes go to a temporary file beside it that replaces
// the target only when `write` has returned and everything was written, so a failed or
// interrupted command never leaves a partial output behind. `write` draws or copies into the
// device. Raises vde::EFCreateError naming the file and the reason.
void WriteFileAtomically(const QString& fileName, const std::function<void(QIODevice&)>& write);
void WriteFileAtomically(const QString& fileName, const QByteArray& bytes);

} // namespace veldiag
