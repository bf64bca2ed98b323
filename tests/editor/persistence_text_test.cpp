// The text form: three lines per block written; sections read in file order with the
// skipping rules; a bad value adds nothing.
#include "editor/persistence_util.h"

#include <QTemporaryDir>

namespace vde::test {
namespace {

class PersistenceText : public EditorFixture {
protected:
    QTemporaryDir tmp;
    QString Path(const char* name) const { return tmp.filePath(QString::fromLatin1(name)); }
    QString Write(const char* name, const QByteArray& text) {
        QFile f(Path(name));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text);
        return Path(name);
    }
    static QByteArray Read(const QString& name) {
        QFile f(name);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

TEST_F(PersistenceText, SaveWritesNameTypeAndBoundsOfEveryBlockInListOrder) {
    TDiagObject* a = dc->CreateObjByDiagType(doAndLogic, {10, 20, 60, 70});
    a->setObjectName(QStringLiteral("Gate1"));
    dc->CreateObjByDiagType(doRSTrigger, {100, -5, 180, 95});
    TDiagObject* t = dc->CreateObjByDiagType(doText, {0, 0, 150, 50});
    t->setObjectName(QStringLiteral("Überschrift"));
    dc->SaveDiagramToText(Path("d.txt"));
    EXPECT_EQ(Read(Path("d.txt")), QByteArray("[Gate1]\n"
                                              "Type=doAndLogic\n"
                                              "Bounds=10,20,60,70\n"
                                              "[]\n"
                                              "Type=doRSTrigger\n"
                                              "Bounds=100,-5,180,95\n"
                                              "[\xC3\x9C"
                                              "berschrift]\n"
                                              "Type=doText\n"
                                              "Bounds=0,0,150,50\n"));
}

TEST_F(PersistenceText, EmptyDiagramWritesAnEmptyFile) {
    dc->SaveDiagramToText(Path("d.txt"));
    EXPECT_TRUE(QFile::exists(Path("d.txt")));
    EXPECT_EQ(Read(Path("d.txt")), QByteArray());
}

TEST_F(PersistenceText, SectionGate1AddsOneAndBlockAndLoadingTwiceAddsTwo) {
    const QString name = Write("g.txt", "[Gate1]\nType=doAndLogic\nBounds=10,20,60,70\n");
    dc->LoadDiagramFromText(name);
    ASSERT_EQ(dc->ObjList->Count(), 1);
    TDiagObject* b = dc->ObjList->Items(0);
    EXPECT_EQ(b->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(b->x(), 10);
    EXPECT_EQ(b->y(), 20);
    EXPECT_EQ(b->width(), 50);
    EXPECT_EQ(b->height(), 50);
    // The section name does not name the block.
    EXPECT_NE(b->objectName(), QStringLiteral("Gate1"));
    dc->LoadDiagramFromText(name);
    EXPECT_EQ(dc->ObjList->Count(), 2);
}

TEST_F(PersistenceText, LoadingAddsToTheOpenDiagramWithoutGivingTheNewBlocksEvents) {
    BuildSmallDiagram(*dc);
    dc->LoadDiagramFromText(Write("g.txt", "[x]\nType=doOrLogic\nBounds=0,0,60,70\n"));
    ASSERT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(dc->SelObj.data(), dc->ObjList->Items(1));
    EXPECT_FALSE(bool(dc->ObjList->Items(2)->GetOnModifyBounds()));
}

TEST_F(PersistenceText, TypeDoNoneOrAnUnknownNameCreatesNothing) {
    dc->LoadDiagramFromText(Write("g.txt", "[a]\nType=doNone\nBounds=0,0,60,70\n"
                                           "[b]\nType=doXorLogic\nBounds=0,0,60,70\n"
                                           "[c]\nType=AndLogic\nBounds=0,0,60,70\n"));
    EXPECT_EQ(dc->ObjList->Count(), 0);
}

TEST_F(PersistenceText, SectionsWithoutBoundsOrTypeAreSkipped) {
    dc->LoadDiagramFromText(Write("g.txt", "[a]\nType=doText\n"
                                           "[b]\nBounds=0,0,60,70\n"
                                           "[c]\nType=\nBounds=0,0,60,70\n"
                                           "[d]\nType=doText\nBounds=\n"
                                           "[e]\nType=doText\nBounds=1,2,151,52\n"));
    ASSERT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->ObjList->Items(0)->BoundsRect(), (TRect{1, 2, 151, 52}));
}

TEST_F(PersistenceText, KeysAndTypeNamesMatchIgnoringCaseAndWindowsLineEndsAreRead) {
    dc->LoadDiagramFromText(
        Write("g.txt", "[Gate1]\r\nTYPE=DOANDLOGIC\r\nbounds = 10, 20, 60, 70\r\n"));
    ASSERT_EQ(dc->ObjList->Count(), 1);
    EXPECT_EQ(dc->ObjList->Items(0)->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(dc->ObjList->Items(0)->BoundsRect(), (TRect{10, 20, 60, 70}));
}

TEST_F(PersistenceText, SectionsAreReadInFileOrderEvenWithRepeatedNames) {
    dc->LoadDiagramFromText(Write("g.txt", "[z]\nType=doOrLogic\nBounds=0,0,60,70\n"
                                           "[a]\nType=doText\nBounds=0,0,60,70\n"
                                           "[z]\nType=doAndLogic\nBounds=0,0,60,70\n"));
    ASSERT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->ObjList->Items(0)->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(dc->ObjList->Items(1)->GetDiagObjType(), doText);
    EXPECT_EQ(dc->ObjList->Items(2)->GetDiagObjType(), doAndLogic);
}

TEST_F(PersistenceText, MalformedBoundsRaiseAConversionErrorNamingSectionAndLineAndAddNothing) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    const QString name = Write("g.txt", "[ok]\nType=doText\nBounds=0,0,60,70\n"
                                        "[bad]\nType=doText\nBounds=0,x,60,70\n");
    try {
        dc->LoadDiagramFromText(name);
        FAIL() << "no error";
    } catch (const EConvertError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("[bad]"))) << e.what();
        EXPECT_TRUE(e.Message().contains(QStringLiteral("line 4"))) << e.what();
    }
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceText, MissingFileReadsAsEmpty) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    dc->LoadDiagramFromText(Path("missing.txt"));
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceText, EveryExampleTextLoadsAndSavesToTheSameText) {
    const QStringList files = ExampleFiles(QStringLiteral("txt"));
    ASSERT_GE(files.size(), 4);
    for (const QString& file : files) {
        dc->Clear(false);
        dc->LoadDiagramFromText(file);
        EXPECT_GT(dc->ObjList->Count(), 0) << file.toStdString();
        dc->SaveDiagramToText(Path("again.txt"));
        EXPECT_EQ(Read(Path("again.txt")), Read(file)) << file.toStdString();
    }
}

TEST_F(PersistenceText, ExampleTextListsTheBlocksOfItsBinaryTwin) {
    for (const QString& file : ExampleFiles(QStringLiteral("dgm"))) {
        dc->LoadDiagramFromFile(file);
        dc->SaveDiagramToText(Path("twin.txt"));
        QString text = file;
        text.replace(QStringLiteral(".dgm"), QStringLiteral(".txt"));
        EXPECT_EQ(Read(Path("twin.txt")), Read(text)) << file.toStdString();
    }
}

} // namespace
} // namespace vde::test
