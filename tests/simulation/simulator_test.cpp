// The simulator on small circuits drawn through the block and connection lists: gate truth
// tables with inverted pins, the RS flip-flop's rules, latches, loops, junctions, conflicts and
// the text blocks that are sources, probes and buffers.

#include "sim_test_util.h"

#include "velDiagEdit/simulation/diag_simulator.h"

#include <QSignalSpy>

using namespace vde;
using namespace vde::test;

namespace {

std::vector<TSimChange> Ch(std::initializer_list<std::pair<int64_t, bool>> l) {
    std::vector<TSimChange> v;
    for (const auto& [s, b] : l)
        v.push_back({s, b});
    return v;
}

const TSimTrace& TraceNamed(const TDiagSimulator& sim, const QString& name) {
    for (const TSimTrace& t : sim.Traces())
        if (t.Name == name)
            return t;
    ADD_FAILURE() << "no trace " << name.toStdString();
    static TSimTrace none;
    return none;
}

std::vector<TSimIssue> OfKind(const std::vector<TSimIssue>& all, TSimIssue::TKind k) {
    std::vector<TSimIssue> r;
    for (const TSimIssue& i : all)
        if (i.Kind == k)
            r.push_back(i);
    return r;
}

// A gate with n inputs, each fed by a source A1..An, its output read by probe Y; pins inverted
// as the mask says (bit k: input k + 1, bit n: the output).
struct GateBench {
    Circuit c;
    TDiagText* gate = nullptr;
    GateBench(TDiagObjectType kind, int n, unsigned mask) {
        std::vector<TDiagText*> src;
        for (int i = 0; i < n; ++i)
            src.push_back(c.Source(0, 120 * i, QStringLiteral("A%1").arg(i + 1)));
        gate = c.Gate(kind, 200, 0, n);
        TDiagText* y = c.Probe(400, 0, QStringLiteral("Y"));
        for (int i = 0; i < n; ++i) {
            if (mask & (1u << i))
                gate->AllInputsType(itInversion, i, i);
            c.Connect(src[size_t(i)], 1, gate, -(i + 1));
        }
        if (mask & (1u << n))
            gate->AllOutputsType(itInversion, 0, 0);
        c.Connect(gate, 1, y, -1);
    }
    // The probe's value one step after the sources took the given bits.
    bool Out(unsigned bits) {
        TDiagSimulator sim(c.Blocks, c.Wires);
        EXPECT_TRUE(sim.Errors().empty());
        EXPECT_TRUE(OfKind(sim.Warnings(), TSimIssue::ikUnconnectedInput).empty());
        for (int i = 0; i < gate->GetInCount(); ++i)
            sim.SetStimulus(QStringLiteral("A%1").arg(i + 1),
                            TSimWaveform::Constant((bits >> i) & 1u));
        sim.Reset();
        sim.Run(2);
        const bool probe = TraceNamed(sim, QStringLiteral("Y")).ValueAt(1);
        EXPECT_EQ(sim.MarkerValue(gate, 1), probe);
        EXPECT_EQ(sim.NetValue(sim.NetOf(gate, 1)), probe);
        return probe;
    }
};

} // namespace

TEST(SimGates, TwoInputTablesWrittenOut) {
    // AND with its output inverted: 1 1 1 0.
    GateBench nand(doAndLogic, 2, 0b100);
    EXPECT_EQ(nand.Out(0b00), true);
    EXPECT_EQ(nand.Out(0b01), true);
    EXPECT_EQ(nand.Out(0b10), true);
    EXPECT_EQ(nand.Out(0b11), false);
    // OR with both inputs inverted is the same table.
    GateBench orInv(doOrLogic, 2, 0b011);
    EXPECT_EQ(orInv.Out(0b00), true);
    EXPECT_EQ(orInv.Out(0b01), true);
    EXPECT_EQ(orInv.Out(0b10), true);
    EXPECT_EQ(orInv.Out(0b11), false);
    // AND with both inputs inverted: 1 0 0 0.
    GateBench andInv(doAndLogic, 2, 0b011);
    EXPECT_EQ(andInv.Out(0b00), true);
    EXPECT_EQ(andInv.Out(0b01), false);
    EXPECT_EQ(andInv.Out(0b10), false);
    EXPECT_EQ(andInv.Out(0b11), false);
    // Plain OR: 0 1 1 1; the second input alone inverted: 1 1 0 1 (bits 0b01 = A1 only).
    GateBench orPlain(doOrLogic, 2, 0);
    EXPECT_EQ(orPlain.Out(0b00), false);
    EXPECT_EQ(orPlain.Out(0b01), true);
    EXPECT_EQ(orPlain.Out(0b10), true);
    EXPECT_EQ(orPlain.Out(0b11), true);
    GateBench orB(doOrLogic, 2, 0b010);
    EXPECT_EQ(orB.Out(0b00), true);
    EXPECT_EQ(orB.Out(0b01), true);
    EXPECT_EQ(orB.Out(0b10), false);
    EXPECT_EQ(orB.Out(0b11), true);
}

