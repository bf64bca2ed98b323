// The package functions a host calls and the list of diagrams by name behind them.

#include "commands/actions_test_util.h"
#include "common/mouse_util.h"

#include "velDiagEdit/commands/diag_actions_list.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <QDir>
#include <QFileInfo>
#include <typeinfo>

using namespace vde;
using namespace vde::test;

namespace {

class PackageFixture : public ::testing::Test {
protected:
    QTemporaryDir dir;
    TScopedHostProgramPath hostPath{dir.filePath(QStringLiteral("host.exe"))};
    HostPanel left, right;
    TScriptedInputState input;
    TScopedInputState inputGuard{&input};
    TScriptedDialogService dialogs;
    TScopedDialogService dialogGuard{&dialogs};
    TRecordingPopupService popups;
    TScopedPopupService popupGuard{&popups};
    QObject owner;

    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        ASSERT_EQ(GetDiagActionsList(), nullptr) << "a list left over from another test";
    }

    void TearDown() override {
        FreeDiagActionsList();
        EXPECT_TRUE(dialogs.Failures().isEmpty())
            << dialogs.Failures().join(QLatin1Char('\n')).toStdString();
        EXPECT_EQ(dialogs.Pending(), 0u);
    }

    QString File(const QString& name) const { return dir.filePath(name + QStringLiteral(".dgm")); }

    QStringList DiagramFiles() const {
        return QDir(dir.path()).entryList({QStringLiteral("*.dgm")}, QDir::Files, QDir::Name);
    }

    // A diagram file holding one AND gate at (x, y), written by a module of its own.
    void WriteDiagram(const QString& name, int x, int y) {
        HostPanel scratch;
        TdmDiagActions m(nullptr);
        m.CreateContainer(&scratch.panel, &scratch.canvas);
        m.DiagContr->FClickPoint = {x, y};
        m.DiagContr->CreateObjectAtMousePos(doAndLogic);
        m.DiagContr->SaveDiagramToFile(File(name));
    }
};

int Blocks(TdmDiagActions* m) {
    return m && m->DiagContr && m->DiagContr->ObjList ? m->DiagContr->ObjList->Count() : -1;
}

// A stand-in for a host's dataset: the list only passes it on.
TDataSet* SomeDataSet() {
    static int storage = 0;
    return reinterpret_cast<TDataSet*>(&storage);
}

} // namespace

// ---- without a list or a current diagram ------------------------------------------------------

TEST_F(PackageFixture, EveryFunctionDoesNothingWithoutAList) {
    EXPECT_EQ(CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas), nullptr);
    EXPECT_EQ(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true),
              nullptr);
    EXPECT_EQ(CreateAndLoadDiagActionsEx(QStringLiteral("Left"), QStringLiteral("Tab"), &left.panel,
                                         &left.canvas, true, true),
              nullptr);
    SaveDiagActionsDiagrams(QString());
    SaveDiagActionsDiagrams(QStringLiteral("Left"));
    EnableDesignMode(true, true);
    EnableDesignMode(true, false);
    ClearDiagActionsDiagram(false);
    SaveDiagramToFile();
    LoadDiagramFromFile();
    EXPECT_FALSE(IsDesignModeEnabled());
    EXPECT_EQ(GetCurrentNodeControl(), nullptr);
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
    EXPECT_TRUE(DiagramFiles().isEmpty());
    EXPECT_TRUE(dialogs.Asked().empty());
    EXPECT_TRUE(left.panel.children().isEmpty());
}

TEST_F(PackageFixture, IsDesignModeEnabledBeforeAnyCreateAndLoadCallReturnsFalse) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    ASSERT_NE(m, nullptr);
    m->SetDesignMode(true);
    // The module is in design mode, but it is not the current one: none is yet.
    EXPECT_FALSE(IsDesignModeEnabled());
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
    EnableDesignMode(false, false);
    EXPECT_TRUE(m->GetDesignMode());
    SaveDiagramToFile();
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- the list ---------------------------------------------------------------------------------

