// The clipboard of direct editing: Ctrl+C / Ctrl+X / Ctrl+V on the surface, the payload between
// two containers, hostile payloads, the context menus' disabled items and the hover ring. With
// direct editing off the keys do nothing new and the menus stay as they are.

#include "commands_test_util.h"
#include "undo_test_util.h"

#include "velDiagEdit/platform/graphic_host.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace vde;
using namespace vde::test;

namespace {

const QString kMime = QString::fromLatin1(TDiagContainer::kClipboardMimeType);

class ClipFixture : public CommandsFixture {
protected:
    TDiagObject* a = nullptr;      // AND gate at (50, 60)
    TDiagObject* b = nullptr;      // AND gate at (250, 120)
    TDiagObject* c = nullptr;      // OR gate at (150, 200)
    TDiagConnection* ab = nullptr; // a output 1 -> b input 1
    TDiagConnection* bc = nullptr; // b output 1 -> c input 1
    TDiagUndoStack* stack = nullptr;

    void SetUp() override {
        CommandsFixture::SetUp();
        a = Place(doAndLogic, 50, 60);
        b = Place(doAndLogic, 250, 120);
        c = Place(doOrLogic, 150, 200);
        ab = Wire(a, 1, b, -1);
        bc = Wire(b, 1, c, -1);
        dc->AssignContextMenus(&menuConnections, &menuObjects);
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
        stack = dc->UndoStack();
        stack->clear();
        // The cursor far from the surface unless a test puts it there.
        input.Pos = {-5000, -5000};
        QApplication::clipboard()->clear();
    }

    TDiagConnection* Wire(TDiagObject* from, int fm, TDiagObject* to, int tm) {
        auto* w =
            new TDiagObjConnection(dc->ConList.get(), from, fm, to, tm, TPoint{12, 10}, 0, 0, 0);
        w->FSrcKey = from->GetObjKey();
        w->FDstKey = to->GetObjKey();
        dc->ConList->PathChanged(w);
        return w;
    }

    void Select(std::initializer_list<TDiagObject*> blocks) {
        dc->ObjList->DeselectAll(nullptr);
        for (TDiagObject* x : blocks)
            x->SetSelected(true);
        dc->SelObj = *blocks.begin();
    }

    void Key(int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::keyClick(&panel, Qt::Key(key), mods);
    }

    std::vector<uint8_t> Stream() const {
        TMemoryStream s;
        dc->SaveToStream(s);
        return s.Bytes();
    }

    static QByteArray Payload() {
        const QMimeData* m = QApplication::clipboard()->mimeData();
        return m ? m->data(kMime) : QByteArray();
    }

    static void SetPayload(const QByteArray& bytes) {
        auto* m = new QMimeData;
        m->setData(kMime, bytes);
        QApplication::clipboard()->setMimeData(m);
    }

    int GraphicCount() const {
        TGraphicHost* h = TGraphicHost::Find(&panel);
        return h ? h->Count() : 0;
    }
};

// A second diagram on a panel of its own, with its own blocks.
struct OtherDiagram {
    QWidget panel;
    TCanvas canvas;
    std::unique_ptr<TDiagContainer> dc;
    OtherDiagram() {
        panel.resize(600, 400);
        canvas.SetHandle(&panel);
        dc = std::make_unique<TDiagContainer>(&panel, &canvas, nullptr);
        for (int i = 0; i < 3; ++i) {
            TDiagObject* x =
                dc->CreateObjByDiagType(doOrLogic, {400, 10 + 90 * i, 460, 80 + 90 * i});
            dc->AssignObjEvents(x);
        }
        dc->SetDesignMode(true);
        dc->SetDirectEditing(true);
    }
};

QByteArray Le32(int32_t v) {
    QByteArray r(4, '\0');
    qToLittleEndian<int32_t>(v, r.data());
    return r;
}

} // namespace

// ---- copy ---------------------------------------------------------------------------------------

