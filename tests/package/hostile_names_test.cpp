// Hostile diagram and tab names through the package functions, on files, SQLite and PostgreSQL:
// each name either round-trips exactly (stored under exactly that name, read back byte for byte
// by a list made afresh) or is refused with a typed error before anything is written; no file is
// ever made outside the program's folder and no statement is ever built from a name.

#include "commands/actions_test_util.h"
#include "common/db_test_util.h"

#include "velDiagEdit/commands/table_diag_actions.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/errors.h"

#include <QDir>
#include <QDirIterator>
#include <QSqlError>
#include <QSqlQuery>
#include <typeinfo>

using namespace vde;
using namespace vde::test;

namespace {

enum class Medium { File, SQLite, PostgreSQL };

void PrintTo(Medium m, std::ostream* os) {
    *os << (m == Medium::File ? "File" : m == Medium::SQLite ? "SQLite" : "PostgreSQL");
}

struct MediumName {
    template <class Info> std::string operator()(const Info& info) const {
        std::ostringstream os;
        PrintTo(info.param, &os);
        return os.str();
    }
};

// What a name leads to.
enum class Outcome { RoundTrip, Refused };

struct Hostile {
    const char* Label;
    QString Value;
};

// The names the matrix tries, as diagram names and as tab names; two would drop the table
// `sentinel` if a statement were built from them.
QList<Hostile> HostileNames(const QString& sentinel) {
    QString mixed;
    while (mixed.size() < 2000)
        mixed += QStringLiteral("ab'\";|./\\ ");
    mixed.truncate(2000);
    return {
        {"apostrophe", QStringLiteral("it's")},
        {"double quotes", QStringLiteral("say \"hi\"")},
        {"drop table", QStringLiteral("'; DROP TABLE \"%1\"; --").arg(sentinel)},
        {"drop table in double quotes", QStringLiteral("\"; DROP TABLE \"%1\"; --").arg(sentinel)},
        {"bar", QStringLiteral("a|b")},
        {"bar into another record", QStringLiteral("frmConfig.Victim|DiagramChart|x")},
        {"dot", QStringLiteral(".")},
        {"two dots", QStringLiteral("..")},
        {"slash", QStringLiteral("a/b")},
        {"up a folder", QStringLiteral("../escape")},
        {"backslash", QStringLiteral("a\\b")},
        {"NUL", QStringLiteral("a") + QChar(0) + QStringLiteral("b")},
        {"2,000 letters", QStringLiteral("D") + QString(1999, QLatin1Char('x'))},
        {"2,000 mixed characters", mixed},
        {"right to left", QString::fromUtf8("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D "
                                            "\xD9\x85\xD8\xB1\xD8\xAD\xD8\xA8\xD8\xA7")},
        {"emoji", QString::fromUtf8("\xF0\x9F\x98\x80 diagram \xF0\x9F\x94\xA5")},
    };
}

QByteArray Bytes(const std::vector<uint8_t>& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

bool IsIdentifier(const QString& s) {
    if (s.isEmpty())
        return false;
    for (qsizetype i = 0; i < s.size(); ++i) {
        const QChar c = s[i];
        const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
        if (!letter && !(c >= u'0' && c <= u'9' && i > 0))
            return false;
    }
    return true;
}

class HostileNamesTest : public ::testing::TestWithParam<Medium> {
protected:
    QTemporaryDir dir, dbDir;
    QString program;
    std::unique_ptr<TScopedHostProgramPath> hostPath;
    HostPanel host;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    TMenuItem andItem{nullptr};
    std::unique_ptr<TestDatabase> db;
    QString table;
    std::unique_ptr<TDataSet> data;
    QString sentinel = QStringLiteral("vde_sentinel");

    bool IsFile() const { return GetParam() == Medium::File; }

    void SetUp() override {
        ASSERT_TRUE(dir.isValid() && dbDir.isValid());
        andItem.Tag = doAndLogic;
        program = dir.filePath(QStringLiteral("program"));
        ASSERT_TRUE(QDir().mkpath(program));
        hostPath = std::make_unique<TScopedHostProgramPath>(program + QStringLiteral("/host"));
        SetDataFieldSuffix(QString());
        if (!IsFile()) {
            const DbKind kind = GetParam() == Medium::SQLite ? DbKind::SQLite : DbKind::PostgreSQL;
            VDE_SKIP_WITHOUT_PG(kind);
            db = std::make_unique<TestDatabase>(kind);
            if (!db->Error().isEmpty())
                FAIL() << db->Error().toStdString();
            table = db->NewTableName(QStringLiteral("Config"));
            db->CreateConfigTable(table, QStringLiteral("\"BinData\" %1").arg(db->BlobType()));
            data = std::make_unique<TDataSet>(db->ConnectionName(), table);
        }
        if (db) {
            sentinel = db->NewTableName(sentinel);
            db->Exec(QStringLiteral("CREATE TABLE %1 (x INTEGER)").arg(db->Quote(sentinel)));
        }
    }

    void TearDown() override {
        FreeDiagActionsList();
        data.reset();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
    }

    // Everything stored: the files under the scratch folder (program folder and beside it), or
    // the records' sections with their bytes.
    QStringList Everything() const {
        QStringList out;
        QDirIterator it(dir.path(), QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = it.next();
            out << QDir(dir.path()).relativeFilePath(file) + QLatin1Char('|') +
                       QString::number(qHash(Bytes(FileBytes(file))));
        }
        if (db) {
            QSqlQuery q(db->Db());
            EXPECT_TRUE(q.exec(QStringLiteral("SELECT \"Section\", \"Key\", \"BinData\" FROM %1 "
                                              "ORDER BY \"id\"")
                                   .arg(db->Quote(table))));
            while (q.next())
                out << q.value(0).toString() + QLatin1Char('|') + q.value(1).toString() +
                           QLatin1Char('|') + QString::number(qHash(q.value(2).toByteArray()));
        }
        out.sort();
        return out;
    }

    void NewList() {
        FreeDiagActionsList();
        QObject* owner = new QObject(&host.panel);
        CreateDiagActionsList(owner, data.get(), IsFile() ? QString() : QStringLiteral("Config"));
    }

    // Loads the diagram `name` of tab `tab`, adds a gate, saves, then reads it back through a
    // new list. Raises what the library raised; gives whether the bytes came back equal.
    bool RoundTrip(const QString& name, const QString& tab) {
        NewList();
        TdmDiagActions* m =
            CreateAndLoadDiagActionsEx(name, tab, &host.panel, &host.canvas, true, true);
        m->DiagContr->FClickPoint = {20, 20};
        m->DiagContr->CreateDiagObEvent(&andItem);
        const std::vector<uint8_t> saved = DiagramBytes(*m->DiagContr);
        SaveDiagActionsDiagrams(name);
        NewList();
        TdmDiagActions* r =
            CreateAndLoadDiagActionsEx(name, tab, &host.panel, &host.canvas, false, true);
        return DiagramBytes(*r->DiagContr) == saved;
    }

    // Where the diagram `name` of tab `tab` must be: a file of the program folder or a section.
    QString StoredUnder(const QString& name, const QString& tab) const {
        return IsFile() ? QStringLiteral("program/") + name + QStringLiteral(".dgm|")
                        : QStringLiteral("frmMain.") + tab + QLatin1Char('.') + name +
                              QStringLiteral("|DiagramChart");
    }

    // Runs one name: checks it either round-trips under exactly its place or is refused with
    // nothing written. Gives the outcome and the error's class and message when refused.
    Outcome Try(const QString& name, const QString& tab, QString* error) {
        const QStringList before = Everything();
        try {
            const bool equal = RoundTrip(name, tab);
            EXPECT_TRUE(equal);
            const QStringList after = Everything();
            // Exactly one thing more, under the exact name.
            QStringList added;
            for (const QString& s : after)
                if (!before.contains(s))
                    added << s;
            EXPECT_EQ(added.size(), 1) << added.join(QLatin1Char('\n')).toStdString();
            const QString place = StoredUnder(name, tab);
            EXPECT_TRUE(!added.isEmpty() && added[0].startsWith(place))
                << (added.isEmpty() ? std::string("nothing") : added[0].toStdString());
            return Outcome::RoundTrip;
        } catch (const Exception& e) {
            *error = QString::fromLatin1(typeid(e).name()) + QStringLiteral(": ") + e.Message();
            EXPECT_FALSE(e.Message().isEmpty());
            EXPECT_EQ(Everything(), before) << "something was written before the refusal";
            return Outcome::Refused;
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Media, HostileNamesTest,
                         ::testing::Values(Medium::File, Medium::SQLite, Medium::PostgreSQL),
                         MediumName());

} // namespace

TEST_P(HostileNamesTest, DiagramNamesThatAreNoComponentNameAreRefusedTheRestRoundTrip) {
    for (const Hostile& h : HostileNames(sentinel)) {
        SCOPED_TRACE(h.Label);
        QString error;
        const Outcome o = Try(h.Value, QStringLiteral("frmTab"), &error);
        if (!IsIdentifier(h.Value)) {
            EXPECT_EQ(o, Outcome::Refused);
            EXPECT_TRUE(error.contains(QStringLiteral("EComponentError")) &&
                        error.contains(QStringLiteral("not a valid component name")))
                << error.left(300).toStdString();
        } else if (IsFile()) {
            // 2,000 letters are no file name the system takes.
            EXPECT_EQ(o, Outcome::Refused);
            EXPECT_TRUE(error.contains(QStringLiteral("EFCreateError")) &&
                        error.contains(QStringLiteral("too long")))
                << error.left(300).toStdString();
        } else {
            EXPECT_EQ(o, Outcome::RoundTrip) << error.left(300).toStdString();
        }
    }
    EXPECT_TRUE(!db || db->Db().tables().contains(sentinel)); // never dropped
}

TEST_P(HostileNamesTest, TabNamesRoundTripUnderTheirExactSectionOrAreRefused) {
    for (const Hostile& h : HostileNames(sentinel)) {
        SCOPED_TRACE(h.Label);
        QString error;
        const Outcome o = Try(QStringLiteral("Chart"), h.Value, &error);
        if (IsFile()) {
            // A diagram in a file has no tab: the name changes nothing.
            EXPECT_EQ(o, Outcome::RoundTrip) << error.left(300).toStdString();
        } else if (h.Value.contains(QLatin1Char('|'))) {
            EXPECT_EQ(o, Outcome::Refused);
            EXPECT_TRUE(error.contains(QStringLiteral("EInvalidOperation")) &&
                        error.contains(QStringLiteral("separates")))
                << error.left(300).toStdString();
        } else if (h.Value.contains(QChar(0)) && GetParam() == Medium::PostgreSQL) {
            // PostgreSQL text cannot hold it; SQLite keeps it like any other character.
            EXPECT_EQ(o, Outcome::Refused);
            EXPECT_TRUE(error.contains(QStringLiteral("EDatabaseError")) &&
                        error.contains(QStringLiteral("NUL character")))
                << error.left(300).toStdString();
        } else {
            EXPECT_EQ(o, Outcome::RoundTrip) << error.left(300).toStdString();
        }
    }
    EXPECT_TRUE(!db || db->Db().tables().contains(sentinel));
}

namespace {
// By name, a table module names records, not files: this one is for files only.
class HostileFileNames : public HostileNamesTest {};
INSTANTIATE_TEST_SUITE_P(Media, HostileFileNames, ::testing::Values(Medium::File), MediumName());
} // namespace

TEST_P(HostileFileNames, TheModulesSaveAndLoadByNameStayInTheProgramsFolder) {
    NewList();
    TdmDiagActions* m = CreateAndLoadDiagActionsEx(QStringLiteral("Chart"), QString(), &host.panel,
                                                   &host.canvas, true, true);
    m->DiagContr->FClickPoint = {20, 20};
    m->DiagContr->CreateDiagObEvent(&andItem);
    const std::vector<uint8_t> saved = DiagramBytes(*m->DiagContr);
    for (const Hostile& h : HostileNames(sentinel)) {
        SCOPED_TRACE(h.Label);
        const QStringList before = Everything();
        const QString& n = h.Value;
        const bool pathLike = n == QLatin1String(".") || n == QLatin1String("..") ||
                              n.contains(QLatin1Char('/')) || n.contains(QLatin1Char('\\')) ||
                              n.contains(QChar(0));
        try {
            m->SaveDiagram(n);
            EXPECT_FALSE(pathLike);
            EXPECT_EQ(FileBytes(program + QLatin1Char('/') + n + QStringLiteral(".dgm")), saved);
            m->DiagContr->Clear(false);
            m->LoadDiagram(n);
            EXPECT_EQ(DiagramBytes(*m->DiagContr), saved);
        } catch (const EInvalidOperation& e) {
            EXPECT_TRUE(pathLike) << e.Message().toStdString();
            EXPECT_TRUE(e.Message().contains(QStringLiteral("path separator")));
            EXPECT_EQ(Everything(), before);
        } catch (const EFCreateError& e) {
            EXPECT_GT(n.toUtf8().size(), 250) << e.Message().toStdString();
            EXPECT_EQ(Everything(), before);
        }
    }
    // Nothing beside the program's folder.
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList{QStringLiteral("program")});
}
