#include "modal_driver.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/dialogs/qt_dialog_service.h"
#include "velDiagEdit/dialogs/scripted_dialog_service.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QTemporaryDir>

using namespace vde;
using namespace vde::test;

// ---- Choosing the service -------------------------------------------------------------------

TEST(DialogServiceAccess, DefaultIsTheQtService) {
    EXPECT_NE(dynamic_cast<TQtDialogService*>(&DialogService()), nullptr);
}

TEST(DialogServiceAccess, ScopedServiceIsInForceAndThePreviousOneComesBack) {
    TScriptedDialogService outer, inner;
    {
        TScopedDialogService a(&outer);
        EXPECT_EQ(&DialogService(), &outer);
        {
            TScopedDialogService b(&inner);
            EXPECT_EQ(&DialogService(), &inner);
        }
        EXPECT_EQ(&DialogService(), &outer);
    }
    EXPECT_NE(dynamic_cast<TQtDialogService*>(&DialogService()), nullptr);
}

TEST(DialogServiceAccess, SettingNullptrGoesBackToTheQtService) {
    TScriptedDialogService s;
    SetDialogService(&s);
    EXPECT_EQ(&DialogService(), &s);
    SetDialogService(nullptr);
    EXPECT_NE(dynamic_cast<TQtDialogService*>(&DialogService()), nullptr);
}

TEST(DialogServiceAccess, ADestroyedScriptedServiceIsNoLongerInForce) {
    {
        TScriptedDialogService s;
        SetDialogService(&s);
    }
    EXPECT_NE(dynamic_cast<TQtDialogService*>(&DialogService()), nullptr);
}

TEST(DialogServiceAccess, TheQtServiceIsTheDefaultFromTheStart) {
    EXPECT_EQ(&DialogService(), &QtDialogService());
}

TEST(DialogServiceAccess, AnotherDefaultServesWhileNoneIsInstalled) {
    TScriptedDialogService fallback;
    SetDefaultDialogService(&fallback);
    EXPECT_EQ(&DialogService(), &fallback);
    TScriptedDialogService installed;
    {
        TScopedDialogService scope(&installed);
        EXPECT_EQ(&DialogService(), &installed);
    }
    EXPECT_EQ(&DialogService(), &fallback);
    SetDefaultDialogService(&QtDialogService());
    EXPECT_EQ(&DialogService(), &QtDialogService());
}

TEST(DialogServiceAccess, WithoutAnyServiceAPromptIsAnInvalidOperation) {
    {
        // The default goes away with the service: nothing is left to answer.
        TScriptedDialogService fallback;
        SetDefaultDialogService(&fallback);
    }
    EXPECT_THROW(DialogService(), EInvalidOperation);
    TOpenDialog open;
    EXPECT_THROW(open.Execute(), EInvalidOperation);
    SetDefaultDialogService(&QtDialogService());
    EXPECT_EQ(&DialogService(), &QtDialogService());
}

// ---- Scripted service -----------------------------------------------------------------------

