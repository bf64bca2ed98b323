// Seeded random sequences of edits through the editing commands, the keys, menu-made blocks and
// real mouse drags, with every prompt answered at random: undoing all of them gives back the
// diagram as it was before its first change, byte for byte, step by step; redoing all of them
// gives back the diagram as it was when undoing began.

#include "commands_test_util.h"
#include "common/mouse_util.h"
#include "undo_test_util.h"

#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"

#include <QTest>
#include <random>

using namespace vde;
using namespace vde::test;

namespace {

constexpr int kSequences = 500;
constexpr int kEditsPerSequence = 20;
constexpr uint32_t kSeed = 20240617;

// Answers every prompt with a value a user could give, or cancels, as a seeded generator says.
class TRandomDialogService : public IDialogService {
public:
    using IDialogService::EditSizeValue;
    using IDialogService::MessageDlg;
    explicit TRandomDialogService(std::mt19937& Rng) : FRng(Rng) {}

    int Pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(FRng); }
    bool Chance(int percent) { return Pick(1, 100) <= percent; }

    bool EditSegmentParams(TSegmentParamRec& Rec, const QString&, TPoint) override {
        if (Chance(10))
            return false;
        Rec.Size = Pick(1, 150);
        if (!Rec.OnlySize)
            Rec.Angle = Chance(80) ? 45 * Pick(-4, 4) : Pick(-180, 180);
        return true;
    }
    bool EditSizeValue(TSizeParamRec& Rec, const QString&, TPoint) override {
        if (Chance(10) || Rec.AMin > Rec.AMax)
            return false;
        Rec.Size = Pick(Rec.AMin, Rec.AMax);
        return true;
    }
    int SelectItemFromArray(const QString&, const QStringList& Items, int) override {
        if (Items.isEmpty() || Chance(15))
            return -1;
        return Pick(0, int(Items.size()) - 1);
    }
    bool InputQuery(const QString& ACaption, const QString&, QString& Value) override {
        if (Chance(10))
            return false;
        if (Chance(3)) {
            Value = QStringLiteral("x!");
            return true;
        }
        auto n = [&](int lo, int hi) { return QString::number(Pick(lo, hi)); };
        if (ACaption == QLatin1String("Shift x,y Values"))
            Value = n(-40, 40) + QLatin1Char(',') + n(-40, 40);
        else if (ACaption == QLatin1String("Text Titles"))
            Value = Chance(50) ? QStringLiteral("A|B") : QStringLiteral("Gate ") + n(0, 99);
        else if (ACaption == QLatin1String("Text Pos Values"))
            Value = n(0, 30) + QLatin1Char(',') + n(0, 30);
        else if (ACaption == QLatin1String("Text Heights"))
            Value = n(6, 30);
        else if (ACaption == QLatin1String("Segment Index") && Chance(30))
            Value = n(1, 4) + QLatin1Char(',') + n(1, 4);
        return true;
    }
    QString InputBox(const QString&, const QString&, const QString& ADefault) override {
        return ADefault;
    }
    void ShowMessage(const QString&) override {}
    TModalResult MessageDlg(const QString&, TMsgDlgType, TMsgDlgButtons, int, TMsgDlgBtn) override {
        const int k = Pick(0, 9);
        return k < 5 ? mrYes : k < 9 ? mrNo : mrCancel;
    }
    TModalResult ErrorMessageDlg(const QString&) override { return mrOk; }
    bool QueryMessageDlg(const QString&, const QString&) override { return Chance(50); }
    bool ExecuteOpenDialog(TFileDialog&) override { return false; }
    bool ExecuteSaveDialog(TFileDialog&) override { return false; }

private:
    std::mt19937& FRng;
};

class UndoProperty : public CommandsFixture {
protected:
    std::mt19937 rng;
    std::unique_ptr<TRandomDialogService> random;
    std::unique_ptr<TScopedDialogService> randomGuard;
    TMenuItem item{nullptr};

    void SetUp() override {
        CommandsFixture::SetUp();
        random = std::make_unique<TRandomDialogService>(rng);
        randomGuard = std::make_unique<TScopedDialogService>(random.get());
        dc->SetDesignMode(true);
    }

    void TearDown() override {
        randomGuard.reset();
        CommandsFixture::TearDown();
    }

    int Pick(int lo, int hi) { return random->Pick(lo, hi); }

    std::vector<uint8_t> Stream() const {
        TMemoryStream s;
        dc->SaveToStream(s);
        return s.Bytes();
    }

