// Storage with real processes: two host programs (vde_storage_host) on one diagram racing to save
// it, and a host killed with SIGKILL while it saves, on files, a text file, SQLite and
// PostgreSQL.

#include "common/db_test_util.h"
#include "common/line_process.h"
#include "common/test_util.h"
#include "storage_media.h"

#include <velDiagEdit/velDiagEdit.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <memory>

using namespace vde;
using namespace vde::test;

// Host lines read as text in failure messages.
void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

namespace {

const QString kSection = QStringLiteral("frmMain.frmConfig.Chart");

// The storage host program, spoken to line by line.
struct Host : TLineProcess {
    explicit Host(const QStringList& args)
        : TLineProcess(QStringLiteral(STORAGE_HOST_PATH), args) {}
};

// The places of the blocks of a stored diagram, as "x,y" texts; empty for nothing stored.
QStringList Places(const QByteArray& stored) {
    if (stored.isEmpty())
        return {};
    QWidget panel;
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    TMemoryStream s(std::vector<uint8_t>(stored.begin(), stored.end()));
    dc.LoadFromStream(s);
    QStringList out;
    for (int i = 0; i < dc.ObjList->Count(); ++i) {
        const QPoint p = dc.ObjList->Items(i)->pos();
        out << QStringLiteral("%1,%2").arg(p.x()).arg(p.y());
    }
    return out;
}

QString Sha(const QByteArray& b) {
    return b.isEmpty() ? QStringLiteral("-") : ContentFingerprint(b);
}

// ---- two users of one diagram ------------------------------------------------------------------

class LostUpdate : public ::testing::TestWithParam<Medium> {
protected:
    QTemporaryDir dir;
    std::unique_ptr<Storage> store;

    void SetUp() override {
        VDE_SKIP_WITHOUT_PG(GetParam() == Medium::PostgreSQL ? DbKind::PostgreSQL : DbKind::SQLite);
        ASSERT_TRUE(dir.isValid());
        store = std::make_unique<Storage>(GetParam(), dir.path());
        ASSERT_TRUE(store->Error().isEmpty()) << store->Error().toStdString();
    }

    std::unique_ptr<Host> Start(const QStringList& extra) {
        auto h =
            std::make_unique<Host>(QStringList{QStringLiteral("session")} + store->Args() + extra);
        EXPECT_TRUE(h->Started());
        return h;
    }

