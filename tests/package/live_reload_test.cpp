// Live reload with real processes: host A shows a diagram (vde_storage_host show), host B (or
// "veldiag db put") saves it, on files, SQLite and PostgreSQL; and "veldiag db watch" seeing a
// save from another process.

#include "common/db_test_util.h"
#include "common/line_process.h"
#include "common/test_util.h"
#include "storage_media.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>

using namespace vde;
using namespace vde::test;

void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

// Generous: a loaded CI machine must not fail the test; the measured delays are printed.
constexpr int kReloadBoundMs = 10000;
// How long a host is given to show an event that must not come.
constexpr int kQuietMs = 2500;

using Process = TLineProcess;

class LiveReload : public ::testing::TestWithParam<Medium> {
protected:
    QTemporaryDir dir;
    std::unique_ptr<Storage> store;

    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam() == Medium::PostgreSQL ? DbKind::PostgreSQL : DbKind::SQLite);
        ASSERT_TRUE(dir.isValid());
        store = std::make_unique<Storage>(GetParam(), dir.path());
        ASSERT_TRUE(store->Error().isEmpty()) << store->Error().toStdString();
    }

    std::unique_ptr<Process> Host(const QString& mode, const QStringList& extra = {}) {
        auto h = std::make_unique<Process>(QStringLiteral(STORAGE_HOST_PATH),
                                           QStringList{mode} + store->Args() + extra);
        EXPECT_TRUE(h->Started());
        return h;
    }

    // B stores the first version: one gate at (10, 10). Gives its fingerprint.
    QString StoreFirstVersion(Process& b) {
        EXPECT_TRUE(b.Ask(QStringLiteral("load")).startsWith(QStringLiteral("loaded -")));
        EXPECT_EQ(b.Ask(QStringLiteral("add 10 10")), QStringLiteral("added 1"));
        const QString saved = b.Ask(QStringLiteral("save"));
        EXPECT_TRUE(saved.startsWith(QStringLiteral("saved "))) << saved.toStdString();
        return Word(saved, 1);
    }

    // B adds a gate at (X, Y) and saves; gives B's "saved" line. B loads first: a table storage
    // writes only a diagram loaded into design mode since its last save.
    static QString SaveAnother(Process& b, int x, int y) {
        b.Ask(QStringLiteral("load"));
        b.Ask(QStringLiteral("add %1 %2").arg(x).arg(y));
        return b.Ask(QStringLiteral("save"));
    }
};

INSTANTIATE_TEST_SUITE_P(Processes, LiveReload,
                         ::testing::Values(Medium::File, Medium::SQLite, Medium::PostgreSQL),
                         MediumName());

} // namespace

TEST_P(LiveReload, AnUnchangedDiagramReloadsAtOnceKeepingScrollAndSelection) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    auto a = Host(QStringLiteral("show"), {QStringLiteral("--live")});
    ASSERT_EQ(a->Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    const QString selected = a->Ask(QStringLiteral("select 0"));
    ASSERT_TRUE(selected.startsWith(QStringLiteral("selected "))) << selected.toStdString();
    const QString key = Word(selected, 1);
    ASSERT_EQ(a->Ask(QStringLiteral("scroll 100 150")), QStringLiteral("view 100,150 ") + key);

    const QString saved = SaveAnother(*b, 200, 10);
    ASSERT_TRUE(saved.startsWith(QStringLiteral("saved "))) << saved.toStdString();
    QElapsedTimer t;
    t.start();
    const QString reloaded = a->Read(kReloadBoundMs);
    const qint64 ms = t.elapsed();
    ASSERT_EQ(reloaded, QStringLiteral("reloaded %1 10,10;200,10").arg(Word(saved, 1)));
    std::printf("%s: reloaded %lld ms after the other process's save returned\n",
                NameOf(GetParam()).c_str(), ms);
    EXPECT_LT(ms, kReloadBoundMs);
    // The same view, the same block selected, and nothing to undo.
    EXPECT_EQ(a->Ask(QStringLiteral("view")), QStringLiteral("view 100,150 ") + key);
    EXPECT_EQ(a->Ask(QStringLiteral("canundo")), QStringLiteral("canundo 0"));
    // Once only: no loop of reloads.
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
}

