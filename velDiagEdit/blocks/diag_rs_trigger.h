#pragma once
// The RS flip-flop: labels R, S and T in three regions of the body, split by two mid lines.

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/velDiagEdit_export.h"

namespace vde {

class VELDIAGEDIT_EXPORT TDiagRSTrigger : public TDiagLogic {
    Q_OBJECT
public:
    TDiagRSTrigger(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
                   double QHoriz, double QVert, bool AVisible, const QString& AText);

    void Paint() override;
    void MakeRegions() override;
    void PaintMidLines();

    double HorizRatio = 0;
    double VertRatio = 0;
    int FMidHoriz = 0;
    int FMidVert = 0;
};

} // namespace vde