TEST(SimGates, AndAndOrForOneToFourInputsWithEveryInversion) {
    for (TDiagObjectType kind : {doAndLogic, doOrLogic}) {
        for (int n = 1; n <= 4; ++n) {
            for (unsigned mask = 0; mask < (1u << (n + 1)); ++mask) {
                GateBench b(kind, n, mask);
                for (unsigned bits = 0; bits < (1u << n); ++bits) {
                    // What the gate sees at each pin, then the rule of its kind, then the
                    // output pin.
                    int ones = 0;
                    for (int i = 0; i < n; ++i)
                        ones += (((bits >> i) ^ (mask >> i)) & 1u) ? 1 : 0;
                    bool v = kind == doAndLogic ? ones == n : ones > 0;
                    if (mask & (1u << n))
                        v = !v;
                    EXPECT_EQ(b.Out(bits), v) << (kind == doAndLogic ? "AND" : "OR") << " n=" << n
                                              << " mask=" << mask << " bits=" << bits;
                }
            }
        }
    }
}

TEST(SimGates, EveryOutputOfAGateCarriesItsValueThroughItsOwnMarker) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g = c.Gate(doAndLogic, 200, 0, 1);
    g->SetOutCount(2);
    g->AllOutputsType(itInversion, 1, 1);
    TDiagText* p = c.Probe(400, 0, "P");
    TDiagText* q = c.Probe(400, 150, "Q");
    c.Connect(a, 1, g, -1);
    c.Connect(g, 1, p, -1);
    c.Connect(g, 2, q, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Parse("0 1"));
    sim.Reset();
    sim.Run(3);
    // A: 0 1; the gate answers one step later; Q is inverted and so starts at 1 after step 0.
    EXPECT_EQ(TraceNamed(sim, "P").Changes, Ch({{2, true}}));
    EXPECT_EQ(TraceNamed(sim, "Q").Changes, Ch({{1, true}, {2, false}}));
}