TEST_P(LiveReload, UnsavedChangesGetTheSignalOncePerVersionAndLoseNothing) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    auto a = Host(QStringLiteral("show"), {QStringLiteral("--live"), QStringLiteral("--check")});
    ASSERT_EQ(a->Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    ASSERT_EQ(a->Ask(QStringLiteral("add 300 300")), QStringLiteral("added 2"));

    const QString second = SaveAnother(*b, 200, 10);
    QElapsedTimer t;
    t.start();
    EXPECT_EQ(a->Read(kReloadBoundMs), QStringLiteral("changed Chart"));
    std::printf("%s: signalled %lld ms after the other process's save returned\n",
                NameOf(GetParam()).c_str(), t.elapsed());
    // Nothing loaded: A still shows its own diagram with its own gate, the loaded fingerprint
    // still remembered.
    EXPECT_EQ(a->Ask(QStringLiteral("places")),
              QStringLiteral("places %1 10,10;300,300").arg(first));
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
    // A newer version is news again.
    const QString third = SaveAnother(*b, 200, 100);
    EXPECT_EQ(a->Read(kReloadBoundMs), QStringLiteral("changed Chart"));
    // Keep mine: the next save is a conflict against the version now stored.
    EXPECT_EQ(a->Ask(QStringLiteral("keep")), QStringLiteral("kept"));
    EXPECT_EQ(a->Ask(QStringLiteral("save")),
              QStringLiteral("conflict %1 %2").arg(first, Word(third, 1)));
    EXPECT_EQ(a->Ask(QStringLiteral("places")),
              QStringLiteral("places %1 10,10;300,300").arg(first));
    (void)second;
}

TEST_P(LiveReload, ReloadAfterTheSignalLoadsTheirsAndClearsTheUndoSteps) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    auto a = Host(QStringLiteral("show"), {QStringLiteral("--live")});
    ASSERT_EQ(a->Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    ASSERT_EQ(a->Ask(QStringLiteral("add 300 300")), QStringLiteral("added 2"));
    ASSERT_EQ(a->Ask(QStringLiteral("canundo")), QStringLiteral("canundo 1"));
    const QString saved = SaveAnother(*b, 200, 10);
    ASSERT_EQ(a->Read(kReloadBoundMs), QStringLiteral("changed Chart"));
    EXPECT_EQ(a->Ask(QStringLiteral("reload")),
              QStringLiteral("places %1 10,10;200,10").arg(Word(saved, 1)));
    EXPECT_EQ(a->Ask(QStringLiteral("canundo")), QStringLiteral("canundo 0"));
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
}

TEST_P(LiveReload, OwnSavesAndSavesOfTheSameBytesAreNoNews) {
    auto a = Host(QStringLiteral("show"), {QStringLiteral("--live")});
    ASSERT_TRUE(a->Ask(QStringLiteral("load")).startsWith(QStringLiteral("loaded -")));
    ASSERT_EQ(a->Ask(QStringLiteral("add 10 10")), QStringLiteral("added 1"));
    const QString saved = a->Ask(QStringLiteral("save"));
    ASSERT_TRUE(saved.startsWith(QStringLiteral("saved "))) << saved.toStdString();
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
    // B loads and saves the same diagram unchanged: the stored bytes are the same.
    auto b = Host(QStringLiteral("session"));
    ASSERT_EQ(b->Ask(QStringLiteral("load")),
              QStringLiteral("loaded %1 10,10").arg(Word(saved, 1)));
    ASSERT_EQ(b->Ask(QStringLiteral("save")), saved);
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
    EXPECT_EQ(a->Ask(QStringLiteral("places")),
              QStringLiteral("places %1 10,10").arg(Word(saved, 1)));
}

