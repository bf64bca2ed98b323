// Builds the sample diagrams of examples/ and writes each in both stored forms:
//   make_examples <folder> [<pictures>]
// writes <folder>/<name>.dgm and <folder>/<name>.txt, and with a second folder a picture of
// each as <pictures>/example_<name>.png (the pictures in docs/images are drawn by
// scripts/render_example_images.sh instead).
// The diagrams are built the way the editor builds them (blocks by kind, wires drawn from a
// marker segment by segment and ended on a marker or on another wire, or routed between
// markers), with fixed keys, so that the same program always writes the same bytes. The wires
// of the teaching examples are drawn by hand along lanes chosen so that no wire runs along
// another or through a block; where two nets must cross they cross at a right angle, and a
// wire that joins a net ends on it with a dot.

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/editor/diag_container.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPalette>
#include <QRect>
#include <QRegion>
#include <QWidget>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace vde;

namespace {

class Builder {
public:
    explicit Builder(TDiagContainer& dc) : FDc(dc) {}

    TDiagObject* Block(TDiagObjectType kind, int x, int y, int w, int h) {
        TDiagObject* b = FDc.CreateObjByDiagType(kind, {x, y, x + w, y + h});
        b->SetObjKey(TObjKey(++FKey));
        FDc.AssignObjEvents(b);
        return b;
    }
    // A named signal: a text block with one output (a source) or one input (a sink).
    TDiagObject* Signal(const QString& text, int x, int y, bool source, int w = 60) {
        auto* t = static_cast<TDiagText*>(Block(doText, x, y, w, 40));
        t->SetTextValues(text);
        if (source)
            t->SetOutCount(1);
        else
            t->SetInCount(1);
        return t;
    }
    TDiagObject* Gate(TDiagObjectType kind, int x, int y, int inputs = 2) {
        auto* g = static_cast<TDiagText*>(Block(kind, x, y, 60, 20 + 25 * inputs));
        if (inputs != 2)
            g->SetInCount(inputs);
        return g;
    }
    // A wire drawn by hand from marker srcIdx of src to marker dstIdx of dst: out of the
    // source marker horizontally to turns[0], then vertically to turns[1], horizontally to
    // turns[2] and so on, and last vertically to the destination marker's height and
    // horizontally into it. An odd number of turns (ending on an x), or none for a straight
    // wire between markers at one height.
    TDiagConnection* Route(TDiagObject* src, int srcIdx, TDiagObject* dst, int dstIdx,
                           std::initializer_list<int> turns = {}) {
        TPoints pts = Walk(src, srcIdx, turns);
        TPoint end;
        dst->GetConPoint(dstIdx, end, false);
        if ((turns.size() % 2) == 0 && turns.size() > 0)
            Fail("a route must end on an x", pts);
        pts.push_back({pts.back().X, end.Y});
        pts.push_back(end);
        auto* c = Drawn(src, srcIdx, pts);
        c->FDest = dst;
        c->FDstConIdx = dstIdx;
        c->FDstKey = dst->GetObjKey();
        FDc.ConList->PathChanged(c);
        return c;
    }
    // A wire drawn by hand from a marker through the turns (as for Route) whose last point
    // lies on a segment of wire `onto`, across it: it ends there, on that wire's net.
    TDiagConnection* Join(TDiagObject* src, int srcIdx, std::initializer_list<int> turns,
                          TDiagConnection* onto) {
        const TPoints pts = Walk(src, srcIdx, turns);
        const TPoint end = pts.back();
        const TPoint before = pts[pts.size() - 2];
        int seg = -1;
        for (size_t i = 0; i + 1 < onto->FPoints.size(); ++i) {
            const TPoint a = onto->FPoints[i], b = onto->FPoints[i + 1];
            const bool across = a.Y == b.Y
                                    ? before.X == end.X && end.Y == a.Y &&
                                          std::min(a.X, b.X) < end.X && end.X < std::max(a.X, b.X)
                                    : before.Y == end.Y && end.X == a.X &&
                                          std::min(a.Y, b.Y) < end.Y && end.Y < std::max(a.Y, b.Y);
            if (across)
                seg = int(i);
        }
        if (seg < 0)
            Fail("a joining wire does not end across a segment of its target", pts);
        auto* c = Drawn(src, srcIdx, pts);
        c->FDstCrossInfo = {uint16_t(seg + 1), uint16_t(FDc.ConList->IndexOf(onto) + 1)};
        FDc.ConList->PathChanged(c);
        return c;
    }

private:
    TPoints Walk(TDiagObject* src, int srcIdx, std::initializer_list<int> turns) const {
        TPoints pts(1);
        src->GetConPoint(srcIdx, pts[0], false);
        bool horizontal = true;
        for (int v : turns) {
            const TPoint last = pts.back();
            pts.push_back(horizontal ? TPoint{v, last.Y} : TPoint{last.X, v});
            horizontal = !horizontal;
        }
        return pts;
    }
    TDiagConnection* Drawn(TDiagObject* src, int srcIdx, TPoints pts) {
        // Points that repeat or lie on a straight run between their neighbours say nothing.
        TPoints clean;
        for (const TPoint& p : pts) {
            if (!clean.empty() && clean.back() == p)
                continue;
            if (clean.size() >= 2) {
                const TPoint a = clean[clean.size() - 2], b = clean.back();
                if ((a.X == b.X && b.X == p.X) || (a.Y == b.Y && b.Y == p.Y))
                    clean.pop_back();
            }
            clean.push_back(p);
        }
        for (size_t i = 0; i + 1 < clean.size(); ++i)
            if (clean[i].X != clean[i + 1].X && clean[i].Y != clean[i + 1].Y)
                Fail("a segment is neither horizontal nor vertical", clean);
        auto* c = new TDiagConnection(FDc.ConList.get());
        c->FPoints = clean;
        c->FSource = src;
        c->FSrcConIdx = srcIdx;
        c->FSrcKey = src->GetObjKey();
        return c;
    }
    [[noreturn]] static void Fail(const char* what, const TPoints& pts) {
        std::fprintf(stderr, "%s:", what);
        for (const TPoint& p : pts)
            std::fprintf(stderr, " (%d,%d)", p.X, p.Y);
        std::fprintf(stderr, "\n");
        std::exit(1);
    }

