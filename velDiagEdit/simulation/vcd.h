#pragma once
// The value-change dump (IEEE 1364 VCD) of a simulation record, as waveform viewers read it:
// one 1-bit wire per trace in the order of the record, one time unit (1 ns) per step.

#include "velDiagEdit/simulation/diag_simulator.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QByteArray>
#include <QString>

namespace vde {

// The dump's text. Names are the traces' names with blanks made "_" and a suffix "_2", "_3"
// where a name repeats; the scope is named Scope. The dump ends with the time of the last step
// + 1, so the last value shows for a whole step.
VELDIAGEDIT_EXPORT QByteArray SimRecordToVcd(const TSimRecord& Record,
                                             const QString& Scope = QStringLiteral("diagram"));

} // namespace vde