TEST_F(ClipFixture, CtrlCPutsTheSelectionsStreamAndTwoPicturesOnTheClipboard) {
    Select({a, b});
    const auto before = Stream();
    Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before)); // a copy changes nothing
    EXPECT_EQ(stack->count(), 0);
    const QMimeData* m = QApplication::clipboard()->mimeData();
    ASSERT_NE(m, nullptr);
    ASSERT_TRUE(m->hasFormat(kMime));
    // The picture: blocks a (50..) and b (..310) side by side, 8 pixels of margin about them.
    QImage png;
    ASSERT_TRUE(png.loadFromData(m->data(QStringLiteral("image/png")), "PNG"));
    EXPECT_GE(png.width(), 310 - 50 + 16);
    EXPECT_LE(png.width(), 310 - 50 + 16 + 30); // the markers stand out a little
    int dark = 0;
    for (int y = 0; y < png.height(); ++y)
        for (int x = 0; x < png.width(); ++x)
            dark += qGray(png.pixel(x, y)) < 128;
    EXPECT_GT(dark, 100);
    const QByteArray svg = m->data(QStringLiteral("image/svg+xml"));
    EXPECT_TRUE(svg.contains("<svg"));
    EXPECT_TRUE(svg.contains("<path") || svg.contains("<polyline") || svg.contains("<line"));

    // The stream is a diagram of its own: the two blocks and the one wire between them (the wire
    // to c stays behind), loaded by any container.
    OtherDiagram o;
    const QByteArray payload = Payload();
    TMemoryStream s(std::vector<uint8_t>(payload.begin(), payload.end()));
    o.dc->LoadFromStream(s);
    ASSERT_EQ(o.dc->ObjList->Count(), 2);
    ASSERT_EQ(o.dc->ConList->Count(), 1);
    EXPECT_EQ(o.dc->ObjList->Items(0)->geometry(), a->geometry());
    EXPECT_EQ(o.dc->ObjList->Items(1)->geometry(), b->geometry());
    EXPECT_EQ(o.dc->ObjList->Items(0)->GetObjKey(), a->GetObjKey());
    EXPECT_EQ(o.dc->ConList->Items(0)->FPoints, ab->FPoints);
    EXPECT_EQ(o.dc->ConList->Items(0)->GetSrcObject(), o.dc->ObjList->Items(0));
    EXPECT_EQ(o.dc->ConList->Items(0)->GetDstObject(), o.dc->ObjList->Items(1));
}

TEST_F(ClipFixture, AWireEndingOnACopiedWireGoesAlongAndNamesItsCopy) {
    // A hand-drawn wire from c's output onto the first segment of b -> c (the third wire, after
    // a -> b and b -> c).
    const int k = dc->ConList->AddConnection(c, 1, 16);
    TDiagConnection* j = dc->ConList->Items(k);
    j->FPoints = {j->FPoints.front(), {j->FPoints.front().X + 16, j->FPoints.front().Y}};
    j->FDstCrossInfo = LongRec{1, 2}; // segment 1 of wire 2
    j->FSrcKey = c->GetObjKey();
    dc->ConList->PathChanged(j);
    Select({b, c});
    ASSERT_TRUE(dc->CopySelection());
    OtherDiagram o;
    const QByteArray payload = Payload();
    TMemoryStream s(std::vector<uint8_t>(payload.begin(), payload.end()));
    o.dc->LoadFromStream(s);
    // b -> c and the wire onto it; a -> b has an end on a, which did not go.
    ASSERT_EQ(o.dc->ConList->Count(), 2);
    EXPECT_EQ(o.dc->ConList->Items(0)->FPoints, bc->FPoints);
    EXPECT_EQ(o.dc->ConList->Items(1)->FDstCrossInfo, (LongRec{1, 1}));
    // The wire itself keeps its own address.
    EXPECT_EQ(j->FDstCrossInfo, (LongRec{1, 2}));
}

TEST_F(ClipFixture, NothingSelectedCopiesNothing) {
    dc->ObjList->DeselectAll(nullptr);
    SetPayload("keep");
    Key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(Payload(), QByteArray("keep"));
    EXPECT_FALSE(dc->CopySelection());
}

// ---- paste ------------------------------------------------------------------------------------