TEST_F(PackageFixture, ASecondCreateDiagActionsListChangesNothingNotEvenTheSuffix) {
    CreateDiagActionsList(&owner, nullptr, QString(), QStringLiteral("A"));
    TDiagActionsList* list = GetDiagActionsList();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(GetDataFieldSuffix(), QStringLiteral("A"));
    QObject other;
    CreateDiagActionsList(&other, SomeDataSet(), QStringLiteral("frmOther"), QStringLiteral("B"));
    EXPECT_EQ(GetDiagActionsList(), list);
    EXPECT_EQ(list->GetOwner(), &owner);
    EXPECT_EQ(list->GetDataStore(), nullptr);
    EXPECT_TRUE(list->GetModuleName().isEmpty());
    EXPECT_EQ(GetDataFieldSuffix(), QStringLiteral("A"));
}

TEST_F(PackageFixture,
       CreateDiagActionsWithANameAlreadyPresentReturnsTheExistingModuleEvenForAnotherParent) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(CreateDiagActions(QStringLiteral("Left"), &right.panel, &right.canvas), m);
    // Names are compared without regard to case.
    EXPECT_EQ(CreateDiagActions(QStringLiteral("LEFT"), &right.panel, nullptr), m);
    EXPECT_EQ(GetDiagActionsList()->Count(), 1);
    EXPECT_EQ(m->DiagContr->GetParent(), &left.panel);
    EXPECT_TRUE(right.panel.children().isEmpty());
}

TEST_F(PackageFixture, CreateDiagActionsWithAnEmptyNameOrNoParentReturnsNilAndAddsNothing) {
    CreateDiagActionsList(&owner);
    EXPECT_EQ(CreateDiagActions(QString(), &left.panel, &left.canvas), nullptr);
    EXPECT_EQ(CreateDiagActions(QStringLiteral("Left"), nullptr, &left.canvas), nullptr);
    EXPECT_EQ(GetDiagActionsList()->Count(), 0);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("Left")), nullptr);
}

TEST_F(PackageFixture, CreateDiagActionsNeitherLoadsNorSwitchesDesignModeNorMakesItCurrent) {
    WriteDiagram(QStringLiteral("Left"), 10, 10);
    CreateDiagActionsList(&owner);
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(Blocks(m), 0);
    EXPECT_FALSE(m->GetDesignMode());
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
    EXPECT_EQ(m->GetName(), QStringLiteral("Left"));
    EXPECT_EQ(m->Owner(), &owner);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("left")), m);
    EXPECT_EQ(m->DiagContr->pmObjects, m->pmObjects);
}

TEST_F(PackageFixture, TheListKeepsItsNamesSortedIgnoringCase) {
    CreateDiagActionsList(&owner);
    HostPanel third;
    CreateDiagActions(QStringLiteral("charlie"), &left.panel, &left.canvas);
    CreateDiagActions(QStringLiteral("Alpha"), &right.panel, &right.canvas);
    CreateDiagActions(QStringLiteral("bravo"), &third.panel, &third.canvas);
    TDiagActionsList* list = GetDiagActionsList();
    ASSERT_EQ(list->Count(), 3);
    EXPECT_EQ(list->Strings(0), QStringLiteral("Alpha"));
    EXPECT_EQ(list->Strings(1), QStringLiteral("bravo"));
    EXPECT_EQ(list->Strings(2), QStringLiteral("charlie"));
    EXPECT_EQ(list->IndexOf(QStringLiteral("BRAVO")), 1);
    EXPECT_EQ(list->IndexOf(QStringLiteral("delta")), -1);
    EXPECT_EQ(list->Objects(0)->GetName(), QStringLiteral("Alpha"));
    FreeDiagActionsList();
}

TEST_F(PackageFixture, ANameThatIsNoValidComponentNameRaisesAndAddsNothing) {
    CreateDiagActionsList(&owner);
    EXPECT_THROW(CreateDiagActions(QStringLiteral("2nd diagram"), &left.panel, &left.canvas),
                 EComponentError);
    EXPECT_EQ(GetDiagActionsList()->Count(), 0);
    // No surface was made on the panel.
    EXPECT_FALSE(HasPaintHandler(&left.panel));
    for (QObject* child : left.panel.children())
        EXPECT_EQ(dynamic_cast<TDiagObject*>(child), nullptr);
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
}

