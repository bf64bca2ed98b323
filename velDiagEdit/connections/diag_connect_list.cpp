#include "velDiagEdit/connections/diag_connect_list.h"

#include "velDiagEdit/platform/errors.h"

#include <QHash>
#include <algorithm>
#include <cfloat>

namespace vde {

namespace {
void SetUpPen(TCanvas* c) {
    c->Pen.Width = 2;
    c->Pen.Color = 0;
}
TDiagObject* AsBlock(QObject* o) {
    return qobject_cast<TDiagObject*>(o);
}
} // namespace

// ---- the index: where wires lie, and which blocks they end on --------------------------------
//
// A uniform grid of the wires' point boxes and a table from block to wires let painting, hit
// tests and rerouting look only at the wires concerned. A wire is refiled lazily: every change
// of a path marks its wire, and the next question to the index files the marked ones first.

namespace {

constexpr int kWireCell = 256;
// A wire whose box spans more cells than this is kept aside and looked at on every question.
constexpr int64_t kMaxWireCells = 256;
// Questions about painting grow the painted rectangle by this much; wires whose pen reaches
// further are kept aside.
constexpr int kMaxFiledReach = 64;

int32_t WireCellOf(int64_t v) {
    return int32_t(v >= 0 ? v / kWireCell : -((-v - 1) / kWireCell) - 1);
}

quint64 WireCellKey(int32_t cx, int32_t cy) {
    return (quint64(quint32(cx)) << 32) | quint32(cy);
}

// What the pen and the junction dot reach beyond a wire's points.
int64_t PenReach(const TDiagConnection& c) {
    return int64_t(std::max(c.FPenWidth, 1)) + 6;
}

} // namespace

struct TDiagConnectList::TIndex {
    QHash<quint64, std::vector<TDiagConnection*>> Grid;
    std::vector<TDiagConnection*> Large;
    QHash<const QObject*, std::vector<TDiagConnection*>> ByBlock;
    std::vector<TDiagConnection*> Dirty;
    uint64_t Query = 0;
    bool PositionsStale = false;
};

void TDiagConnection::Touch() {
    if (FOwner)
        FOwner->MarkDirty(this);
}

void TDiagConnectList::MarkDirty(TDiagConnection* Con) {
    if (Con->FIndex.Dirty)
        return;
    Con->FIndex.Dirty = true;
    FIndex->Dirty.push_back(Con);
}

void TDiagConnectList::PathChanged(TDiagConnection* Con) {
    if (Con && Con->FOwner == this)
        MarkDirty(Con);
}

void TDiagConnectList::Reindex() {
    for (const auto& c : FItems)
        MarkDirty(c.get());
    FIndex->PositionsStale = true;
}

namespace {
void DropFrom(std::vector<TDiagConnection*>& v, const TDiagConnection* c) {
    const auto it = std::find(v.begin(), v.end(), c);
    if (it != v.end()) {
        *it = v.back();
        v.pop_back();
    }
}
} // namespace

void TDiagConnectList::Unfile(TDiagConnection* Con) const {
    auto& e = Con->FIndex;
    if (!e.Filed)
        return;
    if (e.Large) {
        DropFrom(FIndex->Large, Con);
    } else {
        for (int32_t cy = e.CellT; cy <= e.CellB; ++cy)
            for (int32_t cx = e.CellL; cx <= e.CellR; ++cx) {
                const auto it = FIndex->Grid.find(WireCellKey(cx, cy));
                if (it == FIndex->Grid.end())
                    continue;
                DropFrom(*it, Con);
                if (it->empty())
                    FIndex->Grid.erase(it);
            }
    }
    const auto unlist = [&](const QObject* block) {
        const auto it = FIndex->ByBlock.find(block);
        if (it == FIndex->ByBlock.end())
            return;
        DropFrom(*it, Con);
        if (it->empty())
            FIndex->ByBlock.erase(it);
    };
    if (e.Src)
        unlist(e.Src);
    if (e.Dst && e.Dst != e.Src)
        unlist(e.Dst);
    e.Filed = false;
    e.Large = false;
    e.Src = e.Dst = nullptr;
}

void TDiagConnectList::File(TDiagConnection* Con) const {
    auto& e = Con->FIndex;
    e.Filed = true;
    e.Src = Con->FSource.data();
    e.Dst = Con->FDest.data();
    if (e.Src)
        FIndex->ByBlock[e.Src].push_back(Con);
    if (e.Dst && e.Dst != e.Src)
        FIndex->ByBlock[e.Dst].push_back(Con);
    const TPoints& pts = Con->FPoints;
    if (pts.empty() || PenReach(*Con) > kMaxFiledReach) {
        // Nothing to draw or hit, or a pen wider than the questions allow for: kept aside, so
        // that every question looks at it.
        e.Large = true;
        FIndex->Large.push_back(Con);
        return;
    }
    int64_t l = pts[0].X, r = l, t = pts[0].Y, b = t;
    for (const TPoint& p : pts) {
        l = std::min<int64_t>(l, p.X);
        r = std::max<int64_t>(r, p.X);
        t = std::min<int64_t>(t, p.Y);
        b = std::max<int64_t>(b, p.Y);
    }
    e.CellL = WireCellOf(l);
    e.CellT = WireCellOf(t);
    e.CellR = WireCellOf(r);
    e.CellB = WireCellOf(b);
    const int64_t cells = (int64_t(e.CellR) - e.CellL + 1) * (int64_t(e.CellB) - e.CellT + 1);
    if (cells > kMaxWireCells) {
        e.Large = true;
        FIndex->Large.push_back(Con);
        return;
    }
    for (int32_t cy = e.CellT; cy <= e.CellB; ++cy)
        for (int32_t cx = e.CellL; cx <= e.CellR; ++cx)
            FIndex->Grid[WireCellKey(cx, cy)].push_back(Con);
}

void TDiagConnectList::Flush() const {
    if (FIndex->PositionsStale) {
        for (size_t i = 0; i < FItems.size(); ++i)
            FItems[i]->FIndex.Pos = int32_t(i);
        FIndex->PositionsStale = false;
    }
    // Taken whole: filing never marks anything.
    std::vector<TDiagConnection*> dirty;
    dirty.swap(FIndex->Dirty);
    for (TDiagConnection* c : dirty) {
        c->FIndex.Dirty = false;
        Unfile(c);
        File(c);
    }
}

std::vector<TDiagConnection*> TDiagConnectList::ConnectionsNear(const TRect& R, int Margin) const {
    // R is half-open (Right and Bottom lie outside it).
    const int64_t m = std::max(Margin, 0);
    if (int64_t(R.Right) <= R.Left || int64_t(R.Bottom) <= R.Top)
        return NearBox(1, 1, 0, 0);
    return NearBox(int64_t(R.Left) - m, int64_t(R.Top) - m, int64_t(R.Right) - 1 + m,
                   int64_t(R.Bottom) - 1 + m);
}

std::vector<TDiagConnection*> TDiagConnectList::NearBox(int64_t L, int64_t T, int64_t R,
                                                        int64_t B) const {
    Flush();
    std::vector<TDiagConnection*> found;
    if (R < L || B < T)
        return found;
    const uint64_t query = ++FIndex->Query;
    const auto take = [&](TDiagConnection* c) {
        if (c->FIndex.Seen == query)
            return;
        c->FIndex.Seen = query;
        found.push_back(c);
    };
    for (TDiagConnection* c : FIndex->Large)
        take(c);
    {
        const int32_t l = WireCellOf(L), t = WireCellOf(T), r = WireCellOf(R), b = WireCellOf(B);
        const int64_t cells = (int64_t(r) - l + 1) * (int64_t(b) - t + 1);
        if (cells > int64_t(FIndex->Grid.size())) {
            // A box wider than the filed area: walk the cells that exist.
            for (auto it = FIndex->Grid.cbegin(); it != FIndex->Grid.cend(); ++it) {
                const auto cx = int32_t(quint32(it.key() >> 32));
                const auto cy = int32_t(quint32(it.key()));
                if (cx >= l && cx <= r && cy >= t && cy <= b)
                    for (TDiagConnection* c : *it)
                        take(c);
            }
        } else {
            for (int32_t cy = t; cy <= b; ++cy)
                for (int32_t cx = l; cx <= r; ++cx) {
                    const auto it = FIndex->Grid.constFind(WireCellKey(cx, cy));
                    if (it != FIndex->Grid.cend())
                        for (TDiagConnection* c : *it)
                            take(c);
                }
        }
    }
    std::sort(found.begin(), found.end(), [](const TDiagConnection* a, const TDiagConnection* c) {
        return a->FIndex.Pos < c->FIndex.Pos;
    });
    return found;
}

std::vector<std::pair<int, int32_t>> TDiagConnectList::SelectedSegments() const {
    std::vector<std::pair<int, int32_t>> found;
    for (size_t i = 0; i < FItems.size(); ++i)
        if (const int32_t seg = FItems[i]->FSelectedIndex; seg != -1)
            found.emplace_back(int(i), seg);
    return found;
}

std::vector<TDiagConnection*> TDiagConnectList::ConnectionsAt(const QObject* Block) const {
    Flush();
    std::vector<TDiagConnection*> found;
    if (!Block)
        return found;
    const auto it = FIndex->ByBlock.constFind(Block);
    if (it == FIndex->ByBlock.cend())
        return found;
    // A block freed behind the list's back leaves its entry; a new block may take its address.
    for (TDiagConnection* c : *it)
        if (c->FSource.data() == Block || c->FDest.data() == Block)
            found.push_back(c);
    std::sort(found.begin(), found.end(), [](const TDiagConnection* a, const TDiagConnection* c) {
        return a->FIndex.Pos < c->FIndex.Pos;
    });
    return found;
}

TDiagConnectList::TDiagConnectList(TCanvas* ACanvas)
    : FCanvas(ACanvas), FIndex(std::make_unique<TIndex>()) {
    if (FCanvas)
        SetUpPen(FCanvas);
}

TDiagConnectList::TDiagConnectList(QPaintDevice* DC)
    : FOwnCanvas(std::make_unique<TCanvas>()), FCanvas(FOwnCanvas.get()),
      FIndex(std::make_unique<TIndex>()) {
    FCanvas->SetHandle(DC);
    SetUpPen(FCanvas);
}

TDiagConnectList::~TDiagConnectList() {
    TDiagConnectList::Clear();
    FCanvas = nullptr;
    FOwnCanvas.reset();
}

TDiagConnection* TDiagConnectList::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        throw EListError(QStringLiteral("List index out of bounds (%1)").arg(Index));
    return FItems[size_t(Index)].get();
}