TEST_F(ClipFixture, PasteIntoAnotherDiagramGivesFreshKeysAndReattachesTheWires) {
    Select({a, b});
    Key(Qt::Key_C, Qt::ControlModifier);
    OtherDiagram o;
    o.dc->UndoStack()->clear();
    TMemoryStream s0;
    o.dc->SaveToStream(s0);
    const std::vector<uint8_t> before = s0.Bytes();
    // Its three blocks hold keys 1, 2, 3, as a and b do here.
    ASSERT_EQ(o.dc->ObjList->Items(0)->GetObjKey(), a->GetObjKey());
    ASSERT_TRUE(o.dc->PasteClipboard());
    ASSERT_EQ(o.dc->ObjList->Count(), 5);
    ASSERT_EQ(o.dc->ConList->Count(), 1);
    TDiagObject* a2 = o.dc->ObjList->Items(3);
    TDiagObject* b2 = o.dc->ObjList->Items(4);
    // Keys 4 and 5: the first free ones.
    EXPECT_EQ(a2->GetObjKey(), 4u);
    EXPECT_EQ(b2->GetObjKey(), 5u);
    // A first paste elsewhere lands where the blocks were.
    EXPECT_EQ(a2->geometry(), a->geometry());
    EXPECT_EQ(b2->geometry(), b->geometry());
    const TDiagConnection* w = o.dc->ConList->Items(0);
    EXPECT_EQ(w->GetSrcObject(), a2);
    EXPECT_EQ(w->GetDstObject(), b2);
    EXPECT_EQ(w->GetSrcKey(), 4u);
    EXPECT_EQ(w->GetDstKey(), 5u);
    EXPECT_EQ(w->FSrcConIdx, 1);
    EXPECT_EQ(w->FDstConIdx, -1);
    EXPECT_EQ(w->FPoints, ab->FPoints);
    // The pasted items are the selection, and one step undoes it byte for byte.
    EXPECT_EQ(o.dc->SelectedBlocks(), (std::vector<TDiagObject*>{a2, b2}));
    EXPECT_EQ(o.dc->SelectedWires().size(), 1u);
    ASSERT_EQ(o.dc->UndoStack()->count(), 1);
    EXPECT_EQ(o.dc->UndoStack()->undoText(), QStringLiteral("Paste"));
    TMemoryStream s1;
    o.dc->SaveToStream(s1);
    o.dc->UndoStack()->undo();
    TMemoryStream s2;
    o.dc->SaveToStream(s2);
    EXPECT_TRUE(SameBytes(s2.Bytes(), before));
    o.dc->UndoStack()->redo();
    TMemoryStream s3;
    o.dc->SaveToStream(s3);
    EXPECT_TRUE(SameBytes(s3.Bytes(), s1.Bytes()));
}

TEST_F(ClipFixture, RepeatedPastesLandOneStepFurtherEachTime) {
    Select({a});
    Key(Qt::Key_C, Qt::ControlModifier);
    Key(Qt::Key_V, Qt::ControlModifier);
    Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(dc->ObjList->Count(), 5);
    EXPECT_EQ(dc->ObjList->Items(3)->geometry(), a->geometry().translated(16, 16));
    EXPECT_EQ(dc->ObjList->Items(4)->geometry(), a->geometry().translated(32, 32));
    EXPECT_EQ(stack->count(), 2);
    // Only the latest paste is selected.
    EXPECT_EQ(dc->SelectedBlocks(), (std::vector<TDiagObject*>{dc->ObjList->Items(4)}));
    dc->SetGridSize(8);
    Select({a});
    Key(Qt::Key_C, Qt::ControlModifier);
    Key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(dc->ObjList->Items(5)->geometry(), a->geometry().translated(8, 8));
}

TEST_F(ClipFixture, PasteLandsAtTheCursorOverTheSurface) {
    Select({a, b});
    Key(Qt::Key_C, Qt::ControlModifier);
    // The pair's top-left is a's (50, 60); b lies 200 right and 60 below it.
    input.Pos = Screen({300, 40});
    Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(dc->ObjList->Count(), 5);
    EXPECT_EQ(dc->ObjList->Items(3)->geometry().topLeft(), QPoint(300, 40));
    EXPECT_EQ(dc->ObjList->Items(4)->geometry().topLeft(), QPoint(500, 100));
    EXPECT_EQ(dc->ConList->Items(2)->FPoints.front().X, ab->FPoints.front().X + 250);
    EXPECT_EQ(dc->ConList->Items(2)->FPoints.front().Y, ab->FPoints.front().Y - 20);
    // On a grid the corner snaps: 303, 45 is nearest 304, 48 on a grid of 8.
    dc->SetGridSize(8);
    input.Pos = Screen({303, 45});
    Key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(dc->ObjList->Items(5)->geometry().topLeft(), QPoint(304, 48));
}

