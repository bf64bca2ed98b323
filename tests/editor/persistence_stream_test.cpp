// The container stream: its bytes, its loading rules and what bad input leaves behind.
#include "editor/persistence_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/paint_hook.h"

#include <cstdlib>
#include <new>

// Largest single allocation made through operator new while tracking is on, to show that no
// count read from a stream sizes an allocation before it has been checked.
namespace {
bool gTrackAllocations = false;
size_t gLargestAllocation = 0;
void* Allocate(size_t n) {
    if (gTrackAllocations && n > gLargestAllocation)
        gLargestAllocation = n;
    if (void* p = std::malloc(n ? n : 1))
        return p;
    throw std::bad_alloc();
}
} // namespace

void* operator new(size_t n) {
    return Allocate(n);
}
void* operator new[](size_t n) {
    return Allocate(n);
}
// The nothrow forms too (Qt allocates with them): a block must be freed by the same family of
// functions that made it, or the sanitizer reports a mismatch.
void* operator new(size_t n, const std::nothrow_t&) noexcept {
    if (gTrackAllocations && n > gLargestAllocation)
        gLargestAllocation = n;
    return std::malloc(n ? n : 1);
}
void* operator new[](size_t n, const std::nothrow_t&) noexcept {
    return operator new(n, std::nothrow);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, size_t) noexcept {
    std::free(p);
}

