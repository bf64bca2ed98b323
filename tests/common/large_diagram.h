#pragma once
// The large diagram of the load and render figures: a sheet of 100 x 100 gates (alternately OR
// and AND, 60 x 70 pixels, 200 pixels apart across and 150 down), each wired from its output to
// the next gate's first input and to the gate a row further on's second input: 10,000 blocks and
// 20,000 routed wires on about 19,860 x 14,920 pixels. Built through the public API only. A smaller
// sheet of Side x Side gates is wired the same way.

#include <velDiagEdit/velDiagEdit.h>

#include <vector>

namespace vde::test {

inline void FillLargeDiagram(TDiagContainer& dc, int Side = 100) {
    const int n = Side * Side;
    std::vector<TDiagObject*> all;
    for (int i = 0; i < n; ++i) {
        const int x = (i % Side) * 200, y = (i / Side) * 150;
        TDiagObject* b = dc.CreateObjByDiagType(TDiagObjectType(2 + i % 2), {x, y, x + 60, y + 70});
        b->SetObjKey(TObjKey(i + 1));
        all.push_back(b);
    }
    for (int i = 0; i < 2 * n; ++i) {
        TDiagObject* s = all[size_t(i % n)];
        TDiagObject* d = all[size_t((i % n + 1 + (i / n) * Side) % n)];
        auto* c =
            new TDiagObjConnection(dc.ConList.get(), s, 1, d, -1 - (i / n), {15, 12}, 0, 0, 0);
        c->FSrcKey = s->GetObjKey();
        c->FDstKey = d->GetObjKey();
    }
}

} // namespace vde::test