TEST(ScriptedDialogService, AnswersInQueueOrderAndRecordsEveryPrompt) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Query(QStringLiteral("5,-3")))
        .Expect(TDialogAnswer::Item(1))
        .Expect(TDialogAnswer::SizeValue(7))
        .Expect(TDialogAnswer::Segment(120, 90))
        .Expect(TDialogAnswer::Message())
        .Expect(TDialogAnswer::Modal(mrNo))
        .Expect(TDialogAnswer::Error())
        .Expect(TDialogAnswer::Question(true))
        .Expect(TDialogAnswer::Box(QStringLiteral("ignored")))
        .Expect(TDialogAnswer::Open(QStringLiteral("/data/a.dgm")))
        .Expect(TDialogAnswer::Save(QStringLiteral("/data/b.dgm")));
    EXPECT_EQ(s.Pending(), 11u);

    QString text = QStringLiteral("0,0");
    EXPECT_TRUE(s.InputQuery(QStringLiteral("Shift x,y Values"), QStringLiteral("Values:"), text));
    EXPECT_EQ(text, QStringLiteral("5,-3"));
    EXPECT_EQ(s.SelectItemFromArray(
                  QStringLiteral("Select marker type"),
                  {QStringLiteral("Direct"), QStringLiteral("Inversion"), QStringLiteral("Arrow")},
                  0),
              1);
    int32_t size = 3;
    EXPECT_TRUE(s.EditSizeValue(size, 2, 5, 1, QStringLiteral("Set Max Index")));
    EXPECT_EQ(size, 5); // 7 is beyond the range, as the real dialog would hold it
    TSegmentParamRec seg{100, 0, false};
    EXPECT_TRUE(s.EditSegmentParams(seg, QString(), Point(-1, -1)));
    EXPECT_EQ(seg.Size, 120);
    EXPECT_EQ(seg.Angle, 90);
    s.ShowMessage(QStringLiteral("No any segment selected"));
    EXPECT_EQ(
        s.MessageDlg(QStringLiteral("Add several connections"), mtConfirmation, mbYesNo, 0, mbNo),
        mrNo);
    EXPECT_EQ(s.ErrorMessageDlg(QStringLiteral("Marker is not free")), mrOk);
    EXPECT_TRUE(s.QueryMessageDlg(QStringLiteral("Replace?"), QStringLiteral("Diagram")));
    EXPECT_EQ(s.InputBox(QStringLiteral("Segment Index"), QStringLiteral("Con,Idx"),
                         QStringLiteral("1,2")),
              QStringLiteral("ignored"));
    TOpenDialog open;
    open.InitialDir = QStringLiteral("/data");
    open.FileName = QStringLiteral("x.dgm");
    open.DefaultExt = QStringLiteral("dgm");
    open.Filter = QStringLiteral("Diagram files (*.dgm)|*.dgm");
    {
        TScopedDialogService scoped(&s);
        EXPECT_TRUE(open.Execute());
        TSaveDialog save;
        EXPECT_TRUE(save.Execute());
        EXPECT_EQ(save.FileName, QStringLiteral("/data/b.dgm"));
    }
    EXPECT_EQ(open.FileName, QStringLiteral("/data/a.dgm"));

    EXPECT_EQ(s.Pending(), 0u);
    EXPECT_TRUE(s.Failures().isEmpty());
    const QStringList expected = {
        QStringLiteral(R"(InputQuery "Shift x,y Values" "Values:" "0,0")"),
        QStringLiteral(R"(SelectItem "Select marker type" [Direct|Inversion|Arrow] Default=0)"),
        QStringLiteral(R"(EditSizeValue "Set Max Index" Size=3 Min=2 Max=5 Inc=1 Pos=-1,-1)"),
        QStringLiteral(R"(EditSegmentParams "" Size=100 Angle=0 OnlySize=0 Pos=-1,-1)"),
        QStringLiteral(R"(ShowMessage "No any segment selected")"),
        QStringLiteral(
            R"(MessageDlg "Add several connections" Confirmation [Yes,No] Default=No Help=0)"),
        QStringLiteral(R"(ErrorMessageDlg "Marker is not free")"),
        QStringLiteral(R"(QueryMessageDlg "Replace?" "Diagram")"),
        QStringLiteral(R"(InputBox "Segment Index" "Con,Idx" "1,2")"),
        QStringLiteral(
            R"(OpenDialog "x.dgm" Dir="/data" Ext="dgm" Filter="Diagram files (*.dgm)|*.dgm")"),
        QStringLiteral(R"(SaveDialog "" Dir="" Ext="" Filter="")"),
    };
    EXPECT_EQ(s.Log(), expected);
    ASSERT_EQ(s.Asked().size(), 11u);
    EXPECT_EQ(s.Asked()[2].AMin, 2);
    EXPECT_EQ(s.Asked()[5].DefaultButton, mbNo);
    EXPECT_EQ(s.Asked()[5].Buttons, MsgDlgButtons({mbYes, mbNo}));
}