TEST_F(ClipFixture, AtTwiceTheSizeThePasteLandsOnTheDiagramPointUnderTheCursor) {
    Select({a});
    Key(Qt::Key_C, Qt::ControlModifier);
    dc->SetZoom(2.0);
    // The surface pixel (600, 80) shows the diagram's (300, 40) at 200 %.
    input.Pos = Screen({600, 80});
    Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(dc->ObjList->Count(), 4);
    EXPECT_EQ(dc->ObjList->Items(3)->geometry().topLeft(), QPoint(300, 40));
}

TEST_F(ClipFixture, CutTakesTheBlocksAndTheirWiresAwayInOneStepAndPastePutsThemBack) {
    Select({a, b});
    const auto before = Stream();
    const QRect ga = a->geometry(), gb = b->geometry();
    Key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(dc->ObjList->Count(), 1); // c stays
    EXPECT_EQ(dc->ConList->Count(), 0); // both wires ended on a cut block
    ASSERT_EQ(stack->count(), 1);
    EXPECT_EQ(stack->undoText(), QStringLiteral("Cut"));
    Key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->ObjList->Items(1)->geometry(), ga);
    EXPECT_EQ(dc->ObjList->Items(2)->geometry(), gb);
    EXPECT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(stack->count(), 2);
    stack->undo();
    stack->undo();
    EXPECT_TRUE(SameBytes(Stream(), before));
}