TEST_F(PackageFixture, ANameTheOwnerAlreadyHasRaisesAndAddsNothing) {
    QObject taken(&owner);
    taken.setObjectName(QStringLiteral("Left"));
    CreateDiagActionsList(&owner);
    EXPECT_THROW(CreateAndLoadDiagActions(QStringLiteral("LEFT"), &left.panel, &left.canvas, true),
                 EComponentError);
    EXPECT_EQ(GetDiagActionsList()->Count(), 0);
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
    EXPECT_FALSE(HasPaintHandler(&left.panel));
}

TEST_F(PackageFixture, WithADatasetButAnEmptyModuleNamePlainFileModulesAreCreated) {
    int made = 0;
    SetTableDiagActionsFactory([&](QObject* o, TDataSet*, const QString&) {
        ++made;
        return std::make_unique<TdmDiagActions>(o);
    });
    CreateDiagActionsList(&owner, SomeDataSet(), QString());
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    SetTableDiagActionsFactory({});
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(made, 0);
    EXPECT_EQ(typeid(*m), typeid(TdmDiagActions));
    // Saving goes to the file beside the program.
    SaveDiagActionsDiagrams(QString());
    EXPECT_EQ(DiagramFiles(), QStringList{QStringLiteral("Left.dgm")});
}

TEST_F(PackageFixture, WithADatasetAndAModuleNameTheTableStorageMakesTheModules) {
    QObject* gotOwner = nullptr;
    TDataSet* gotStore = nullptr;
    QString gotModule;
    SetTableDiagActionsFactory([&](QObject* o, TDataSet* s, const QString& n) {
        gotOwner = o;
        gotStore = s;
        gotModule = n;
        return std::make_unique<TdmDiagActions>(o);
    });
    CreateDiagActionsList(&owner, SomeDataSet(), QStringLiteral("frmMain"), QStringLiteral("x"));
    TdmDiagActions* m = CreateDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas);
    SetTableDiagActionsFactory({});
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(gotOwner, &owner);
    EXPECT_EQ(gotStore, SomeDataSet());
    EXPECT_EQ(gotModule, QStringLiteral("frmMain"));
    EXPECT_EQ(m->GetName(), QStringLiteral("Left"));
    EXPECT_EQ(GetDataFieldSuffix(), QStringLiteral("x"));
}

// ---- saving -----------------------------------------------------------------------------------

TEST_F(PackageFixture, SaveDiagActionsDiagramsWithAnUnknownNameSavesNothing) {
    CreateDiagActionsList(&owner);
    CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    SaveDiagActionsDiagrams(QStringLiteral("Middle"));
    EXPECT_TRUE(DiagramFiles().isEmpty());
    SaveDiagActionsDiagrams(QStringLiteral("right"));
    EXPECT_EQ(DiagramFiles(), QStringList{QStringLiteral("Right.dgm")});
    SaveDiagActionsDiagrams(QString());
    EXPECT_EQ(DiagramFiles(),
              (QStringList{QStringLiteral("Left.dgm"), QStringLiteral("Right.dgm")}));
}

TEST_F(PackageFixture, SavingIntoAFolderThatCannotBeWrittenRaisesToTheHost) {
    CreateDiagActionsList(&owner);
    CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    SetHostProgramPath(dir.filePath(QStringLiteral("missing/host.exe")));
    EXPECT_THROW(SaveDiagActionsDiagrams(QString()), EStreamError);
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- create and load ---------------------------------------------------------------------------

TEST_F(PackageFixture, CreateAndLoadMakesTheModuleCurrentLoadsItsFileAndSetsDesignMode) {
    WriteDiagram(QStringLiteral("Left"), 30, 40);
    CreateDiagActionsList(&owner);
    TdmDiagActions* m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(GetCurrentDiagActions(), m);
    ASSERT_EQ(Blocks(m), 1);
    EXPECT_EQ(m->DiagContr->ObjList->Items(0)->FObjType, doAndLogic);
    EXPECT_EQ(m->DiagContr->ObjList->Items(0)->pos(), QPoint(30, 40));
    EXPECT_TRUE(m->GetDesignMode());
    EXPECT_TRUE(IsDesignModeEnabled());
    EXPECT_TRUE(m->FNeedSave);
}

TEST_F(PackageFixture, CreateAndLoadOfAnExistingNameMakesItCurrentAgainAndLoadsAgain) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false);
    EXPECT_EQ(GetCurrentDiagActions(), r);
    WriteDiagram(QStringLiteral("Left"), 5, 5);
    EXPECT_EQ(CreateAndLoadDiagActions(QStringLiteral("Left"), &right.panel, nullptr, false), l);
    EXPECT_EQ(GetCurrentDiagActions(), l);
    EXPECT_EQ(Blocks(l), 1);
    EXPECT_EQ(Blocks(r), 0);
}