namespace vde::test {
namespace {

using PersistenceStream = EditorFixture;

std::vector<uint8_t> Concat(std::initializer_list<std::vector<uint8_t>> parts) {
    std::vector<uint8_t> all;
    for (const auto& p : parts)
        all.insert(all.end(), p.begin(), p.end());
    return all;
}

TEST_F(PersistenceStream, EmptyDiagramSavesSignatureZeroCountsEmptyControlListAndEightZeroBytes) {
    const std::vector<uint8_t> expected = {
        0x4E, 0x5D, 0xF3, 0x98, // signature
        0,    0,    0,    0,    // no blocks
        0,    0,    0,    0,    // no connections
        0,    0,    0,    0,    // no foreign controls
        0,    0,    0,    0,    // no selected segment
        0,    0,    0,    0,    // no selected block
    };
    EXPECT_EQ(Saved(*dc), expected);
}

TEST_F(PersistenceStream, ContainerWithoutCanvasWritesMinusOneForBothCounts) {
    TDiagContainer bare(&panel, nullptr, nullptr);
    const std::vector<uint8_t> expected = {
        0x4E, 0x5D, 0xF3, 0x98, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
    };
    EXPECT_EQ(Saved(bare), expected);
}

TEST_F(PersistenceStream, ContainerWithoutCanvasReadsNeitherSegmentNorBlockKey) {
    TDiagContainer bare(&panel, nullptr, nullptr);
    // The info words that follow are not read: the position stops after the control section.
    TMemoryStream s(
        Bytes().i32(int32_t(0x98F35D4Eu)).i32(-1).i32(-1).i32(0).i32(0x00010001).i32(7).data());
    bare.LoadFromStream(s);
    EXPECT_EQ(s.Position(), 16);
    EXPECT_TRUE(bare.SelInfo.IsZero());
    // Nor does their absence matter.
    TMemoryStream shorter(Bytes().i32(int32_t(0x98F35D4Eu)).i32(-1).i32(-1).i32(0).data());
    bare.LoadFromStream(shorter);
    EXPECT_EQ(shorter.Position(), 16);
}

TEST_F(PersistenceStream, SaveInfoWritesSegmentLoThenHiThenSelectedBlockKey) {
    BuildSmallDiagram(*dc);
    dc->SelInfo = LongRec{3, 2};
    TMemoryStream s;
    dc->SaveInfoToStream(s);
    EXPECT_EQ(s.Bytes(), Bytes().u16(3).u16(2).i32(102).data());
    dc->SelObj = nullptr;
    dc->SelInfo = {};
    TMemoryStream none;
    dc->SaveInfoToStream(none);
    EXPECT_EQ(none.Bytes(), std::vector<uint8_t>(8, 0));
}

TEST_F(PersistenceStream, StreamIsSignatureThenTheListsOwnRecordsThenControlsThenInfo) {
    BuildSmallDiagram(*dc);
    TMemoryStream blocks, wires, controls;
    dc->ObjList->SaveToStream(blocks);
    dc->ConList->SaveToStream(wires);
    dc->CntList->SaveToStream(controls);
    const std::vector<uint8_t> expected = Concat({{0x4E, 0x5D, 0xF3, 0x98},
                                                  blocks.Bytes(),
                                                  wires.Bytes(),
                                                  controls.Bytes(),
                                                  Bytes().u16(1).u16(1).i32(102).data()});
    EXPECT_EQ(Saved(*dc), expected);
}

TEST_F(PersistenceStream, OtherFirstFourBytesShowInvalidFileFormatOnceAndChangeNothing) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    TErrorCounter errors;
    TScopedDialogService guard(&errors);
    std::vector<uint8_t> bytes = before;
    bytes[3] = 0x99;
    TMemoryStream s(bytes);
    dc->LoadFromStream(s);
    EXPECT_EQ(errors.Messages, QStringList{QStringLiteral("Invalid file format")});
    EXPECT_EQ(Saved(*dc), before);
    EXPECT_EQ(dc->ObjList->Count(), 2);
}

TEST_F(PersistenceStream, FourBytesOrFewerLeftAreIgnoredWithoutMessage) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    for (size_t n = 0; n <= 4; ++n) {
        std::vector<uint8_t> bytes = {0x4E, 0x5D, 0xF3, 0x98};
        bytes.resize(n, 0xAB);
        TMemoryStream s(bytes);
        dc->LoadFromStream(s);
        EXPECT_EQ(s.Position(), 0) << n;
    }
    // What counts is what is left after the position.
    const std::vector<uint8_t> longer = {0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB, 0xAB,
                                         0xAB, 0xAB, 0xAB, 0x4E, 0x5D, 0xF3, 0x98};
    TMemoryStream s(longer);
    s.SetPosition(10);
    dc->LoadFromStream(s);
    EXPECT_EQ(s.Position(), 10);
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceStream, LoadReplacesBlocksAndConnectionsAndRestoresBothSelections) {
    QWidget otherPanel;
    TCanvas otherCanvas;
    otherCanvas.SetHandle(&otherPanel);
    TDiagContainer source(&otherPanel, &otherCanvas, nullptr);
    BuildSmallDiagram(source);
    TMemoryStream s;
    source.SaveToStream(s);

    // The open diagram has three blocks of its own.
    for (int i = 0; i < 3; ++i)
        dc->CreateObjByDiagType(doText, {i * 50, 200, i * 50 + 40, 240});
    s.SetPosition(0);
    dc->LoadFromStream(s);

    ASSERT_EQ(dc->ObjList->Count(), 2);
    EXPECT_EQ(dc->ObjList->Items(0)->GetDiagObjType(), doAndLogic);
    EXPECT_EQ(dc->ObjList->Items(1)->GetDiagObjType(), doOrLogic);
    EXPECT_EQ(dc->ObjList->Items(0)->GetObjKey(), 101u);
    ASSERT_EQ(dc->ConList->Count(), 1);
    TDiagConnection* w = dc->ConList->Items(0);
    EXPECT_EQ(w->GetSrcObject(), dc->ObjList->Items(0));
    EXPECT_EQ(w->GetDstObject(), dc->ObjList->Items(1));
    EXPECT_EQ(dc->SelInfo, (LongRec{1, 1}));
    EXPECT_EQ(w->GetSelectedIndex(), 0);
    ASSERT_EQ(dc->SelObj.data(), dc->ObjList->Items(1));
    EXPECT_TRUE(dc->SelObj->GetSelected());
    EXPECT_EQ(dc->ObjList->Items(1)->parentWidget(), &panel);
    EXPECT_EQ(s.Position(), s.Size());
    // The same bytes come out again.
    s.SetPosition(0);
    std::vector<uint8_t> original(s.Bytes());
    EXPECT_EQ(Saved(*dc), original);
}

TEST_F(PersistenceStream, LoadKeepsTheListObjectsAHostHolds) {
    QWidget otherPanel;
    TCanvas otherCanvas;
    otherCanvas.SetHandle(&otherPanel);
    TDiagContainer source(&otherPanel, &otherCanvas, nullptr);
    BuildSmallDiagram(source);
    TMemoryStream s;
    source.SaveToStream(s);
    dc->CreateObjByDiagType(doText, {0, 200, 40, 240});
    TDiagObjectList* blocks = dc->ObjList.get();
    TDiagConnectList* wires = dc->ConList.get();
    s.SetPosition(0);
    dc->LoadFromStream(s);
    EXPECT_EQ(dc->ObjList.get(), blocks);
    EXPECT_EQ(dc->ConList.get(), wires);
    // Through the held pointer the host sees the loaded diagram, owned by that list.
    ASSERT_EQ(blocks->Count(), 2);
    EXPECT_EQ(blocks->Items(0)->GetObjKey(), 101u);
    EXPECT_EQ(blocks->Items(0)->Owner(), blocks);
    EXPECT_EQ(blocks->FindObjByKey(102), blocks->Items(1));
    // A new block made through it takes a key no loaded block holds.
    const TObjKey k = blocks->CreateObjByDiagType(doText, {0, 0, 40, 40})->GetObjKey();
    EXPECT_NE(k, 101u);
    EXPECT_NE(k, 102u);
    // Deleting through the held list still tells the container's wires: the wire at the
    // deleted block lets go of it.
    ASSERT_EQ(wires->Count(), 1);
    ASSERT_EQ(wires->Items(0)->GetDstObject(), blocks->Items(1));
    blocks->DeleteObject(blocks->Items(1), true);
    EXPECT_TRUE(wires->Count() == 0 || wires->Items(0)->GetDstObject() == nullptr);
}