int TDiagConnectList::IndexOf(const TDiagConnection* Con) const {
    // Only compares addresses: a caller may ask about a connection that is gone.
    const auto it =
        std::find_if(FItems.begin(), FItems.end(),
                     [Con](const std::unique_ptr<TDiagConnection>& c) { return c.get() == Con; });
    return !Con || it == FItems.end() ? -1 : int(it - FItems.begin());
}

int TDiagConnectList::IndexOfLive(const TDiagConnection* Con) const {
    if (!Con)
        return -1;
    if (Con->FOwner == this && !FIndex->PositionsStale) {
        const int32_t pos = Con->FIndex.Pos;
        if (pos >= 0 && size_t(pos) < FItems.size() && FItems[size_t(pos)].get() == Con)
            return pos;
    }
    const auto it =
        std::find_if(FItems.begin(), FItems.end(),
                     [Con](const std::unique_ptr<TDiagConnection>& c) { return c.get() == Con; });
    return it == FItems.end() ? -1 : int(it - FItems.begin());
}

void TDiagConnectList::Adopt(TDiagConnection* Con) {
    if (Count() >= kMaxConnections)
        throw EListError(
            QStringLiteral("A connection list holds at most %1 connections").arg(kMaxConnections));
    FItems.emplace_back(Con);
    Con->FOwner = this;
    Con->FIndex.Pos = int32_t(FItems.size() - 1);
    MarkDirty(Con);
}

