// The value-change dump against text written by hand.

#include "sim_test_util.h"

#include "velDiagEdit/simulation/vcd.h"

using namespace vde;
using namespace vde::test;

TEST(SimVcd, ASourceThroughABufferToAProbeDumpsAsWrittenByHand) {
    Circuit c;
    TDiagText* a = c.Source(0, 0, "A");
    TDiagText* buf = c.Text(200, 0, "BUF", 1, 1);
    TDiagText* y = c.Probe(400, 0, "Y");
    c.Connect(a, 1, buf, -1);
    c.Connect(buf, 1, y, -1);
    TDiagSimulator sim(c.Blocks, c.Wires);
    sim.SetStimulus("A", TSimWaveform::Parse("0110 1"));
    sim.Reset();
    sim.Run(8);
    const QByteArray expected = "$version velDiagEdit simulation $end\n"
                                "$timescale 1ns $end\n"
                                "$scope module diagram $end\n"
                                "$var wire 1 ! A $end\n"
                                "$var wire 1 \" Y $end\n"
                                "$upscope $end\n"
                                "$enddefinitions $end\n"
                                "#0\n"
                                "$dumpvars\n"
                                "0!\n"
                                "0\"\n"
                                "$end\n"
                                "#1\n"
                                "1!\n"
                                "#2\n"
                                "1\"\n"
                                "#3\n"
                                "0!\n"
                                "#4\n"
                                "1!\n"
                                "0\"\n"
                                "#5\n"
                                "1\"\n"
                                "#8\n";
    EXPECT_EQ(SimRecordToVcd(sim.Record()).toStdString(), expected.toStdString());
}

TEST(SimVcd, NamesLoseTheirBlanksRepeatsGetASuffixAndCodesGoPastOneCharacter) {
    TSimRecord rec;
    rec.Steps = 3;
    for (int i = 0; i < 96; ++i) {
        TSimTrace t;
        t.Name = i == 0 || i == 1 ? QStringLiteral("clk in") : QStringLiteral("s%1").arg(i);
        rec.Traces.push_back(t);
    }
    rec.Traces[0].Changes = {{0, true}, {2, false}};
    rec.Traces[95].Changes = {{1, true}};
    const QString vcd = QString::fromUtf8(SimRecordToVcd(rec, "my top"));
    EXPECT_TRUE(vcd.contains("$scope module my_top $end\n"));
    EXPECT_TRUE(vcd.contains("$var wire 1 ! clk_in $end\n"));
    EXPECT_TRUE(vcd.contains("$var wire 1 \" clk_in_2 $end\n"));
    // Trace 94 is the first with a two-character code: "!" then "\"" (94 = 0 + 1 x 94).
    EXPECT_TRUE(vcd.contains("$var wire 1 !\" s94 $end\n"));
    EXPECT_TRUE(vcd.contains("$var wire 1 \"\" s95 $end\n"));
    EXPECT_TRUE(vcd.contains("$dumpvars\n1!\n0\"\n")) << "step 0 values";
    EXPECT_TRUE(vcd.endsWith("#1\n1\"\"\n#2\n0!\n#3\n")) << vcd.toStdString();
}