    // Two to four blocks of random kinds and places, a wire from the first block's output.
    void StartDiagram() {
        dc->Clear(false);
        dc->SelObj = nullptr;
        const int blocks = Pick(2, 4);
        for (int i = 0; i < blocks; ++i)
            Place(TDiagObjectType(Pick(doText, doRSTrigger)), Pick(0, 330), Pick(0, 200));
        TDiagObject* first = dc->ObjList->Items(0);
        if (!first->FOutputs.empty())
            dc->ConList->AddConnection(first, 1, Pick(10, 60));
        dc->UndoStack()->clear();
    }

    TDiagObject* RandomBlock() {
        const int n = dc->ObjList->Count();
        return n == 0 ? nullptr : dc->ObjList->Items(Pick(0, n - 1));
    }

    // What a user's clicks might have selected before the next command.
    void RandomSelection() {
        switch (Pick(0, 4)) {
        case 0:
        case 1:
            if (TDiagObject* b = RandomBlock()) {
                const int ins = int(b->FInputs.size()), outs = int(b->FOutputs.size());
                SelectMarker(b, Pick(-ins, outs));
            }
            break;
        case 2:
            if (const int n = dc->ConList->Count(); n > 0) {
                const int k = Pick(0, n - 1);
                const int segs = std::max(1, int(dc->ConList->Items(k)->FPoints.size()) - 1);
                dc->SelInfo = LR(uint16_t(k + 1), uint16_t(Pick(1, segs)));
                dc->ConList->SelectSegmentByLongRec(dc->SelInfo);
            }
            break;
        case 3:
            if (random->Chance(50))
                QTest::keyClick(&panel, Qt::Key_Escape);
            else
                dc->SelInfo = LongRec{};
            break;
        default:
            break; // the selection stays as the last command left it
        }
    }

    void Drag(TDiagObject* b) {
        const bool resize = random->Chance(30);
        const QPoint grab = resize ? QPoint(b->width() - 3, b->height() - 3) : QPoint(10, 10);
        input.Shift = ssShift;
        input.Pos = Screen({b->x() + grab.x(), b->y() + grab.y()});
        vde::test::MousePress(b, Qt::LeftButton, Qt::NoModifier, grab);
        QPoint local = grab;
        for (int i = 0, moves = Pick(1, 3); i < moves; ++i) {
            const int dx = Pick(-20, 20), dy = Pick(-20, 20);
            input.Pos = {input.Pos.X + dx, input.Pos.Y + dy};
            local += QPoint(dx, dy);
            vde::test::MouseMove(b, local);
        }
        vde::test::MouseRelease(b, Qt::LeftButton, Qt::NoModifier, local);
        input.Shift = 0;
    }

    // One random edit; its name for the failure message.
    QString RandomEdit() {
        const int which = Pick(0, 26);
        try {
            switch (which) {
            case 0:
                dc->AddSegmentToConnection();
                return QStringLiteral("AddSegment");
            case 1:
                dc->EditSegmentOfConnection();
                return QStringLiteral("EditSegment");
            case 2:
                dc->DeleteCurSegment();
                return QStringLiteral("DeleteSegment");
            case 3:
                dc->AlignCurSegment();
                return QStringLiteral("AlignSegment");
            case 4:
                dc->EndConnectionWithCross();
                return QStringLiteral("EndWithCross");
            case 5:
                dc->EndDiagConnection();
                return QStringLiteral("EndConnection");
            case 6:
                dc->EndConnectionWithSegment();
                return QStringLiteral("EndWithSegment");
            case 7:
                dc->AddDiagConnection(Pick(10, 80), true);
                return QStringLiteral("AddConn");
            case 8:
                dc->AddDiagConnections(Pick(10, 80), true);
                return QStringLiteral("AddConns");
            case 9:
                dc->DelSelectedObject();
                return QStringLiteral("Delete");
            case 10:
                dc->AlignTitles();
                return QStringLiteral("AlignTitles");
            case 11:
                dc->ShiftByDelta();
                return QStringLiteral("ShiftByDelta");
            case 12:
                dc->ChangeMarkerSize();
                return QStringLiteral("MarkerSize");
            case 13:
                dc->ChangeMarkerPos();
                return QStringLiteral("MarkerPos");
            case 14:
                item.Tag = Pick(0, 2);
                dc->ChangeMarkerType(&item);
                return QStringLiteral("MarkerType");
            case 15:
                dc->SetTextValues();
                return QStringLiteral("Titles");
            case 16:
                dc->SetTextPosValues();
                return QStringLiteral("TextPos");
            case 17:
                dc->SetTextHeights();
                return QStringLiteral("TextHeights");
            case 18:
                dc->SetHorizMargin();
                return QStringLiteral("Margin");
            case 19:
                dc->SetInputCount();
                return QStringLiteral("InCount");
            case 20:
                dc->SetOutputCount();
                return QStringLiteral("OutCount");
            case 21:
                if (dc->ObjList->Count() >= 8)
                    return QStringLiteral("(no create)");
                item.Tag = Pick(doText, doRSTrigger);
                dc->FClickPoint = {Pick(0, 330), Pick(0, 220)};
                dc->CreateDiagObEvent(&item);
                return QStringLiteral("Create");
            case 22:
            case 23:
                if (TDiagObject* b = RandomBlock())
                    Drag(b);
                return QStringLiteral("Drag");
            case 24: {
                const int keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down};
                const auto mods = random->Chance(30) ? Qt::ShiftModifier : Qt::NoModifier;
                for (int i = 0, n = Pick(1, 4); i < n; ++i)
                    QTest::keyClick(&panel, Qt::Key(keys[Pick(0, 3)]), mods);
                return QStringLiteral("Arrows");
            }
            case 25:
                QTest::keyClick(&panel, Qt::Key_Delete);
                return QStringLiteral("DeleteKey");
            default:
                dc->SetObjTitle();
                return QStringLiteral("SetObjTitle");
            }
        } catch (const EConvertError&) {
            return QStringLiteral("(conversion error) ") + QString::number(which);
        } catch (const Exception&) {
            // A segment address typed in that names no segment; in the editor the menu's event
            // boundary shows the error.
            return QStringLiteral("(error) ") + QString::number(which);
        }
    }
};

} // namespace