TEST_P(LiveReload, WithLiveReloadOffNothingHappens) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    auto a = Host(QStringLiteral("show"));
    ASSERT_EQ(a->Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    ASSERT_TRUE(SaveAnother(*b, 200, 10).startsWith(QStringLiteral("saved ")));
    EXPECT_TRUE(a->Read(kQuietMs).startsWith(QStringLiteral("timeout")));
    EXPECT_EQ(a->Ask(QStringLiteral("places")), QStringLiteral("places %1 10,10").arg(first));
}

// ---- veldiag db watch -----------------------------------------------------------------------

namespace {

class DbWatch : public LiveReload {};

INSTANTIATE_TEST_SUITE_P(Processes, DbWatch, ::testing::Values(Medium::SQLite, Medium::PostgreSQL),
                         MediumName());

// Waits for "watching ..." on the watcher's standard error.
QString WaitUntilWatching(Process& w) {
    QString err;
    QElapsedTimer t;
    t.start();
    while (!err.contains(QLatin1Char('\n')) && t.elapsed() < 30000) {
        w.Process().waitForReadyRead(1000);
        err += QString::fromLocal8Bit(w.Process().readAllStandardError());
    }
    return err.trimmed();
}

} // namespace

TEST_P(DbWatch, CountOneEndsAfterASaveFromAnotherProcessWithItsFingerprint) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    Process w(QStringLiteral(VELDIAG_PATH),
              {QStringLiteral("db"), QStringLiteral("watch"), QStringLiteral("Chart"),
               QStringLiteral("--database"), store->Url(), QStringLiteral("--count"),
               QStringLiteral("1")});
    ASSERT_TRUE(w.Started());
    ASSERT_EQ(WaitUntilWatching(w), QStringLiteral("watching Chart ") + first);
    const QString saved = SaveAnother(*b, 200, 10);
    ASSERT_TRUE(saved.startsWith(QStringLiteral("saved "))) << saved.toStdString();
    QElapsedTimer t;
    t.start();
    const QString line = w.Read(kReloadBoundMs);
    std::printf("%s: db watch printed %lld ms after the save returned\n",
                NameOf(GetParam()).c_str(), t.elapsed());
    // "<time> Chart <fingerprint>"
    const QStringList words = line.split(QLatin1Char(' '));
    ASSERT_EQ(words.size(), 3) << line.toStdString();
    EXPECT_TRUE(QDateTime::fromString(words[0], Qt::ISODateWithMs).isValid()) << line.toStdString();
    EXPECT_EQ(words[1], QStringLiteral("Chart"));
    EXPECT_EQ(words[2], Word(saved, 1));
    ASSERT_TRUE(w.Process().waitForFinished(10000));
    EXPECT_EQ(w.Process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(w.Process().exitCode(), 0);
}

TEST_P(DbWatch, SigtermEndsTheWatchWithStatusZeroAndPrintsNothingWithoutAChange) {
    auto b = Host(QStringLiteral("session"));
    const QString first = StoreFirstVersion(*b);
    Process w(QStringLiteral(VELDIAG_PATH),
              {QStringLiteral("db"), QStringLiteral("watch"), QStringLiteral("Chart"),
               QStringLiteral("--database"), store->Url()});
    ASSERT_TRUE(w.Started());
    ASSERT_EQ(WaitUntilWatching(w), QStringLiteral("watching Chart ") + first);
    // The same bytes stored again are no change.
    ASSERT_EQ(b->Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    ASSERT_EQ(b->Ask(QStringLiteral("save")), QStringLiteral("saved ") + first);
    EXPECT_TRUE(w.Read(kQuietMs).startsWith(QStringLiteral("timeout")));
    w.Process().terminate(); // SIGTERM
    ASSERT_TRUE(w.Process().waitForFinished(10000));
    EXPECT_EQ(w.Process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(w.Process().exitCode(), 0);
}
