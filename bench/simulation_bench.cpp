#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/simulation/diag_simulator.h"

#include <benchmark/benchmark.h>
#include <memory>

using namespace vde;

namespace {

// 16 clocked sources and 10,000 gates in 100 chains of 100: gate j of a chain takes the gate
// before it (the first: a source) and one of the sources, AND and OR in turn, every third
// second input inverted. Wires routed between the markers.
struct GateField {
    TDiagObjectList Blocks{nullptr};
    TDiagConnectList Wires{static_cast<TCanvas*>(nullptr)};
    std::vector<TDiagObject*> Sources;
    GateField(int chains, int length) {
        for (int s = 0; s < 16; ++s) {
            auto* t = qobject_cast<TDiagText*>(
                Blocks.CreateObjByDiagType(doText, {0, s * 80, 60, s * 80 + 40}));
            t->SetOutCount(1);
            t->SetTextValues(QStringLiteral("S%1").arg(s));
            Sources.push_back(t);
        }
        for (int c = 0; c < chains; ++c) {
            TDiagObject* prev = Sources[size_t(c % 16)];
            for (int j = 0; j < length; ++j) {
                const int x = 200 + j * 100, y = c * 120;
                auto* g = qobject_cast<TDiagText*>(Blocks.CreateObjByDiagType(
                    j % 2 ? doOrLogic : doAndLogic, {x, y, x + 60, y + 100}));
                if ((c + j) % 3 == 0)
                    g->AllInputsType(itInversion, 1, 1);
                new TDiagObjConnection(&Wires, prev, 1, g, -1, {10, 10}, 0, 0, 0);
                new TDiagObjConnection(&Wires, Sources[size_t((c * 7 + j) % 16)], 1, g, -2,
                                       {10, 10}, 0, 0, 0);
                prev = g;
            }
        }
    }
};

GateField& Field() {
    static GateField f(100, 100);
    return f;
}

void BM_SimulateGates(benchmark::State& state) {
    GateField& f = Field();
    TDiagSimulator sim(f.Blocks, f.Wires);
    for (int s = 0; s < 16; ++s)
        sim.SetStimulus(QStringLiteral("S%1").arg(s), TSimWaveform::Clock(2 + s));
    int64_t changes = 0;
    for (auto _ : state) {
        sim.Reset();
        sim.Run(state.range(0));
        changes = 0;
        for (const TSimTrace& t : sim.Traces())
            changes += int64_t(t.Changes.size());
        benchmark::DoNotOptimize(changes);
    }
    state.counters["gates"] = 10000;
    state.counters["steps"] = double(state.range(0));
    state.counters["bound"] = sim.GetOscillationBound();
    state.counters["warnings"] = double(sim.Warnings().size());
    state.counters["evals"] = double(sim.Evaluations());
    state.counters["changes"] = double(sim.NetChanges());
}
BENCHMARK(BM_SimulateGates)->Arg(1000)->Unit(benchmark::kMillisecond);

// Building the nets of the same diagram (the simulator's constructor).
void BM_SimulatorBuild(benchmark::State& state) {
    GateField& f = Field();
    for (auto _ : state) {
        TDiagSimulator sim(f.Blocks, f.Wires);
        benchmark::DoNotOptimize(sim.NetCount());
    }
}
BENCHMARK(BM_SimulatorBuild)->Unit(benchmark::kMillisecond);

} // namespace