TEST(SimFlipFlop, SetResetHoldAndTheForbiddenInput) {
    Circuit c;
    TDiagText* r = c.Source(0, 0, "R");
    TDiagText* s = c.Source(0, 120, "S");
    TDiagObject* ff = c.Blocks.CreateObjByDiagType(doRSTrigger, {200, 0, 280, 100});
    TDiagText* q = c.Probe(400, 0, "Q");
    c.Connect(r, 1, ff, -1);
    c.Connect(s, 1, ff, -2);
    c.Connect(ff, 1, q, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_TRUE(sim.Issues().size() == 2) << "only the two sources without waveforms";
    // step:  0123 4567 8901 2345
    sim.SetStimulus("R", TSimWaveform::Parse("0000 0100 0110 1010"));
    sim.SetStimulus("S", TSimWaveform::Parse("0010 0000 1110 0011"));
    sim.Reset();
    EXPECT_TRUE(sim.Issues().empty());
    sim.Run(17);
    // Set at 2 (Q at 3), reset at 5 (Q at 6), set at 8 (Q at 9), R = S = 1 at 9..10 holds 1,
    // reset at 12 (Q at 13), R = S = 1 at 14 holds 0, set at 15 (Q at 16).
    EXPECT_EQ(TraceNamed(sim, "Q").Changes,
              Ch({{3, true}, {6, false}, {9, true}, {13, false}, {16, true}}));
    EXPECT_EQ(sim.ForbiddenCount(), 2);
    EXPECT_EQ(sim.ForbiddenCount(ff), 2);
    EXPECT_TRUE(sim.FlipFlopState(ff));
    const TSimRecord rec = sim.Record();
    ASSERT_EQ(rec.Forbidden.size(), 2u);
    EXPECT_EQ(rec.Forbidden[0], (TSimSpan{9, 11, {2}}));
    EXPECT_EQ(rec.Forbidden[1], (TSimSpan{14, 15, {2}}));
    const auto forb = OfKind(sim.Warnings(), TSimIssue::ikForbidden);
    ASSERT_EQ(forb.size(), 1u);
    EXPECT_EQ(forb[0].Blocks, std::vector<int>{2});
    EXPECT_EQ(forb[0].Step, 9);
    EXPECT_TRUE(forb[0].Message.contains("2 time(s)")) << forb[0].Message.toStdString();
}

TEST(SimFlipFlop, ForbiddenInputStillOnAtTheEndIsASpanToTheEnd) {
    Circuit c;
    TDiagText* r = c.Source(0, 0, "R");
    TDiagText* s = c.Source(0, 120, "S");
    TDiagObject* ff = c.Blocks.CreateObjByDiagType(doRSTrigger, {200, 0, 280, 100});
    c.Connect(r, 1, ff, -1);
    c.Connect(s, 1, ff, -2);
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("R", TSimWaveform::Parse("0, 1@4"));
    sim.SetStimulus("S", TSimWaveform::Parse("1"));
    sim.Reset();
    sim.Run(8);
    EXPECT_TRUE(sim.FlipFlopState(ff)) << "set at 0, held through the forbidden input";
    EXPECT_EQ(sim.ForbiddenCount(), 1);
    ASSERT_EQ(sim.Record().Forbidden.size(), 1u);
    EXPECT_EQ(sim.Record().Forbidden[0], (TSimSpan{4, 8, {2}}));
}

TEST(SimLatch, TwoOrGatesWithInvertedOutputsSettleAndHold) {
    Circuit c;
    TDiagText* r = c.Source(0, 0, "R");
    TDiagText* s = c.Source(0, 300, "S");
    TDiagText* g1 = c.Gate(doOrLogic, 200, 0);   // Q = not (R or QB)
    TDiagText* g2 = c.Gate(doOrLogic, 200, 250); // QB = not (S or Q)
    g1->AllOutputsType(itInversion, 0, 0);
    g2->AllOutputsType(itInversion, 0, 0);
    TDiagText* q = c.Probe(420, 0, "Q");
    TDiagText* qb = c.Probe(420, 250, "QB");
    c.Connect(r, 1, g1, -1);
    c.Connect(s, 1, g2, -2);
    c.Connect(g1, 1, g2, -1);
    c.Connect(g2, 1, g1, -2);
    c.Connect(g1, 1, q, -1);
    c.Connect(g2, 1, qb, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_TRUE(sim.Errors().empty());
    // step: 0123 4567 8901 2345 6789
    sim.SetStimulus("R", TSimWaveform::Parse("1110 0000 0000 1110 0000"));
    sim.SetStimulus("S", TSimWaveform::Parse("0000 0111 1000 0000 0000"));
    sim.Reset();
    sim.Run(20);
    // Reset first: QB rises at 1. S at 5: QB falls at 6, Q rises at 7; S gone at 9, it holds.
    // R at 12: Q falls at 13, QB rises at 14; R gone at 15, it holds.
    EXPECT_EQ(TraceNamed(sim, "Q").Changes, Ch({{7, true}, {13, false}}));
    EXPECT_EQ(TraceNamed(sim, "QB").Changes, Ch({{1, true}, {6, false}, {14, true}}));
    EXPECT_TRUE(OfKind(sim.Warnings(), TSimIssue::ikOscillation).empty());
    EXPECT_TRUE(sim.Record().Oscillating.empty());
}

TEST(SimLoops, ARingOfThreeInvertersIsReportedAndTheRunGoesOn) {
    Circuit c;
    std::vector<TDiagText*> inv;
    for (int i = 0; i < 3; ++i) {
        inv.push_back(c.Gate(doOrLogic, 200 * i, 0, 1));
        inv.back()->AllOutputsType(itInversion, 0, 0);
    }
    TDiagText* p = c.Probe(700, 200, "P");
    c.Connect(inv[0], 1, inv[1], -1);
    c.Connect(inv[1], 1, inv[2], -1);
    c.Connect(inv[2], 1, inv[0], -1);
    c.Connect(inv[2], 1, p, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    QSignalSpy spy(&sim, &TDiagSimulator::Stepped);
    sim.Run(40);
    EXPECT_EQ(sim.Time(), 40);
    EXPECT_EQ(spy.count(), 40);
    EXPECT_EQ(spy.at(39).at(0).toLongLong(), 39);
    const auto osc = OfKind(sim.Warnings(), TSimIssue::ikOscillation);
    ASSERT_EQ(osc.size(), 1u);
    EXPECT_EQ(osc[0].Blocks, (std::vector<int>{0, 1, 2})) << "the loop, not the probe";
    EXPECT_GT(osc[0].Step, 0);
    EXPECT_LT(osc[0].Step, 40);
    EXPECT_TRUE(osc[0].Message.contains("block 1 (OrLogic \"1\")")) << osc[0].Message.toStdString();
    // All three start at 0, so all three turn together: 1 at odd steps, 0 at even ones.
    const TSimTrace& t = TraceNamed(sim, "P");
    for (int64_t i = 1; i < 40; ++i)
        EXPECT_EQ(t.ValueAt(i), i % 2 == 1) << i;
    const TSimRecord rec = sim.Record();
    ASSERT_EQ(rec.Oscillating.size(), 1u);
    EXPECT_EQ(rec.Oscillating[0].First, osc[0].Step);
    EXPECT_EQ(rec.Oscillating[0].End, 40);
    EXPECT_EQ(rec.Oscillating[0].Blocks, (std::vector<int>{0, 1, 2}));
}

TEST(SimLoops, AHigherBoundLetsAShortRunPassAndABoundAtZeroMeansTheDefault) {
    Circuit c;
    std::vector<TDiagText*> inv;
    for (int i = 0; i < 3; ++i) {
        inv.push_back(c.Gate(doOrLogic, 200 * i, 0, 1));
        inv.back()->AllOutputsType(itInversion, 0, 0);
    }
    c.Connect(inv[0], 1, inv[1], -1);
    c.Connect(inv[1], 1, inv[2], -1);
    c.Connect(inv[2], 1, inv[0], -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(sim.GetOscillationBound(), 2 * 3 + 4);
    sim.SetOscillationBound(100);
    sim.Run(40);
    EXPECT_TRUE(OfKind(sim.Warnings(), TSimIssue::ikOscillation).empty());
    sim.SetOscillationBound(0);
    sim.Reset();
    sim.Run(40);
    EXPECT_EQ(OfKind(sim.Warnings(), TSimIssue::ikOscillation).size(), 1u);
}

TEST(SimNets, AWireEndingOnAnotherWiresSegmentJoinsItsNet) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g1 = c.Gate(doOrLogic, 200, 0, 1);
    TDiagText* g2 = c.Gate(doOrLogic, 200, 200, 1);
    TDiagText* p = c.Probe(400, 200, "P");
    const int w1 = c.Connect(a, 1, g1, -1);
    TPoint in1;
    g1->GetConPoint(-1, in1, false);
    // From input 1 of g2 out to the left and up onto w1's last (horizontal) segment.
    c.Junction(g2, -1, w1, in1.Y);
    c.Connect(g2, 1, p, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_TRUE(sim.Issues().size() == 1) << "only A without a waveform";
    const int net = sim.NetOf(a, 1);
    EXPECT_GE(net, 0);
    EXPECT_EQ(sim.NetOf(g1, -1), net);
    EXPECT_EQ(sim.NetOf(g2, -1), net);
    EXPECT_EQ(sim.NetOfConnection(1), net);
    EXPECT_NE(sim.NetOf(g2, 1), net);
    EXPECT_EQ(sim.NetCount(), 2);
    sim.SetStimulus("A", TSimWaveform::Parse("0, 1@3"));
    sim.Reset();
    sim.Run(6);
    EXPECT_EQ(TraceNamed(sim, "P").Changes, Ch({{4, true}}));
}

TEST(SimNets, TwoDriversOnOneNetAreAnErrorNamingBlocksAndMarkers) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* b = c.Source(0, 200, "B");
    TDiagText* g = c.Gate(doOrLogic, 200, 0, 1);
    c.Connect(a, 1, g, -1);
    c.Connect(b, 1, g, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    const auto errors = sim.Errors();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].Kind, TSimIssue::ikMultipleDrivers);
    EXPECT_EQ(errors[0].Blocks, (std::vector<int>{0, 1}));
    EXPECT_EQ(errors[0].Net, sim.NetOf(g, -1));
    EXPECT_EQ(errors[0].Message.toStdString(),
              "Net 1 has 2 drivers: output 1 of block 1 (source \"A\"), output 1 of block 2 "
              "(source \"B\"); it follows the first");
    // It follows the first driver.
    sim.SetStimulus("A", TSimWaveform::Constant(false));
    sim.SetStimulus("B", TSimWaveform::Constant(true));
    sim.Reset();
    sim.Run(3);
    EXPECT_FALSE(sim.MarkerValue(g, -1));
    EXPECT_TRUE(sim.MarkerValue(b, 1)) << "B still gives out 1 at its own marker";
}

TEST(SimNets, AnUnconnectedInputReadsZeroAndIsReported) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g = c.Gate(doAndLogic, 200, 0, 2);
    TDiagText* o = c.Gate(doOrLogic, 200, 200, 2);
    c.Connect(a, 1, g, -1);
    c.Connect(a, 1, o, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    const auto un = OfKind(sim.Warnings(), TSimIssue::ikUnconnectedInput);
    ASSERT_EQ(un.size(), 2u);
    EXPECT_EQ(un[0].Message.toStdString(),
              "input 2 of block 2 (AndLogic \"&\") is on no wire; it reads 0");
    EXPECT_EQ(un[1].Blocks, std::vector<int>{2});
    EXPECT_EQ(sim.NetOf(g, -2), -1);
    sim.SetStimulus("A", TSimWaveform::Constant(true));
    sim.Reset();
    sim.Run(2);
    EXPECT_FALSE(sim.MarkerValue(g, -2));
    EXPECT_FALSE(sim.MarkerValue(g, 1)) << "1 and 0";
    EXPECT_TRUE(sim.MarkerValue(o, 1)) << "1 or 0";
}

TEST(SimNets, AnInputOnANetThatNothingDrivesIsReported) {
    Circuit c;
    TDiagText* g1 = c.Gate(doAndLogic, 0, 0, 1);
    TDiagText* g2 = c.Gate(doAndLogic, 200, 0, 1);
    // g1's input 1 to g2's input 1: a net of two inputs.
    const int k = c.Wires.AddConnection(g1, -1, 20);
    c.Wires.AddSegmentToConnection(k, 150, 2);
    g2->SetSelMarkerIndex(-1);
    c.Wires.EndConnectionByLongRec(LongRec{1, uint16_t(k + 1)}, g2, nullptr);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(sim.NetOf(g1, -1), sim.NetOf(g2, -1));
    EXPECT_EQ(OfKind(sim.Warnings(), TSimIssue::ikUndrivenInput).size(), 2u);
}

TEST(SimTextBlocks, ASourceFeedsAProbeThroughANamedBuffer) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* buf = c.Text(200, 0, "BUF", 1, 1);
    TDiagText* y = c.Probe(400, 0, "Y");
    c.Connect(a, 1, buf, -1);
    c.Connect(buf, 1, y, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(sim.SourceNames(), QStringList{"A"});
    EXPECT_EQ(sim.ProbeNames(), QStringList{"Y"});
    EXPECT_EQ(sim.DescribeBlock(1).toStdString(), "block 2 (buffer \"BUF\")");
    sim.SetStimulus("A", TSimWaveform::Parse("0110 1"));
    sim.Reset();
    EXPECT_TRUE(sim.Issues().empty());
    sim.Run(8);
    EXPECT_EQ(TraceNamed(sim, "A").Changes, Ch({{1, true}, {3, false}, {4, true}}));
    EXPECT_EQ(TraceNamed(sim, "Y").Changes, Ch({{2, true}, {4, false}, {5, true}}));
    // The work follows the activity: the buffer evaluates at step 0 and at A's three changes;
    // each of the two nets changes three times.
    EXPECT_EQ(sim.Evaluations(), 4);
    EXPECT_EQ(sim.NetChanges(), 6);
}

TEST(SimTextBlocks, BufferOutputsFollowTheirOwnInputsAndExtraOutputsStayZero) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* b = c.Source(0, 200, "B");
    TDiagText* buf = c.Text(200, 0, "BUF", 2, 3);
    c.Connect(a, 1, buf, -1);
    c.Connect(b, 1, buf, -2);
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Constant(false));
    sim.SetStimulus("B", TSimWaveform::Constant(true));
    sim.Reset();
    sim.Run(2);
    EXPECT_FALSE(sim.MarkerValue(buf, 1));
    EXPECT_TRUE(sim.MarkerValue(buf, 2));
    EXPECT_FALSE(sim.MarkerValue(buf, 3));
}