TEST(ScriptedDialogService, PromptOfAnotherKindThanTheNextAnswerFails) {
    TScriptedDialogService s;
    QStringList reported;
    s.OnFailure = [&](const QString& m) { reported << m; };
    s.Expect(TDialogAnswer::Message());
    QString value = QStringLiteral("1,2");
    try {
        s.InputQuery(QStringLiteral("Segment Index"), QStringLiteral("Con,Idx"), value);
        FAIL() << "no error for an unexpected prompt";
    } catch (const EDialogScriptError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("InputQuery")));
        EXPECT_TRUE(e.Message().contains(QStringLiteral("ShowMessage")));
    }
    EXPECT_EQ(value, QStringLiteral("1,2"));
    EXPECT_EQ(s.Failures().size(), 1);
    EXPECT_EQ(reported, s.Failures());
    EXPECT_EQ(s.Pending(), 1u); // the answer stays for the prompt it was meant for
    EXPECT_EQ(s.Log().size(), 1);
}

TEST(ScriptedDialogService, PromptWithNoAnswerLeftFails) {
    TScriptedDialogService s;
    EXPECT_THROW(s.ShowMessage(QStringLiteral("No any segment selected")), EDialogScriptError);
    ASSERT_EQ(s.Failures().size(), 1);
    EXPECT_TRUE(s.Failures()[0].contains(QStringLiteral("no answer left")));
    EXPECT_TRUE(s.Failures()[0].contains(QStringLiteral("No any segment selected")));
}

TEST(ScriptedDialogService, CancelledPromptsLeaveEverythingUntouched) {
    TScriptedDialogService s;
    for (TDialogKind k :
         {dkEditSegmentParams, dkEditSizeValue, dkSelectItem, dkInputQuery, dkInputBox,
          dkMessageDlg, dkErrorMessageDlg, dkQueryMessageDlg, dkOpenDialog, dkSaveDialog})
        s.Expect(TDialogAnswer::Cancel(k));
    TSegmentParamRec seg{40, 90, false};
    EXPECT_FALSE(s.EditSegmentParams(seg, QString(), Point(-1, -1)));
    EXPECT_EQ(seg.Size, 40);
    EXPECT_EQ(seg.Angle, 90);
    int32_t size = 7;
    EXPECT_FALSE(s.EditSizeValue(size, 4, 30, 1, QString()));
    EXPECT_EQ(size, 7);
    EXPECT_EQ(s.SelectItemFromArray(QString(), {QStringLiteral("a")}, 0), -1);
    QString value = QStringLiteral("v");
    EXPECT_FALSE(s.InputQuery(QString(), QString(), value));
    EXPECT_EQ(value, QStringLiteral("v"));
    EXPECT_EQ(s.InputBox(QString(), QString(), QStringLiteral("d")), QStringLiteral("d"));
    EXPECT_EQ(s.MessageDlg(QStringLiteral("q"), mtConfirmation, mbYesNo, 0, mbNo), mrCancel);
    EXPECT_EQ(s.ErrorMessageDlg(QStringLiteral("e")), mrCancel);
    EXPECT_FALSE(s.QueryMessageDlg(QStringLiteral("q"), QString()));
    TFileDialog file;
    file.FileName = QStringLiteral("keep.dgm");
    EXPECT_FALSE(s.ExecuteOpenDialog(file));
    EXPECT_FALSE(s.ExecuteSaveDialog(file));
    EXPECT_EQ(file.FileName, QStringLiteral("keep.dgm"));
    EXPECT_EQ(s.Pending(), 0u);
}

TEST(ScriptedDialogService, ValueDialogsHoldAnswersToTheirRanges) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::SizeValue(900))
        .Expect(TDialogAnswer::SizeValue(-5))
        .Expect(TDialogAnswer::Segment(900, -400));
    TSizeParamRec rec{700, 0, 500, 10};
    EXPECT_TRUE(s.EditSizeValue(rec, QString(), Point(-1, 200)));
    EXPECT_EQ(rec.Size, 500);
    int32_t pos = 150;
    EXPECT_TRUE(s.EditSizeValue(pos, 50, 250, 1, QString()));
    EXPECT_EQ(pos, 50);
    TSegmentParamRec seg{10, 0, false};
    EXPECT_TRUE(s.EditSegmentParams(seg, QString(), Point(-1, -1)));
    EXPECT_EQ(seg.Size, 500);
    EXPECT_EQ(seg.Angle, -180);
    EXPECT_EQ(s.Asked()[0].Pos, Point(-1, 200));
}