TEST_F(PackageFixture, DesignModeIsExclusiveInTheCreateAndLoadPath) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    EXPECT_TRUE(l->GetDesignMode());
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    EXPECT_FALSE(l->GetDesignMode());
    EXPECT_TRUE(r->GetDesignMode());
    // Also when the new current one is asked for no design mode: then none has it.
    CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    EXPECT_FALSE(l->GetDesignMode());
    EXPECT_FALSE(r->GetDesignMode());
    EXPECT_FALSE(IsDesignModeEnabled());
}

TEST_F(PackageFixture,
       CreateAndLoadDiagActionsExWithLoadFalseStillSetsDesignModeAndTheCurrentModule) {
    WriteDiagram(QStringLiteral("Left"), 30, 40);
    CreateDiagActionsList(&owner);
    TdmDiagActions* m = CreateAndLoadDiagActionsEx(QStringLiteral("Left"), QStringLiteral("Tab1"),
                                                   &left.panel, &left.canvas, true, false);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(GetCurrentDiagActions(), m);
    EXPECT_TRUE(m->GetDesignMode());
    EXPECT_EQ(Blocks(m), 0);
}

TEST_F(PackageFixture, CreateAndLoadDiagActionsExWithLoadTrueLoadsAFileModuleByItsName) {
    WriteDiagram(QStringLiteral("Left"), 30, 40);
    CreateDiagActionsList(&owner);
    TdmDiagActions* m = CreateAndLoadDiagActionsEx(QStringLiteral("Left"), QStringLiteral("Tab1"),
                                                   &left.panel, &left.canvas, false, true);
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(Blocks(m), 1);
    EXPECT_FALSE(m->GetDesignMode());
}

TEST_F(PackageFixture, CreateAndLoadOfAMalformedFileRaisesToTheHostAndLoadsNothing) {
    WriteDiagram(QStringLiteral("Left"), 30, 40);
    std::vector<uint8_t> bytes = FileBytes(File(QStringLiteral("Left")));
    bytes.resize(bytes.size() - 9);
    WriteFile(File(QStringLiteral("Left")), bytes);
    CreateDiagActionsList(&owner);
    EXPECT_THROW(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true),
                 EReadError);
    TdmDiagActions* m = GetCurrentDiagActions();
    ASSERT_NE(m, nullptr);
    EXPECT_EQ(Blocks(m), 0);
    EXPECT_TRUE(dialogs.Asked().empty());
}

// ---- the current diagram
// -------------------------------------------------------------------------

TEST_F(PackageFixture, EnableDesignModeActsOnTheCurrentDiagramOrOnAll) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false);
    EXPECT_FALSE(r->FNeedSave);
    EnableDesignMode(true, false);
    EXPECT_TRUE(r->GetDesignMode());
    EXPECT_TRUE(r->FNeedSave);
    EXPECT_FALSE(l->GetDesignMode());
    EXPECT_FALSE(l->FNeedSave);
    EnableDesignMode(true, true);
    EXPECT_TRUE(l->GetDesignMode());
    EXPECT_TRUE(l->FNeedSave);
    EnableDesignMode(false, false);
    EXPECT_FALSE(r->GetDesignMode());
    EXPECT_TRUE(r->FNeedSave);
    EXPECT_TRUE(l->GetDesignMode());
    EnableDesignMode(false, true);
    EXPECT_FALSE(l->GetDesignMode());
}

TEST_F(PackageFixture, ClearDiagActionsDiagramClearsOnlyTheCurrentDiagram) {
    WriteDiagram(QStringLiteral("Left"), 10, 10);
    WriteDiagram(QStringLiteral("Right"), 10, 10);
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false);
    ClearDiagActionsDiagram(true);
    EXPECT_EQ(Blocks(r), 1);
    ClearDiagActionsDiagram(false);
    EXPECT_EQ(Blocks(r), 0);
    EXPECT_EQ(Blocks(l), 1);
}

