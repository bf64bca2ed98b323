// Builds a small diagram on a host panel, saves it and loads it back; exits 0 when the bytes
// agree.
#include <velDiagEdit/blocks/diag_object_list.h>
#include <velDiagEdit/connections/diag_connect_list.h>
#include <velDiagEdit/platform/streams.h>

#include <QApplication>
#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QWidget panel;
    vde::TDiagObjectList blocks(&panel);
    auto* a = blocks.CreateObjByDiagType(vde::doAndLogic, {10, 10, 70, 110});
    auto* b = blocks.CreateObjByDiagType(vde::doOrLogic, {200, 10, 260, 110});
    vde::TDiagConnectList wires(&panel);
    new vde::TDiagObjConnection(&wires, a, 1, b, -1, {10, 10}, 0, 0, 0);
    vde::TMemoryStream s1;
    blocks.SaveToStream(s1);
    wires.SaveToStream(s1);
    s1.SetPosition(0);
    vde::TDiagObjectList blocks2(&panel);
    vde::TDiagConnectList wires2(&panel);
    blocks2.LoadFromStream(s1, {});
    wires2.LoadFromStream(s1, {});
    vde::TMemoryStream s2;
    blocks2.SaveToStream(s2);
    wires2.SaveToStream(s2);
    const bool same = s1.Bytes() == s2.Bytes();
    std::printf("consumer: %d blocks, %d wires, round trip %s\n", blocks2.Count(), wires2.Count(),
                same ? "equal" : "DIFFERENT");
    return same && wires2.Items(0)->FPoints.size() == 6 ? 0 : 1;
}