TEST_F(PersistenceStream, BlocksSharingAKeyLoadAndWiresAndSelectionTakeTheEarliest) {
    BuildSmallDiagram(*dc);
    // A third block that takes the second's key, as a block made after a load could.
    TDiagObject* c = dc->CreateObjByDiagType(doText, {300, 20, 360, 90});
    c->SetObjKey(102);
    std::vector<uint8_t> bytes = Saved(*dc);
    TMemoryStream s(bytes);
    dc->Clear(false);
    dc->LoadFromStream(s);
    ASSERT_EQ(dc->ObjList->Count(), 3);
    EXPECT_EQ(dc->ObjList->Items(2)->GetObjKey(), 102u);
    ASSERT_EQ(dc->ConList->Count(), 1);
    EXPECT_EQ(dc->ConList->Items(0)->GetDstObject(), dc->ObjList->Items(1));
    EXPECT_EQ(dc->SelObj.data(), dc->ObjList->Items(1));
    EXPECT_FALSE(dc->ObjList->Items(2)->GetSelected());
    ASSERT_EQ(dc->ObjList->Warnings().size(), 1);
    // Saving gives back the bytes that were loaded.
    EXPECT_EQ(Saved(*dc), bytes);
}

TEST_F(PersistenceStream, LoadedBlocksGetTheContainersEventsOutsideDesignMode) {
    BuildSmallDiagram(*dc);
    TMemoryStream s;
    dc->SaveToStream(s);
    s.SetPosition(0);
    ASSERT_FALSE(dc->GetDesignMode());
    dc->LoadFromStream(s);
    for (TDiagObject* b : dc->ObjList->All()) {
        EXPECT_TRUE(bool(b->GetOnModifyBounds()));
        EXPECT_TRUE(bool(b->GetOnModifyMarkers()));
    }
    EXPECT_TRUE(bool(dc->ObjList->GetOnDeleteObject()));
}

TEST_F(PersistenceStream, LoadBindsThePaintEventAgain) {
    BuildSmallDiagram(*dc);
    TMemoryStream s;
    dc->SaveToStream(s);
    SetPaintHandler(&panel, {});
    ASSERT_FALSE(HasPaintHandler(&panel));
    s.SetPosition(0);
    dc->LoadFromStream(s);
    EXPECT_TRUE(HasPaintHandler(&panel));
}

TEST_F(PersistenceStream, StoredSelectedBlockKeyThatNoBlockHoldsSelectsNone) {
    BuildSmallDiagram(*dc);
    std::vector<uint8_t> bytes = Saved(*dc);
    const size_t n = bytes.size();
    bytes[n - 4] = 0x55; // key 0x55 is nobody's
    bytes[n - 3] = bytes[n - 2] = bytes[n - 1] = 0;
    TMemoryStream s(bytes);
    dc->LoadFromStream(s);
    EXPECT_EQ(dc->SelObj.data(), nullptr);
    for (TDiagObject* b : dc->ObjList->All())
        EXPECT_FALSE(b->GetSelected());
}

TEST_F(PersistenceStream, SelectedSegmentWithoutConnectionIsRefusedBeforeAnythingChanges) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    std::vector<uint8_t> bytes = before;
    const size_t at = bytes.size() - 8;
    bytes[at] = 1; // Lo 1
    bytes[at + 1] = 0;
    bytes[at + 2] = bytes[at + 3] = 0; // Hi 0
    TMemoryStream s(bytes);
    try {
        dc->LoadFromStream(s);
        FAIL() << "no error";
    } catch (const EFormatError& e) {
        EXPECT_EQ(e.Offset(), int64_t(at));
    }
    EXPECT_EQ(Saved(*dc), before);
}

