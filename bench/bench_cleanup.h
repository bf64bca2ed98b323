#pragma once
// Work a benchmark file leaves to be undone before the application goes (shared fixtures that
// hold widgets or database connections). Run by main after the benchmarks, in reverse order.

#include <functional>
#include <vector>

inline std::vector<std::function<void()>>& BenchCleanups() {
    static std::vector<std::function<void()>> cleanups;
    return cleanups;
}

inline void RunBenchCleanups() {
    auto& all = BenchCleanups();
    while (!all.empty()) {
        auto last = std::move(all.back());
        all.pop_back();
        last();
    }
}
