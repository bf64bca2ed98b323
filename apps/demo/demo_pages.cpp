#include "demo_pages.h"

#include <algorithm>

namespace {
std::vector<DemoPage>& Registry() {
    static std::vector<DemoPage> pages;
    return pages;
}
} // namespace

bool RegisterDemoPage(int rank, const QString& title, std::function<QWidget*()> create,
                      std::function<void(QWidget*)> afterShow) {
    Registry().push_back({rank, title, std::move(create), std::move(afterShow)});
    return true;
}

std::vector<DemoPage> DemoPages() {
    auto pages = Registry();
    std::stable_sort(pages.begin(), pages.end(),
                     [](const DemoPage& a, const DemoPage& b) { return a.Rank < b.Rank; });
    return pages;
}
