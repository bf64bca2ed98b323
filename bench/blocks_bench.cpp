// Loading a block list: n blocks on one parent widget, read from a memory stream.
#include "velDiagEdit/blocks/diag_object_list.h"

#include <QCoreApplication>
#include <QWidget>
#include <benchmark/benchmark.h>
#include <chrono>
#include <ctime>
#include <memory>

using namespace vde;

namespace {

double ThreadCpuSeconds() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) * 1e-9;
}

// The stream of n gates and text blocks as a diagram saves them, keys counted from 1.
std::vector<uint8_t> BlockListBytes(int n) {
    QWidget parent;
    TDiagObjectList list(&parent);
    for (int i = 0; i < n; ++i) {
        const int x = (i % 300) * 70, y = (i / 300) * 120;
        list.CreateObjByDiagType(TDiagObjectType(1 + i % 4), {x, y, x + 60, y + 100});
    }
    TMemoryStream s;
    list.SaveToStream(s);
    return s.Bytes();
}

void BM_LoadBlockList(benchmark::State& state) {
    const int n = int(state.range(0));
    TMemoryStream s(BlockListBytes(n));
    int64_t bytes = 0;
    double cpu = 0;
    for (auto _ : state) {
        // Only the load is timed; the list is freed before its parent, outside the timing.
        auto parent = std::make_unique<QWidget>();
        auto list = std::make_unique<TDiagObjectList>(parent.get());
        s.SetPosition(0);
        const auto t0 = std::chrono::steady_clock::now();
        const double c0 = ThreadCpuSeconds();
        list->LoadFromStream(s, [](QObject*) {});
        cpu += ThreadCpuSeconds() - c0;
        const auto t1 = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
        // What an event loop would do next; otherwise every widget freed below searches the
        // queue of events the new widgets posted.
        QCoreApplication::sendPostedEvents();
        benchmark::DoNotOptimize(list->FindObjByKey(uint32_t(n)));
        bytes += int64_t(s.Bytes().size());
        list.reset();
        parent.reset();
    }
    state.SetBytesProcessed(bytes);
    // On a machine shared with other work the wall time above overstates; this is the CPU
    // time of the loading thread alone.
    state.counters["cpu_ms"] = benchmark::Counter(1000.0 * cpu / double(state.iterations()));
    state.counters["cpu_MB/s"] = benchmark::Counter(double(bytes) / 1e6 / (cpu > 0 ? cpu : 1.0),
                                                    benchmark::Counter::kDefaults);
    state.counters["blocks/s"] =
        benchmark::Counter(double(n) * double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_LoadBlockList)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// A host that frees its parent widget before the list: Qt deletes the blocks from the first,
// and each takes itself out of the list.
void BM_FreeParentBeforeList(benchmark::State& state) {
    const int n = int(state.range(0));
    TMemoryStream s(BlockListBytes(n));
    for (auto _ : state) {
        auto parent = std::make_unique<QWidget>();
        TDiagObjectList list(parent.get());
        s.SetPosition(0);
        list.LoadFromStream(s, [](QObject*) {});
        QCoreApplication::sendPostedEvents();
        const auto t0 = std::chrono::steady_clock::now();
        parent.reset();
        const auto t1 = std::chrono::steady_clock::now();
        state.SetIterationTime(std::chrono::duration<double>(t1 - t0).count());
        if (list.Count() != 0)
            state.SkipWithError("blocks left in the list");
    }
}
BENCHMARK(BM_FreeParentBeforeList)
    ->Arg(10000)
    ->Arg(100000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// Re-attaching wires to their blocks by key: 20,000 lookups among 10,000 loaded blocks.
void BM_FindObjByKey(benchmark::State& state) {
    QWidget parent;
    TDiagObjectList list(&parent);
    TMemoryStream s(BlockListBytes(10000));
    list.LoadFromStream(s, [](QObject*) {});
    for (auto _ : state) {
        int found = 0;
        for (uint32_t k = 1; k <= 20000; ++k)
            found += list.FindObjByKey(1 + k % 10000) != nullptr;
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(BM_FindObjByKey)->Unit(benchmark::kMicrosecond);

} // namespace
