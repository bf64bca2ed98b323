// Builds the sample diagrams of examples/ and writes each in both stored forms:
//   make_examples <folder> [<pictures>]
// writes <folder>/<name>.dgm and <folder>/<name>.txt, and with a second folder a picture of
// each as <pictures>/example_<name>.png.
// The diagrams are built the way the editor builds them (blocks by kind, wires routed between
// markers or drawn segment by segment and ended on another wire), with fixed keys, so that the
// same program always writes the same bytes.

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/editor/diag_container.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QPalette>
#include <QWidget>
#include <cstdio>
#include <functional>

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
    TDiagObject* Signal(const QString& text, int x, int y, bool source) {
        auto* t = static_cast<TDiagText*>(Block(doText, x, y, 60, 40));
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
    // A wire routed between two markers, as a stored diagram keeps it: its path and the keys
    // of the blocks at both ends.
    TDiagConnection* Wire(TDiagObject* src, int srcIdx, TDiagObject* dst, int dstIdx,
                          int autoSrc = 0, int autoDst = 0) {
        auto* c = new TDiagObjConnection(FDc.ConList.get(), src, srcIdx, dst, dstIdx, {15, 12},
                                         autoSrc, autoDst, 0);
        c->FSrcKey = src->GetObjKey();
        c->FDstKey = dst->GetObjKey();
        return c;
    }
    // A wire drawn from a marker segment by segment (size, angle in 45-degree units) and
    // ended on segment `seg` of wire `onto`: a junction.
    TDiagConnection* Branch(TDiagObject* src, int srcIdx, int stub,
                            std::initializer_list<std::pair<int, int>> segments,
                            TDiagConnection* onto, int seg) {
        auto* c = new TDiagObjConnection(FDc.ConList.get(), src, srcIdx, stub);
        for (auto [size, angle] : segments)
            c->AddSegment(size, angle);
        const int index = FDc.ConList->IndexOf(onto);
        c->EndConnectionWithSegment({uint16_t(seg + 1), uint16_t(index + 1)});
        if (c->FDstCrossInfo.IsZero()) {
            std::fprintf(stderr, "a branch wire did not meet its target segment:");
            for (const TPoint& p : c->FPoints)
                std::fprintf(stderr, " (%d,%d)", p.X, p.Y);
            std::fprintf(stderr, " onto");
            for (const TPoint& p : onto->FPoints)
                std::fprintf(stderr, " (%d,%d)", p.X, p.Y);
            std::fprintf(stderr, "\n");
            std::exit(1);
        }
        return c;
    }

private:
    TDiagContainer& FDc;
    uint32_t FKey = 0;
};

void HalfAdder(Builder& b) {
    TDiagObject* a = b.Signal(QStringLiteral("A"), 20, 40, true);
    TDiagObject* bb = b.Signal(QStringLiteral("B"), 20, 160, true);
    TDiagObject* orGate = b.Gate(doOrLogic, 160, 30);
    TDiagObject* andGate = b.Gate(doAndLogic, 160, 150);
    TDiagObject* sumGate = b.Gate(doAndLogic, 300, 60);
    static_cast<TDiagText*>(sumGate)->AllInputsType(itInversion, 1, 1);
    TDiagObject* s = b.Signal(QStringLiteral("S"), 440, 70, false);
    TDiagObject* c = b.Signal(QStringLiteral("C"), 440, 160, false);
    b.Wire(a, 1, orGate, -1);
    b.Wire(bb, 1, andGate, -2);
    b.Wire(a, 1, andGate, -1, 0, 0);
    b.Wire(bb, 1, orGate, -2);
    b.Wire(orGate, 1, sumGate, -1);
    b.Wire(andGate, 1, sumGate, -2);
    b.Wire(sumGate, 1, s, -1);
    b.Wire(andGate, 1, c, -1);
}

void RsLatch(Builder& b) {
    // Two cross-coupled NOR gates (OR with an inverted output), the flip-flop symbol that
    // stands for them, and the timing of one set and one reset.
    TDiagObject* s = b.Signal(QStringLiteral("S"), 20, 40, true);
    TDiagObject* r = b.Signal(QStringLiteral("R"), 20, 200, true);
    TDiagObject* nor1 = b.Gate(doOrLogic, 180, 30);
    TDiagObject* nor2 = b.Gate(doOrLogic, 180, 190);
    static_cast<TDiagText*>(nor1)->AllOutputsType(itInversion, 0, -1);
    static_cast<TDiagText*>(nor2)->AllOutputsType(itInversion, 0, -1);
    TDiagObject* qn = b.Signal(QStringLiteral("/Q"), 360, 40, false);
    TDiagObject* q = b.Signal(QStringLiteral("Q"), 360, 200, false);
    b.Wire(s, 1, nor1, -1);
    b.Wire(r, 1, nor2, -2);
    b.Wire(nor1, 1, qn, -1);
    b.Wire(nor2, 1, q, -1);
    b.Wire(nor1, 1, nor2, -1, 2, -2);
    b.Wire(nor2, 1, nor1, -2, -2, 2);
    TDiagObject* rs = b.Block(doRSTrigger, 480, 100, 100, 100);
    (void)rs;
    TDiagObject* timing = b.Block(doText, 20, 300, 420, 130);
    timing->SetTextValues(QStringLiteral("t: 0 1 2 3 4 5"));
    const char* rows[] = {"S: 0 1 0 0 0 0", "R: 0 0 0 1 0 0", "Q: 0 1 1 0 0 0", "/Q: 1 0 0 1 1 1"};
    for (const char* row : rows)
        timing->AddLabel({0, 0}, QString::fromLatin1(row), 20, false);
    timing->SetTextPosValues(QStringLiteral("10,4|10,28|10,52|10,76|10,100"));
    timing->SetTextHeights(QStringLiteral("20|20|20|20|20"));
}