TEST(ScriptedDialogService, OnlySizeKeepsTheAngleTheDialogWasOpenedWith) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Segment(60, 45));
    TSegmentParamRec seg{50, 270, true};
    EXPECT_TRUE(s.EditSegmentParams(seg, QString(), Point(-1, -1)));
    EXPECT_EQ(seg.Size, 60);
    EXPECT_EQ(seg.Angle, 270);
    EXPECT_TRUE(seg.OnlySize);
}

TEST(ScriptedDialogService, PickingAnItemThatIsNotInTheListFails) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Item(3));
    EXPECT_THROW(s.SelectItemFromArray(
                     QString(), {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")}, 0),
                 EDialogScriptError);
    EXPECT_EQ(s.Failures().size(), 1);
}

TEST(ScriptedDialogService, PressingAButtonThatIsNotShownFails) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Modal(mrOk)).Expect(TDialogAnswer::Error(mrYes));
    EXPECT_THROW(s.MessageDlg(QStringLiteral("q"), mtConfirmation, mbYesNo, 0, mbNo),
                 EDialogScriptError);
    EXPECT_THROW(s.ErrorMessageDlg(QStringLiteral("e")), EDialogScriptError);
    EXPECT_EQ(s.Failures().size(), 2);
}

TEST(ScriptedDialogService, MessageDlgWithoutADefaultButtonTakesOkElseYes) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Modal(mrYes)).Expect(TDialogAnswer::Modal(mrCancel));
    EXPECT_EQ(s.MessageDlg(QStringLiteral("a"), mtWarning, mbYesNoCancel, 0), mrYes);
    EXPECT_EQ(s.MessageDlg(QStringLiteral("b"), mtInformation, mbOKCancel, 0), mrCancel);
    EXPECT_EQ(s.Asked()[0].DefaultButton, mbYes);
    EXPECT_EQ(s.Asked()[1].DefaultButton, mbOK);
}

TEST(MessageDlgButtons, WithoutOkOrYesTheDefaultIsRetry) {
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbAbort, mbRetry, mbIgnore})), mbRetry);
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbRetry, mbCancel})), mbRetry);
    // Retry even where it is not shown: then no button is the default.
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbAbort, mbIgnore})), mbRetry);
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbNo, mbCancel, mbHelp, mbClose})), mbRetry);
    EXPECT_EQ(DefaultMsgDlgButton(0), mbRetry);
    // OK before Yes, Yes before Retry.
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbYes, mbOK, mbRetry})), mbOK);
    EXPECT_EQ(DefaultMsgDlgButton(MsgDlgButtons({mbYes, mbRetry})), mbYes);
}

TEST(ScriptedDialogService, MessageDlgWithoutOkOrYesAsksWithRetryAsTheDefault) {
    TScriptedDialogService s;
    s.Expect(TDialogAnswer::Modal(mrIgnore));
    EXPECT_EQ(s.MessageDlg(QStringLiteral("Disk not ready"), mtError,
                           MsgDlgButtons({mbAbort, mbRetry, mbIgnore}), 0),
              mrIgnore);
    EXPECT_EQ(s.Asked()[0].DefaultButton, mbRetry);
}

// ---- File filters ---------------------------------------------------------------------------

TEST(FileFilterToQt, DiagramFilterBecomesOneNameFilter) {
    EXPECT_EQ(FileFilterToQt(QStringLiteral("Diagram files (*.dgm)|*.dgm")),
              QStringList{QStringLiteral("Diagram files (*.dgm)")});
}

TEST(FileFilterToQt, SeveralPairsAndSeveralMasks) {
    EXPECT_EQ(FileFilterToQt(QStringLiteral("Text files|*.txt;*.ini|All files (*.*)|*.*")),
              (QStringList{QStringLiteral("Text files (*.txt *.ini)"),
                           QStringLiteral("All files (*.*)")}));
}

TEST(FileFilterToQt, MissingMaskMatchesEverythingAndEmptyFilterGivesNone) {
    EXPECT_EQ(FileFilterToQt(QStringLiteral("Anything")),
              QStringList{QStringLiteral("Anything (*)")});
    EXPECT_TRUE(FileFilterToQt(QString()).isEmpty());
}