// Takes a connection out of the index for good (it leaves the list).
void TDiagConnectList::Drop(TDiagConnection* Con) {
    Unfile(Con);
    if (Con->FIndex.Dirty) {
        DropFrom(FIndex->Dirty, Con);
        Con->FIndex.Dirty = false;
    }
    Con->FIndex.Pos = -1;
    FIndex->PositionsStale = true;
}

void TDiagConnectList::Forget(TDiagConnection* Con) {
    const int i = IndexOfLive(Con);
    if (i >= 0) {
        FItems[size_t(i)].release(); // being destroyed by someone else
        FItems.erase(FItems.begin() + i);
        Drop(Con);
    }
    Con->FOwner = nullptr;
}

void TDiagConnectList::Add(std::unique_ptr<TDiagConnection> Con) {
    if (!Con || Con->FOwner)
        return;
    Adopt(Con.get());
    Con.release();
}

std::unique_ptr<TDiagConnection> TDiagConnectList::Remove(TDiagConnection* Con) {
    const int i = IndexOfLive(Con);
    if (i < 0)
        return nullptr;
    std::unique_ptr<TDiagConnection> out = std::move(FItems[size_t(i)]);
    FItems.erase(FItems.begin() + i);
    Drop(out.get());
    out->FOwner = nullptr;
    return out;
}