TEST_F(PackageFixture, TheFileFunctionsOpenTheCurrentDiagramsDialogs) {
    WriteDiagram(QStringLiteral("Other"), 10, 10);
    CreateDiagActionsList(&owner);
    CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false);
    dialogs.Expect(TDialogAnswer::Open(File(QStringLiteral("Other"))));
    LoadDiagramFromFile();
    EXPECT_EQ(Blocks(r), 1);
    EXPECT_TRUE(r->FNeedSave);
    dialogs.Expect(TDialogAnswer::Save(File(QStringLiteral("Copy"))));
    SaveDiagramToFile();
    ASSERT_EQ(dialogs.Asked().size(), 2u);
    EXPECT_EQ(dialogs.Asked()[0].Kind, dkOpenDialog);
    EXPECT_EQ(dialogs.Asked()[0].Text, QStringLiteral("host.dgm"));
    EXPECT_EQ(dialogs.Asked()[1].Kind, dkSaveDialog);
    EXPECT_EQ(dialogs.Asked()[1].Text, QStringLiteral("Other.dgm"));
    EXPECT_EQ(FileBytes(File(QStringLiteral("Copy"))), DiagramBytes(*r->DiagContr));
}

TEST_F(PackageFixture, GetCurrentNodeControlIsTheCurrentDiagramsHandleCarrier) {
    auto* edit = new QWidget(&right.panel);
    edit->setGeometry(200, 100, 60, 30);
    CreateDiagActionsList(&owner);
    CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    right.Show();
    EXPECT_EQ(GetCurrentNodeControl(), nullptr);
    input.Pos = ClientToScreen(&right.panel, {210, 110});
    vde::test::MousePress(edit, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    vde::test::MouseRelease(edit, Qt::LeftButton, Qt::NoModifier, QPoint(10, 10));
    EXPECT_EQ(GetCurrentNodeControl(), edit);
}

TEST_F(PackageFixture, FreeDiagActionsListFreesEveryModuleAndANewListCanFollow) {
    CreateDiagActionsList(&owner);
    QPointer<TdmDiagActions> l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    QPointer<TdmDiagActions> r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, true);
    FreeDiagActionsList();
    EXPECT_EQ(GetDiagActionsList(), nullptr);
    EXPECT_TRUE(l.isNull());
    EXPECT_TRUE(r.isNull());
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("Left")), nullptr);
    // The panels are plain widgets again.
    EXPECT_FALSE(HasPaintHandler(&left.panel));
    EXPECT_FALSE(HasPaintHandler(&right.panel));
    // The functions on the current diagram find none.
    EXPECT_FALSE(IsDesignModeEnabled());
    EXPECT_EQ(GetCurrentDiagActions(), nullptr);
    ClearDiagActionsDiagram(false);
    // The same names can be used again.
    CreateDiagActionsList(&owner);
    EXPECT_NE(CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true),
              nullptr);
}

TEST_F(PackageFixture, TheOwnerGoingFirstLeavesTheListWithNothingToFree) {
    auto* form = new QObject;
    CreateDiagActionsList(form);
    QPointer<TdmDiagActions> m =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, true);
    delete form;
    EXPECT_TRUE(m.isNull());
    EXPECT_EQ(GetDiagActionsList()->Objects(0), nullptr);
    SaveDiagActionsDiagrams(QString());
    EnableDesignMode(true, true);
    EXPECT_TRUE(DiagramFiles().isEmpty());
}

TEST_F(PackageFixture, DesignModeForAllPassesOverADiagramWithoutSurface) {
    CreateDiagActionsList(&owner);
    TdmDiagActions* l =
        CreateAndLoadDiagActions(QStringLiteral("Left"), &left.panel, &left.canvas, false);
    TdmDiagActions* r =
        CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false);
    l->FreeContainer();
    EnableDesignMode(true, true);
    EXPECT_TRUE(r->GetDesignMode());
    EXPECT_FALSE(l->GetDesignMode());
    EXPECT_EQ(CreateAndLoadDiagActions(QStringLiteral("Right"), &right.panel, &right.canvas, false),
              r);
    EXPECT_FALSE(r->GetDesignMode());
}