void CounterStage(Builder& b) {
    // A four-bit synchronous counter: per bit a flip-flop set by T & CLK & /Q and reset by
    // T & CLK & Q, and a carry T & Q that enables the next bit.
    TDiagObject* en = b.Signal(QStringLiteral("EN"), 10, 20, true);
    TDiagObject* clk = b.Signal(QStringLiteral("CLK"), 10, 420, true);
    TDiagObject* t = en;
    int tIdx = 1;
    for (int bit = 0; bit < 4; ++bit) {
        const int x = 120 + bit * 260;
        TDiagObject* setGate = b.Gate(doAndLogic, x, 80, 3);
        static_cast<TDiagText*>(setGate)->AllInputsType(itInversion, 1, 1);
        TDiagObject* resetGate = b.Gate(doAndLogic, x, 220, 3);
        TDiagObject* ff = b.Block(doRSTrigger, x + 110, 120, 90, 120);
        TDiagObject* carry = b.Gate(doAndLogic, x + 110, 300);
        TDiagObject* out = b.Signal(QStringLiteral("Q%1").arg(bit), x + 150, 20, false);
        b.Wire(t, tIdx, setGate, -1);
        b.Wire(t, tIdx, resetGate, -1);
        b.Wire(clk, 1, setGate, -3);
        b.Wire(clk, 1, resetGate, -3);
        b.Wire(ff, 1, setGate, -2, -2, 2);
        b.Wire(ff, 1, resetGate, -2, 2, 2);
        b.Wire(setGate, 1, ff, -2);
        b.Wire(resetGate, 1, ff, -1);
        b.Wire(ff, 1, out, -1, -2, 0);
        b.Wire(t, tIdx, carry, -1);
        b.Wire(ff, 1, carry, -2, 2, 0);
        t = carry;
        tIdx = 1;
    }
    TDiagObject* co = b.Signal(QStringLiteral("CO"), 1160, 310, false);
    b.Wire(t, tIdx, co, -1);
}

void Junctions(Builder& b) {
    // IN fans out to two gates and EN to three: one wire runs to the farthest gate, the
    // others leave their gates' inputs westward, turn if they must and end on its run, where a
    // dot is drawn.
    TDiagObject* a = b.Signal(QStringLiteral("A"), 20, 20, true);
    TDiagObject* in = b.Signal(QStringLiteral("IN"), 20, 100, true);
    TDiagObject* en = b.Signal(QStringLiteral("EN"), 20, 320, true);
    TDiagObject* g1 = b.Gate(doAndLogic, 240, 20);
    TDiagObject* g2 = b.Gate(doAndLogic, 240, 140);
    TDiagObject* g3 = b.Gate(doOrLogic, 240, 260);
    TDiagObject* y1 = b.Signal(QStringLiteral("Y1"), 400, 30, false);
    TDiagObject* y2 = b.Signal(QStringLiteral("Y2"), 400, 150, false);
    TDiagObject* y3 = b.Signal(QStringLiteral("Y3"), 400, 270, false);
    b.Wire(a, 1, g1, -1);
    // The trunk runs out of IN, down and into the bottom gate; its vertical run is segment 1.
    TDiagConnection* trunk = b.Wire(in, 1, g3, -1);
    b.Branch(g2, -1, 20, {{60, 0}}, trunk, 1);
    // The enable wire's long horizontal run is its fourth segment; the branches turn down
    // (a left turn when heading west) to meet it.
    TDiagConnection* enable = b.Wire(en, 1, g3, -2);
    b.Branch(g1, -2, 30, {{40, 0}, {20, -2}}, enable, 3);
    b.Branch(g2, -2, 50, {{20, 0}, {20, -2}}, enable, 3);
    b.Wire(g1, 1, y1, -1);
    b.Wire(g2, 1, y2, -1);
    b.Wire(g3, 1, y3, -1);
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
        {"half_adder", HalfAdder},
        {"rs_latch", RsLatch},
        {"counter_stage", CounterStage},
        {"junctions", Junctions},
    };
    for (const auto& [name, build] : diagrams) {
        QWidget panel;
        panel.resize(1280, 480);
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
        if (argc == 3) {
            QImage picture(panel.size(), QImage::Format_RGB32);
            picture.fill(Qt::white);
            panel.render(&picture);
            picture.save(QString::fromLocal8Bit(argv[2]) + QStringLiteral("/example_") +
                         QString::fromLatin1(name) + QStringLiteral(".png"));
        }
        std::printf("%s: %d blocks, %d wires\n", name, dc.ObjList->Count(), dc.ConList->Count());
    }
    return 0;
}