TEST_F(PersistenceStream, StreamOfContainerWithoutCanvasLoadsIntoOneWithCanvasOrChangesNothing) {
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    TDiagContainer bare(&panel, nullptr, nullptr);
    TMemoryStream s;
    bare.SaveToStream(s);
    s.SetPosition(0);
    // -1 is passed on to the block list, which then reads the connection count's -1 as its
    // own count: a negative count is a typed error.
    EXPECT_THROW(dc->LoadFromStream(s), EReadError);
    EXPECT_EQ(Saved(*dc), before);
}

// ---- bad input: every truncation, every byte flip, huge counts

struct LoadOutcome {
    bool Loaded = false;
    bool Unchanged = false;
};

LoadOutcome TryLoad(TDiagContainer& dc, const std::vector<uint8_t>& bytes) {
    const std::vector<uint8_t> before = Saved(dc);
    TMemoryStream s(bytes);
    try {
        dc.LoadFromStream(s);
    } catch (const Exception& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("byte offset"))) << e.what();
        return {false, Saved(dc) == before};
    }
    return {true, true};
}

TEST_F(PersistenceStream, EveryTruncationOfEveryExampleLoadsOrRaisesAndLeavesTheDiagramAlone) {
    TErrorCounter errors;
    TScopedDialogService guard(&errors);
    const QStringList files = ExampleFiles(QStringLiteral("dgm"));
    ASSERT_GE(files.size(), 4);
    for (const QString& file : files) {
        const std::vector<uint8_t> whole = ReadBytes(file);
        ASSERT_GT(whole.size(), 100u);
        int failures = 0;
        for (size_t n = 0; n < whole.size(); ++n) {
            dc->Clear(false);
            BuildSmallDiagram(*dc);
            const LoadOutcome r =
                TryLoad(*dc, std::vector<uint8_t>(whole.begin(), whole.begin() + long(n)));
            if (!r.Loaded) {
                ++failures;
                ASSERT_TRUE(r.Unchanged) << file.toStdString() << " cut to " << n;
            }
        }
        // Only the lengths up to 4 are ignored; every other cut is a malformed stream.
        EXPECT_EQ(failures, int(whole.size()) - 5) << file.toStdString();
    }
    EXPECT_TRUE(errors.Messages.isEmpty());
}

TEST_F(PersistenceStream, FlipOfEveryByteOfTheSmallExamplesLoadsOrRaisesAndLeavesTheDiagramAlone) {
    TErrorCounter errors;
    TScopedDialogService guard(&errors);
    for (const char* name : {"half_adder.dgm", "rs_latch.dgm", "junctions.dgm"}) {
        const std::vector<uint8_t> whole =
            ReadBytes(ExamplesDir() + QLatin1Char('/') + QLatin1String(name));
        ASSERT_FALSE(whole.empty()) << name;
        int loaded = 0, failed = 0;
        for (size_t i = 0; i < whole.size(); ++i) {
            std::vector<uint8_t> bytes = whole;
            bytes[i] ^= 0xFF;
            dc->Clear(false);
            BuildSmallDiagram(*dc);
            const LoadOutcome r = TryLoad(*dc, bytes);
            if (r.Loaded) {
                ++loaded;
            } else {
                ++failed;
                ASSERT_TRUE(r.Unchanged) << name << " byte " << i;
            }
        }
        // A flip inside the signature is "Invalid file format" (counted as loaded here),
        // coordinates and colours load, counts and kinds fail: both outcomes occur.
        EXPECT_GT(loaded, 0) << name;
        EXPECT_GT(failed, 0) << name;
    }
    EXPECT_EQ(errors.Messages.size(), 4 * 3);
}

// Offsets of the count fields of a stream built here: one text block with one label, one
// input and one output, one wire of two points, one foreign control.
struct CountFields {
    std::vector<uint8_t> Bytes;
    std::vector<std::pair<const char*, size_t>> At;
};