TEST_F(ClipFixture, OutsideDesignModeCutAndPasteChangeNothingButCopyCopies) {
    Select({a});
    dc->SetDesignMode(false);
    a->SetSelected(true);
    const auto before = Stream();
    EXPECT_TRUE(dc->CopySelection());
    EXPECT_FALSE(Payload().isEmpty());
    EXPECT_FALSE(dc->PasteClipboard());
    EXPECT_FALSE(dc->CutSelection());
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

TEST_F(ClipFixture, CanPasteSaysWhetherTheClipboardHoldsADiagram) {
    EXPECT_FALSE(dc->CanPaste());
    QApplication::clipboard()->setText(QStringLiteral("text"));
    EXPECT_FALSE(dc->CanPaste());
    Select({a});
    dc->CopySelection();
    EXPECT_TRUE(dc->CanPaste());
}

// ---- direct editing off -------------------------------------------------------------------------

TEST_F(ClipFixture, WithDirectEditingOffTheKeysDoNothingNew) {
    dc->SetDirectEditing(false);
    a->SetSelected(true);
    dc->SelObj = a;
    Select({a});
    Key(Qt::Key_C, Qt::ControlModifier); // nothing copied
    EXPECT_TRUE(Payload().isEmpty());
    EXPECT_FALSE(dc->IsSurfaceKey(Qt::Key_C, Qt::ControlModifier));
    EXPECT_FALSE(dc->IsSurfaceKey(Qt::Key_X, Qt::ControlModifier));
    EXPECT_FALSE(dc->IsSurfaceKey(Qt::Key_V, Qt::ControlModifier));
    // A payload on the clipboard is not pasted, and nothing is cut.
    dc->SetDirectEditing(true);
    dc->CopySelection();
    dc->SetDirectEditing(false);
    const auto before = Stream();
    Key(Qt::Key_V, Qt::ControlModifier);
    Key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_TRUE(SameBytes(Stream(), before));
    EXPECT_EQ(stack->count(), 0);
}

// ---- hostile payloads -------------------------------------------------------------------------

TEST_F(ClipFixture, HostilePayloadsChangeNothingAndSayWhy) {
    Select({a, b});
    const QByteArray good = dc->SelectionBytes();
    ASSERT_GT(good.size(), 100);
    std::vector<std::pair<const char*, QByteArray>> bad;
    for (int n = 1; n < good.size(); n += 5)
        bad.emplace_back("cut short", good.left(n));
    QByteArray wrongSig = good;
    wrongSig[0] = char(wrongSig[0] ^ 0x5A);
    bad.emplace_back("wrong signature", wrongSig);
    bad.emplace_back("huge block count", good.left(4) + Le32(0x7FFFFFFF) + good.mid(8));
    bad.emplace_back("negative block count", good.left(4) + Le32(-7) + good.mid(8));
    // A valid head claiming 5,000 blocks over the bytes of two.
    bad.emplace_back("thousands claimed", good.left(4) + Le32(5000) + good.mid(8));
    QByteArray garbage;
    for (int i = 0; i < 600; ++i)
        garbage.append(char((i * 131 + 7) & 0xFF));
    bad.emplace_back("garbage", garbage);
    bad.emplace_back("garbage after a signature", good.left(4) + garbage);
    {
        // The wire's source key names no block of the payload: it would attach to a block
        // of the diagram pasted into.
        TMemoryStream s;
        s.WriteUInt32(kContainerSignature);
        s.WriteInt32(1);
        a->SaveToStream(s);
        s.WriteInt32(1);
        const TObjKey keep = ab->FDstKey;
        ab->FDstKey = c->GetObjKey();
        ab->SaveToStream(s);
        ab->FDstKey = keep;
        s.WriteInt32(0);
        s.WriteInt32(0);
        s.WriteInt32(0);
        bad.emplace_back("foreign key", QByteArray(reinterpret_cast<const char*>(s.Bytes().data()),
                                                   qsizetype(s.Bytes().size())));
    }
    {
        TMemoryStream s;
        s.WriteUInt32(kContainerSignature);
        s.WriteInt32(0);
        s.WriteInt32(1);
        const LongRec keep = bc->FDstCrossInfo;
        bc->FDstCrossInfo = LongRec{1, 9};
        const TObjKey sk = bc->FSrcKey, dk = bc->FDstKey;
        bc->FSrcKey = bc->FDstKey = 0;
        bc->SaveToStream(s);
        bc->FDstCrossInfo = keep;
        bc->FSrcKey = sk;
        bc->FDstKey = dk;
        s.WriteInt32(0);
        s.WriteInt32(0);
        s.WriteInt32(0);
        bad.emplace_back("wire onto a wire that is not there",
                         QByteArray(reinterpret_cast<const char*>(s.Bytes().data()),
                                    qsizetype(s.Bytes().size())));
    }
    const auto before = Stream();
    const int graphics = GraphicCount();
    for (const auto& [what, bytes] : bad) {
        SetPayload(bytes);
        dialogs.Expect(TDialogAnswer::Error());
        const size_t asked = dialogs.Asked().size();
        Key(Qt::Key_V, Qt::ControlModifier);
        ASSERT_EQ(dialogs.Asked().size(), asked + 1) << what;
        EXPECT_TRUE(dialogs.Asked().back().Text.startsWith(
            QStringLiteral("The clipboard holds no diagram that can be pasted: ")))
            << what << ": " << dialogs.Asked().back().Text.toStdString();
        EXPECT_TRUE(SameBytes(Stream(), before)) << what;
        EXPECT_EQ(stack->count(), 0) << what;
        EXPECT_EQ(GraphicCount(), graphics) << what;
        EXPECT_EQ(dc->SelectedBlocks(), (std::vector<TDiagObject*>{a, b})) << what;
    }
    // The good payload still pastes.
    SetPayload(good);
    Key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(dc->ObjList->Count(), 5);
}

TEST_F(ClipFixture, PasteBytesRaisesTypedErrors) {
    EXPECT_THROW(dc->PasteBytes(QByteArray("\x4E\x5D\xF3\x98", 4) + Le32(3)), EReadError);
    EXPECT_THROW(dc->PasteBytes(QByteArray("xyzwxyzw")), EFormatError);
}

// ---- the context menus --------------------------------------------------------------------------

namespace {

// Menus named as the command module names its items, with an item of a host's own.
struct NamedMenus {
    TMenuItem* endConnections = nullptr;
    TMenuItem* endConnection = nullptr;
    TMenuItem* delSegment = nullptr;
    TMenuItem* del = nullptr;
    TMenuItem* refresh = nullptr;
    TMenuItem* host = nullptr;

    static TMenuItem* Item(TMenuItem* parent, const char* name) {
        auto* i = new TMenuItem(nullptr);
        i->SetName(QString::fromLatin1(name));
        i->SetCaption(QString::fromLatin1(name));
        parent->Add(i);
        return i;
    }
    NamedMenus(TPopupMenu& cons, TPopupMenu& objs) {
        delSegment = Item(cons.Items(), "mnuDelSegment");
        endConnections = Item(cons.Items(), "mnuEndConnections");
        endConnection = Item(endConnections, "mnuEndConnection");
        del = Item(objs.Items(), "mnuDelete");
        refresh = Item(objs.Items(), "mnuRefresh");
        host = Item(objs.Items(), "hostItem");
    }
};

} // namespace

TEST_F(ClipFixture, InDirectEditingMenuItemsThatCannotApplyAreDisabled) {
    NamedMenus m(menuConnections, menuObjects);
    dc->ObjList->DeselectAll(nullptr);
    dc->SelObj = nullptr;
    // Right-click on empty surface with nothing selected: the objects menu, Delete grey.
    QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, QPoint(380, 20));
    ASSERT_NE(popups.Last(), nullptr);
    EXPECT_EQ(popups.Last()->Menu.data(), &menuObjects);
    EXPECT_FALSE(m.del->isEnabled());
    EXPECT_TRUE(m.refresh->isEnabled());
    EXPECT_TRUE(m.host->isEnabled());
    // On a block: it becomes the selection, and Delete applies.
    QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, a->geometry().center());
    EXPECT_EQ(popups.Last()->Menu.data(), &menuObjects);
    EXPECT_TRUE(m.del->isEnabled());
    // On a marker with no wire started: the wire menu, End Connection grey and its submenu too.
    TPoint p{};
    ASSERT_TRUE(c->GetConPoint(-2, p, true));
    QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, QPoint(p.X + 2, p.Y));
    EXPECT_EQ(popups.Last()->Menu.data(), &menuConnections);
    EXPECT_FALSE(m.endConnection->isEnabled());
    EXPECT_FALSE(m.endConnections->isEnabled());
    EXPECT_FALSE(m.delSegment->isEnabled());
    // A host's own disabled item stays so when direct editing ends; ours come back.
    m.host->setEnabled(false);
    dc->SetDirectEditing(false);
    EXPECT_TRUE(m.endConnection->isEnabled());
    EXPECT_TRUE(m.endConnections->isEnabled());
    EXPECT_TRUE(m.delSegment->isEnabled());
    EXPECT_TRUE(m.del->isEnabled());
    EXPECT_FALSE(m.host->isEnabled());
}

