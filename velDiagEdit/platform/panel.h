#pragma once
// A plain panel: a QFrame with the classic outer bevel and a background colour, used where a
// small coloured square or box of our own is needed (the move/resize handles). It is a windowed
// control like any other host widget, so its mouse events are hooked with SetMouseHandlers.
//
// Ownership: the panel is listed with the owner given to the constructor (InsertComponent), which
// frees it when the owner goes; its Qt parent (SetParent) only decides where it is shown. Anyone
// may delete it earlier; the owner then forgets it.

#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QFrame>
#include <QPointer>

namespace vde {

enum TBevelCut : uint8_t { bvNone, bvLowered, bvRaised, bvSpace };

class VELDIAGEDIT_EXPORT TPanel : public QFrame {
    Q_OBJECT
public:
    // A panel of 185 x 41 pixels, raised outer bevel, button-face colour, no Qt parent yet.
    explicit TPanel(QObject* AOwner);
    ~TPanel() override;

    QObject* Owner() const { return FOwner.data(); }

    TBevelCut GetBevelOuter() const { return FBevelOuter; }
    void SetBevelOuter(TBevelCut value);
    TColor GetColor() const { return FColor; }
    void SetColor(TColor value);
    // The cursor shown over the panel (crDefault: the parent's).
    TCursor GetCursor() const { return FCursor; }
    void SetCursor(TCursor value);

    // Qt parent = the window the panel is shown on. Unless it was hidden, the panel shows with
    // it.
    void SetParent(QWidget* AParent);

private:
    QPointer<QObject> FOwner;
    TBevelCut FBevelOuter = bvRaised;
    TColor FColor = clBtnFace;
    TCursor FCursor = crDefault;
};

} // namespace vde
