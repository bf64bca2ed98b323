#include "velDiagEdit/connections/diag_connect_list.h"

#include "velDiagEdit/platform/errors.h"

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

TDiagConnectList::TDiagConnectList(TCanvas* ACanvas) : FCanvas(ACanvas) {
    if (FCanvas)
        SetUpPen(FCanvas);
}

TDiagConnectList::TDiagConnectList(QPaintDevice* DC)
    : FOwnCanvas(std::make_unique<TCanvas>()), FCanvas(FOwnCanvas.get()) {
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
    if (!Con)
        return -1;
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
}

void TDiagConnectList::Forget(TDiagConnection* Con) {
    const int i = IndexOf(Con);
    if (i >= 0) {
        FItems[size_t(i)].release(); // being destroyed by someone else
        FItems.erase(FItems.begin() + i);
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
    const int i = IndexOf(Con);
    if (i < 0)
        return nullptr;
    std::unique_ptr<TDiagConnection> out = std::move(FItems[size_t(i)]);
    FItems.erase(FItems.begin() + i);
    out->FOwner = nullptr;
    return out;
}

void TDiagConnectList::Clear() {
    std::vector<std::unique_ptr<TDiagConnection>> items;
    items.swap(FItems);
    for (auto& c : items) {
        c->FOwner = nullptr;
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
    for (const auto& c : FItems)
        if (!clipped || MayDrawInto(*c, clip))
            c->Paint();
}

void TDiagConnectList::Refresh() {
    for (const auto& c : FItems)
        c->MakePath();
}

void TDiagConnectList::UpdatePath(QObject* diag) {
    TDiagObject* b = AsBlock(diag);
    if (!b)
        return;
    for (const auto& c : FItems)
        if (c->FSource.data() == b || c->FDest.data() == b)
            c->MakePath();
}

void TDiagConnectList::ShiftByDelta(QObject* diag, TPoint Delta) {
    for (const auto& c : FItems)
        c->ShiftByDelta(diag, Delta);
}

void TDiagConnectList::UpdateBeforeDelete(QObject* diag) {
    if (!AsBlock(diag))
        return;
    for (auto& c : FItems) {
        c->OnDeleteDiagObject(diag);
        if (c->FPoints.size() < 2 || (!c->FSource && !c->FDest)) {
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
    return IndexOf(c);
}

int TDiagConnectList::ConnectIndex(TDiagObject* DiagObj, int MarkerIndex) const {
    if (MarkerIndex == 0 && DiagObj)
        MarkerIndex = DiagObj->FSelMarkerIndex;
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
    for (size_t i = 0; i < FItems.size(); ++i) {
        const TDiagConnection* c = FItems[i].get();
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
