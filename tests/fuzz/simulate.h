#pragma once
// The simulator over a hostile diagram: it must build, run a bounded number of steps and leave
// well-formed traces, whatever the lists hold.

#include "velDiagEdit/simulation/diag_simulator.h"
#include "velDiagEdit/simulation/vcd.h"

#include <cstdio>
#include <cstdlib>

namespace vde::fuzz {

[[noreturn]] inline void SimulationFailed(const char* what) {
    std::fprintf(stderr, "simulation: %s\n", what);
    std::abort();
}

// Every source on a clock of its own period, a short run, and what a run leaves checked.
inline void Simulate(const vde::TDiagObjectList& blocks, const vde::TDiagConnectList& wires) {
    TDiagSimulator sim(blocks, wires);
    int period = 2;
    for (const QString& name : sim.SourceNames())
        sim.SetStimulus(name, TSimWaveform::Clock(period++));
    sim.Reset();
    constexpr int kSteps = 48;
    sim.Run(kSteps);
    if (sim.Time() != kSteps)
        SimulationFailed("the run stopped early");
    for (int c = 0; c < wires.Count(); ++c) {
        const int net = sim.NetOfConnection(c);
        if (net < -1 || net >= sim.NetCount())
            SimulationFailed("a wire on a net out of range");
    }
    const TSimRecord rec = sim.Record();
    for (const TSimTrace& t : rec.Traces)
        for (size_t i = 1; i < t.Changes.size(); ++i)
            if (t.Changes[i].Step <= t.Changes[i - 1].Step ||
                t.Changes[i].Value == t.Changes[i - 1].Value)
                SimulationFailed("a trace whose changes do not rise or do not change");
    (void)sim.Issues();
    (void)SimRecordToVcd(rec);
}

} // namespace vde::fuzz
