// The list answers "which wires lie near here" and "which wires end on this block" from an index
// it keeps as wires change. These tests change wires every way the library and its users do and
// compare every answer with a plain walk over all wires.

#include "connection_test_util.h"

#include <QWidget>
#include <algorithm>
#include <climits>
#include <random>

namespace vde::test {
namespace {

class WireIndexTest : public ::testing::Test {
protected:
    QWidget Parent;
    TDiagObjectList Blocks{&Parent};
    RecordingCanvas Rc;
    TDiagConnectList List{&Rc.canvas};
    std::mt19937 Rng{20261125};
    // How many questions had an answer: the walk must have had something to find.
    int Answered = 0;

    int Pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(Rng); }

    // A coordinate mostly on the drawing, now and then anywhere an int reaches.
    int Coord() {
        switch (Pick(0, 9)) {
        case 0:
            return Pick(INT_MIN, INT_MAX);
        case 1:
            return Pick(0, 1) ? INT_MAX - Pick(0, 3) : INT_MIN + Pick(0, 3);
        default:
            return Pick(-300, 3000);
        }
    }

    // A few hundred pixels on, kept within an int.
    int Step(int v) {
        return int(std::clamp<int64_t>(int64_t(v) + Pick(-400, 400), INT_MIN, INT_MAX));
    }

    TPoints Path() {
        TPoints p;
        const int n = Pick(0, 6);
        TPoint at{Coord(), Coord()};
        for (int i = 0; i < n; ++i) {
            p.push_back(at);
            if (Pick(0, 1))
                at.X = Pick(0, 5) ? Step(at.X) : Coord();
            else
                at.Y = Pick(0, 5) ? Step(at.Y) : Coord();
        }
        return p;
    }

    // Whether a wire's points, grown by Reach, meet the inclusive box: what any index must find.
    static bool Meets(const TDiagConnection& c, int64_t Reach, int64_t L, int64_t T, int64_t R,
                      int64_t B) {
        if (c.FPoints.empty())
            return false;
        int64_t l = INT64_MAX, t = INT64_MAX, r = INT64_MIN, b = INT64_MIN;
        for (const TPoint& p : c.FPoints) {
            l = std::min<int64_t>(l, p.X);
            r = std::max<int64_t>(r, p.X);
            t = std::min<int64_t>(t, p.Y);
            b = std::max<int64_t>(b, p.Y);
        }
        return l - Reach <= R && r + Reach >= L && t - Reach <= B && b + Reach >= T;
    }

    std::vector<TDiagConnection*> All() const {
        std::vector<TDiagConnection*> v;
        for (int i = 0; i < List.Count(); ++i)
            v.push_back(List.Items(i));
        return v;
    }

    void CheckNear(const TRect& R, int Margin) {
        const std::vector<TDiagConnection*> got = List.ConnectionsNear(R, Margin);
        // In list order, no wire twice.
        for (size_t k = 1; k < got.size(); ++k)
            ASSERT_LT(List.IndexOf(got[k - 1]), List.IndexOf(got[k]));
        for (TDiagConnection* c : All()) {
            const int64_t reach = Margin;
            if (R.Right > R.Left && R.Bottom > R.Top &&
                Meets(*c, reach, R.Left, R.Top, int64_t(R.Right) - 1, int64_t(R.Bottom) - 1)) {
                EXPECT_NE(std::find(got.begin(), got.end(), c), got.end())
                    << "wire " << List.IndexOf(c) << " missed near " << testing::PrintToString(R);
            }
        }
    }

    void CheckAt(TDiagObject* b) {
        std::vector<TDiagConnection*> want;
        for (TDiagConnection* c : All())
            if (c->GetSrcObject() == b || c->GetDstObject() == b)
                want.push_back(c);
        EXPECT_EQ(List.ConnectionsAt(b), want);
    }

    // FindBestSegment with its 10-pixel limit, answered by a walk over every wire.
    LongRec BestByWalk(TPoint P, const TDiagConnection* Skip, int ContainType) const {
        double best = 1e300;
        LongRec r{};
        for (int i = 0; i < List.Count(); ++i) {
            const TDiagConnection* c = List.Items(i);
            if (c == Skip || !c->NearPath(P, 10))
                continue;
            double d = 0;
            const int seg = c->FindNearestSegment(P, &d, true, ContainType);
            if (seg >= 0 && seg < kMaxPathPoints - 1 && d < best) {
                best = d;
                r = LR(uint16_t(i + 1), uint16_t(seg + 1));
            }
        }
        return r;
    }

    TPoint NearSomeWire() {
        if (List.Count() == 0 || Pick(0, 4) == 0)
            return {Pick(-300, 3000), Pick(-300, 3000)};
        const TDiagConnection* c = List.Items(Pick(0, List.Count() - 1));
        if (c->FPoints.empty())
            return {0, 0};
        const TPoint p = c->FPoints[size_t(Pick(0, int(c->FPoints.size()) - 1))];
        const auto nudge = [this](int v) {
            const int64_t w = int64_t(v) + Pick(-12, 12);
            return int(std::clamp<int64_t>(w, INT_MIN, INT_MAX));
        };
        return {nudge(p.X), nudge(p.Y)};
    }