void TDiagConnectList::Clear() {
    std::vector<std::unique_ptr<TDiagConnection>> items;
    items.swap(FItems);
    // The index goes at once, whatever the wires' destructors do.
    *FIndex = TIndex();
    for (auto& c : items) {
        c->FOwner = nullptr;
        c->FIndex = {};
        c.reset();
    }
}

namespace {

// Whether anything a wire draws can fall inside R: its points' bounding box, grown by what the
// pen and the junction dot reach beyond the points, meets R.
bool MayDrawInto(const TDiagConnection& c, const TRect& R) {
    if (c.FPoints.size() < 2)
        return false;
    int32_t l = c.FPoints[0].X, r = l, t = c.FPoints[0].Y, b = t;
    for (const TPoint& p : c.FPoints) {
        l = std::min(l, p.X);
        r = std::max(r, p.X);
        t = std::min(t, p.Y);
        b = std::max(b, p.Y);
    }
    const int64_t reach = int64_t(std::max(c.FPenWidth, 1)) + 6;
    return int64_t(l) - reach < R.Right && int64_t(r) + reach >= R.Left &&
           int64_t(t) - reach < R.Bottom && int64_t(b) + reach >= R.Top;
}

} // namespace

void TDiagConnectList::Paint() {
    // Only wires that can touch the part being painted are drawn, still in list order, so the
    // pixels are the same as when every wire is drawn.
    TRect clip;
    const bool clipped = FCanvas && FCanvas->ClipRect(clip);
    // Wires draw through the canvas alone: their fills can go out together.
    const TCanvasBatch batch(FCanvas);
    if (!clipped) {
        for (const auto& c : FItems)
            c->Paint();
        return;
    }
    // The index answers with every wire whose box, grown by the widest reach, may meet the
    // clip; the exact test then decides for each. A wire of wider pen is filed aside.
    for (TDiagConnection* c : ConnectionsNear(clip, kMaxFiledReach))
        if (MayDrawInto(*c, clip))
            c->Paint();
}

void TDiagConnectList::SetWireColors(TWireColorFunc Func) {
    FWireColors = std::move(Func);
}

bool TDiagConnectList::WireColor(const TDiagConnection* Con, TColor& Color) const {
    if (!FWireColors)
        return false;
    const int i = IndexOfLive(Con);
    return i >= 0 && FWireColors(i, Color);
}

void TDiagConnectList::Refresh() {
    for (const auto& c : FItems)
        c->MakePath();
}

void TDiagConnectList::UpdatePath(QObject* diag) {
    TDiagObject* b = AsBlock(diag);
    if (!b)
        return;
    for (TDiagConnection* c : ConnectionsAt(b))
        if (c->FSource.data() == b || c->FDest.data() == b)
            c->MakePath();
}

void TDiagConnectList::ShiftByDelta(QObject* diag, TPoint Delta) {
    // Only a wire that starts or ends at diag moves.
    for (TDiagConnection* c : ConnectionsAt(diag))
        c->ShiftByDelta(diag, Delta);
}

