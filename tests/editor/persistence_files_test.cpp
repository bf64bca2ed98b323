// Diagram files: atomic saves, typed errors naming the path, the default file beside the host
// program (pointed into a scratch folder here), and a save killed half-way.
#include "editor/persistence_util.h"

#include "velDiagEdit/platform/host_program.h"

#include <QTemporaryDir>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace vde::test {
namespace {

class PersistenceFiles : public EditorFixture {
protected:
    QTemporaryDir tmp;
    QString Path(const char* name) const { return tmp.filePath(QString::fromLatin1(name)); }
};

void WriteBytes(const QString& name, const std::vector<uint8_t>& bytes) {
    QFile f(name);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(reinterpret_cast<const char*>(bytes.data()), qint64(bytes.size()));
}

TEST_F(PersistenceFiles, SaveWritesTheStreamAndLoadReadsItBack) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> bytes = Saved(*dc);
    dc->SaveDiagramToFile(Path("d.dgm"));
    EXPECT_EQ(ReadBytes(Path("d.dgm")), bytes);
    dc->Clear(false);
    dc->LoadDiagramFromFile(Path("d.dgm"));
    EXPECT_EQ(dc->ObjList->Count(), 2);
    EXPECT_EQ(Saved(*dc), bytes);
}

TEST_F(PersistenceFiles, SaveReplacesALongerFileWhole) {
    WriteBytes(Path("d.dgm"), std::vector<uint8_t>(5000, 0xEE));
    dc->SaveDiagramToFile(Path("d.dgm"));
    EXPECT_EQ(ReadBytes(Path("d.dgm")), Saved(*dc));
}

TEST_F(PersistenceFiles, LoadingAMissingFileRaisesATypedErrorNamingThePath) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    try {
        dc->LoadDiagramFromFile(Path("missing.dgm"));
        FAIL() << "no error";
    } catch (const EFOpenError& e) {
        EXPECT_TRUE(e.Message().contains(Path("missing.dgm"))) << e.what();
    }
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceFiles, SaveIntoAReadOnlyFolderRaisesATypedErrorAndKeepsTheDiagram) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    // The superuser may write into any folder whose mode says read-only; /proc takes no new
    // files from anyone.
    QString folder = QStringLiteral("/proc");
    if (geteuid() != 0) {
        folder = Path("ro");
        ASSERT_TRUE(QDir().mkdir(folder));
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    }
    const QString name = folder + QStringLiteral("/d.dgm");
    try {
        dc->SaveDiagramToFile(name);
        FAIL() << "no error";
    } catch (const EFCreateError& e) {
        EXPECT_TRUE(e.Message().contains(name)) << e.what();
    }
    EXPECT_FALSE(QFile::exists(name));
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceFiles, BadStreamInAFileRaisesAndLeavesTheDiagram) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    std::vector<uint8_t> cut = before;
    cut.resize(cut.size() - 3);
    WriteBytes(Path("cut.dgm"), cut);
    EXPECT_THROW(dc->LoadDiagramFromFile(Path("cut.dgm")), EReadError);
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceFiles, DefaultFileIsTheHostProgramPathWithDgmExtension) {
    TScopedHostProgramPath host(Path("editor.exe"));
    BuildSmallDiagram(*dc);
    dc->SaveDefaultDiagramFile();
    EXPECT_EQ(ReadBytes(Path("editor.dgm")), Saved(*dc));
    EXPECT_FALSE(QFile::exists(Path("editor.exe")));

    TScopedHostProgramPath plain(Path("tool"));
    dc->SaveDefaultDiagramFile();
    EXPECT_TRUE(QFile::exists(Path("tool.dgm")));
}

TEST_F(PersistenceFiles, LoadDefaultFileReadsItWhenItExists) {
    TScopedHostProgramPath host(Path("editor.exe"));
    BuildSmallDiagram(*dc);
    dc->SaveDefaultDiagramFile();
    const std::vector<uint8_t> saved = Saved(*dc);
    dc->Clear(false);
    dc->LoadDefaultDiagramFile();
    EXPECT_EQ(Saved(*dc), saved);
}

TEST_F(PersistenceFiles, LoadDefaultFileWithoutTheFileDoesNothing) {
    TScopedHostProgramPath host(Path("editor.exe"));
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    dc->LoadDefaultDiagramFile();
    EXPECT_EQ(Saved(*dc), before);
    EXPECT_TRUE(dialogs.Asked().empty());
}

TEST_F(PersistenceFiles, LoadDefaultFileFollowsALink) {
    TScopedHostProgramPath host(Path("editor.exe"));
    BuildSmallDiagram(*dc);
    dc->SaveDiagramToFile(Path("real.dgm"));
    const std::vector<uint8_t> saved = Saved(*dc);
    ASSERT_TRUE(QFile::link(Path("real.dgm"), Path("editor.dgm")));
    dc->Clear(false);
    dc->LoadDefaultDiagramFile();
    EXPECT_EQ(Saved(*dc), saved);
}

// A child process saves a large diagram over an existing file and is killed with SIGKILL. If it
// died before its save was complete, the old file must be there, whole; if it finished, the new
// one. A few tries make sure at least one kill lands in the middle of a save.
TEST_F(PersistenceFiles, SaveKilledInTheMiddleLeavesTheOldFileWhole) {
    const std::vector<uint8_t> old = Saved(*dc);
    const QString name = Path("big.dgm");
    WriteBytes(name, old);
    for (int i = 0; i < 4000; ++i)
        dc->CreateObjByDiagType(
            TDiagObjectType(1 + i % 4),
            {(i % 80) * 12, (i / 80) * 12, (i % 80) * 12 + 60, (i / 80) * 12 + 70});
    const std::vector<uint8_t> big = Saved(*dc);
    int killedMidway = 0;
    for (int attempt = 0; attempt < 6 && killedMidway == 0; ++attempt) {
        int started[2], finished[2];
        ASSERT_EQ(pipe(started), 0);
        ASSERT_EQ(pipe(finished), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            char c = 's';
            (void)!write(started[1], &c, 1);
            dc->SaveDiagramToFile(name);
            (void)!write(finished[1], &c, 1);
            pause();
            _exit(0);
        }
        close(started[1]);
        close(finished[1]);
        char c;
        ASSERT_EQ(read(started[0], &c, 1), 1);
        usleep(useconds_t(attempt * 300));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status));
        const bool done = read(finished[0], &c, 1) == 1;
        close(started[0]);
        close(finished[0]);
        const std::vector<uint8_t> now = ReadBytes(name);
        if (done) {
            EXPECT_EQ(now, big);
            WriteBytes(name, old);
        } else {
            ++killedMidway;
            EXPECT_EQ(now, old);
        }
    }
    EXPECT_GT(killedMidway, 0);
}

} // namespace
} // namespace vde::test
