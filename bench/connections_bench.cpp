#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/connections/diag_connect_list.h"

#include <benchmark/benchmark.h>
#include <random>

using namespace vde;

namespace {

// Wires of seven points with a few segments each, spread over a large sheet, as a loaded
// diagram has them (editable, no blocks attached).
void FillWires(TDiagConnectList& list, int n, uint32_t seed) {
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> pos(0, 20000), len(20, 200);
    for (int i = 0; i < n; ++i) {
        auto* c = new TDiagConnection(&list);
        TPoint p{pos(rng), pos(rng)};
        c->FPoints.push_back(p);
        for (int k = 0; k < 6; ++k) {
            if (k % 2 == 0)
                p.X += len(rng);
            else
                p.Y += (rng() & 1 ? 1 : -1) * len(rng);
            c->FPoints.push_back(p);
        }
        c->FSrcKey = uint32_t(i + 1);
        c->FDstKey = uint32_t(i + 2);
    }
}

void BM_MakePath(benchmark::State& state) {
    TDiagObjectList blocks(nullptr);
    auto* a = blocks.CreateObjByDiagType(doAndLogic, {10, 10, 70, 110});
    auto* b = blocks.CreateObjByDiagType(doAndLogic, {300, 200, 360, 300});
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    auto* c = new TDiagObjConnection(&wires, a, 1, b, -2, {10, 10}, 0, 0, 0);
    for (auto _ : state) {
        c->MakePath();
        benchmark::DoNotOptimize(c->FPoints.data());
    }
}
BENCHMARK(BM_MakePath);

// One block moves in a diagram of 10,000 blocks and 20,000 routed connections.
void BM_UpdatePathLargeDiagram(benchmark::State& state) {
    TDiagObjectList blocks(nullptr);
    std::vector<TDiagObject*> all;
    for (int i = 0; i < 10000; ++i) {
        const int x = (i % 100) * 200, y = (i / 100) * 150;
        all.push_back(blocks.CreateObjByDiagType(doAndLogic, {x, y, x + 60, y + 100}));
    }
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    for (int i = 0; i < 20000; ++i) {
        TDiagObject* s = all[size_t(i % 10000)];
        TDiagObject* d = all[size_t((i * 7 + 1) % 10000)];
        new TDiagObjConnection(&wires, s, 1, d, -1 - (i & 1), {10, 10}, 0, 0, 0);
    }
    TDiagObject* moved = all[5050];
    int dx = 1;
    for (auto _ : state) {
        moved->SetBounds(moved->x() + dx, moved->y(), 60, 100);
        dx = -dx;
        wires.UpdatePath(moved);
    }
}
BENCHMARK(BM_UpdatePathLargeDiagram)->Unit(benchmark::kMicrosecond);

void BM_FindBestSegment(benchmark::State& state) {
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    FillWires(wires, int(state.range(0)), 7);
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> pos(0, 20000);
    std::vector<TPoint> probes(256);
    for (auto& p : probes)
        p = {pos(rng), pos(rng)};
    // Half the probes lie right next to a wire, as a click on a wire does.
    for (size_t i = 0; i < probes.size(); i += 2) {
        const TDiagConnection* c = wires.Items(int(rng() % uint32_t(wires.Count())));
        probes[i] = {c->FPoints[1].X - 3, c->FPoints[1].Y + 4};
    }
    size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(wires.FindBestSegment(probes[k++ & 255], nullptr, true, 0));
    }
}
BENCHMARK(BM_FindBestSegment)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(20000)
    ->Arg(65535) // as many as a segment address can name
    ->Unit(benchmark::kMicrosecond);

void BM_SaveConnectionList(benchmark::State& state) {
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    FillWires(wires, 65535, 3);
    int64_t bytes = 0;
    for (auto _ : state) {
        TMemoryStream s;
        s.Reserve(8 << 20);
        wires.SaveToStream(s);
        bytes += int64_t(s.Bytes().size());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_SaveConnectionList)->Unit(benchmark::kMillisecond);

void BM_LoadConnectionList(benchmark::State& state) {
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    FillWires(wires, 65535, 3);
    TMemoryStream s;
    wires.SaveToStream(s);
    TDiagConnectList loaded(static_cast<TCanvas*>(nullptr));
    int64_t bytes = 0;
    for (auto _ : state) {
        s.SetPosition(0);
        loaded.LoadFromStream(s, {});
        bytes += int64_t(s.Bytes().size());
    }
    state.SetBytesProcessed(bytes);
}
BENCHMARK(BM_LoadConnectionList)->Unit(benchmark::kMillisecond);

} // namespace
