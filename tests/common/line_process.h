#pragma once
// A program the tests speak to line by line on its standard input and output, killed when the
// test ends.

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace vde::test {

class TLineProcess {
public:
    TLineProcess(const QString& program, const QStringList& args) {
        FProcess.setProgram(program);
        FProcess.setArguments(args);
        FProcess.start();
        FStarted = FProcess.waitForStarted(10000);
    }
    ~TLineProcess() {
        if (FProcess.state() != QProcess::NotRunning) {
            FProcess.kill();
            FProcess.waitForFinished(5000);
        }
    }
    TLineProcess(const TLineProcess&) = delete;
    TLineProcess& operator=(const TLineProcess&) = delete;

    bool Started() const { return FStarted; }
    // Queues a line; Flush waits until it is written. Two programs sent to before either is
    // flushed get their lines as close together as the test can make it.
    void Send(const QString& line) { FProcess.write(line.toUtf8() + '\n'); }
    void Flush() { FProcess.waitForBytesWritten(5000); }
    // The next line on standard output; "timeout ..." with the error output when none comes
    // within ms.
    QString Read(int ms = 30000) {
        QElapsedTimer t;
        t.start();
        while (!FProcess.canReadLine()) {
            const qint64 left = ms - t.elapsed();
            if (left <= 0 || !FProcess.waitForReadyRead(int(left)))
                return QStringLiteral("timeout; stderr: ") +
                       QString::fromLocal8Bit(FProcess.readAllStandardError());
        }
        return QString::fromUtf8(FProcess.readLine()).trimmed();
    }
    QString Ask(const QString& line) {
        Send(line);
        Flush();
        return Read();
    }
    // SIGKILL, and waits for the end.
    void Kill() {
        FProcess.kill();
        FProcess.waitForFinished(10000);
    }
    QProcess& Process() { return FProcess; }

private:
    QProcess FProcess;
    bool FStarted = false;
};

} // namespace vde::test
