// Not a test: writes the pictures of docs/simulation.md (the charts of an RS flip-flop given the
// forbidden input and of a ring of three inverters) into the folder given as argument.
#include "sim_test_util.h"

#include "velDiagEdit/editor/simulation_chart.h"

#include <QApplication>
#include <QDir>
#include <cstdio>

using namespace vde;
using namespace vde::test;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_DIR\n", argv[0]);
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    {
        Circuit c;
        TDiagText* r = c.Source(0, 0, "R");
        TDiagText* s = c.Source(0, 120, "S");
        TDiagObject* ff = c.Blocks.CreateObjByDiagType(doRSTrigger, {200, 0, 280, 100});
        TDiagText* q = c.Probe(400, 0, "Q");
        c.Connect(r, 1, ff, -1);
        c.Connect(s, 1, ff, -2);
        c.Connect(ff, 1, q, -1);
        TDiagSimulator sim(c.Blocks, c.Wires);
        sim.SetStimulus("R", TSimWaveform::Parse("0000 0100 0110 1010"));
        sim.SetStimulus("S", TSimWaveform::Parse("0010 0000 1110 0011"));
        sim.Reset();
        sim.Run(18);
        SaveSimChart(out.filePath("sim_rs_forbidden.png"), sim.Record());
    }
    {
        Circuit c;
        TDiagText* en = c.Source(0, 300, "EN");
        std::vector<TDiagText*> g;
        for (int i = 0; i < 3; ++i) {
            g.push_back(c.Gate(i == 0 ? doAndLogic : doOrLogic, 200 + 200 * i, 0, i == 0 ? 2 : 1));
            g.back()->AllOutputsType(itInversion, 0, 0);
        }
        TDiagText* p = c.Probe(900, 0, "RING");
        c.Connect(en, 1, g[0], -2);
        c.Connect(g[0], 1, g[1], -1);
        c.Connect(g[1], 1, g[2], -1);
        c.Connect(g[2], 1, g[0], -1);
        c.Connect(g[2], 1, p, -1);
        TDiagSimulator sim(c.Blocks, c.Wires);
        sim.SetStimulus("EN", TSimWaveform::Parse("0, 1@4, 0@30"));
        sim.Reset();
        sim.Run(40);
        for (const TSimIssue& w : sim.Warnings())
            std::printf("%s\n", qPrintable(w.Message));
        SaveSimChart(out.filePath("sim_ring_oscillator.png"), sim.Record());
    }
    return 0;
}