void TDiagConnectList::UpdateBeforeDelete(QObject* diag) {
    if (!AsBlock(diag))
        return;
    for (TDiagConnection* c : ConnectionsAt(diag))
        c->OnDeleteDiagObject(diag);
    // Every wire left without a path or without blocks goes, not only those at diag.
    for (auto& c : FItems) {
        if (c->FPoints.size() < 2 || (!c->FSource && !c->FDest)) {
            Drop(c.get());
            c->FOwner = nullptr;
            c.reset();
        }
    }
    // Later indexes shift down; stored addresses past a removed wire are not corrected.
    FItems.erase(std::remove(FItems.begin(), FItems.end(), nullptr), FItems.end());
}

int TDiagConnectList::AddConnection(TDiagObject* DiagObj, int MarkerIndex, int Size) {
    if (!DiagObj)
        return 0;
    if (MarkerIndex == 0)
        MarkerIndex = DiagObj->FSelMarkerIndex;
    if (MarkerIndex == 0)
        return 0;
    auto* c = new TDiagObjConnection(this, DiagObj, MarkerIndex, Size);
    return IndexOfLive(c);
}

int TDiagConnectList::ConnectIndex(TDiagObject* DiagObj, int MarkerIndex) const {
    if (MarkerIndex == 0 && DiagObj)
        MarkerIndex = DiagObj->FSelMarkerIndex;
    if (DiagObj) {
        for (const TDiagConnection* c : ConnectionsAt(DiagObj)) {
            const int i = c->FIndex.Pos;
            if (c->FSource.data() == DiagObj && c->FSrcConIdx == MarkerIndex)
                return -(i + 1);
            if (c->FDest.data() == DiagObj && c->FDstConIdx == MarkerIndex)
                return i + 1;
        }
        return 0;
    }
    // No block: the first wire with a missing end and that marker.
    for (size_t i = 0; i < FItems.size(); ++i) {
        const TDiagConnection* c = FItems[i].get();
        if (c->FSource.data() == DiagObj && c->FSrcConIdx == MarkerIndex)
            return -int(i + 1);
        if (c->FDest.data() == DiagObj && c->FDstConIdx == MarkerIndex)
            return int(i + 1);
    }
    return 0;
}

LongRec TDiagConnectList::FindBestSegment(TPoint P, const TDiagConnection* SkipCon, bool UseLimit,
                                          int ContainType) const {
    double best = DBL_MAX;
    LongRec result{};
    std::vector<TDiagConnection*> near;
    if (UseLimit)
        near = NearBox(int64_t(P.X) - 10, int64_t(P.Y) - 10, int64_t(P.X) + 10, int64_t(P.Y) + 10);
    const size_t n = UseLimit ? near.size() : FItems.size();
    for (size_t k = 0; k < n; ++k) {
        const TDiagConnection* c = UseLimit ? near[k] : FItems[k].get();
        const size_t i = UseLimit ? size_t(c->FIndex.Pos) : k;
        if (c == SkipCon)
            continue;
        // With the limit on, only a wire whose box grown by the limit holds P can answer.
        if (UseLimit && !c->NearPath(P, 10))
            continue;
        double d = 0;
        const int seg = c->FindNearestSegment(P, &d, UseLimit, ContainType);
        // A segment that a LongRec cannot name (a path made longer behind the list's back) is
        // not an answer: its address would wrap onto another segment.
        if (seg >= 0 && seg < kMaxPathPoints - 1 && d < best) {
            best = d;
            result = {uint16_t(seg + 1), uint16_t(i + 1)};
        }
    }
    return result;
}

int TDiagConnectList::LookForBestSegment(int Index, LongRec& LR) {
    if (Index < 0 || Index >= Count())
        return 0;
    return FItems[size_t(Index)]->LookForBestSegment(LR, true);
}

TDiagConnection* TDiagConnectList::Addressed(LongRec LR) const {
    if (LR.IsZero() || LR.Hi > Count())
        return nullptr;
    TDiagConnection* c = Items(int(LR.Hi) - 1);
    if (LR.Lo >= c->FPoints.size())
        return nullptr;
    return c;
}

void TDiagConnectList::GetSegmentRect(LongRec LR, TRect& Result) const {
    TDiagConnection* c = Addressed(LR);
    if (!c)
        return;
    if (!c->GetSegmentRect(int(LR.Lo) - 1, Result, 0))
        Result = {-1, -1, -1, -1};
}