TEST_F(UndoProperty,
       UndoingAllOfTwentyRandomEditsGivesBackTheBytesBeforeAndRedoingAllTheBytesAfter) {
    TDiagUndoStack* stack = dc->UndoStack();
    int changes = 0;
    for (int seq = 0; seq < kSequences; ++seq) {
        rng.seed(kSeed + uint32_t(seq));
        StartDiagram();
        // The bytes before and after every edit that changed the diagram.
        std::vector<std::vector<uint8_t>> before, after;
        QStringList log;
        for (int e = 0; e < kEditsPerSequence; ++e) {
            RandomSelection();
            const std::vector<uint8_t> b = Stream();
            const int steps = stack->count();
            const QString name = RandomEdit();
            const std::vector<uint8_t> a = Stream();
            log << name;
            // Arrow moves of the block the newest step moved, straight after it, extend that
            // step; when they bring the block back where the step began, the step goes.
            if (name == QLatin1String("Arrows") && !after.empty() && b == after.back() &&
                stack->count() <= steps) {
                if (stack->count() == steps) {
                    after.back() = a;
                } else {
                    ASSERT_TRUE(SameBytes(a, before.back())) << "sequence " << seq;
                    before.pop_back();
                    after.pop_back();
                }
                continue;
            }
            if (a == b) {
                ASSERT_EQ(stack->count(), steps)
                    << "sequence " << seq << ": " << log.join(QLatin1Char(' ')).toStdString();
                continue;
            }
            ASSERT_EQ(stack->count(), steps + 1)
                << "sequence " << seq << ": " << log.join(QLatin1Char(' ')).toStdString();
            before.push_back(b);
            after.push_back(a);
        }
        // A last selection after the last change is part of the bytes redo comes back to.
        RandomSelection();
        const std::vector<uint8_t> final = Stream();
        ASSERT_EQ(stack->count(), int(before.size())) << "sequence " << seq;
        changes += int(before.size());
        const std::string where =
            "sequence " + std::to_string(seq) + ": " + log.join(QLatin1Char(' ')).toStdString();
        for (size_t i = before.size(); i-- > 0;) {
            stack->undo();
            ASSERT_TRUE(SameBytes(Stream(), before[i])) << where << ", undo to change " << i;
        }
        EXPECT_FALSE(stack->canUndo());
        for (size_t i = 0; i < after.size(); ++i) {
            stack->redo();
            const auto& expected = i + 1 == after.size() ? final : after[i];
            ASSERT_TRUE(SameBytes(Stream(), expected)) << where << ", redo of change " << i;
        }
        EXPECT_FALSE(stack->canRedo());
    }
    EXPECT_EQ(dc->FullRestoreCount(), 0);
    // The sequences do change diagrams, most of the time.
    EXPECT_GT(changes, kSequences * kEditsPerSequence / 4);
}