// ---- The Qt service drives real dialogs -----------------------------------------------------

namespace {
QMessageBox* Box(QWidget* dialog) {
    auto* box = qobject_cast<QMessageBox*>(dialog);
    EXPECT_NE(box, nullptr);
    return box;
}
} // namespace

TEST(QtDialogService, QueryMessageDlgShowsYesAndNoWithNoAsDefaultAndNoGivesFalse) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Diagram"));
        EXPECT_EQ(box->text(), QStringLiteral("Replace the diagram?"));
        EXPECT_EQ(box->icon(), QMessageBox::NoIcon);
        ASSERT_EQ(box->buttons().size(), 2);
        ASSERT_NE(box->button(QMessageBox::Yes), nullptr);
        ASSERT_NE(box->button(QMessageBox::No), nullptr);
        EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::No));
        Click(box->button(QMessageBox::No));
    });
    EXPECT_FALSE(
        s.QueryMessageDlg(QStringLiteral("Replace the diagram?"), QStringLiteral("Diagram")));
}

TEST(QtDialogService, QueryMessageDlgYesGivesTrue) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        Click(box->button(QMessageBox::Yes));
    });
    EXPECT_TRUE(s.QueryMessageDlg(QStringLiteral("Replace?"), QStringLiteral("Diagram")));
}

TEST(QtDialogService, QueryMessageDlgEnterPressesNo) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    EXPECT_FALSE(s.QueryMessageDlg(QStringLiteral("Replace?"), QStringLiteral("Diagram")));
}

TEST(QtDialogService, QueryMessageDlgClosedGivesFalse) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) { dialog->close(); });
    EXPECT_FALSE(s.QueryMessageDlg(QStringLiteral("Replace?"), QStringLiteral("Diagram")));
}

TEST(QtDialogService, ConfirmationMessageDlgShowsYesNoWithTheDefaultAskedFor) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        EXPECT_EQ(box->text(), QStringLiteral("Add several connections"));
        EXPECT_EQ(box->icon(), QMessageBox::Question);
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Confirm"));
        EXPECT_EQ(box->buttons().size(), 2);
        EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::No));
        Click(box->button(QMessageBox::Yes));
    });
    EXPECT_EQ(
        s.MessageDlg(QStringLiteral("Add several connections"), mtConfirmation, mbYesNo, 0, mbNo),
        mrYes);
}

TEST(QtDialogService, MessageDlgEscapePressesNoWhenThereIsNoCancel) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    EXPECT_EQ(s.MessageDlg(QStringLiteral("q"), mtConfirmation, mbYesNo, 0, mbYes), mrNo);
}

TEST(QtDialogService, MessageDlgWithoutOkOrYesMakesRetryTheDefaultSoEnterPressesIt) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        EXPECT_EQ(box->buttons().size(), 3);
        EXPECT_EQ(box->defaultButton(), box->button(QMessageBox::Retry));
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    EXPECT_EQ(s.MessageDlg(QStringLiteral("Disk not ready"), mtError,
                           MsgDlgButtons({mbAbort, mbRetry, mbIgnore}), 0),
              mrRetry);
}

TEST(QtDialogService, MessageDlgClosedWithoutAButtonGivesCancel) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) { dialog->close(); });
    EXPECT_EQ(s.MessageDlg(QStringLiteral("q"), mtConfirmation, mbYesNo, 0, mbNo), mrCancel);
}

TEST(QtDialogService, ErrorMessageDlgShowsAnErrorWithOnlyOk) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        EXPECT_EQ(box->text(), QStringLiteral("Marker is not free"));
        EXPECT_EQ(box->icon(), QMessageBox::Critical);
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Error"));
        ASSERT_EQ(box->buttons().size(), 1);
        ASSERT_NE(box->button(QMessageBox::Ok), nullptr);
        Click(box->button(QMessageBox::Ok));
    });
    EXPECT_EQ(s.ErrorMessageDlg(QStringLiteral("Marker is not free")), mrOk);
}