TEST(SimTextBlocks, ProbesWithSeveralInputsGiveOneTraceEachAndUnnamedBlocksGetANumber) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "");
    TDiagText* p = c.Text(200, 0, "P", 2, 0);
    c.Connect(a, 1, p, -2);
    p->AllInputsType(itInversion, 0, 0);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(sim.SourceNames(), QStringList{"block 1"});
    EXPECT_EQ(sim.ProbeNames(), (QStringList{"P.1", "P.2"}));
    sim.Run(1);
    // P.1 is on no wire but inverted: it reads 1 from the start.
    EXPECT_EQ(TraceNamed(sim, "P.1").Changes, Ch({{0, true}}));
    EXPECT_TRUE(TraceNamed(sim, "P.2").Changes.empty());
}

TEST(SimTime, DelaysAreSetPerKind) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g = c.Gate(doAndLogic, 200, 0, 1);
    TDiagText* o = c.Gate(doOrLogic, 400, 0, 1);
    TDiagText* y = c.Probe(600, 0, "Y");
    c.Connect(a, 1, g, -1);
    c.Connect(g, 1, o, -1);
    c.Connect(o, 1, y, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(sim.GetDelay(doAndLogic), 1);
    sim.SetDelay(doAndLogic, 3);
    sim.SetDelay(doOrLogic, 2);
    EXPECT_THROW(sim.SetDelay(doOrLogic, 0), EInvalidOperation);
    EXPECT_THROW(sim.SetDelay(doNone, 1), EInvalidOperation);
    EXPECT_EQ(sim.GetDelay(doOrLogic), 2);
    sim.SetStimulus("A", TSimWaveform::Parse("0, 1@2, 0@4"));
    sim.Reset();
    sim.Run(12);
    // A rises at 2: the AND answers at 5, the OR at 7; A falls at 4: 7 and 9.
    EXPECT_EQ(TraceNamed(sim, "Y").Changes, Ch({{7, true}, {9, false}}));
}