TEST_F(ClipFixture, WithDirectEditingOffTheMenusStayAsTheyAre) {
    NamedMenus m(menuConnections, menuObjects);
    dc->SetDirectEditing(false);
    dc->ObjList->DeselectAll(nullptr);
    dc->SelObj = nullptr;
    dc->SelInfo = LongRec{};
    QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, QPoint(380, 20));
    ASSERT_NE(popups.Last(), nullptr);
    EXPECT_EQ(popups.Last()->Menu.data(), &menuObjects);
    EXPECT_TRUE(m.del->isEnabled());
    QTest::mouseClick(&panel, Qt::LeftButton, Qt::NoModifier, c->geometry().center());
    TPoint p{};
    ASSERT_TRUE(c->GetConPoint(-2, p, true));
    QTest::mouseClick(&panel, Qt::RightButton, Qt::NoModifier, QPoint(p.X + 2, p.Y));
    EXPECT_EQ(popups.Last()->Menu.data(), &menuConnections);
    EXPECT_TRUE(m.endConnection->isEnabled());
    EXPECT_TRUE(m.endConnections->isEnabled());
    EXPECT_TRUE(m.delSegment->isEnabled());
}

// ---- the hover ring -----------------------------------------------------------------------------

namespace {

// Pixels of the ring hover draws about a marker (green), in an image of the panel.
int RingPixels(const QImage& img) {
    int n = 0;
    for (int y = 0; y < img.height(); ++y)
        for (int x = 0; x < img.width(); ++x) {
            const QColor q = img.pixelColor(x, y);
            n += q.green() > 120 && q.red() < 60 && q.blue() < 60;
        }
    return n;
}

} // namespace