CountFields StreamWithEveryCount() {
    Bytes b;
    CountFields f;
    b.i32(int32_t(0x98F35D4Eu));
    f.At.push_back({"block count", b.size()});
    b.i32(1);
    b.u8(doText).i32(10).i32(20).i32(110).i32(70).i32(8);
    f.At.push_back({"label count", b.size()});
    b.i32(1);
    b.i32(5).i32(6).u8(12);
    f.At.push_back({"label text length", b.size()});
    b.str(QStringLiteral("Hi"));
    f.At.push_back({"input count", b.size()});
    b.i32(1).i32(0).i32(25).u8(itDirect).u8(6).u16(0);
    f.At.push_back({"output count", b.size()});
    b.i32(1).i32(99).i32(25).u8(itDirect).u8(6).u16(0);
    b.i32(7); // key
    f.At.push_back({"connection count", b.size()});
    b.i32(1);
    b.i32(7).i32(0).i32(0).i32(0);
    f.At.push_back({"point count", b.size()});
    b.i32(2).i32(110).i32(45).i32(150).i32(45);
    b.i32(1).i32(0).i32(-1);
    f.At.push_back({"control count", b.size()});
    b.i32(1);
    f.At.push_back({"control name length", b.size()});
    b.str(QStringLiteral("Edit1")).i32(1).i32(2).i32(3).i32(4);
    b.i32(0).i32(0);
    f.Bytes = b.data();
    return f;
}

TEST_F(PersistenceStream, HugeCountsInEveryCountFieldRaiseWithoutAllocatingByTheCount) {
    auto* edit = new QWidget(&panel);
    edit->setObjectName(QStringLiteral("Edit1"));
    dc->CntList->Add(edit);
    const CountFields f = StreamWithEveryCount();
    {
        TMemoryStream good(f.Bytes);
        dc->LoadFromStream(good);
        ASSERT_EQ(dc->ObjList->Count(), 1);
        ASSERT_EQ(dc->ConList->Count(), 1);
        EXPECT_EQ(BoundsRect(edit), (TRect{1, 2, 3, 4}));
    }
    dc->Clear(false);
    dc->CntList->Add(edit);
    BuildSmallDiagram(*dc);
    const std::vector<uint8_t> before = Saved(*dc);
    for (uint32_t huge : {0x7FFFFFFFu, 0xFFFFFFFEu}) {
        for (const auto& [what, at] : f.At) {
            // By the record formats a length or point count <= 0 means "none"; only the large
            // value is malformed there.
            const bool negativeMeansNone =
                QByteArray(what).contains("length") || QByteArray(what) == "point count";
            if (huge == 0xFFFFFFFEu && negativeMeansNone)
                continue;
            std::vector<uint8_t> bytes = f.Bytes;
            for (int k = 0; k < 4; ++k)
                bytes[at + size_t(k)] = uint8_t(huge >> (8 * k));
            gLargestAllocation = 0;
            gTrackAllocations = true;
            TMemoryStream s(bytes);
            bool raised = false;
            try {
                dc->LoadFromStream(s);
            } catch (const EReadError&) {
                raised = true;
            }
            gTrackAllocations = false;
            EXPECT_TRUE(raised) << what << " = " << std::hex << huge;
            EXPECT_LT(gLargestAllocation, size_t(1) << 20) << what << " = " << std::hex << huge;
            ASSERT_EQ(Saved(*dc), before) << what;
        }
    }
}

TEST_F(PersistenceStream, EveryExampleLoadsAndSavesToTheSameBytes) {
    const QStringList files = ExampleFiles(QStringLiteral("dgm"));
    ASSERT_GE(files.size(), 4);
    for (const QString& file : files) {
        const std::vector<uint8_t> bytes = ReadBytes(file);
        TMemoryStream s(bytes);
        dc->LoadFromStream(s);
        EXPECT_GT(dc->ObjList->Count(), 0) << file.toStdString();
        EXPECT_EQ(Saved(*dc), bytes) << file.toStdString();
    }
}

TEST_F(PersistenceStream, CounterExampleHasTwentyBlocksAndThirtyWiresAndJunctionExampleCrossInfos) {
    TMemoryStream counter(ReadBytes(ExamplesDir() + QStringLiteral("/ripple_counter.dgm")));
    dc->LoadFromStream(counter);
    EXPECT_GE(dc->ObjList->Count(), 20);
    EXPECT_GE(dc->ConList->Count(), 30);
    // Every wire starts at a block and ends at one or on another wire.
    for (int i = 0; i < dc->ConList->Count(); ++i) {
        const TDiagConnection* w = dc->ConList->Items(i);
        EXPECT_NE(w->GetSrcObject(), nullptr) << i;
        EXPECT_TRUE(w->GetDstObject() != nullptr || !w->FDstCrossInfo.IsZero()) << i;
    }
    TMemoryStream junctions(ReadBytes(ExamplesDir() + QStringLiteral("/junctions.dgm")));
    dc->LoadFromStream(junctions);
    int ending = 0;
    for (int i = 0; i < dc->ConList->Count(); ++i)
        if (!dc->ConList->Items(i)->FDstCrossInfo.IsZero())
            ++ending;
    EXPECT_EQ(ending, 3);
}

} // namespace
} // namespace vde::test
