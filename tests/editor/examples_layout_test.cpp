// The sample diagrams of examples/ are clean to look at: no wire runs along another, no wire
// passes through a block, every label stays inside its block, and every input of the circuit is
// driven by exactly one output.

#include "editor_test_util.h"

#include "common/test_util.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/simulation/diag_simulator.h"

#include <QDir>
#include <algorithm>

using namespace vde;
using namespace vde::test;

namespace {

struct Seg {
    TPoint A, B;
    bool Horizontal() const { return A.Y == B.Y; }
};

std::vector<Seg> Segments(const TDiagConnection* w) {
    std::vector<Seg> r;
    for (size_t i = 0; i + 1 < w->FPoints.size(); ++i)
        r.push_back({w->FPoints[i], w->FPoints[i + 1]});
    return r;
}

// Two segments on one line sharing more than a point.
bool RunAlong(const Seg& s, const Seg& t) {
    if (s.Horizontal() != t.Horizontal())
        return false;
    if (s.Horizontal()) {
        if (s.A.Y != t.A.Y)
            return false;
        const int lo = std::max(std::min(s.A.X, s.B.X), std::min(t.A.X, t.B.X));
        const int hi = std::min(std::max(s.A.X, s.B.X), std::max(t.A.X, t.B.X));
        return hi > lo;
    }
    if (s.A.X != t.A.X)
        return false;
    const int lo = std::max(std::min(s.A.Y, s.B.Y), std::min(t.A.Y, t.B.Y));
    const int hi = std::min(std::max(s.A.Y, s.B.Y), std::max(t.A.Y, t.B.Y));
    return hi > lo;
}

// Whether the segment meets the inside of the rectangle (its border excluded).
bool Through(const Seg& s, const TRect& r) {
    const int x1 = std::min(s.A.X, s.B.X), x2 = std::max(s.A.X, s.B.X);
    const int y1 = std::min(s.A.Y, s.B.Y), y2 = std::max(s.A.Y, s.B.Y);
    return x2 > r.Left && x1 < r.Right && y2 > r.Top && y1 < r.Bottom;
}

class ExamplesLayout : public EditorFixture {
protected:
    static QStringList Files() {
        return QDir(QStringLiteral(VDE_EXAMPLES_DIR))
            .entryList({QStringLiteral("*.dgm")}, QDir::Files, QDir::Name);
    }
    void Load(const QString& name) {
        dc->LoadDiagramFromFile(QStringLiteral(VDE_EXAMPLES_DIR "/") + name);
    }
};

} // namespace

TEST_F(ExamplesLayout, TheTeachingExamplesAreThere) {
    const QStringList files = Files();
    for (const char* n : {"half_adder.dgm", "full_adder.dgm", "rs_latch.dgm", "rs_flipflop.dgm",
                          "d_latch.dgm", "ripple_counter.dgm"})
        EXPECT_TRUE(files.contains(QLatin1String(n))) << n;
}

TEST_F(ExamplesLayout, NoWireRunsAlongAnother) {
    for (const QString& f : Files()) {
        SCOPED_TRACE(f.toStdString());
        Load(f);
        const int n = dc->ConList->Count();
        ASSERT_GT(n, 0);
        for (int i = 0; i < n; ++i) {
            const std::vector<Seg> a = Segments(dc->ConList->Items(i));
            // Nor along itself: no segment doubles back over the one before it.
            for (size_t k = 0; k + 1 < a.size(); ++k)
                EXPECT_FALSE(RunAlong(a[k], a[k + 1])) << "wire " << i << " segment " << k;
            for (int j = i + 1; j < n; ++j)
                for (const Seg& s : a)
                    for (const Seg& t : Segments(dc->ConList->Items(j)))
                        EXPECT_FALSE(RunAlong(s, t))
                            << "wires " << i << " and " << j << " at (" << s.A.X << "," << s.A.Y
                            << ")-(" << s.B.X << "," << s.B.Y << ")";
        }
    }
}

TEST_F(ExamplesLayout, NoWirePassesThroughABlock) {
    for (const QString& f : Files()) {
        SCOPED_TRACE(f.toStdString());
        Load(f);
        for (int b = 0; b < dc->ObjList->Count(); ++b) {
            const TDiagObject* o = dc->ObjList->Items(b);
            // The body: the block without the strips its marker stubs stand in.
            TRect body = o->BoundsRect();
            body.Left += o->FDeltaWidth;
            body.Right -= o->FDeltaWidth;
            for (int i = 0; i < dc->ConList->Count(); ++i)
                for (const Seg& s : Segments(dc->ConList->Items(i)))
                    EXPECT_FALSE(Through(s, body))
                        << "wire " << i << " through block " << b << " at (" << s.A.X << ","
                        << s.A.Y << ")-(" << s.B.X << "," << s.B.Y << ")";
        }
    }
}

TEST_F(ExamplesLayout, EveryLabelStaysInsideItsBlock) {
    for (const QString& f : Files()) {
        SCOPED_TRACE(f.toStdString());
        Load(f);
        for (int b = 0; b < dc->ObjList->Count(); ++b) {
            const TDiagObject* o = dc->ObjList->Items(b);
            const int w = o->width(), h = o->height();
            for (const TDiagLabel& l : o->FLabels) {
                TFont font;
                font.Height = o->GetLabelHeight(l);
                const int tw = FontTextWidth(font, l.Text);
                EXPECT_GE(l.Start.X, o->FDeltaWidth)
                    << "block " << b << " " << l.Text.toStdString();
                EXPECT_LE(l.Start.X + tw, w - o->FDeltaWidth)
                    << "block " << b << " " << l.Text.toStdString();
                EXPECT_GE(l.Start.Y, 0) << "block " << b << " " << l.Text.toStdString();
                EXPECT_LE(l.Start.Y + font.Height, h)
                    << "block " << b << " " << l.Text.toStdString();
            }
        }
    }
}

TEST_F(ExamplesLayout, EveryInputIsDrivenByOneOutput) {
    for (const QString& f : Files()) {
        SCOPED_TRACE(f.toStdString());
        Load(f);
        const TDiagSimulator sim(*dc->ObjList, *dc->ConList);
        for (const TSimIssue& i : sim.Issues())
            EXPECT_EQ(i.Kind, TSimIssue::ikNoStimulus) << i.Message.toStdString();
        // And every input marker is on a wire at all.
        for (int b = 0; b < dc->ObjList->Count(); ++b) {
            const TDiagObject* o = dc->ObjList->Items(b);
            for (int k = 1; k <= int(o->FInputs.size()); ++k)
                EXPECT_GE(sim.NetOf(o, -k), 0) << "block " << b << " input " << k;
        }
    }
}
