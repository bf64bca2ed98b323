#pragma once
// Simulates a drawn circuit step by step: the wires form nets, the output markers on a net drive
// it, gates and flip-flops answer after a delay, text blocks are the sources (outputs only),
// probes (inputs only) and named buffers (both) of the circuit. It reads a block list and a
// connection list, so it works on a container's lists and on lists loaded from a stream alike,
// with or without a window. See docs/simulation.md for the rules.

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/simulation/stimuli.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace vde {

// What the simulator found wrong with a diagram or a run.
struct VELDIAGEDIT_EXPORT TSimIssue {
    enum TKind : uint8_t {
        ikMultipleDrivers,  // error: two or more outputs on one net
        ikOscillation,      // a loop of blocks that does not settle
        ikForbidden,        // an RS flip-flop got R = S = 1
        ikUnconnectedInput, // an input on no wire reads 0
        ikUndrivenInput,    // an input on a net that no output drives reads 0
        ikNoStimulus,       // a source without a waveform stays 0
        ikUnknownStimulus,  // a waveform for a name that no source has
        ikDuplicateName,    // two sources or two probes of one name
        ikBadWireEnd,       // a wire end names a block, marker or wire that is not there
    };
    bool IsError = false;
    TKind Kind = ikMultipleDrivers;
    QString Message;
    // Indexes into the block list, in list order.
    std::vector<int> Blocks;
    int Net = -1;
    int64_t Step = -1;
};

struct TSimChange {
    int64_t Step = 0;
    bool Value = false;
    friend bool operator==(const TSimChange&, const TSimChange&) = default;
};

// The values of one source or probe: 0 until its first change.
struct VELDIAGEDIT_EXPORT TSimTrace {
    QString Name;
    bool IsSource = false;
    int Block = -1;                  // index in the block list
    int Marker = 0;                  // the probe's input marker (-k); 0 for a source
    std::vector<TSimChange> Changes; // rising steps, each a real change
    bool ValueAt(int64_t Step) const;
};

// Steps First .. End - 1, and the blocks concerned.
struct TSimSpan {
    int64_t First = 0;
    int64_t End = 0;
    std::vector<int> Blocks;
    friend bool operator==(const TSimSpan&, const TSimSpan&) = default;
};

// What a run leaves for a chart or a value-change dump: the traces in diagram order, and when
// flip-flops saw the forbidden input and loops oscillated.
struct TSimRecord {
    int64_t Steps = 0;
    std::vector<TSimTrace> Traces;
    std::vector<TSimSpan> Forbidden;
    std::vector<TSimSpan> Oscillating;
};

// Ownership: the simulator copies what it needs from the lists when it is made (or rebuilt); it
// keeps no pointer into them except as a key to answer NetOf and MarkerValue, so after the
// diagram changes call Rebuild. It is a QObject only to announce steps.
class VELDIAGEDIT_EXPORT TDiagSimulator : public QObject {
    Q_OBJECT
public:
    TDiagSimulator(const TDiagObjectList& Blocks, const TDiagConnectList& Wires,
                   QObject* Parent = nullptr);
    ~TDiagSimulator() override;

    // Builds the nets again from the lists and resets; stimuli, delays and the bound are kept.
    void Rebuild(const TDiagObjectList& Blocks, const TDiagConnectList& Wires);

    // Steps from an evaluation to its outputs, per kind of block (doText: named buffers);
    // 1 by default, 1 .. kMaxSimDelay. Takes effect from the next evaluation.
    static constexpr int kMaxSimDelay = 1000;
    void SetDelay(TDiagObjectType Kind, int Steps);
    int GetDelay(TDiagObjectType Kind) const;
    // A change that follows a stimulus change through more than this many block delays (the
    // circuit went round a loop without settling) marks its loop as oscillating. 0: twice the
    // number of blocks that evaluate, plus 4 (the default).
    void SetOscillationBound(int Bound);
    int GetOscillationBound() const;

    // Waveforms by source name (SetStimuli adds to those given before); a source without one
    // stays 0. A source follows its waveform from the next step on; Reset to start over.
    void SetStimulus(const QString& Source, const TSimWaveform& Wave);
    void SetStimuli(const TSimStimuli& Stimuli);
    void ClearStimuli();

    // Back to step 0: every net 0, every flip-flop reset, traces empty; WasReset is emitted.
    // Rebuild resets too.
    void Reset();
    // One step: the sources take their values at the current step, the changes due now arrive,
    // and the blocks whose inputs changed evaluate; then time moves on by one and Stepped is
    // emitted with the step just done.
    void Step();
    void Run(int64_t Steps);
    // Steps done since the reset.
    int64_t Time() const { return FTime; }
    // Block evaluations and net changes since the reset: the run's work.
    int64_t Evaluations() const { return FEvaluations; }
    int64_t NetChanges() const { return FNetChanges; }

    // --- the circuit
    int NetCount() const { return FNetCount; }
    // The net of a marker (-k input k, +k output k) or of a wire; -1 when it is on none.
    int NetOf(const TDiagObject* Block, int Marker) const;
    int NetOfConnection(int Index) const;
    bool NetValue(int Net) const;
    // An input marker: the value its block sees (its net through the marker's inversion); an
    // output marker: the value it gives out (its block's value through the inversion).
    bool MarkerValue(const TDiagObject* Block, int Marker) const;
    // The state of an RS flip-flop (false for other blocks).
    bool FlipFlopState(const TDiagObject* Block) const;
    // How often flip-flops got R = S = 1, all together or one.
    int64_t ForbiddenCount() const;
    int64_t ForbiddenCount(const TDiagObject* Block) const;
    QStringList SourceNames() const;
    QStringList ProbeNames() const;
    // "block 3 (OrLogic \"1\")": how messages name a block of the list.
    QString DescribeBlock(int Index) const;

    // --- results
    const std::vector<TSimTrace>& Traces() const { return FTraces; }
    // Errors and warnings found in the diagram, with the stimuli, and during the run so far.
    std::vector<TSimIssue> Issues() const;
    std::vector<TSimIssue> Errors() const;
    std::vector<TSimIssue> Warnings() const;
    TSimRecord Record() const;

signals:
    void Stepped(qint64 Step);
    void WasReset();

private:
    enum TRole : uint8_t { rInert, rAnd, rOr, rRS, rSource, rProbe, rBuffer };
    struct Block {
        TRole Role = rInert;
        TDiagObjectType Kind = doNone;
        int InFirst = 0, InCount = 0, OutFirst = 0, OutCount = 0;
        bool State = false;     // RS flip-flop
        bool Forbidden = false; // RS: the last evaluation saw R = S = 1
        int64_t ForbiddenCount = 0;
        int64_t ForbiddenSince = 0;
        int64_t ForbiddenFirst = -1;
        int Scc = -1;   // its loop, when it is in one
        int Trace = -1; // source: its trace
        QString Name;
        QString Label; // the first label, for messages
    };
    struct Event {
        int32_t Pin;
        uint8_t Value;
        int32_t Depth;
    };
    struct Loop {
        std::vector<int> Blocks;
        bool Reported = false;
        int64_t FirstStep = -1;
        std::vector<TSimSpan> Spans;
    };

    void Build(const TDiagObjectList& Blocks, const TDiagConnectList& Wires);
    void FindLoops();
    void Apply(int32_t Pin, bool Value, int32_t Depth);
    void Evaluate(int b, int32_t Depth);
    int EffectiveBound() const;
    // Points each source at its waveform (or none) again after the stimuli changed.
    void ResolveWaves();
    QString PinName(int b, int Marker) const;

    // Blocks
    std::vector<Block> FBlocks;
    std::unordered_map<const TDiagObject*, int> FIndexOf;
    std::vector<int> FEvaluating; // blocks that evaluate (not sources, probes or inert)
    // Input pins: net (FNetCount = the constant-0 net), inversion.
    std::vector<int32_t> FInNet;
    std::vector<uint8_t> FInInv;
    // Output pins: net driven (-1: none, or not the net's driver), inversion, block, value
    // given out, value last scheduled.
    std::vector<int32_t> FOutNet;
    std::vector<int32_t> FOutNetAll; // the net the pin is on, driver or not
    std::vector<uint8_t> FOutInv;
    std::vector<int32_t> FOutBlock;
    std::vector<uint8_t> FOutValue;
    std::vector<uint8_t> FOutProjected;
    // Nets (one more, the constant 0 that unconnected inputs read).
    int FNetCount = 0;
    std::vector<uint8_t> FNetValue;
    std::vector<int32_t> FReaderFirst, FReaders;    // blocks reading each net
    std::vector<int32_t> FProbeFirst, FProbeTraces; // probe traces on each net
    std::vector<int32_t> FConNet;
    std::vector<int32_t> FProbeInPin; // per trace: the probe's input pin
    // Issues found when building.
    std::vector<TSimIssue> FStatic;
    std::vector<Loop> FLoops;
    std::vector<TSimSpan> FForbiddenSpans; // closed spans, in the order they closed

    // Settings
    std::array<int, 5> FDelay{1, 1, 1, 1, 1};
    int FBound = 0;
    std::map<QString, TSimWaveform> FStimuli;

    // Run state
    int64_t FTime = 0;
    int64_t FEvaluations = 0;
    int64_t FNetChanges = 0;
    std::vector<std::vector<Event>> FWheel; // slot = step % size
    std::vector<int64_t> FDirtyStamp;
    std::vector<int32_t> FTrigDepth;
    std::vector<int32_t> FDirty;
    std::vector<uint8_t> FSourceValue; // per block, sources only
    std::vector<const TSimWaveform*> FSourceWave;
    std::vector<int> FSources;
    std::vector<TSimTrace> FTraces;
};

} // namespace vde
