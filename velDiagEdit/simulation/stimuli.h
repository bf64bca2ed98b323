#pragma once
// Waveforms that drive the sources of a simulated diagram, given as text: a bit string
// ("0011 0101", one bit per step), a clock ("clock 4", period in steps, low first) or changes at
// steps ("0, 1@8, 0@20"); and a stimuli file that names one waveform per source in JSON
// ({"steps": 64, "signals": {"CLK": "clock 4", "EN": "0, 1@8"}}).

#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <map>
#include <vector>

namespace vde {

// A waveform or stimuli file that cannot be read: what was wrong, and the line and column
// (both from 1) where it was met.
class VELDIAGEDIT_EXPORT EStimulusError : public EConvertError {
public:
    EStimulusError(const QString& what, int line, int column)
        : EConvertError(QStringLiteral("%1 (line %2, column %3)").arg(what).arg(line).arg(column)),
          FWhat(what), FLine(line), FColumn(column) {}
    const QString& What() const { return FWhat; }
    int Line() const { return FLine; }
    int Column() const { return FColumn; }

private:
    QString FWhat;
    int FLine;
    int FColumn;
};

// The longest run a stimuli file or the tool may ask for.
constexpr int64_t kMaxSimSteps = 10'000'000;

// One signal's value at every step. Before its first change a waveform is 0; a bit string holds
// its last bit after its end.
class VELDIAGEDIT_EXPORT TSimWaveform {
public:
    enum TKind : uint8_t { wkConstant, wkBits, wkClock, wkChanges };

    // 0 at every step.
    TSimWaveform() = default;
    // Reads any of the three text forms. Errors name the column in Text (line 1) plus the given
    // line and column of Text's first character, so that a caller reading a file can place them.
    static TSimWaveform Parse(const QString& Text, int Line = 1, int Column = 1);
    static TSimWaveform Constant(bool Value);
    // Period in steps (>= 2): low for the first Period - Period / 2 steps, then high.
    static TSimWaveform Clock(int64_t Period);
    // Value from each step on; the steps must rise.
    static TSimWaveform Changes(const std::vector<std::pair<int64_t, bool>>& Changes);

    TKind Kind() const { return FKind; }
    bool ValueAt(int64_t Step) const;
    // The text form it was read from (or an equivalent one).
    QString Text() const;

private:
    TKind FKind = wkConstant;
    bool FConstant = false;
    int64_t FPeriod = 0;
    // Bits: one per step. Changes: (step, value) with rising steps.
    std::vector<uint8_t> FBits;
    std::vector<std::pair<int64_t, bool>> FChanges;
};

// The contents of a stimuli file: a waveform per source name, and the number of steps to run
// (-1 when the file does not say).
struct VELDIAGEDIT_EXPORT TSimStimuli {
    int64_t Steps = -1;
    std::map<QString, TSimWaveform> Signals;

    // Parses the JSON text; malformed JSON, a wrong shape or a waveform that cannot be read is
    // an EStimulusError with the line and column in Json.
    static TSimStimuli ParseJson(const QByteArray& Json);
    // Reads and parses a file; a file that cannot be opened is an EFOpenError. A file larger
    // than 16 MiB is refused.
    static TSimStimuli LoadFromFile(const QString& FileName);
};

} // namespace vde
