#include "velDiagEdit/simulation/diag_simulator.h"

#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/geometry/codecs.h"

#include <QSet>
#include <algorithm>
#include <limits>
#include <numeric>

namespace vde {

namespace {

constexpr int kWheelSize = TDiagSimulator::kMaxSimDelay + 1;
constexpr int32_t kMaxDepth = std::numeric_limits<int32_t>::max() - 1;

// Appends a change to a trace; a second change in the same step replaces the first.
void Put(TSimTrace& tr, int64_t step, bool v) {
    const bool cur = tr.Changes.empty() ? false : tr.Changes.back().Value;
    if (cur == v)
        return;
    if (!tr.Changes.empty() && tr.Changes.back().Step == step) {
        tr.Changes.pop_back();
        const bool prev = tr.Changes.empty() ? false : tr.Changes.back().Value;
        if (prev != v)
            tr.Changes.push_back({step, v});
        return;
    }
    tr.Changes.push_back({step, v});
}

// Union-find over pins and wires.
struct Sets {
    std::vector<int32_t> Parent;
    explicit Sets(size_t n) : Parent(n) { std::iota(Parent.begin(), Parent.end(), 0); }
    int32_t Find(int32_t x) {
        while (Parent[size_t(x)] != x) {
            Parent[size_t(x)] = Parent[size_t(Parent[size_t(x)])];
            x = Parent[size_t(x)];
        }
        return x;
    }
    void Join(int32_t a, int32_t b) {
        a = Find(a), b = Find(b);
        if (a != b)
            Parent[size_t(std::max(a, b))] = std::min(a, b);
    }
};

QString MarkerText(int Marker) {
    return Marker < 0 ? QStringLiteral("input %1").arg(-int64_t(Marker))
                      : QStringLiteral("output %1").arg(Marker);
}

} // namespace

bool TSimTrace::ValueAt(int64_t Step) const {
    auto it = std::upper_bound(Changes.begin(), Changes.end(), Step,
                               [](int64_t s, const TSimChange& c) { return s < c.Step; });
    return it == Changes.begin() ? false : std::prev(it)->Value;
}

TDiagSimulator::TDiagSimulator(const TDiagObjectList& Blocks, const TDiagConnectList& Wires,
                               QObject* Parent)
    : QObject(Parent) {
    FWheel.resize(kWheelSize);
    Rebuild(Blocks, Wires);
}

TDiagSimulator::~TDiagSimulator() = default;

void TDiagSimulator::Rebuild(const TDiagObjectList& Blocks, const TDiagConnectList& Wires) {
    Build(Blocks, Wires);
    FindLoops();
    Reset();
}

QString TDiagSimulator::DescribeBlock(int Index) const {
    if (Index < 0 || size_t(Index) >= FBlocks.size())
        return QStringLiteral("block ?");
    const Block& b = FBlocks[size_t(Index)];
    QString kind = GoodDiagObjTypeName(b.Kind);
    if (b.Role == rSource)
        kind = QStringLiteral("source");
    else if (b.Role == rProbe)
        kind = QStringLiteral("probe");
    else if (b.Role == rBuffer)
        kind = QStringLiteral("buffer");
    if (b.Label.isEmpty())
        return QStringLiteral("block %1 (%2)").arg(Index + 1).arg(kind);
    return QStringLiteral("block %1 (%2 \"%3\")").arg(Index + 1).arg(kind, b.Label);
}

QString TDiagSimulator::PinName(int b, int Marker) const {
    return QStringLiteral("%1 of %2").arg(MarkerText(Marker), DescribeBlock(b));
}

void TDiagSimulator::Build(const TDiagObjectList& Blocks, const TDiagConnectList& Wires) {
    FBlocks.clear();
    FIndexOf.clear();
    FEvaluating.clear();
    FInNet.clear();
    FInInv.clear();
    FOutNet.clear();
    FOutNetAll.clear();
    FOutInv.clear();
    FOutBlock.clear();
    FStatic.clear();
    FTraces.clear();
    FProbeInPin.clear();
    FSources.clear();

    // Blocks and their pins.
    const int nb = Blocks.Count();
    FBlocks.resize(size_t(std::max(0, nb)));
    for (int i = 0; i < nb; ++i) {
        const TDiagObject* o = Blocks.Items(i);
        Block& B = FBlocks[size_t(i)];
        if (!o)
            continue;
        FIndexOf.emplace(o, i);
        B.Kind = o->FObjType;
        B.Label = o->FLabels.empty() ? QString() : o->FLabels.front().Text.trimmed();
        const int ins = int(std::min<size_t>(o->FInputs.size(), size_t(INT32_MAX / 4)));
        const int outs = int(std::min<size_t>(o->FOutputs.size(), size_t(INT32_MAX / 4)));
        switch (o->FObjType) {
        case doAndLogic:
            B.Role = rAnd;
            break;
        case doOrLogic:
            B.Role = rOr;
            break;
        case doRSTrigger:
            B.Role = rRS;
            break;
        case doText:
            B.Role = ins > 0 && outs > 0 ? rBuffer : ins > 0 ? rProbe : outs > 0 ? rSource : rInert;
            break;
        default:
            B.Role = rInert;
            break;
        }
        B.InFirst = int(FInNet.size());
        B.InCount = ins;
        for (int k = 0; k < ins; ++k) {
            FInNet.push_back(-1);
            FInInv.push_back(o->FInputs[size_t(k)].IOType == itInversion ? 1 : 0);
        }
        B.OutFirst = int(FOutNet.size());
        B.OutCount = outs;
        for (int k = 0; k < outs; ++k) {
            FOutNet.push_back(-1);
            FOutInv.push_back(o->FOutputs[size_t(k)].IOType == itInversion ? 1 : 0);
            FOutBlock.push_back(i);
        }
        if (B.Role == rSource || B.Role == rProbe)
            B.Name = B.Label.isEmpty() ? QStringLiteral("block %1").arg(i + 1) : B.Label;
        if (B.Role == rAnd || B.Role == rOr || B.Role == rRS || B.Role == rBuffer)
            FEvaluating.push_back(i);
    }
    FOutNetAll.assign(FOutNet.size(), -1);

    // Nets: pins and wires joined by the wires' ends.
    const int32_t nIn = int32_t(FInNet.size());
    const int32_t nOut = int32_t(FOutNet.size());
    const int nw = Wires.Count();
    Sets sets(size_t(nIn) + size_t(nOut) + size_t(nw));
    auto pinNode = [&](int b, int marker) -> int32_t {
        const Block& B = FBlocks[size_t(b)];
        if (marker < 0 && marker >= -B.InCount)
            return B.InFirst + (-marker - 1);
        if (marker > 0 && marker <= B.OutCount)
            return nIn + B.OutFirst + (marker - 1);
        return -1;
    };
    auto badEnd = [&](const QString& what) {
        TSimIssue is;
        is.Kind = TSimIssue::ikBadWireEnd;
        is.Message = what;
        FStatic.push_back(is);
    };
    for (int c = 0; c < nw; ++c) {
        const TDiagConnection* w = Wires.Items(c);
        if (!w)
            continue;
        const int32_t node = nIn + nOut + c;
        for (int end = 0; end < 2; ++end) {
            const TDiagObject* o = end == 0 ? w->FSource.data() : w->FDest.data();
            const int marker = end == 0 ? w->FSrcConIdx : w->FDstConIdx;
            const char* verb = end == 0 ? "starts" : "ends";
            if (o) {
                auto it = FIndexOf.find(o);
                if (it == FIndexOf.end()) {
                    badEnd(QStringLiteral("Wire %1 %2 on a block that is not in the diagram")
                               .arg(c + 1)
                               .arg(QLatin1String(verb)));
                    continue;
                }
                const int32_t pin = pinNode(it->second, marker);
                if (pin < 0) {
                    badEnd(QStringLiteral("Wire %1 %2 on %3, which has no such marker")
                               .arg(c + 1)
                               .arg(QLatin1String(verb))
                               .arg(marker == 0 ? QStringLiteral("no marker of %1")
                                                      .arg(DescribeBlock(it->second))
                                                : PinName(it->second, marker)));
                    continue;
                }
                sets.Join(node, pin);
            }
            const LongRec cross = end == 0 ? w->FSrcCrossInfo : w->FDstCrossInfo;
            if (!cross.IsZero()) {
                if (cross.Hi == 0 || int(cross.Hi) > nw) {
                    badEnd(QStringLiteral("Wire %1 %2 on wire %3, which is not in the diagram")
                               .arg(c + 1)
                               .arg(QLatin1String(verb))
                               .arg(cross.Hi));
                    continue;
                }
                sets.Join(node, nIn + nOut + int32_t(cross.Hi) - 1);
            }
        }
    }

    // Net numbers in the order of the wires.
    std::vector<int32_t> netOfRoot(sets.Parent.size(), -1);
    FConNet.assign(size_t(nw), -1);
    FNetCount = 0;
    for (int c = 0; c < nw; ++c) {
        if (!Wires.Items(c))
            continue;
        const int32_t r = sets.Find(nIn + nOut + c);
        if (netOfRoot[size_t(r)] < 0)
            netOfRoot[size_t(r)] = FNetCount++;
        FConNet[size_t(c)] = netOfRoot[size_t(r)];
    }
    const int32_t zeroNet = FNetCount;
    for (int32_t p = 0; p < nIn; ++p) {
        const int32_t n = netOfRoot[size_t(sets.Find(p))];
        FInNet[size_t(p)] = n >= 0 ? n : zeroNet;
    }

    // Drivers: the first output on a net drives it; more are an error.
    std::vector<int32_t> driver(size_t(FNetCount), -1);
    // (net, output) of every output beyond a net's first driver; a plain vector sorted with a
    // lambda, as a std::map here would be exported with the library.
    std::vector<std::pair<int32_t, int32_t>> extra;
    for (int32_t o = 0; o < nOut; ++o) {
        const int32_t n = netOfRoot[size_t(sets.Find(nIn + o))];
        FOutNetAll[size_t(o)] = n;
        if (n < 0)
            continue;
        if (driver[size_t(n)] < 0) {
            driver[size_t(n)] = o;
            FOutNet[size_t(o)] = n;
        } else {
            extra.emplace_back(n, o);
        }
    }
    auto outMarker = [&](int32_t o) {
        return o - FBlocks[size_t(FOutBlock[size_t(o)])].OutFirst + 1;
    };
    std::sort(extra.begin(), extra.end(), [](const auto& a, const auto& b) { return a < b; });
    for (size_t e = 0; e < extra.size();) {
        const int32_t n = extra[e].first;
        std::vector<int32_t> all{driver[size_t(n)]};
        for (; e < extra.size() && extra[e].first == n; ++e)
            all.push_back(extra[e].second);
        TSimIssue is;
        is.IsError = true;
        is.Kind = TSimIssue::ikMultipleDrivers;
        is.Net = n;
        QStringList names;
        for (int32_t o : all) {
            const int b = FOutBlock[size_t(o)];
            names << PinName(b, outMarker(o));
            if (std::find(is.Blocks.begin(), is.Blocks.end(), b) == is.Blocks.end())
                is.Blocks.push_back(b);
        }
        is.Message = QStringLiteral("Net %1 has %2 drivers: %3; it follows the first")
                         .arg(n + 1)
                         .arg(all.size())
                         .arg(names.join(QStringLiteral(", ")));
        FStatic.push_back(is);
    }

    // Readers of each net (blocks that evaluate), and inputs that read 0 for want of a driver.
    std::vector<std::pair<int32_t, int32_t>> reads; // (net, block)
    for (size_t b = 0; b < FBlocks.size(); ++b) {
        const Block& B = FBlocks[b];
        if (B.Role == rInert || B.Role == rSource)
            continue;
        for (int k = 0; k < B.InCount; ++k) {
            const int32_t n = FInNet[size_t(B.InFirst + k)];
            if (n == zeroNet || driver[size_t(n)] < 0) {
                TSimIssue is;
                is.Kind = n == zeroNet ? TSimIssue::ikUnconnectedInput : TSimIssue::ikUndrivenInput;
                is.Blocks = {int(b)};
                is.Net = n == zeroNet ? -1 : n;
                is.Message = n == zeroNet
                                 ? QStringLiteral("%1 is on no wire; it reads 0")
                                       .arg(PinName(int(b), -(k + 1)))
                                 : QStringLiteral("%1 is on net %2, which no output drives; it "
                                                  "reads 0")
                                       .arg(PinName(int(b), -(k + 1)))
                                       .arg(n + 1);
                FStatic.push_back(is);
            }
            if (n != zeroNet && B.Role != rProbe)
                reads.emplace_back(n, int32_t(b));
        }
    }
    std::sort(reads.begin(), reads.end());
    reads.erase(std::unique(reads.begin(), reads.end()), reads.end());
    FReaderFirst.assign(size_t(FNetCount) + 2, 0);
    for (const auto& r : reads)
        ++FReaderFirst[size_t(r.first) + 1];
    for (size_t i = 1; i < FReaderFirst.size(); ++i)
        FReaderFirst[i] += FReaderFirst[i - 1];
    FReaders.resize(reads.size());
    for (size_t i = 0; i < reads.size(); ++i)
        FReaders[i] = reads[i].second; // sorted by net, so in place

    // Traces in diagram order: a source's waveform, each input of a probe.
    std::vector<std::pair<int32_t, int32_t>> probes; // (net, trace)
    for (size_t b = 0; b < FBlocks.size(); ++b) {
        Block& B = FBlocks[b];
        if (B.Role == rSource) {
            B.Trace = int(FTraces.size());
            TSimTrace tr;
            tr.Name = B.Name;
            tr.IsSource = true;
            tr.Block = int(b);
            FTraces.push_back(tr);
            FProbeInPin.push_back(-1);
            FSources.push_back(int(b));
        } else if (B.Role == rProbe) {
            for (int k = 0; k < B.InCount; ++k) {
                TSimTrace tr;
                tr.Name = B.InCount == 1 ? B.Name : QStringLiteral("%1.%2").arg(B.Name).arg(k + 1);
                tr.Block = int(b);
                tr.Marker = -(k + 1);
                const int32_t pin = B.InFirst + k;
                if (FInNet[size_t(pin)] != zeroNet)
                    probes.emplace_back(FInNet[size_t(pin)], int32_t(FTraces.size()));
                FTraces.push_back(tr);
                FProbeInPin.push_back(pin);
            }
        }
    }
    std::sort(probes.begin(), probes.end());
    FProbeFirst.assign(size_t(FNetCount) + 2, 0);
    for (const auto& p : probes)
        ++FProbeFirst[size_t(p.first) + 1];
    for (size_t i = 1; i < FProbeFirst.size(); ++i)
        FProbeFirst[i] += FProbeFirst[i - 1];
    FProbeTraces.resize(probes.size());
    for (size_t i = 0; i < probes.size(); ++i)
        FProbeTraces[i] = probes[i].second;

    // Names that two sources or two probes share.
    for (int kind = 0; kind < 2; ++kind) {
        std::vector<std::pair<QString, int>> byName;
        for (size_t b = 0; b < FBlocks.size(); ++b)
            if (FBlocks[b].Role == (kind == 0 ? rSource : rProbe))
                byName.emplace_back(FBlocks[b].Name, int(b));
        std::sort(byName.begin(), byName.end(), [](const auto& a, const auto& b) { return a < b; });
        for (size_t e = 0; e < byName.size();) {
            const QString name = byName[e].first;
            std::vector<int> bs;
            for (; e < byName.size() && byName[e].first == name; ++e)
                bs.push_back(byName[e].second);
            if (bs.size() < 2)
                continue;
            TSimIssue is;
            is.Kind = TSimIssue::ikDuplicateName;
            is.Blocks = bs;
            is.Message =
                QStringLiteral("%1 %2 blocks are named \"%3\"%4")
                    .arg(bs.size())
                    .arg(kind == 0 ? QStringLiteral("source") : QStringLiteral("probe"))
                    .arg(name)
                    .arg(kind == 0 ? QStringLiteral("; they share one waveform") : QString());
            FStatic.push_back(is);
        }
    }

    FNetValue.assign(size_t(FNetCount) + 1, 0);
    FOutValue.assign(FOutNet.size(), 0);
    FOutProjected.assign(FOutNet.size(), 0);
    FDirtyStamp.assign(FBlocks.size(), -1);
    FTrigDepth.assign(FBlocks.size(), 0);
    FSourceValue.assign(FBlocks.size(), 0);
    FSourceWave.assign(FBlocks.size(), nullptr);
}

void TDiagSimulator::FindLoops() {
    FLoops.clear();
    const int n = int(FBlocks.size());
    for (Block& B : FBlocks)
        B.Scc = -1;
    // Successors: the blocks that read a net a block drives.
    std::vector<int32_t> first(size_t(n) + 1, 0), adj;
    for (int b = 0; b < n; ++b) {
        const Block& B = FBlocks[size_t(b)];
        if (B.Role != rSource)
            for (int k = 0; k < B.OutCount; ++k) {
                const int32_t net = FOutNet[size_t(B.OutFirst + k)];
                if (net >= 0)
                    for (int32_t i = FReaderFirst[size_t(net)]; i < FReaderFirst[size_t(net) + 1];
                         ++i)
                        adj.push_back(FReaders[size_t(i)]);
            }
        first[size_t(b) + 1] = int32_t(adj.size());
    }
    // Tarjan's strongly connected components, without recursion (chains may be long).
    std::vector<int32_t> index(size_t(n), -1), low(size_t(n), 0), stack;
    std::vector<uint8_t> onStack(size_t(n), 0);
    std::vector<std::pair<int32_t, int32_t>> call; // (block, next successor)
    int32_t counter = 0;
    for (int s = 0; s < n; ++s) {
        if (index[size_t(s)] >= 0)
            continue;
        auto enter = [&](int32_t v) {
            index[size_t(v)] = low[size_t(v)] = counter++;
            stack.push_back(v);
            onStack[size_t(v)] = 1;
            call.emplace_back(v, first[size_t(v)]);
        };
        enter(s);
        while (!call.empty()) {
            const int32_t v = call.back().first;
            const int32_t e = call.back().second;
            if (e < first[size_t(v) + 1]) {
                call.back().second = e + 1;
                const int32_t w = adj[size_t(e)];
                if (index[size_t(w)] < 0)
                    enter(w);
                else if (onStack[size_t(w)])
                    low[size_t(v)] = std::min(low[size_t(v)], index[size_t(w)]);
                continue;
            }
            if (low[size_t(v)] == index[size_t(v)]) {
                std::vector<int> comp;
                int32_t w;
                do {
                    w = stack.back();
                    stack.pop_back();
                    onStack[size_t(w)] = 0;
                    comp.push_back(w);
                } while (w != v);
                bool cyclic = comp.size() > 1;
                if (!cyclic)
                    for (int32_t i = first[size_t(v)]; i < first[size_t(v) + 1]; ++i)
                        cyclic = cyclic || adj[size_t(i)] == v;
                if (cyclic) {
                    std::sort(comp.begin(), comp.end());
                    for (int b : comp)
                        FBlocks[size_t(b)].Scc = int(FLoops.size());
                    Loop L;
                    L.Blocks = std::move(comp);
                    FLoops.push_back(std::move(L));
                }
            }
            call.pop_back();
            if (!call.empty()) {
                const int32_t u = call.back().first;
                low[size_t(u)] = std::min(low[size_t(u)], low[size_t(v)]);
            }
        }
    }
}

void TDiagSimulator::SetDelay(TDiagObjectType Kind, int Steps) {
    if (Kind < doText || Kind > doRSTrigger)
        throw EInvalidOperation(QStringLiteral("No delay for block kind %1").arg(int(Kind)));
    if (Steps < 1 || Steps > kMaxSimDelay)
        throw EInvalidOperation(QStringLiteral("A delay must be from 1 to %1 steps, not %2")
                                    .arg(kMaxSimDelay)
                                    .arg(Steps));
    FDelay[size_t(Kind)] = Steps;
}

int TDiagSimulator::GetDelay(TDiagObjectType Kind) const {
    return Kind <= doRSTrigger ? FDelay[size_t(Kind)] : 0;
}

void TDiagSimulator::SetOscillationBound(int Bound) {
    FBound = std::max(0, Bound);
}

int TDiagSimulator::GetOscillationBound() const {
    return EffectiveBound();
}

int TDiagSimulator::EffectiveBound() const {
    if (FBound > 0)
        return FBound;
    return int(std::min<int64_t>(kMaxDepth, 2 * int64_t(FEvaluating.size()) + 4));
}

void TDiagSimulator::SetStimulus(const QString& Source, const TSimWaveform& Wave) {
    FStimuli[Source] = Wave;
    ResolveWaves();
}

void TDiagSimulator::SetStimuli(const TSimStimuli& Stimuli) {
    for (const auto& [name, wave] : Stimuli.Signals)
        FStimuli[name] = wave;
    ResolveWaves();
}

void TDiagSimulator::ClearStimuli() {
    FStimuli.clear();
    ResolveWaves();
}

void TDiagSimulator::ResolveWaves() {
    for (int b : FSources) {
        auto it = FStimuli.find(FBlocks[size_t(b)].Name);
        FSourceWave[size_t(b)] = it == FStimuli.end() ? nullptr : &it->second;
    }
}

void TDiagSimulator::Reset() {
    FTime = 0;
    FEvaluations = 0;
    FNetChanges = 0;
    std::fill(FNetValue.begin(), FNetValue.end(), uint8_t(0));
    std::fill(FOutValue.begin(), FOutValue.end(), uint8_t(0));
    std::fill(FOutProjected.begin(), FOutProjected.end(), uint8_t(0));
    std::fill(FDirtyStamp.begin(), FDirtyStamp.end(), int64_t(-1));
    std::fill(FSourceValue.begin(), FSourceValue.end(), uint8_t(0));
    for (auto& slot : FWheel)
        slot.clear();
    FDirty.clear();
    FForbiddenSpans.clear();
    for (Block& B : FBlocks) {
        B.State = false;
        B.Forbidden = false;
        B.ForbiddenCount = 0;
        B.ForbiddenSince = 0;
        B.ForbiddenFirst = -1;
    }
    for (Loop& L : FLoops) {
        L.Reported = false;
        L.FirstStep = -1;
        L.Spans.clear();
    }
    for (size_t t = 0; t < FTraces.size(); ++t) {
        TSimTrace& tr = FTraces[t];
        tr.Changes.clear();
        // An inverted probe input sees 1 on a net at 0.
        if (!tr.IsSource && FInInv[size_t(FProbeInPin[t])])
            tr.Changes.push_back({0, true});
    }
    ResolveWaves();
    emit WasReset();
}

void TDiagSimulator::Apply(int32_t Pin, bool Value, int32_t Depth) {
    FOutValue[size_t(Pin)] = Value;
    const int32_t n = FOutNet[size_t(Pin)];
    if (n < 0 || FNetValue[size_t(n)] == Value)
        return;
    FNetValue[size_t(n)] = Value;
    ++FNetChanges;
    const int64_t t = FTime;
    if (Depth > EffectiveBound()) {
        const int loop = FBlocks[size_t(FOutBlock[size_t(Pin)])].Scc;
        // Blocks outside every loop only follow an oscillation upstream of them.
        if (loop >= 0) {
            Loop& L = FLoops[size_t(loop)];
            if (!L.Reported) {
                L.Reported = true;
                L.FirstStep = t;
            }
            int64_t gap = 1;
            for (int b : L.Blocks)
                gap += FDelay[FBlocks[size_t(b)].Kind <= doRSTrigger ? FBlocks[size_t(b)].Kind : 0];
            if (!L.Spans.empty() && t <= L.Spans.back().End + gap)
                L.Spans.back().End = t + 1;
            else
                L.Spans.push_back({t, t + 1, L.Blocks});
        }
    }
    for (int32_t i = FReaderFirst[size_t(n)], e = FReaderFirst[size_t(n) + 1]; i < e; ++i) {
        const int32_t r = FReaders[size_t(i)];
        if (FDirtyStamp[size_t(r)] != t) {
            FDirtyStamp[size_t(r)] = t;
            FTrigDepth[size_t(r)] = Depth;
            FDirty.push_back(r);
        } else if (Depth > FTrigDepth[size_t(r)]) {
            FTrigDepth[size_t(r)] = Depth;
        }
    }
    for (int32_t i = FProbeFirst[size_t(n)], e = FProbeFirst[size_t(n) + 1]; i < e; ++i) {
        const int32_t tr = FProbeTraces[size_t(i)];
        Put(FTraces[size_t(tr)], t, Value != (FInInv[size_t(FProbeInPin[size_t(tr)])] != 0));
    }
}

void TDiagSimulator::Evaluate(int b, int32_t Depth) {
    ++FEvaluations;
    Block& B = FBlocks[size_t(b)];
    const int32_t* inNet = FInNet.data() + B.InFirst;
    const uint8_t* inInv = FInInv.data() + B.InFirst;
    auto in = [&](int k) { return (FNetValue[size_t(inNet[k])] ^ inInv[k]) != 0; };
    const int64_t at = FTime + FDelay[size_t(B.Kind)];
    std::vector<Event>& slot = FWheel[size_t(at % kWheelSize)];
    auto give = [&](int k, bool v) {
        const int32_t pin = B.OutFirst + k;
        const uint8_t pv = uint8_t(v) ^ FOutInv[size_t(pin)];
        if (pv != FOutProjected[size_t(pin)]) {
            FOutProjected[size_t(pin)] = pv;
            slot.push_back({pin, pv, Depth});
        }
    };
    bool v = false;
    switch (B.Role) {
    case rAnd:
        v = true;
        for (int k = 0; k < B.InCount && v; ++k)
            v = in(k);
        break;
    case rOr:
        for (int k = 0; k < B.InCount && !v; ++k)
            v = in(k);
        break;
    case rRS: {
        const bool r = B.InCount >= 1 && in(0);
        const bool s = B.InCount >= 2 && in(1);
        if (r && s) {
            if (!B.Forbidden) {
                B.Forbidden = true;
                B.ForbiddenSince = FTime;
                ++B.ForbiddenCount;
                if (B.ForbiddenFirst < 0)
                    B.ForbiddenFirst = FTime;
            }
        } else {
            if (B.Forbidden) {
                B.Forbidden = false;
                FForbiddenSpans.push_back({B.ForbiddenSince, FTime, {b}});
            }
            if (s)
                B.State = true;
            else if (r)
                B.State = false;
        }
        v = B.State;
        break;
    }
    case rBuffer:
        for (int k = 0; k < B.OutCount; ++k)
            give(k, k < B.InCount && in(k));
        return;
    default:
        return;
    }
    for (int k = 0; k < B.OutCount; ++k)
        give(k, v);
}

void TDiagSimulator::Step() {
    const int64_t t = FTime;
    FDirty.clear();
    if (t == 0)
        for (int b : FEvaluating) {
            FDirtyStamp[size_t(b)] = 0;
            FTrigDepth[size_t(b)] = 0;
            FDirty.push_back(b);
        }
    for (int b : FSources) {
        const TSimWaveform* w = FSourceWave[size_t(b)];
        const uint8_t v = w && w->ValueAt(t) ? 1 : 0;
        if (v == FSourceValue[size_t(b)] && t > 0)
            continue;
        FSourceValue[size_t(b)] = v;
        const Block& B = FBlocks[size_t(b)];
        Put(FTraces[size_t(B.Trace)], t, v != 0);
        for (int k = 0; k < B.OutCount; ++k) {
            const int32_t pin = B.OutFirst + k;
            Apply(pin, (v ^ FOutInv[size_t(pin)]) != 0, 0);
        }
    }
    std::vector<Event>& slot = FWheel[size_t(t % kWheelSize)];
    for (size_t i = 0; i < slot.size(); ++i)
        Apply(slot[i].Pin, slot[i].Value != 0, slot[i].Depth);
    slot.clear();
    for (size_t i = 0; i < FDirty.size(); ++i) {
        const int32_t b = FDirty[i];
        Evaluate(b, FTrigDepth[size_t(b)] >= kMaxDepth ? kMaxDepth : FTrigDepth[size_t(b)] + 1);
    }
    FTime = t + 1;
    emit Stepped(qint64(t));
}

void TDiagSimulator::Run(int64_t Steps) {
    for (int64_t i = 0; i < Steps; ++i)
        Step();
}

int TDiagSimulator::NetOf(const TDiagObject* BlockObj, int Marker) const {
    auto it = FIndexOf.find(BlockObj);
    if (it == FIndexOf.end())
        return -1;
    const Block& B = FBlocks[size_t(it->second)];
    if (Marker < 0 && Marker >= -B.InCount) {
        const int32_t n = FInNet[size_t(B.InFirst - Marker - 1)];
        return n == FNetCount ? -1 : n;
    }
    if (Marker > 0 && Marker <= B.OutCount)
        return FOutNetAll[size_t(B.OutFirst + Marker - 1)];
    return -1;
}

int TDiagSimulator::NetOfConnection(int Index) const {
    if (Index < 0 || size_t(Index) >= FConNet.size())
        return -1;
    return FConNet[size_t(Index)];
}

bool TDiagSimulator::NetValue(int Net) const {
    if (Net < 0 || Net >= FNetCount)
        return false;
    return FNetValue[size_t(Net)] != 0;
}

bool TDiagSimulator::MarkerValue(const TDiagObject* BlockObj, int Marker) const {
    auto it = FIndexOf.find(BlockObj);
    if (it == FIndexOf.end())
        return false;
    const Block& B = FBlocks[size_t(it->second)];
    if (Marker < 0 && Marker >= -B.InCount) {
        const size_t pin = size_t(B.InFirst - Marker - 1);
        return (FNetValue[size_t(FInNet[pin])] ^ FInInv[pin]) != 0;
    }
    if (Marker > 0 && Marker <= B.OutCount)
        return FOutValue[size_t(B.OutFirst + Marker - 1)] != 0;
    return false;
}

bool TDiagSimulator::FlipFlopState(const TDiagObject* BlockObj) const {
    auto it = FIndexOf.find(BlockObj);
    return it != FIndexOf.end() && FBlocks[size_t(it->second)].Role == rRS &&
           FBlocks[size_t(it->second)].State;
}

int64_t TDiagSimulator::ForbiddenCount() const {
    int64_t n = 0;
    for (const Block& B : FBlocks)
        n += B.ForbiddenCount;
    return n;
}

int64_t TDiagSimulator::ForbiddenCount(const TDiagObject* BlockObj) const {
    auto it = FIndexOf.find(BlockObj);
    return it == FIndexOf.end() ? 0 : FBlocks[size_t(it->second)].ForbiddenCount;
}

QStringList TDiagSimulator::SourceNames() const {
    QStringList names;
    for (const TSimTrace& t : FTraces)
        if (t.IsSource)
            names << t.Name;
    return names;
}

QStringList TDiagSimulator::ProbeNames() const {
    QStringList names;
    for (const TSimTrace& t : FTraces)
        if (!t.IsSource)
            names << t.Name;
    return names;
}

std::vector<TSimIssue> TDiagSimulator::Issues() const {
    std::vector<TSimIssue> all = FStatic;
    QSet<QString> sourceNames;
    for (int b : FSources)
        sourceNames.insert(FBlocks[size_t(b)].Name);
    for (int b : FSources) {
        const QString& name = FBlocks[size_t(b)].Name;
        if (FStimuli.count(name))
            continue;
        TSimIssue is;
        is.Kind = TSimIssue::ikNoStimulus;
        is.Blocks = {b};
        is.Message = QStringLiteral("Source \"%1\" (%2) has no waveform; it stays 0")
                         .arg(name, DescribeBlock(b));
        all.push_back(is);
    }
    for (const auto& [name, wave] : FStimuli) {
        if (sourceNames.contains(name))
            continue;
        TSimIssue is;
        is.Kind = TSimIssue::ikUnknownStimulus;
        is.Message =
            QStringLiteral("A waveform is given for \"%1\", but no source has that name").arg(name);
        all.push_back(is);
    }
    for (const Loop& L : FLoops) {
        if (!L.Reported)
            continue;
        TSimIssue is;
        is.Kind = TSimIssue::ikOscillation;
        is.Blocks = L.Blocks;
        is.Step = L.FirstStep;
        QStringList names;
        for (int b : L.Blocks)
            names << DescribeBlock(b);
        is.Message = QStringLiteral("Oscillation from step %1: the loop of %2 does not settle")
                         .arg(L.FirstStep)
                         .arg(names.join(QStringLiteral(", ")));
        all.push_back(is);
    }
    for (size_t b = 0; b < FBlocks.size(); ++b) {
        const Block& B = FBlocks[b];
        if (B.ForbiddenCount == 0)
            continue;
        TSimIssue is;
        is.Kind = TSimIssue::ikForbidden;
        is.Blocks = {int(b)};
        is.Step = B.ForbiddenFirst;
        is.Message = QStringLiteral("%1 got R = S = 1 (forbidden) %2 time(s), first at step %3; "
                                    "it held its state")
                         .arg(DescribeBlock(int(b)))
                         .arg(B.ForbiddenCount)
                         .arg(B.ForbiddenFirst);
        all.push_back(is);
    }
    return all;
}

std::vector<TSimIssue> TDiagSimulator::Errors() const {
    std::vector<TSimIssue> r;
    for (TSimIssue& is : Issues())
        if (is.IsError)
            r.push_back(std::move(is));
    return r;
}

std::vector<TSimIssue> TDiagSimulator::Warnings() const {
    std::vector<TSimIssue> r;
    for (TSimIssue& is : Issues())
        if (!is.IsError)
            r.push_back(std::move(is));
    return r;
}

TSimRecord TDiagSimulator::Record() const {
    TSimRecord rec;
    rec.Steps = FTime;
    rec.Traces = FTraces;
    rec.Forbidden = FForbiddenSpans;
    for (size_t b = 0; b < FBlocks.size(); ++b)
        if (FBlocks[b].Forbidden && FBlocks[b].ForbiddenSince < FTime)
            rec.Forbidden.push_back({FBlocks[b].ForbiddenSince, FTime, {int(b)}});
    std::sort(rec.Forbidden.begin(), rec.Forbidden.end(),
              [](const TSimSpan& a, const TSimSpan& b) { return a.First < b.First; });
    for (const Loop& L : FLoops)
        for (const TSimSpan& s : L.Spans)
            rec.Oscillating.push_back({s.First, std::min(s.End, FTime), s.Blocks});
    std::sort(rec.Oscillating.begin(), rec.Oscillating.end(),
              [](const TSimSpan& a, const TSimSpan& b) { return a.First < b.First; });
    return rec;
}

} // namespace vde
