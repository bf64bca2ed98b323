// The editing commands of the diagram surface: what the items of the two context menus do to
// the selected block, its selected marker and the selected connection segment, mostly after
// asking the user for a value.
//
// Typed-in text is converted by the codecs, whose conversion errors are not caught here: they
// travel up to the menu's event boundary, which shows their message. A command therefore
// converts what the user typed before it changes anything, and where a block's own setter can
// still fail part-way (a list of numbers converted one piece at a time), it puts back what the
// setter had already changed before letting the error go on.

#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/editor/diag_messages.h"
#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/dialog_service.h"

#include <QPointer>
#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

namespace vde {

namespace {

// The angle unit of a connection segment, in degrees; the segment dialog shows degrees.
constexpr int32_t kAngleStep = 45;
// A block side with at least this many markers asks whether to connect several at once.
constexpr size_t kSeveralMarkers = 3;
// Marker sizes and margins the dialogs allow, and how far a marker may be moved at once.
constexpr int32_t kMarkerSizeMin = 4, kMarkerSizeMax = 30;
constexpr int32_t kMarginMin = 4, kMarginMax = 30;
constexpr int32_t kCountMin = 0, kCountMax = 30;
constexpr int32_t kMarkerPosRange = 100;
// The position a dialog takes when it is to place itself (centred).
constexpr TPoint kDialogDefaultPos{-1, -1};

void InvalidateParent(QWidget* Parent) {
    if (Parent)
        Parent->update();
}

// a + b held to the 32-bit range: a dialog range around a stored value never wraps over.
int32_t SaturatedAdd(int32_t a, int32_t b) {
    const int64_t r = int64_t(a) + int64_t(b);
    return int32_t(std::clamp<int64_t>(r, std::numeric_limits<int32_t>::min(),
                                       std::numeric_limits<int32_t>::max()));
}

// Switches the block's bounds notification off for its lifetime and back on afterwards, also
// when leaving by an error.
class TQuietBounds {
public:
    explicit TQuietBounds(TDiagObject* Obj) : FObj(Obj), FSaved(Obj->GetOnModifyBounds()) {
        Obj->SetOnModifyBounds({});
    }
    ~TQuietBounds() {
        if (FObj)
            FObj->SetOnModifyBounds(std::move(FSaved));
    }
    TQuietBounds(const TQuietBounds&) = delete;
    TQuietBounds& operator=(const TQuietBounds&) = delete;

private:
    QPointer<TDiagObject> FObj;
    TNotifyEvent FSaved;
};

// Calls a block's label-list setter; when it fails part-way the labels it had already changed
// are put back before the error goes on.
template <class F> void SetLabelsAtomically(TDiagObject* Obj, F Setter) {
    const TDiagLabels before = Obj->FLabels;
    try {
        Setter();
    } catch (...) {
        Obj->FLabels = before;
        Obj->update();
        throw;
    }
}

// "Input #2 Size", "Output #1 Pos" for the selected marker; empty when none is selected.
QString MarkerCaption(int Marker, bool Size) {
    if (Marker < 0)
        return (Size ? TDiagContainer::tr("Input #%1 Size") : TDiagContainer::tr("Input #%1 Pos"))
            .arg(-int64_t(Marker));
    if (Marker > 0)
        return (Size ? TDiagContainer::tr("Output #%1 Size") : TDiagContainer::tr("Output #%1 Pos"))
            .arg(Marker);
    return {};
}

uint16_t Word(int64_t v) {
    return static_cast<uint16_t>(static_cast<uint64_t>(v) & 0xFFFFu);
}

} // namespace

// Every command that can change the diagram is one undo step, named as its menu item; a step
// begun inside another (a command calling a command) belongs to the outer one, and a command
// that changed nothing leaves no step.

// ---- segments ---------------------------------------------------------------------------------

void TDiagContainer::DeleteCurSegment() {
    const TUndoStepScope step(UndoStack(), tr("Del. Segment"));
    if (!ConList || SelInfo.IsZero())
        return;
    ConList->DeleteSegmentByLongRec(SelInfo);
    InvalidateParent(FParent);
}

void TDiagContainer::AlignCurSegment() {
    const TUndoStepScope step(UndoStack(), tr("Align Segment"));
    if (!ConList || SelInfo.IsZero())
        return;
    ConList->AlignSegmentWithDiagObject(SelInfo, SelObj.data());
    InvalidateParent(FParent);
}

void TDiagContainer::EndConnectionWithCross() {
    const TUndoStepScope step(UndoStack(), tr("End with Cross"));
    if (!ConList || SelInfo.IsZero())
        return;
    ConList->EndConnectionByLongRec(SelInfo, nullptr, nullptr);
    InvalidateParent(FParent);
}

void TDiagContainer::EndDiagConnection() {
    const TUndoStepScope step(UndoStack(), tr("End Connection"));
    if (!ConList || SelInfo.IsZero())
        return;
    TDiagObject* obj = SelObj.data();
    if (!obj || !obj->GetSelected() || obj->GetSelMarkerIndex() == 0)
        return;
    ConList->EndConnectionByLongRec(SelInfo, obj, nullptr);
    InvalidateParent(FParent);
}

void TDiagContainer::ShowSegmentRect() {
    if (SelInfo.IsZero() || !ConList) {
        DialogService().ShowMessage(tr("No any segment selected"));
        return;
    }
    // The list leaves the rectangle alone for an address it does not know.
    TRect R{-1, -1, -1, -1};
    ConList->GetSegmentRect(SelInfo, R);
    ShowRectParams(R, tr("Segment Rect"));
}

void TDiagContainer::ShowSegmentIndex() {
    if (SelInfo.IsZero()) {
        DialogService().ShowMessage(tr("No any segment selected"));
        return;
    }
    DialogService().InputBox(tr("Segment Index"), tr("Con,Idx"), LongRecToStr(SelInfo));
}

void TDiagContainer::EditSegmentOfConnection() {
    const TUndoStepScope step(UndoStack(), tr("Edit Segment"));
    if (!ConList || SelInfo.IsZero())
        return;
    int size = 0, steps = 0;
    ConList->EditSegmentOfConnection(SelInfo, size, steps, true);
    TSegmentParamRec rec;
    rec.Size = size;
    rec.Angle = steps * kAngleStep;
    rec.OnlySize = false;
    if (!DialogService().EditSegmentParams(rec, QString(), kDialogDefaultPos))
        return;
    // Degrees back to steps, the quotient cut toward zero: 100 degrees is 2 steps.
    size = rec.Size;
    steps = rec.Angle / kAngleStep;
    ConList->EditSegmentOfConnection(SelInfo, size, steps, false);
    InvalidateParent(FParent);
}

void TDiagContainer::EndConnectionWithSegment() {
    const TUndoStepScope step(UndoStack(), tr("End with Segment"));
    if (SelInfo.IsZero() || !ConList) {
        DialogService().ShowMessage(tr("No any segment selected"));
        return;
    }
    LongRec target;
    const int found = ConList->LookForBestSegment(int(SelInfo.Hi) - 1, target);
    if (found <= 0)
        return;
    QString text = LongRecToStr(target);
    if (!DialogService().InputQuery(tr("Segment Index"), tr("Con,Idx"), text))
        return;
    target = StrToLongRec(text);
    ConList->EndConnectionByLongRec(SelInfo, nullptr, &target);
    InvalidateParent(FParent);
}

// ---- building connections ---------------------------------------------------------------------

bool TDiagContainer::AddDiagConnection(int Size, bool DoRefresh) {
    const TUndoStepScope step(UndoStack(), tr("Add Connection"));
    TDiagObject* obj = SelObj.data();
    if (!ConList || !obj || !obj->GetSelected() || obj->GetSelMarkerIndex() == 0)
        return false;
    if (ConList->ConnectIndex(obj, 0) != 0) {
        ErrorMessageDlg(tr("Marker is not free"));
        return false;
    }
    const int k = ConList->AddConnection(obj, 0, Size);
    SelInfo.Hi = Word(int64_t(k) + 1);
    SelInfo.Lo = 1;
    ConList->SelectSegmentByLongRec(SelInfo);
    if (DoRefresh)
        InvalidateParent(FParent);
    return true;
}

bool TDiagContainer::AddDiagConnections(int Size, bool DoRefresh) {
    const TUndoStepScope step(UndoStack(), tr("Add Connections"));
    TDiagObject* obj = SelObj.data();
    if (!ConList || !obj || !obj->GetSelected() || obj->GetSelMarkerIndex() == 0)
        return false;
    const int m = obj->GetSelMarkerIndex();
    const int s = m < 0 ? -1 : 1;
    const PDotMarkers list = obj->GetMarkersPtr(s);
    const int64_t first = std::llabs(int64_t(m));
    // A selected marker that the block no longer has is no marker to start from.
    if (!list || first > int64_t(list->size()))
        return false;
    const auto length = int32_t(list->size());
    int32_t last = length;
    if (!DialogService().EditSizeValue(last, int32_t(first), length, 1, tr("Set Max Index")))
        return false;
    for (int64_t i = first; i <= last; ++i) {
        const int idx = int(i) * s;
        if (ConList->ConnectIndex(obj, idx) == 0)
            ConList->AddConnection(obj, idx, Size);
    }
    if (DoRefresh)
        InvalidateParent(FParent);
    // The result carries nothing; callers do not look at it.
    return false;
}

void TDiagContainer::AddSegmentToConnection() {
    const TUndoStepScope step(UndoStack(), tr("Add Segment"));
    TSegmentParamRec rec;
    rec.Size = 100;
    rec.Angle = 0;
    rec.OnlySize = SelInfo.IsZero();
    if (!DialogService().EditSegmentParams(rec, QString(), kDialogDefaultPos))
        return;
    TDiagObject* obj = SelObj.data();
    if (ConList && obj && obj->GetSelected() && obj->GetSelMarkerIndex() != 0 &&
        ConList->ConnectIndex(obj, 0) == 0) {
        // A free marker starts new connections; the angle has no use for them.
        const int m = obj->GetSelMarkerIndex();
        const size_t onSide = m < 0 ? obj->FInputs.size() : obj->FOutputs.size();
        if (onSide < kSeveralMarkers) {
            AddDiagConnection(rec.Size, true);
            return;
        }
        const TModalResult r = DialogService().MessageDlg(tr("Add several connections"),
                                                          mtConfirmation, mbYesNo, 0, mbNo);
        if (r == mrYes)
            AddDiagConnections(rec.Size, true);
        else if (r == mrNo)
            AddDiagConnection(rec.Size, true);
        return;
    }
    if (!ConList || SelInfo.IsZero())
        return;
    const int k =
        ConList->AddSegmentToConnection(int(SelInfo.Hi) - 1, rec.Size, rec.Angle / kAngleStep);
    SelInfo.Lo = Word(int64_t(k) + 1);
    ConList->SelectSegmentByLongRec(SelInfo);
    InvalidateParent(FParent);
}

// ---- blocks -----------------------------------------------------------------------------------

void TDiagContainer::DelSelectedObject() {
    const TUndoStepScope step(UndoStack(), tr("Delete"));
    TDiagObject* obj = SelObj.data();
    if (!obj || !ObjList)
        return;
    const int before = ConList ? ConList->Count() : 0;
    // The list's delete notification lets the connection list detach or drop the block's
    // connections before the block goes.
    ObjList->DeleteObject(obj, true);
    SelObj = nullptr;
    // Dropped connections move the later ones down the list: the segment address no longer
    // names what was selected.
    if (ConList && ConList->Count() != before)
        SelInfo = LongRec{};
    InvalidateParent(FParent);
}

void TDiagContainer::AlignTitles() {
    const TUndoStepScope step(UndoStack(), tr("Align Titles"));
    TDiagObject* obj = SelObj.data();
    if (!obj)
        return;
    obj->UpdateAlignments();
    obj->update();
    InvalidateParent(FParent);
}

void TDiagContainer::ShiftByDelta() {
    const TUndoStepScope step(UndoStack(), tr("Shift By Delta"));
    TDiagObject* obj = SelObj.data();
    if (!obj)
        return;
    QString text = QStringLiteral("0,0");
    if (!DialogService().InputQuery(tr("Shift x,y Values"), tr("Values:"), text))
        return;
    const TPoint D = StrToPoint(text);

    // What a failure of the last step has to put back.
    const TRect bounds = obj->BoundsRect();
    const TDiagLabels labels = obj->FLabels;
    std::vector<TPoints> paths;
    if (ConList) {
        paths.reserve(size_t(ConList->Count()));
        for (int i = 0; i < ConList->Count(); ++i)
            paths.push_back(ConList->Items(i)->FPoints);
    }

    // The block moves first, then the ends of its wires follow by the same delta. Moving the
    // block would otherwise raise its bounds notification, and the container would reroute the
    // wires onto the moved markers before the list shifts the same ends again: the ends would
    // travel twice. The notification is held back for the block's own move only.
    {
        TQuietBounds quiet(obj);
        obj->ShiftByDelta(D);
    }
    if (ConList)
        ConList->ShiftByDelta(obj, D);
    try {
        // The "x,y" typed is also the block's text position values.
        obj->SetTextPosValues(text);
    } catch (...) {
        obj->FLabels = labels;
        {
            TQuietBounds quiet(obj);
            obj->SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
        }
        if (ConList)
            for (int i = 0; i < ConList->Count() && size_t(i) < paths.size(); ++i) {
                ConList->Items(i)->FPoints = paths[size_t(i)];
                ConList->PathChanged(ConList->Items(i));
            }
        obj->update();
        InvalidateParent(FParent);
        throw;
    }
    InvalidateParent(FParent);
}

void TDiagContainer::SetObjTitle() {
    // Reserved: only text blocks will have a title of their own; nothing is changed yet.
    [[maybe_unused]] auto* text = dynamic_cast<TDiagText*>(SelObj.data());
}

// ---- markers ----------------------------------------------------------------------------------

void TDiagContainer::ChangeMarkerSize() {
    const TUndoStepScope step(UndoStack(), tr("Change Size"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    if (!obj)
        return;
    const QString caption = MarkerCaption(obj->GetSelMarkerIndex(), true);
    if (caption.isEmpty())
        return;
    int32_t size = obj->GetSelMarkerSize();
    if (!DialogService().EditSizeValue(size, kMarkerSizeMin, kMarkerSizeMax, 1, caption))
        return;
    obj->SetSelMarkerSize(size);
    InvalidateParent(FParent);
}

void TDiagContainer::ChangeMarkerPos() {
    const TUndoStepScope step(UndoStack(), tr("Change Pos"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    if (!obj)
        return;
    const QString caption = MarkerCaption(obj->GetSelMarkerIndex(), false);
    if (caption.isEmpty()) {
        ErrorMessageDlg(tr("There is no markers available"));
        return;
    }
    int32_t pos = obj->GetSelMarkerPos();
    if (pos < 0) {
        ErrorMessageDlg(tr("Marker was not found"));
        return;
    }
    if (!DialogService().EditSizeValue(pos, SaturatedAdd(pos, -kMarkerPosRange),
                                       SaturatedAdd(pos, kMarkerPosRange), 1, caption))
        return;
    // The block reports the moved marker, and the container reroutes the wires at it.
    obj->SetSelMarkerPos(pos);
    InvalidateParent(FParent);
}

void TDiagContainer::ChangeMarkerType(QObject* Sender) {
    const TUndoStepScope step(UndoStack(), tr("Change Type"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    auto* item = qobject_cast<TMenuItem*>(Sender);
    if (!obj || !item)
        return;
    const int m = obj->GetSelMarkerIndex();
    if (m == 0)
        return;
    // Only the marker types there are; any other tag is not a type and changes nothing.
    if (item->Tag < 0 || item->Tag >= GoodMarkerTypeCount())
        return;
    const auto type = TIOType(uint8_t(item->Tag));
    const int n = int(std::llabs(int64_t(m)) - 1);
    if (m > 0)
        obj->AllOutputsType(type, n, n);
    else
        obj->AllInputsType(type, n, n);
    InvalidateParent(FParent);
}

// ---- texts ------------------------------------------------------------------------------------

void TDiagContainer::SetTextValues() {
    const TUndoStepScope step(UndoStack(), tr("Set Title"));
    TDiagObject* obj = SelObj.data();
    if (!obj)
        return;
    QString text = obj->GetTextValues();
    if (!DialogService().InputQuery(tr("Text Titles"), tr("Values, delimited by |"), text))
        return;
    // New titles are aligned afresh by the block; they keep the places the old ones had.
    const QString positions = obj->GetTextPosValues();
    obj->SetTextValues(text);
    SetLabelsAtomically(obj, [&] { obj->SetTextPosValues(positions); });
    InvalidateParent(FParent);
}

void TDiagContainer::SetTextPosValues() {
    const TUndoStepScope step(UndoStack(), tr("Set Text Pos"));
    TDiagObject* obj = SelObj.data();
    if (!obj)
        return;
    QString text = obj->GetTextPosValues();
    if (!DialogService().InputQuery(tr("Text Pos Values"), tr("Values, delimited by |"), text))
        return;
    SetLabelsAtomically(obj, [&] { obj->SetTextPosValues(text); });
    InvalidateParent(FParent);
}

void TDiagContainer::SetTextHeights() {
    const TUndoStepScope step(UndoStack(), tr("Set Text Sizes"));
    TDiagObject* obj = SelObj.data();
    if (!obj)
        return;
    QString text = obj->GetTextHeights();
    if (!DialogService().InputQuery(tr("Text Heights"), tr("Values, delimited by |"), text))
        return;
    SetLabelsAtomically(obj, [&] { obj->SetTextHeights(text); });
    InvalidateParent(FParent);
}

// ---- counts and margins -----------------------------------------------------------------------

void TDiagContainer::SetHorizMargin() {
    const TUndoStepScope step(UndoStack(), tr("Horiz. Margin"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    if (!obj)
        return;
    int32_t value = obj->GetDeltaWidth();
    if (!DialogService().EditSizeValue(value, kMarginMin, kMarginMax, 1, tr("Horiz Margin")))
        return;
    obj->SetDeltaWidth(value);
    InvalidateParent(FParent);
}

void TDiagContainer::SetInputCount() {
    const TUndoStepScope step(UndoStack(), tr("Set In Count"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    if (!obj)
        return;
    int32_t value = obj->FInCount;
    if (!DialogService().EditSizeValue(value, kCountMin, kCountMax, 1, tr("Input Count")))
        return;
    obj->SetInCount(value);
    // New inputs are all plain; offer one type for all of them.
    QStringList names;
    for (int k = 0; k < GoodMarkerTypeCount(); ++k)
        names << MarkerTypeCaption(k).Translated();
    const int k = DialogService().SelectItemFromArray(tr("Select marker type"), names, 0);
    if (k >= 0 && k < GoodMarkerTypeCount())
        obj->AllInputsType(TIOType(uint8_t(k)), 0, -1);
    InvalidateParent(FParent);
}

void TDiagContainer::SetOutputCount() {
    const TUndoStepScope step(UndoStack(), tr("Set Out Count"));
    auto* obj = dynamic_cast<TDiagText*>(SelObj.data());
    if (!obj)
        return;
    int32_t value = obj->FOutCount;
    if (!DialogService().EditSizeValue(value, kCountMin, kCountMax, 1, tr("Output Count")))
        return;
    obj->SetOutCount(value);
    InvalidateParent(FParent);
}

} // namespace vde