    void CheckAll() {
        for (int q = 0; q < 6; ++q) {
            const TPoint p = NearSomeWire();
            const TDiagConnection* skip =
                List.Count() && Pick(0, 3) == 0 ? List.Items(Pick(0, List.Count() - 1)) : nullptr;
            for (int ct : {0, 1, 2}) {
                const LongRec got = List.FindBestSegment(p, skip, true, ct);
                const LongRec want = BestByWalk(p, skip, ct);
                Answered += want.Hi != 0;
                EXPECT_EQ(got.Hi, want.Hi) << "at (" << p.X << "," << p.Y << ") type " << ct;
                EXPECT_EQ(got.Lo, want.Lo) << "at (" << p.X << "," << p.Y << ") type " << ct;
            }
            const int w = Pick(0, 2) ? Pick(1, 300) : Pick(1, 1 << 20);
            const int h = Pick(0, 2) ? Pick(1, 300) : Pick(1, 1 << 20);
            const int64_t r = std::min<int64_t>(int64_t(p.X) + w, INT_MAX);
            const int64_t b = std::min<int64_t>(int64_t(p.Y) + h, INT_MAX);
            CheckNear({p.X, p.Y, int(r), int(b)}, Pick(0, 70));
        }
        for (int i = 0; i < Blocks.Count(); ++i)
            CheckAt(Blocks[i]);
        for (int i = 0; i < List.Count(); ++i) {
            ASSERT_EQ(List.IndexOfLive(List.Items(i)), i);
            ASSERT_EQ(List.IndexOf(List.Items(i)), i);
        }
    }
};

TEST_F(WireIndexTest, AnswersMatchAWalkOverAllWiresThroughEveryKindOfChange) {
    for (int i = 0; i < 6; ++i)
        AndGate(Blocks, 100 + 200 * i, 100 + 90 * (i % 3));
    for (int step = 0; step < 1500; ++step) {
        SCOPED_TRACE(step);
        const int n = List.Count();
        TDiagConnection* c = n ? List.Items(Pick(0, n - 1)) : nullptr;
        TDiagObject* b = Blocks[Pick(0, Blocks.Count() - 1)];
        const int op = n < 4 ? 0 : Pick(0, 11);
        switch (op) {
        case 0: // a hand-set path, written directly as the editor's undo does
            Wire(List, {})->FPoints = Path();
            break;
        case 1: // a wire routed between two markers
            new TDiagObjConnection(&List, b, 1, Blocks[Pick(0, Blocks.Count() - 1)], -1, {10, 10},
                                   0, 0, 3);
            break;
        case 2: // a hand-drawn wire from a marker, then a segment
            List.Items(List.AddConnection(b, -Pick(1, 2), Pick(10, 60)))
                ->AddSegment(Pick(5, 300), 90 * Pick(0, 3));
            break;
        case 3: // direct writes: path, pen and ends, told afterwards
            c->FPoints = Path();
            c->FPenWidth = Pick(0, 3) ? Pick(0, 8) : Pick(INT_MIN, INT_MAX);
            if (Pick(0, 1))
                c->FSource = Pick(0, 1) ? b : nullptr;
            List.PathChanged(c);
            break;
        case 4: // the block moves and its wires follow
            b->move(b->x() + Pick(-50, 50), b->y() + Pick(-50, 50));
            List.ShiftByDelta(b, {Pick(-50, 50), Pick(-50, 50)});
            break;
        case 5:
            List.UpdatePath(b);
            break;
        case 6: // the wire is freed by someone else
            delete c;
            break;
        case 7: { // taken out and handed back
            std::unique_ptr<TDiagConnection> taken = List.Remove(c);
            if (Pick(0, 1))
                List.Add(std::move(taken));
            break;
        }
        case 8:
            c->ReversePoints();
            break;
        case 9:
            if (c->FPoints.size() > 2)
                c->DeleteSegment(Pick(0, int(c->FPoints.size()) - 2));
            break;
        case 10:
            c->SetDstObject(Pick(0, 1) ? b : nullptr);
            break;
        case 11:
            if (Pick(0, 20) == 0)
                List.Clear();
            else if (c->FPoints.size() >= 2 && c->FPoints.size() < 30)
                c->AddSegment(Pick(5, 300), 90 * Pick(0, 3));
            break;
        }
        if (step % 5 == 0)
            CheckAll();
        if (HasFatalFailure() || testing::Test::HasFailure())
            return;
    }
    EXPECT_GT(Answered, 300);
}

TEST_F(WireIndexTest, ABlockFreedBehindTheListsBackLeavesNoWireForTheNextBlockAtItsAddress) {
    TDiagObject* a = AndGate(Blocks, 0, 0);
    TDiagObject* b = AndGate(Blocks, 300, 0);
    auto* c = new TDiagObjConnection(&List, a, 1, b, -1, {10, 10}, 0, 0, 3);
    ASSERT_EQ(List.ConnectionsAt(a).size(), 1u);
    delete a; // the wire's guarded pointer now reads none
    EXPECT_EQ(c->GetSrcObject(), nullptr);
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(List.ConnectionsAt(AndGate(Blocks, 0, 0)).empty());
    EXPECT_EQ(List.ConnectionsAt(b), std::vector<TDiagConnection*>{c});
}

TEST_F(WireIndexTest, AWireReachingAcrossTheWholePlaneIsFoundEverywhere) {
    TDiagConnection* w = Wire(List, {{INT_MIN, 5}, {INT_MAX, 5}, {INT_MAX, INT_MIN}});
    TDiagConnection* small = Wire(List, {{10, 10}, {40, 10}});
    EXPECT_EQ(List.ConnectionsNear({0, 0, 20, 20}, 0), (std::vector<TDiagConnection*>{w, small}));
    EXPECT_EQ(List.ConnectionsNear({-1000000, 3, -999990, 8}, 0), std::vector<TDiagConnection*>{w});
    EXPECT_EQ(List.ConnectionsNear({INT_MAX - 3, -70000, INT_MAX, -69990}, 0),
              std::vector<TDiagConnection*>{w});
    // Nothing lies near an empty rectangle.
    EXPECT_TRUE(List.ConnectionsNear({10, 10, 10, 40}, 5).empty());
}

} // namespace
} // namespace vde::test
