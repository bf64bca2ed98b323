#include "cli_support.h"

#include <velDiagEdit/platform/errors.h>
#include <velDiagEdit/simulation/stimuli.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cstdio>

namespace veldiag {

QString ErrorWords(const std::exception& e) {
    using namespace vde;
    if (const auto* t = dynamic_cast<const ToolError*>(&e))
        return t->Lead() + QStringLiteral(": ") + t->Message();
    QString lead;
    if (const auto* f = dynamic_cast<const EFormatError*>(&e))
        lead = f->Offset() == 0 ? QStringLiteral("not a diagram file")
                                : QStringLiteral("damaged diagram file");
    else if (dynamic_cast<const EFOpenError*>(&e))
        lead = QStringLiteral("cannot read");
    else if (dynamic_cast<const EFCreateError*>(&e) || dynamic_cast<const EWriteError*>(&e))
        lead = QStringLiteral("cannot write");
    else if (dynamic_cast<const EReadError*>(&e))
        lead = QStringLiteral("damaged diagram file");
    else if (dynamic_cast<const EStimulusError*>(&e))
        lead = QStringLiteral("bad stimuli");
    else if (dynamic_cast<const EConvertError*>(&e))
        lead = QStringLiteral("bad value");
    else if (dynamic_cast<const EDatabaseError*>(&e))
        lead = QStringLiteral("database error");
    else if (dynamic_cast<const EInvalidOperation*>(&e))
        lead = QStringLiteral("refused");
    else
        lead = QStringLiteral("failed");
    const QString text = ErrorText(e);
    // "cannot read: Cannot open file ..." says it twice; the message alone is enough then.
    if (text.startsWith(QStringLiteral("Cannot "), Qt::CaseInsensitive))
        return text;
    return lead + QStringLiteral(": ") + text;
}

QString ErrorText(const std::exception& e) {
    if (const auto* ve = dynamic_cast<const vde::Exception*>(&e))
        return ve->Message();
    return QString::fromLocal8Bit(e.what());
}

void Out(const QString& line) {
    const QByteArray b = line.toUtf8();
    std::fwrite(b.constData(), 1, size_t(b.size()), stdout);
    std::fputc('\n', stdout);
}

void Err(const QString& line) {
    const QByteArray b = line.toUtf8();
    std::fwrite(b.constData(), 1, size_t(b.size()), stderr);
    std::fputc('\n', stderr);
}

void ParseCommand(QCommandLineParser& parser, const QStringList& args, int minPositional,
                  int maxPositional) {
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help = parser.addHelpOption();
    if (!parser.parse(args))
        throw UsageError(parser.errorText());
    if (parser.isSet(help)) {
        // The usage line names the command, not the program's path.
        QString helpText = parser.helpText();
        const qsizetype eol = helpText.indexOf(QLatin1Char('\n'));
        const qsizetype opts = helpText.indexOf(QLatin1String(" [options]"));
        if (helpText.startsWith(QLatin1String("Usage: ")) && opts > 0 && opts < eol)
            helpText.replace(7, opts - 7, args.at(0));
        const QByteArray text = helpText.toUtf8();
        std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
        std::fflush(stdout);
        std::exit(kExitOk);
    }
    const qsizetype n = parser.positionalArguments().size();
    if (n < minPositional)
        throw UsageError(QStringLiteral("missing argument (see --help)"));
    if (maxPositional >= 0 && n > maxPositional)
        throw UsageError(QStringLiteral("unexpected argument \"%1\" (see --help)")
                             .arg(parser.positionalArguments().at(maxPositional)));
}

void WriteFileAtomically(const QString& fileName, const std::function<void(QIODevice&)>& write) {
    if (fileName == QLatin1String("-")) {
        // Standard output: what is written goes out as it comes; there is nothing to replace.
        std::fflush(stdout);
        QFile out;
        if (!out.open(stdout, QIODevice::WriteOnly))
            throw vde::EFCreateError(
                QStringLiteral("Cannot write to standard output: %1").arg(out.errorString()));
        write(out);
        if (!out.flush())
            throw vde::EWriteError(
                QStringLiteral("Cannot write to standard output: %1").arg(out.errorString()));
        return;
    }
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        throw vde::EFCreateError(
            QStringLiteral("Cannot create file \"%1\": %2").arg(fileName, file.errorString()));
    // An error while writing leaves the QSaveFile uncommitted: its destructor removes the
    // temporary file and the target stays as it was.
    write(file);
    if (!file.commit())
        throw vde::EFCreateError(
            QStringLiteral("Cannot write file \"%1\": %2").arg(fileName, file.errorString()));
}

void WriteFileAtomically(const QString& fileName, const QByteArray& bytes) {
    WriteFileAtomically(fileName, [&](QIODevice& d) {
        if (d.write(bytes) != bytes.size())
            throw vde::EWriteError(
                QStringLiteral("Cannot write file \"%1\": %2").arg(fileName, d.errorString()));
    });
}

} // namespace veldiag