TEST(SimTime, StimuliNamedForNoSourceAreReportedAndSourcesWithoutOneStayZero) {
    Circuit c;
    c.Source(0, 0, "A");
    c.Source(0, 200, "B");
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Constant(true));
    sim.SetStimulus("Z", TSimWaveform::Constant(true));
    sim.Reset();
    sim.Run(2);
    const auto w = sim.Warnings();
    ASSERT_EQ(OfKind(w, TSimIssue::ikNoStimulus).size(), 1u);
    EXPECT_EQ(OfKind(w, TSimIssue::ikNoStimulus)[0].Blocks, std::vector<int>{1});
    ASSERT_EQ(OfKind(w, TSimIssue::ikUnknownStimulus).size(), 1u);
    EXPECT_TRUE(OfKind(w, TSimIssue::ikUnknownStimulus)[0].Message.contains("\"Z\""));
    EXPECT_TRUE(TraceNamed(sim, "B").Changes.empty());
}

TEST(SimHostile, WireEndsThatNameMissingMarkersOrWiresAreReportedNotFollowed) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g = c.Gate(doOrLogic, 200, 0, 1);
    const int k = c.Connect(a, 1, g, -1);
    c.Wires.Items(k)->FDstConIdx = -7;
    LongRec bad;
    bad.Hi = 40;
    bad.Lo = 1;
    c.Wires.Items(k)->FSrcCrossInfo = bad;
    TDiagSimulator sim(c.Blocks, c.Wires);
    EXPECT_EQ(OfKind(sim.Warnings(), TSimIssue::ikBadWireEnd).size(), 2u);
    EXPECT_EQ(sim.NetOf(g, -1), -1);
    sim.Run(5);
}