    // A stores a first version with one gate at (10, 10); then A and B both load it.
    void BothLoadTheFirstVersion(Host& a, Host& b) {
        ASSERT_TRUE(a.Ask(QStringLiteral("load")).startsWith(QStringLiteral("loaded -")));
        ASSERT_EQ(a.Ask(QStringLiteral("add 10 10")), QStringLiteral("added 1"));
        const QString saved = a.Ask(QStringLiteral("save"));
        ASSERT_EQ(saved, QStringLiteral("saved ") + Sha(store->Stored()));
        const QString first = Word(saved, 1);
        ASSERT_EQ(a.Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
        ASSERT_EQ(b.Ask(QStringLiteral("load")), QStringLiteral("loaded %1 10,10").arg(first));
    }
};

INSTANTIATE_TEST_SUITE_P(Processes, LostUpdate,
                         ::testing::Values(Medium::File, Medium::SQLite, Medium::PostgreSQL),
                         MediumName());

} // namespace

TEST_P(LostUpdate, WithTheCheckOffBothSavesPassAndTheFirstUsersGateIsLost) {
    auto a = Start({});
    auto b = Start({});
    BothLoadTheFirstVersion(*a, *b);
    ASSERT_EQ(a->Ask(QStringLiteral("add 100 10")), QStringLiteral("added 2"));
    ASSERT_EQ(b->Ask(QStringLiteral("add 10 120")), QStringLiteral("added 2"));
    const QString savedA = a->Ask(QStringLiteral("save"));
    const QString savedB = b->Ask(QStringLiteral("save"));
    EXPECT_TRUE(savedA.startsWith(QStringLiteral("saved "))) << savedA.toStdString();
    EXPECT_TRUE(savedB.startsWith(QStringLiteral("saved "))) << savedB.toStdString();
    // The last save wins: B's version is stored, and A's gate at (100, 10) is in no diagram.
    EXPECT_EQ(Word(savedB, 1), Sha(store->Stored()));
    EXPECT_EQ(Places(store->Stored()),
              (QStringList{QStringLiteral("10,10"), QStringLiteral("10,120")}));
    EXPECT_EQ(a->Ask(QStringLiteral("load")),
              QStringLiteral("loaded %1 10,10;10,120").arg(Word(savedB, 1)));
}

TEST_P(LostUpdate, WithTheCheckOnTheSecondSaveIsAConflictAndSaveAsCopyKeepsBothGates) {
    auto a = Start({QStringLiteral("--check"), QStringLiteral("--answer"), QStringLiteral("copy")});
    auto b = Start({QStringLiteral("--check"), QStringLiteral("--answer"), QStringLiteral("copy")});
    BothLoadTheFirstVersion(*a, *b);
    ASSERT_EQ(a->Ask(QStringLiteral("add 100 10")), QStringLiteral("added 2"));
    ASSERT_EQ(b->Ask(QStringLiteral("add 10 120")), QStringLiteral("added 2"));
    EXPECT_TRUE(a->Ask(QStringLiteral("save")).startsWith(QStringLiteral("saved ")));
    EXPECT_EQ(b->Ask(QStringLiteral("save")), QStringLiteral("resolved SaveAsCopy Chart_copy1"));
    EXPECT_TRUE(b->Read().startsWith(QStringLiteral("saved ")));
    EXPECT_EQ(Places(store->Stored()),
              (QStringList{QStringLiteral("10,10"), QStringLiteral("100,10")}));
    EXPECT_EQ(Places(store->Stored(QStringLiteral("Chart_copy1"))),
              (QStringList{QStringLiteral("10,10"), QStringLiteral("10,120")}));
}

TEST_P(LostUpdate, WithTheCheckOnAndNoDialogServiceTheSecondSaveRaisesWithBothFingerprints) {
    auto a = Start({QStringLiteral("--check")});
    auto b = Start({QStringLiteral("--check")});
    BothLoadTheFirstVersion(*a, *b);
    const QString first = Sha(store->Stored());
    a->Ask(QStringLiteral("add 100 10"));
    b->Ask(QStringLiteral("add 10 120"));
    const QString savedA = a->Ask(QStringLiteral("save"));
    ASSERT_EQ(savedA, QStringLiteral("saved ") + Sha(store->Stored()));
    EXPECT_EQ(b->Ask(QStringLiteral("save")),
              QStringLiteral("conflict %1 %2").arg(first, Word(savedA, 1)));
    EXPECT_EQ(Places(store->Stored()),
              (QStringList{QStringLiteral("10,10"), QStringLiteral("100,10")}));
}

// Both saves released at the same moment, 50 times: one passes, the other is a conflict, never
// both.
TEST_P(LostUpdate, FiftyRacesOfTwoSimultaneousSavesNeverLetBothPass) {
    auto a = Start({QStringLiteral("--check")});
    auto b = Start({QStringLiteral("--check")});
    BothLoadTheFirstVersion(*a, *b);
    int passedA = 0, passedB = 0, bothPassed = 0, nonePassed = 0;
    constexpr int kRounds = 50;
    for (int round = 0; round < kRounds; ++round) {
        const QString loadA = a->Ask(QStringLiteral("load"));
        const QString loadB = b->Ask(QStringLiteral("load"));
        ASSERT_EQ(Word(loadA, 1), Word(loadB, 1));
        a->Ask(QStringLiteral("add %1 300").arg(10 + 70 * round));
        b->Ask(QStringLiteral("add %1 400").arg(10 + 70 * round));
        // Both commands are written before either is flushed; the order alternates.
        Host& first = round % 2 ? *b : *a;
        Host& second = round % 2 ? *a : *b;
        first.Send(QStringLiteral("save"));
        second.Send(QStringLiteral("save"));
        first.Flush();
        second.Flush();
        const QString ra = a->Read(), rb = b->Read();
        const bool okA = ra.startsWith(QStringLiteral("saved ")),
                   okB = rb.startsWith(QStringLiteral("saved "));
        passedA += okA;
        passedB += okB;
        bothPassed += okA && okB;
        nonePassed += !okA && !okB;
        ASSERT_TRUE(okA != okB) << "round " << round << ": A " << ra.toStdString() << ", B "
                                << rb.toStdString();
        const QString& winner = okA ? ra : rb;
        const QString& loser = okA ? rb : ra;
        EXPECT_EQ(Word(winner, 1), Sha(store->Stored()));
        EXPECT_EQ(loser, QStringLiteral("conflict %1 %2").arg(Word(loadA, 1), Word(winner, 1)));
    }
    std::printf("%s: %d races, A passed %d, B passed %d, both passed %d, neither %d\n",
                NameOf(GetParam()).c_str(), kRounds, passedA, passedB, bothPassed, nonePassed);
    EXPECT_EQ(bothPassed, 0);
    EXPECT_EQ(passedA + passedB, kRounds);
}

// ---- SIGKILL while saving ----------------------------------------------------------------------

namespace {

class KillDuringSave : public ::testing::TestWithParam<Medium> {};

INSTANTIATE_TEST_SUITE_P(Processes, KillDuringSave,
                         ::testing::Values(Medium::File, Medium::Text, Medium::SQLite),
                         MediumName());

} // namespace

TEST_P(KillDuringSave, TheStoredDiagramIsAlwaysOneOfTheTwoVersionsAndNoTemporaryFileStays) {
    QTemporaryDir dir, versions;
    ASSERT_TRUE(dir.isValid() && versions.isValid());
    Storage store(GetParam(), dir.path());
    ASSERT_TRUE(store.Error().isEmpty()) << store.Error().toStdString();
    // 100 × 100 gates: a diagram of 10,000 blocks, whose save takes long enough to be hit.
    const QString side = qEnvironmentVariable("VDE_KILL_TEST_SIDE", QStringLiteral("100"));
    const int rounds = qEnvironmentVariableIntValue("VDE_KILL_TEST_ROUNDS") > 0
                           ? qEnvironmentVariableIntValue("VDE_KILL_TEST_ROUNDS")
                           : 30;
    const QString target = GetParam() == Medium::File   ? QStringLiteral("Chart.dgm")
                           : GetParam() == Medium::Text ? QStringLiteral("Chart.txt")
                                                        : QStringLiteral("config.db");
    int sawA = 0, sawB = 0, leftovers = 0;
    qint64 saveMs = 0;
    for (int round = 0; round < rounds; ++round) {
        Host h(QStringList{QStringLiteral("churn")} + store.Args() +
               QStringList{QStringLiteral("--dir"), dir.path(), QStringLiteral("--versions"),
                           versions.path(), QStringLiteral("--side"), side});
        ASSERT_TRUE(h.Started());
        const QString ready = h.Read(120000);
        ASSERT_TRUE(ready.startsWith(QStringLiteral("ready "))) << ready.toStdString();
        saveMs = std::max<qint64>(1, Word(ready, 1).toLongLong());
        // Anywhere in the next few saves.
        QThread::usleep(QRandomGenerator::global()->bounded(quint32(saveMs * 3000 + 2000)));
        h.Kill();
        ASSERT_EQ(h.Process().exitStatus(), QProcess::CrashExit);

        const QByteArray a = ReadFile(versions.filePath(QStringLiteral("a")));
        const QByteArray b = ReadFile(versions.filePath(QStringLiteral("b")));
        ASSERT_FALSE(a.isEmpty());
        ASSERT_NE(a, b);
        const QByteArray stored = store.Stored();
        const bool isA = stored == a, isB = stored == b;
        sawA += isA;
        sawB += isB;
        ASSERT_TRUE(isA || isB) << "round " << round << ": " << stored.size()
                                << " bytes stored, versions of " << a.size() << " and " << b.size();
        // What the kill left beside the target, before anything else touches the folder: only
        // a kill between the link and the rename of a save leaves its new file.
        for (const QString& f : store.Files()) {
            if (f == target)
                continue;
            ++leftovers;
            ASSERT_TRUE(f.startsWith(target + QStringLiteral(".vde-save-")) ||
                        (GetParam() == Medium::SQLite && f == target + QStringLiteral("-journal")))
                << f.toStdString();
        }
        // The stored diagram loads through the library, which removes what the killed writer
        // left.
        QWidget panel;
        TCanvas canvas;
        canvas.SetHandle(&panel);
        if (GetParam() == Medium::Text) {
            TDiagContainer dc(&panel, &canvas, nullptr);
            ASSERT_NO_THROW(dc.LoadDiagramFromText(dir.filePath(target)));
            EXPECT_EQ(dc.ObjList->Count(), side.toInt() * side.toInt() + 1);
        } else if (GetParam() == Medium::File) {
            TScopedHostProgramPath program(dir.filePath(QStringLiteral("host")));
            QObject owner;
            TdmDiagActions m(&owner);
            m.SetName(QStringLiteral("Chart"));
            m.CreateContainer(&panel, &canvas);
            ASSERT_NO_THROW(m.LoadDiagram(QString()));
            EXPECT_EQ(m.DiagContr->ObjList->Count(), side.toInt() * side.toInt() + 1);
            EXPECT_EQ(m.GetStoredFingerprint(), ContentFingerprint(stored));
        } else {
            EXPECT_EQ(Places(stored).size(), side.toInt() * side.toInt() + 1);
            store.WriteOnce();
            ASSERT_TRUE(store.Error().isEmpty()) << store.Error().toStdString();
        }
        ASSERT_EQ(store.Files(), QStringList{target}) << "round " << round;
    }
    std::printf("%s: %d kills (first save of each took about %lld ms), stored version a %d "
                "times, b %d times, never anything else; %d kills left a file beside it until "
                "the next load\n",
                NameOf(GetParam()).c_str(), rounds, saveMs, sawA, sawB, leftovers);
}
