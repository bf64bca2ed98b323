// The live view of a simulation: wires coloured by the value of their net.
#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/simulation/diag_simulator.h"

namespace vde {

void TDiagContainer::SetLiveSimulator(const TDiagSimulator* Simulator) {
    for (const QMetaObject::Connection& c : FLiveConnections)
        QObject::disconnect(c);
    FLiveConnections.clear();
    FLive = Simulator;
    if (ConList) {
        if (Simulator)
            ConList->SetWireColors([this](int Index, TColor& Color) {
                const TDiagSimulator* sim = FLive.data();
                if (!sim)
                    return false;
                const int net = sim->NetOfConnection(Index);
                if (net < 0)
                    return false;
                Color = sim->NetValue(net) ? FLiveOne : FLiveZero;
                return true;
            });
        else
            ConList->SetWireColors({});
    }
    if (Simulator) {
        auto repaint = [this] { UpdateLiveView(); };
        FLiveConnections.push_back(
            QObject::connect(Simulator, &TDiagSimulator::Stepped, Simulator, repaint));
        FLiveConnections.push_back(
            QObject::connect(Simulator, &TDiagSimulator::WasReset, Simulator, repaint));
        FLiveConnections.push_back(
            QObject::connect(Simulator, &QObject::destroyed, Simulator, repaint));
    }
    UpdateLiveView();
}

const TDiagSimulator* TDiagContainer::LiveSimulator() const {
    return FLive.data();
}

void TDiagContainer::SetLiveColors(TColor One, TColor Zero) {
    FLiveOne = One;
    FLiveZero = Zero;
    if (FLive)
        UpdateLiveView();
}

void TDiagContainer::UpdateLiveView() {
    if (FParent)
        FParent->update();
}

} // namespace vde