TEST(SimTime, StimuliChangedDuringARunApplyFromTheNextStepAndClearingThemLeavesSourcesAtZero) {
    Circuit c;
    c.Source(0, 0, "A");
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Constant(true));
    sim.Reset();
    sim.Run(2);
    sim.ClearStimuli();
    sim.Run(2);
    sim.SetStimulus("A", TSimWaveform::Parse("clock 2"));
    sim.Run(2);
    // 1 1 | 0 0 | clock 2 at steps 4, 5: 0 1.
    EXPECT_EQ(sim.Traces().at(0).Changes, Ch({{0, true}, {2, false}, {5, true}}));
}

TEST(SimNets, ListsLoadedFromAStreamWithoutAWindowSimulateAsDrawn) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* g = c.Gate(doOrLogic, 200, 0, 1);
    TDiagText* g2 = c.Gate(doOrLogic, 200, 200, 1);
    TDiagText* y = c.Probe(400, 0, "Y");
    TDiagText* z = c.Probe(400, 200, "Z");
    const int w1 = c.Connect(a, 1, g, -1);
    TPoint in1;
    g->GetConPoint(-1, in1, false);
    c.Junction(g2, -1, w1, in1.Y);
    c.Connect(g, 1, y, -1);
    c.Connect(g2, 1, z, -1);
    TMemoryStream s;
    c.Blocks.SaveToStream(s);
    c.Wires.SaveToStream(s);
    s.SetPosition(0);

    // Loaded as a host loads them: no parent widget, wires attached to their blocks by key.
    TDiagObjectList blocks(nullptr);
    TCanvas canvas;
    TRecordingBackend rec;
    canvas.SetBackend(&rec);
    TDiagConnectList wires(&canvas);
    blocks.LoadFromStream(s, [](QObject*) {});
    wires.LoadFromStream(s, [&blocks](TDiagConnection* w) {
        w->SetSrcObject(blocks.FindObjByKey(w->GetSrcKey()));
        w->SetDstObject(blocks.FindObjByKey(w->GetDstKey()));
    });
    TDiagSimulator sim(blocks, wires);
    EXPECT_TRUE(sim.Errors().empty());
    EXPECT_EQ(sim.NetOf(blocks.Items(2), -1), sim.NetOf(blocks.Items(0), 1)) << "the junction";
    sim.SetStimulus("A", TSimWaveform::Parse("0, 1@2"));
    sim.Reset();
    sim.Run(5);
    EXPECT_EQ(TraceNamed(sim, "Y").Changes, Ch({{3, true}}));
    EXPECT_EQ(TraceNamed(sim, "Z").Changes, Ch({{3, true}}));
}

TEST(SimSignals, AResetAndARebuildAnnounceThemselves) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, QStringLiteral("A"));
    TDiagText* p = c.Probe(200, 0, QStringLiteral("P"));
    c.Connect(a, 1, p, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    QSignalSpy resets(&sim, &TDiagSimulator::WasReset);
    QSignalSpy steps(&sim, &TDiagSimulator::Stepped);
    sim.Run(3);
    EXPECT_EQ(resets.count(), 0);
    sim.Reset();
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(sim.Time(), 0);
    sim.Rebuild(c.Blocks, c.Wires);
    EXPECT_EQ(resets.count(), 2);
    EXPECT_EQ(steps.count(), 3);
}