TEST(QtDialogService, ShowMessageShowsTheTextWithOk) {
    TQtDialogService s;
    QString shown;
    WhenModalShown([&](QWidget* dialog) {
        QMessageBox* box = Box(dialog);
        ASSERT_TRUE(box);
        shown = box->text();
        EXPECT_EQ(box->buttons().size(), 1);
        Click(box->button(QMessageBox::Ok));
    });
    s.ShowMessage(QStringLiteral("No any segment selected"));
    EXPECT_EQ(shown, QStringLiteral("No any segment selected"));
}

namespace {
QInputDialog* Input(QWidget* dialog) {
    auto* d = qobject_cast<QInputDialog*>(dialog);
    EXPECT_NE(d, nullptr);
    return d;
}
QAbstractButton* InputButton(QWidget* dialog, QDialogButtonBox::StandardButton which) {
    auto* box = dialog->findChild<QDialogButtonBox*>();
    EXPECT_NE(box, nullptr);
    return box ? box->button(which) : nullptr;
}
} // namespace

TEST(QtDialogService, InputQueryShowsCaptionPromptAndValueAndOkTakesTheTypedText) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        QInputDialog* d = Input(dialog);
        ASSERT_TRUE(d);
        EXPECT_EQ(d->windowTitle(), QStringLiteral("Segment Index"));
        EXPECT_EQ(d->labelText(), QStringLiteral("Con,Idx"));
        auto* edit = d->findChild<QLineEdit*>();
        ASSERT_NE(edit, nullptr);
        EXPECT_EQ(edit->text(), QStringLiteral("1,2"));
        TypeInto(edit, QStringLiteral("2,1"));
        Click(InputButton(dialog, QDialogButtonBox::Ok));
    });
    QString value = QStringLiteral("1,2");
    EXPECT_TRUE(s.InputQuery(QStringLiteral("Segment Index"), QStringLiteral("Con,Idx"), value));
    EXPECT_EQ(value, QStringLiteral("2,1"));
}

TEST(QtDialogService, InputQueryCancelKeepsTheValue) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        auto* edit = dialog->findChild<QLineEdit*>();
        ASSERT_NE(edit, nullptr);
        TypeInto(edit, QStringLiteral("9,9"));
        Click(InputButton(dialog, QDialogButtonBox::Cancel));
    });
    QString value = QStringLiteral("0,0");
    EXPECT_FALSE(
        s.InputQuery(QStringLiteral("Shift x,y Values"), QStringLiteral("Values:"), value));
    EXPECT_EQ(value, QStringLiteral("0,0"));
}

TEST(QtDialogService, InputBoxGivesTheTypedTextOnOkAndTheDefaultOnCancel) {
    TQtDialogService s;
    WhenModalShown([](QWidget* dialog) {
        auto* edit = dialog->findChild<QLineEdit*>();
        ASSERT_NE(edit, nullptr);
        TypeInto(edit, QStringLiteral("1,2,3,4"));
        Click(InputButton(dialog, QDialogButtonBox::Ok));
    });
    EXPECT_EQ(s.InputBox(QStringLiteral("Segment Rect"), QStringLiteral("Left, Top, Right, Bottom"),
                         QStringLiteral("0,0,0,0")),
              QStringLiteral("1,2,3,4"));
    WhenModalShown([](QWidget* dialog) {
        auto* edit = dialog->findChild<QLineEdit*>();
        ASSERT_NE(edit, nullptr);
        TypeInto(edit, QStringLiteral("1,2,3,4"));
        dialog->close();
    });
    EXPECT_EQ(s.InputBox(QStringLiteral("Segment Rect"), QStringLiteral("Left, Top, Right, Bottom"),
                         QStringLiteral("0,0,0,0")),
              QStringLiteral("0,0,0,0"));
}

