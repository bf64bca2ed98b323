#pragma once
// The demo host's pages. A page file registers itself with a static initializer:
//   static const bool registered = RegisterDemoPage(10, "Blocks", &CreateBlocksPage);
// Pages are shown in the order of their rank; the first one is the one rendered to demo.png.

#include <QString>
#include <QWidget>
#include <functional>
#include <vector>

struct DemoPage {
    int Rank;
    QString Title;
    std::function<QWidget*()> Create;
    // Called once the page is laid out, before the offscreen picture is taken (optional).
    std::function<void(QWidget*)> AfterShow;
};

bool RegisterDemoPage(int rank, const QString& title, std::function<QWidget*()> create,
                      std::function<void(QWidget*)> afterShow = {});
std::vector<DemoPage> DemoPages();
