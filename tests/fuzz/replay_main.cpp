// Replays fuzz inputs (files, or every file of a folder) through the fuzz target, for builds
// without libFuzzer. Exits non-zero if a folder holds no input at all.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        QStringList files;
        const QFileInfo info(QString::fromLocal8Bit(argv[i]));
        if (info.isDir()) {
            for (const QFileInfo& f : QDir(info.filePath()).entryInfoList(QDir::Files, QDir::Name))
                files << f.filePath();
        } else {
            files << info.filePath();
        }
        for (const QString& name : files) {
            QFile f(name);
            if (!f.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(name));
                return 2;
            }
            const QByteArray bytes = f.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                                   size_t(bytes.size()));
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}