    TDiagContainer& FDc;
    uint32_t FKey = 0;
};

TDiagText* Text(TDiagObject* o) {
    return static_cast<TDiagText*>(o);
}

// Gates are 60 x 70 with two inputs: input 1 at +17, input 2 at +47, the output at +33 below
// the top. A signal block is 40 high with its marker at +18. RS flip-flops are 80 x 100: R at
// +25, S at +71, the output at +48. The blocks are placed so that most wires run straight.

void HalfAdder(Builder& b) {
    // S = (A or B) and not (A and B), C = A and B.
    TDiagObject* a = b.Signal(QStringLiteral("A"), 20, 40, true);
    TDiagObject* bb = b.Signal(QStringLiteral("B"), 20, 200, true);
    TDiagObject* orGate = b.Gate(doOrLogic, 200, 41);
    TDiagObject* andGate = b.Gate(doAndLogic, 200, 171);
    TDiagObject* sumGate = b.Gate(doAndLogic, 340, 57);
    Text(sumGate)->AllInputsType(itInversion, 1, 1);
    TDiagObject* s = b.Signal(QStringLiteral("S"), 480, 72, false);
    TDiagObject* c = b.Signal(QStringLiteral("C"), 480, 186, false);
    TDiagConnection* aWire = b.Route(a, 1, orGate, -1);
    TDiagConnection* bWire = b.Route(bb, 1, andGate, -2);
    b.Join(andGate, -1, {150, 58}, aWire);
    b.Join(orGate, -2, {110, 218}, bWire);
    b.Route(orGate, 1, sumGate, -1);
    TDiagConnection* carry = b.Route(andGate, 1, c, -1);
    b.Join(sumGate, -2, {300, 204}, carry);
    b.Route(sumGate, 1, s, -1);
}

void FullAdder(Builder& b) {
    // Two half adders: P = A xor B, S = P xor Cin; the carry is (A and B) or (P and Cin).
    TDiagObject* a = b.Signal(QStringLiteral("A"), 20, 40, true);
    TDiagObject* bb = b.Signal(QStringLiteral("B"), 20, 200, true);
    TDiagObject* cin = b.Signal(QStringLiteral("Cin"), 20, 330, true, 80);
    TDiagObject* or1 = b.Gate(doOrLogic, 200, 41);
    TDiagObject* and1 = b.Gate(doAndLogic, 200, 171);
    TDiagObject* x1 = b.Gate(doAndLogic, 340, 57);
    Text(x1)->AllInputsType(itInversion, 1, 1);
    TDiagObject* or2 = b.Gate(doOrLogic, 480, 73);
    TDiagObject* and2 = b.Gate(doAndLogic, 480, 301);
    TDiagObject* x2 = b.Gate(doAndLogic, 620, 89);
    Text(x2)->AllInputsType(itInversion, 1, 1);
    TDiagObject* or3 = b.Gate(doOrLogic, 620, 360);
    TDiagObject* s = b.Signal(QStringLiteral("S"), 760, 104, false);
    TDiagObject* cout = b.Signal(QStringLiteral("Cout"), 760, 375, false, 80);
    // The first half adder, as in half_adder.
    TDiagConnection* aWire = b.Route(a, 1, or1, -1);
    TDiagConnection* bWire = b.Route(bb, 1, and1, -2);
    b.Join(and1, -1, {150, 58}, aWire);
    b.Join(or1, -2, {110, 218}, bWire);
    b.Route(or1, 1, x1, -1);
    // Its carry runs down across the carry-in, under the second half adder, to the last OR.
    TDiagConnection* g1 = b.Route(and1, 1, or3, -2, {420});
    b.Join(x1, -2, {300, 204}, g1);
    // The second half adder, on P and Cin.
    TDiagConnection* p = b.Route(x1, 1, or2, -1);
    TDiagConnection* cinWire = b.Route(cin, 1, and2, -2);
    b.Join(and2, -1, {460, 90}, p);
    b.Join(or2, -2, {440, 348}, cinWire);
    b.Route(or2, 1, x2, -1);
    TDiagConnection* g2 = b.Route(and2, 1, or3, -1, {575});
    b.Join(x2, -2, {556, 334}, g2);
    b.Route(x2, 1, s, -1);
    b.Route(or3, 1, cout, -1);
}

void RsLatch(Builder& b) {
    // Two OR gates with inverted outputs (NOR), each fed back from the other's output:
    // /Q = not (S or Q), Q = not (R or /Q).
    TDiagObject* s = b.Signal(QStringLiteral("S"), 20, 40, true);
    TDiagObject* r = b.Signal(QStringLiteral("R"), 20, 220, true);
    TDiagObject* top = b.Gate(doOrLogic, 200, 41);
    TDiagObject* bottom = b.Gate(doOrLogic, 200, 191);
    Text(top)->AllOutputsType(itInversion, 0, -1);
    Text(bottom)->AllOutputsType(itInversion, 0, -1);
    TDiagObject* q = b.Signal(QStringLiteral("Q"), 400, 206, false);
    TDiagObject* qn = b.Signal(QStringLiteral("/Q"), 400, 56, false);
    b.Route(s, 1, top, -1);
    b.Route(r, 1, bottom, -2);
    TDiagConnection* qnWire = b.Route(top, 1, qn, -1);
    TDiagConnection* qWire = b.Route(bottom, 1, q, -1);
    // The feedback: each gate's second input reaches over to the other gate's output wire.
    b.Join(top, -2, {160, 140, 300, 224}, qWire);
    b.Join(bottom, -1, {170, 160, 320, 74}, qnWire);
}

void RsFlipFlop(Builder& b) {
    // The flip-flop block: input 1 resets, input 2 sets, both 0 hold.
    TDiagObject* r = b.Signal(QStringLiteral("R"), 20, 40, true);
    TDiagObject* s = b.Signal(QStringLiteral("S"), 20, 86, true);
    TDiagObject* ff = b.Block(doRSTrigger, 200, 33, 80, 100);
    TDiagObject* q = b.Signal(QStringLiteral("Q"), 360, 63, false);
    b.Route(r, 1, ff, -1);
    b.Route(s, 1, ff, -2);
    b.Route(ff, 1, q, -1);
}

void DLatch(Builder& b) {
    // While EN is 1 the flip-flop is set when D is 1 and reset when D is 0; while EN is 0 it
    // holds.
    TDiagObject* d = b.Signal(QStringLiteral("D"), 20, 40, true);
    TDiagObject* en = b.Signal(QStringLiteral("EN"), 20, 200, true);
    TDiagObject* resetGate = b.Gate(doAndLogic, 200, 41);
    Text(resetGate)->AllInputsType(itInversion, 0, 0);
    TDiagObject* setGate = b.Gate(doAndLogic, 200, 171);
    TDiagObject* ff = b.Block(doRSTrigger, 340, 49, 80, 100);
    TDiagObject* q = b.Signal(QStringLiteral("Q"), 500, 79, false);
    TDiagConnection* dWire = b.Route(d, 1, resetGate, -1);
    TDiagConnection* enWire = b.Route(en, 1, setGate, -2);
    b.Join(setGate, -1, {150, 58}, dWire);
    b.Join(resetGate, -2, {110, 218}, enWire);
    b.Route(resetGate, 1, ff, -1);
    b.Route(setGate, 1, ff, -2, {300});
    b.Route(ff, 1, q, -1);
}

void RippleCounter(Builder& b) {
    // Four toggle stages, each a master and a slave flip-flop: while its clock C is 1 the
    // master takes the opposite of Q (set by C and /Q, reset by C and Q); when C falls the
    // slave copies the master (set by /C and M, reset by /C and /M). So Q toggles on each
    // falling edge of C, and each stage's Q is the next stage's clock: Q3 Q2 Q1 Q0 count the
    // falling edges of CLK. Two stages a row; the wire from Q1 runs round to the second row.
    constexpr int kStageW = 520, kRowH = 400, kX = 100;
    struct Stage {
        int x, y;
        TDiagObject *gRm, *gSm, *m, *gRs, *gSs, *ff, *probe;
    };
    TDiagObject* clk = b.Signal(QStringLiteral("CLK"), 20, 119, true, 80);
    std::vector<Stage> st;
    for (int k = 0; k < 4; ++k) {
        Stage g{kX + (k % 2) * kStageW, (k / 2) * kRowH, {}, {}, {}, {}, {}, {}, {}};
        const int x = g.x, y = g.y;
        g.gRm = b.Gate(doAndLogic, x + 60, y + 120);
        g.gSm = b.Gate(doAndLogic, x + 60, y + 230);
        Text(g.gSm)->AllInputsType(itInversion, 1, 1);
        g.m = b.Block(doRSTrigger, x + 150, y + 128, 80, 100);
        g.gRs = b.Gate(doAndLogic, x + 290, y + 129);
        Text(g.gRs)->AllInputsType(itInversion, 0, 1);
        g.gSs = b.Gate(doAndLogic, x + 290, y + 230);
        Text(g.gSs)->AllInputsType(itInversion, 0, 0);
        g.ff = b.Block(doRSTrigger, x + 380, y + 137, 80, 100);
        g.probe = b.Signal(QStringLiteral("Q%1").arg(k), x + 515, y + 5, false);
        st.push_back(g);
    }
    // CLK is the first stage's clock; each later one's is the Q wire of the one before.
    TDiagConnection* c = b.Route(clk, 1, st[0].gRm, -1);
    for (int k = 0; k < 4; ++k) {
        const Stage& g = st[size_t(k)];
        const int x = g.x, y = g.y;
        // The clock reaches the master's set gate from below its wire, and the slave's gates
        // over the top of the stage (inverted there).
        b.Join(g.gSm, -1, {x + 12, y + 137}, c);
        TDiagConnection* bus = b.Join(g.gSs, -1, {x + 272, y + 90, x + 30, y + 137}, c);
        b.Join(g.gRs, -1, {x + 272}, bus);
        // Master, then slave.
        b.Route(g.gRm, 1, g.m, -1);
        b.Route(g.gSm, 1, g.m, -2, {x + 135});
        TDiagConnection* mWire = b.Route(g.m, 1, g.gRs, -2);
        b.Join(g.gSs, -2, {x + 250, y + 176}, mWire);
        b.Route(g.gRs, 1, g.ff, -1);
        b.Route(g.gSs, 1, g.ff, -2, {x + 365});
        // Q: to the next stage's clock input, round to the next row after the second stage,
        // or to its probe after the last.
        TDiagConnection* q = nullptr;
        if (k == 3)
            q = b.Route(g.ff, 1, g.probe, -1, {x + 490});
        else if (k == 1)
            q = b.Route(g.ff, 1, st[2].gRm, -1, {x + 490, y + 137, x + 530, y + 380, kX - 40});
        else
            q = b.Route(g.ff, 1, st[size_t(k) + 1].gRm, -1, {x + 490});
        // Fed back under the stage to the master's gates.
        TDiagConnection* back = b.Join(g.gSm, -2, {x + 38, y + 350, x + 475, y + 185}, q);
        b.Join(g.gRm, -2, {x + 48, y + 277}, back);
        if (k < 3)
            b.Join(g.probe, -1, {x + 500, y + 137}, q);
        c = q;
    }
}

void Junctions(Builder& b) {
    // IN fans out to two gates and EN to three: one wire runs from each source to its lowest
    // gate, and the wires from the other gates' inputs end on it, where a dot is drawn.
    TDiagObject* a = b.Signal(QStringLiteral("A"), 20, 20, true);
    TDiagObject* in = b.Signal(QStringLiteral("IN"), 20, 100, true);
    TDiagObject* en = b.Signal(QStringLiteral("EN"), 20, 320, true);
    TDiagObject* g1 = b.Gate(doAndLogic, 240, 21);
    TDiagObject* g2 = b.Gate(doAndLogic, 240, 141);
    TDiagObject* g3 = b.Gate(doOrLogic, 240, 261);
    TDiagObject* y1 = b.Signal(QStringLiteral("Y1"), 400, 36, false);
    TDiagObject* y2 = b.Signal(QStringLiteral("Y2"), 400, 156, false);
    TDiagObject* y3 = b.Signal(QStringLiteral("Y3"), 400, 276, false);
    b.Route(a, 1, g1, -1);
    TDiagConnection* trunk = b.Route(in, 1, g3, -1, {100});
    b.Join(g2, -1, {100}, trunk);
    TDiagConnection* enable = b.Route(en, 1, g3, -2, {180});
    b.Join(g1, -2, {200, 308}, enable);
    b.Join(g2, -2, {220, 308}, enable);
    b.Route(g1, 1, y1, -1);
    b.Route(g2, 1, y2, -1);
    b.Route(g3, 1, y3, -1);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: make_examples <folder> [<pictures folder>]\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);
    const std::pair<const char*, std::function<void(Builder&)>> diagrams[] = {
        {"half_adder", HalfAdder},   {"full_adder", FullAdder}, {"rs_latch", RsLatch},
        {"rs_flipflop", RsFlipFlop}, {"d_latch", DLatch},       {"ripple_counter", RippleCounter},
        {"junctions", Junctions},
    };
    for (const auto& [name, build] : diagrams) {
        QWidget panel;
        panel.resize(1280, 800);
        QPalette pal = panel.palette();
        pal.setColor(QPalette::Window, Qt::white);
        panel.setPalette(pal);
        panel.setAutoFillBackground(true);
        TCanvas canvas;
        canvas.SetHandle(&panel);
        TDiagContainer dc(&panel, &canvas, nullptr);
        Builder b(dc);
        build(b);
        const QString base = folder + QLatin1Char('/') + QString::fromLatin1(name);
        dc.SaveDiagramToFile(base + QStringLiteral(".dgm"));
        dc.SaveDiagramToText(base + QStringLiteral(".txt"));
        std::printf("%s: %d blocks, %d wires\n", name, dc.ObjList->Count(), dc.ConList->Count());
        if (argc != 3)
            continue;
        const QString pictures = QString::fromLocal8Bit(argv[2]);
        // The picture shows what the diagram covers, with a margin.
        QRect used;
        for (int i = 0; i < dc.ObjList->Count(); ++i) {
            const TRect r = dc.ObjList->Items(i)->BoundsRect();
            used |= QRect(QPoint(r.Left, r.Top), QPoint(r.Right - 1, r.Bottom - 1));
        }
        for (int i = 0; i < dc.ConList->Count(); ++i)
            for (const TPoint& pt : dc.ConList->Items(i)->FPoints)
                used |= QRect(pt.X - 4, pt.Y - 4, 9, 9);
        used = used.adjusted(-20, -20, 20, 20) & panel.rect();
        QImage picture(used.size(), QImage::Format_RGB32);
        picture.fill(Qt::white);
        panel.render(&picture, QPoint(), QRegion(used));
        picture.save(pictures + QStringLiteral("/example_") + QString::fromLatin1(name) +
                     QStringLiteral(".png"));
    }
    return 0;
}