void TDiagConnectList::SelectSegmentByLongRec(LongRec LR) {
    if (LR.IsZero() || LR.Hi > Count())
        return;
    TDiagConnection* c = Items(int(LR.Hi) - 1);
    if (LR.Lo < c->FPoints.size())
        c->SetSelectedIndex(int(LR.Lo) - 1);
    DeselectAll(c);
}

void TDiagConnectList::DeselectAll(const TDiagConnection* SkipCon) {
    // A wire with nothing selected is left alone: drawing it again would change no pixel.
    for (const auto& c : FItems)
        if (c.get() != SkipCon && c->FSelectedIndex != -1)
            c->SetSelectedIndex(-1);
}

void TDiagConnectList::DeleteSegmentByLongRec(LongRec& LR) {
    TDiagConnection* c = Addressed(LR);
    if (!c)
        return;
    const int r = c->DeleteSegment(int(LR.Lo) - 1);
    if (r >= 0) {
        LR.Lo = uint16_t(r + 1);
        SelectSegmentByLongRec(LR);
    } else {
        LR = {};
    }
}

void TDiagConnectList::AlignSegmentWithDiagObject(LongRec LR, TDiagObject* DiagObj) {
    TDiagConnection* c = Addressed(LR);
    if (!c)
        return;
    c->AlignSegmentByDiagObject(int(LR.Lo) - 1, DiagObj);
    AdjustEndConnections(int(LR.Hi) - 1);
}

void TDiagConnectList::EditSegmentOfConnection(LongRec LR, int& Size, int& Angle, bool DoRead) {
    if (TDiagConnection* c = Addressed(LR))
        c->EditSegment(int(LR.Lo) - 1, Size, Angle, DoRead);
}

int TDiagConnectList::AddSegmentToConnection(int ConIndex, int Size, int Angle) {
    if (ConIndex >= Count())
        return -1;
    TDiagConnection* c = Items(ConIndex);
    const int r = c->AddSegment(Size, Angle);
    c->Paint();
    return r;
}

void TDiagConnectList::EndConnectionByLongRec(LongRec LR, TDiagObject* DiagObj,
                                              const LongRec* PDest) {
    TDiagConnection* c = Addressed(LR);
    if (!c)
        return;
    if (PDest)
        c->EndConnectionWithSegment(*PDest);
    else
        c->EndConnection(DiagObj, DiagObj == nullptr);
}

void TDiagConnectList::UpdateEndConnections(LongRec LR) {
    if (LR.IsZero())
        return;
    for (int i = 0; i < Count(); ++i) {
        TDiagConnection* c = FItems[size_t(i)].get();
        if (c->FDstCrossInfo == LR && c->FPoints.size() <= size_t(kMaxPathPoints)) {
            const LongRec self{uint16_t(c->FPoints.size() - 1), uint16_t(i + 1)};
            EndConnectionByLongRec(self, nullptr, nullptr);
        }
    }
}

void TDiagConnectList::AdjustEndConnections(int Index) {
    const int64_t n = int64_t(Items(Index)->FPoints.size());
    for (int64_t lo = 1; lo <= std::min<int64_t>(n - 1, kMaxPathPoints - 1); ++lo)
        UpdateEndConnections({uint16_t(lo), uint16_t(Index + 1)});
}

void TDiagConnectList::SaveToStream(TStream& Stream) const {
    Stream.WriteInt32(Count());
    for (const auto& c : FItems)
        c->SaveToStream(Stream);
}

void TDiagConnectList::LoadFromStream(TStream& Stream,
                                      const std::function<void(TDiagConnection*)>& OnCreateConEvent,
                                      int n) {
    Clear();
    if (n == -1)
        n = Stream.ReadCount("Connection count", 0, true, kMaxConnections);
    else if (n > kMaxConnections)
        throw EFormatError(QStringLiteral("Connection count %1 is more than the %2 that can be "
                                          "addressed")
                               .arg(n)
                               .arg(kMaxConnections),
                           Stream.Position());
    for (int i = 0; i < n; ++i) {
        TDiagConnection* c = TDiagConnection::LoadFromStream(Stream, this);
        if (OnCreateConEvent)
            OnCreateConEvent(c);
    }
}

} // namespace vde