TEST_F(ClipFixture, TheHoverRingFollowsTheMouseAfterAWireDropAndGoesWhenItLeaves) {
    TPoint from{}, to{};
    ASSERT_TRUE(a->GetConPoint(-2, to, true));
    // A wire from c's free output to a's free second input.
    ASSERT_TRUE(c->GetConPoint(1, from, true));
    const QPoint f(from.X - 2, from.Y), t(to.X + 2, to.Y);
    QTest::mousePress(&panel, Qt::LeftButton, Qt::NoModifier, f);
    for (int i = 1; i <= 5; ++i)
        QTest::mouseMove(&panel, f + (t - f) * i / 5);
    QTest::mouseRelease(&panel, Qt::LeftButton, Qt::NoModifier, t);
    ASSERT_EQ(dc->ConList->Count(), 3);
    Flush();
    // The mouse is still on the marker: the ring is there.
    EXPECT_GT(RingPixels(Render()), 10);
    // Off to empty surface: gone.
    QTest::mouseMove(&panel, QPoint(380, 280));
    Flush();
    EXPECT_EQ(RingPixels(Render()), 0);
    // Back on the marker, then out of the surface: gone, and the hint with it.
    QTest::mouseMove(&panel, t);
    Flush();
    EXPECT_GT(RingPixels(Render()), 10);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&panel, &leave);
    Flush();
    EXPECT_EQ(RingPixels(Render()), 0);
    EXPECT_TRUE(dc->Hint().isEmpty());
}

// ---- across two processes -----------------------------------------------------------------------

// Runs under a virtual X server (ctest's ClipboardAcrossProcesses); the offscreen platform keeps
// its clipboard inside the process, so there it is skipped.
TEST(ClipboardAcrossProcesses, ABlockPairCopiedInAnotherProcessPastesHere) {
    if (QGuiApplication::platformName() != QStringLiteral("xcb"))
        GTEST_SKIP() << "needs a real X server (platform "
                     << QGuiApplication::platformName().toStdString() << ")";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString done = dir.filePath(QStringLiteral("done"));
    QProcess peer;
    peer.start(QStringLiteral(VDE_CLIPBOARD_PEER), {done});
    ASSERT_TRUE(peer.waitForStarted(10000));
    ASSERT_TRUE(peer.waitForReadyRead(20000));
    const QByteArray line = peer.readLine().trimmed();
    ASSERT_TRUE(line.startsWith("copied ")) << line.toStdString();
    const int size = line.mid(7).toInt();
    // The clipboard's owner is the other process: wait until this one sees its data.
    QElapsedTimer t;
    t.start();
    QByteArray bytes;
    while (t.elapsed() < 10000) {
        QCoreApplication::processEvents();
        const QMimeData* m = QApplication::clipboard()->mimeData();
        if (m && m->hasFormat(kMime)) {
            bytes = m->data(kMime);
            break;
        }
        QTest::qWait(20);
    }
    ASSERT_EQ(bytes.size(), size);

    QWidget panel;
    panel.resize(400, 300);
    TCanvas canvas;
    canvas.SetHandle(&panel);
    TDiagContainer dc(&panel, &canvas, nullptr);
    TDiagObject* mine = dc.CreateObjByDiagType(doAndLogic, {300, 200, 360, 270});
    dc.SetDesignMode(true);
    TScriptedDialogService dialogs;
    TScopedDialogService guard(&dialogs);
    TScriptedInputState input;
    input.Pos = {-5000, -5000};
    TScopedInputState inputGuard(&input);
    ASSERT_TRUE(dc.CanPaste());
    ASSERT_TRUE(dc.PasteClipboard());
    QFile(done).open(QIODevice::WriteOnly);
    peer.waitForFinished(10000);
    // The peer's AND at (40, 50) and OR at (220, 90), with the wire from one to the other,
    // beside the block that was here; new keys after its key 1.
    ASSERT_EQ(dc.ObjList->Count(), 3);
    ASSERT_EQ(dc.ConList->Count(), 1);
    EXPECT_EQ(dc.ObjList->Items(1)->geometry(), QRect(40, 50, 60, 70));
    EXPECT_EQ(dc.ObjList->Items(2)->geometry(), QRect(220, 90, 60, 70));
    EXPECT_EQ(dc.ObjList->Items(1)->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(dc.ObjList->Items(2)->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(mine->GetObjKey(), 1u);
    EXPECT_EQ(dc.ObjList->Items(1)->GetObjKey(), 2u);
    EXPECT_EQ(dc.ObjList->Items(2)->GetObjKey(), 3u);
    EXPECT_EQ(dc.ConList->Items(0)->GetSrcObject(), dc.ObjList->Items(1));
    EXPECT_EQ(dc.ConList->Items(0)->GetDstObject(), dc.ObjList->Items(2));
    EXPECT_EQ(dc.UndoStack()->count(), 1);
}
