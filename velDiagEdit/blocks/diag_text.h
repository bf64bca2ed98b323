#pragma once
// The framed text block and the logic gates built on it.

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/velDiagEdit_export.h"

namespace vde {

class VELDIAGEDIT_EXPORT TDiagText : public TDiagObject {
    Q_OBJECT
public:
    TDiagText(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
              const QString& AText, int AHoriz, int AVert, bool AVisible);

    void SetBounds(int ALeft, int ATop, int AWidth, int AHeight) override;
    void MainPaint() override;
    virtual void MakeRegions() {}

    int GetInCount() const { return FInCount; }
    void SetInCount(int N);
    int GetOutCount() const { return FOutCount; }
    void SetOutCount(int N);
    void SetInPosEx(int Y0, int Y1, int First, int Last);
    void SetOutPosEx(int Y0, int Y1, int First, int Last);
    void AllInputsType(TIOType IOType, int First, int Last);
    void AllOutputsType(TIOType IOType, int First, int Last);
    void AddAlignedLabel(const QString& Text);
    // Lays out markers First..Last in equal cells between Y0 and Y1 on the frame's left (inputs)
    // or right (outputs) edge; negative Y0, Y1, Last take their defaults.
    void SetMarkers(TDotMarkers& Markers, int Y0, int Y1, int First, int Last);

    int FInCount = 0;
    int FOutCount = 0;
    uint8_t FMarkerSize = 0;

protected:
    TDiagText(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight,
              const QString& AText, int AHoriz, int AVert, bool AVisible, TDiagObjectType ObjType);
    void MarkersLoaded() override;

private:
    void SetCount(TDotMarkers& Markers, int& Field, int N);
    static void SetTypes(TDotMarkers& Markers, TIOType IOType, int First, int Last);
};

class VELDIAGEDIT_EXPORT TDiagLogic : public TDiagText {
    Q_OBJECT
public:
    TDiagLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight, int AHoriz,
               int AVert, bool AVisible, const QString& AText);

protected:
    TDiagLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight, int AHoriz,
               int AVert, bool AVisible, const QString& AText, TDiagObjectType ObjType);
};

class VELDIAGEDIT_EXPORT TDiagAndLogic : public TDiagLogic {
    Q_OBJECT
public:
    TDiagAndLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight, int AHoriz,
                  int AVert, bool AVisible);
};

class VELDIAGEDIT_EXPORT TDiagOrLogic : public TDiagLogic {
    Q_OBJECT
public:
    TDiagOrLogic(TDiagObjectList* Owner, int ALeft, int ATop, int AWidth, int AHeight, int AHoriz,
                 int AVert, bool AVisible);
};

} // namespace vde