TEST(QtDialogService, ValueDialogsAreTheRealForms) {
    TQtDialogService s;
    QStringList shown;
    const auto okOn = [&shown](QWidget* dialog) {
        shown << dialog->objectName();
        if (auto* ok = dialog->findChild<QAbstractButton*>(QStringLiteral("btnOk")))
            Click(ok);
        else if (auto* bb = dialog->findChild<QAbstractButton*>(QStringLiteral("bbOk")))
            Click(bb);
    };
    WhenModalShown(okOn);
    TSegmentParamRec seg{40, 90, false};
    EXPECT_TRUE(s.EditSegmentParams(seg, QString(), Point(-1, -1)));
    WhenModalShown(okOn);
    int32_t size = 700;
    EXPECT_TRUE(s.EditSizeValue(size, 0, 500, 10, QString()));
    EXPECT_EQ(size, 500);
    WhenModalShown(okOn);
    EXPECT_EQ(s.SelectItemFromArray(QStringLiteral("Pick"),
                                    {QStringLiteral("a"), QStringLiteral("b")}, 1),
              1);
    EXPECT_EQ(shown,
              (QStringList{QStringLiteral("fmEditSegmentParams"), QStringLiteral("fmEditSizeValue"),
                           QStringLiteral("fmSelectItem")}));
}

TEST(QtDialogService, SaveDialogShowsTheDiagramFilterAndAddsTheDefaultExtension) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    TQtDialogService s;
    TSaveDialog save;
    save.InitialDir = dir.path();
    save.FileName = QStringLiteral("host.dgm");
    save.DefaultExt = QStringLiteral("dgm");
    save.Filter = QStringLiteral("Diagram files (*.dgm)|*.dgm");
    WhenModalShown([&](QWidget* dialog) {
        auto* fd = qobject_cast<QFileDialog*>(dialog);
        ASSERT_NE(fd, nullptr);
        EXPECT_EQ(fd->acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(fd->nameFilters(), QStringList{QStringLiteral("Diagram files (*.dgm)")});
        EXPECT_EQ(fd->defaultSuffix(), QStringLiteral("dgm"));
        EXPECT_EQ(QDir(fd->directory()).canonicalPath(), QDir(dir.path()).canonicalPath());
        auto* edit = fd->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(edit, nullptr);
        EXPECT_EQ(edit->text(), QStringLiteral("host.dgm"));
        TypeInto(edit, QStringLiteral("mine"));
        QTest::keyClick(edit, Qt::Key_Return);
    });
    {
        TScopedDialogService scoped(&s);
        EXPECT_TRUE(save.Execute());
    }
    EXPECT_EQ(QFileInfo(save.FileName).fileName(), QStringLiteral("mine.dgm"));
    EXPECT_EQ(QFileInfo(save.FileName).dir().canonicalPath(), QDir(dir.path()).canonicalPath());
}

TEST(QtDialogService, OpenDialogCancelKeepsTheFileName) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QFile existing(dir.filePath(QStringLiteral("a.dgm")));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    existing.close();
    TOpenDialog open;
    open.InitialDir = dir.path();
    open.FileName = QStringLiteral("a.dgm");
    open.DefaultExt = QStringLiteral("dgm");
    open.Filter = QStringLiteral("Diagram files (*.dgm)|*.dgm");
    WhenModalShown([](QWidget* dialog) {
        auto* fd = qobject_cast<QFileDialog*>(dialog);
        ASSERT_NE(fd, nullptr);
        EXPECT_EQ(fd->acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(fd->fileMode(), QFileDialog::ExistingFile);
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    EXPECT_FALSE(DialogService().ExecuteOpenDialog(open));
    EXPECT_EQ(open.FileName, QStringLiteral("a.dgm"));
}

TEST(QtDialogService, OpenDialogOkGivesTheFullPathOfTheChosenFile) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    QFile existing(dir.filePath(QStringLiteral("a.dgm")));
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
    existing.close();
    TOpenDialog open;
    open.InitialDir = dir.path();
    open.FileName = QStringLiteral("a.dgm");
    open.Filter = QStringLiteral("Diagram files (*.dgm)|*.dgm");
    WhenModalShown([](QWidget* dialog) {
        auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        ASSERT_NE(edit, nullptr);
        QTest::keyClick(edit, Qt::Key_Return);
    });
    EXPECT_TRUE(DialogService().ExecuteOpenDialog(open));
    EXPECT_EQ(QFileInfo(open.FileName).canonicalFilePath(),
              QFileInfo(dir.filePath(QStringLiteral("a.dgm"))).canonicalFilePath());
}
