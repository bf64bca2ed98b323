// The clipboard of the diagram surface: the selection as a container stream of its own (the
// selected blocks and the wires that stay whole without the rest of the diagram), with a PNG and
// an SVG picture for documents; pasting checks the stream as a load does before it touches the
// open diagram.

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/diag_messages.h"
#include "velDiagEdit/editor/direct_editing_p.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/record_codec.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QHash>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QSvgGenerator>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <functional>

namespace vde {

namespace {

// A picture larger than this on either side is scaled down to it.
constexpr int kMaxPictureSide = 4096;
// Free pixels around the picture of a selection.
constexpr int kPictureMargin = 8;
// How far a repeated paste lands from the one before when there is no grid.
constexpr int kPasteStep = 16;

QByteArray BytesOf(const TMemoryStream& S) {
    const auto& b = S.Bytes();
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

QRect BoxOfPoints(const TPoints& pts) {
    QRect r;
    for (const TPoint& p : pts)
        r = r.united(QRect(p.X, p.Y, 1, 1));
    return r;
}

// The wires that go with the blocks: both ends on one of them or on a wire that goes too; a
// wire may also end nowhere. In list order.
std::vector<TDiagConnection*> WiresWith(const TDiagConnectList& List,
                                        const QSet<const QObject*>& Blocks) {
    const int n = List.Count();
    std::vector<char> in(size_t(n), 0);
    auto onWire = [&](LongRec r) {
        const int i = int(r.Hi) - 1;
        return i >= 0 && i < n && in[size_t(i)];
    };
    // A wire ending on a wire goes once that one does: repeat until nothing more joins.
    for (bool grew = true; grew;) {
        grew = false;
        for (int i = 0; i < n; ++i) {
            if (in[size_t(i)])
                continue;
            const TDiagConnection* w = List.Items(i);
            const bool src = (w->FSource && Blocks.contains(w->FSource.data())) ||
                             (!w->FSrcCrossInfo.IsZero() && onWire(w->FSrcCrossInfo));
            const bool dst = w->FDest ? Blocks.contains(w->FDest.data())
                                      : (w->FDstCrossInfo.IsZero() || onWire(w->FDstCrossInfo));
            if (src && dst && !w->FPoints.empty()) {
                in[size_t(i)] = 1;
                grew = true;
            }
        }
    }
    std::vector<TDiagConnection*> r;
    for (int i = 0; i < n; ++i)
        if (in[size_t(i)])
            r.push_back(List.Items(i));
    return r;
}

// The picture of blocks and wires: the wires in their own pens, then the blocks as they paint
// themselves, unselected, on white.
void PaintSelection(QPainter& P, const std::vector<TDiagObject*>& Blocks,
                    const std::vector<TDiagConnection*>& Wires) {
    P.setRenderHint(QPainter::Antialiasing, false);
    for (const TDiagConnection* w : Wires) {
        P.setPen(QPen(Qt::black, std::max(1, w->FPenWidth)));
        for (size_t i = 0; i + 1 < w->FPoints.size(); ++i)
            P.drawLine(QPoint(w->FPoints[i].X, w->FPoints[i].Y),
                       QPoint(w->FPoints[i + 1].X, w->FPoints[i + 1].Y));
        if (!w->FDstCrossInfo.IsZero() && !w->FPoints.empty()) {
            const TPoint e = w->FPoints.back();
            P.setBrush(Qt::black);
            P.drawEllipse(QPoint(e.X, e.Y), 4, 4);
            P.setBrush(Qt::NoBrush);
        }
    }
    for (TDiagObject* b : Blocks) {
        const bool selected = b->FSelected;
        b->FSelected = false;
        b->PaintWith(P);
        b->FSelected = selected;
    }
}

} // namespace

// ---- copy -------------------------------------------------------------------------------------

QByteArray TDiagContainer::SelectionBytes() {
    if (!ObjList || !ConList)
        return {};
    const std::vector<TDiagObject*> blocks = SelectedBlocks();
    if (blocks.empty())
        return {};
    const QSet<const QObject*> set(blocks.begin(), blocks.end());
    const std::vector<TDiagConnection*> wires = WiresWith(*ConList, set);
    // A wire on a wire names it by its place in the list: the place among the copied ones.
    QHash<int, int> place;
    for (size_t i = 0; i < wires.size(); ++i)
        place[ConList->IndexOfLive(wires[i])] = int(i);
    auto remap = [&place](LongRec r) {
        const auto it = place.constFind(int(r.Hi) - 1);
        return r.IsZero() || it == place.constEnd() ? LongRec{} : LongRec{r.Lo, uint16_t(*it + 1)};
    };
    TMemoryStream s;
    s.WriteUInt32(kContainerSignature);
    s.WriteInt32(int32_t(blocks.size()));
    for (const TDiagObject* b : blocks)
        b->SaveToStream(s);
    s.WriteInt32(int32_t(wires.size()));
    for (TDiagConnection* w : wires) {
        // Written as it is but for its wire addresses and its selected segment; no member of
        // the wire is changed for good, and nothing it does depends on them meanwhile.
        const LongRec src = w->FSrcCrossInfo, dst = w->FDstCrossInfo;
        const int32_t sel = w->FSelectedIndex;
        w->FSrcCrossInfo = remap(src);
        w->FDstCrossInfo = remap(dst);
        w->FSelectedIndex = -1;
        w->SaveToStream(s);
        w->FSrcCrossInfo = src;
        w->FDstCrossInfo = dst;
        w->FSelectedIndex = sel;
    }
    s.WriteInt32(0); // no foreign controls
    s.WriteInt32(0); // no selected segment
    s.WriteInt32(0); // no selected block
    return BytesOf(s);
}

QMimeData* TDiagContainer::SelectionMimeData() {
    const QByteArray bytes = SelectionBytes();
    if (bytes.isEmpty())
        return nullptr;
    const std::vector<TDiagObject*> blocks = SelectedBlocks();
    const QSet<const QObject*> set(blocks.begin(), blocks.end());
    const std::vector<TDiagConnection*> wires = WiresWith(*ConList, set);
    QRect box;
    for (const TDiagObject* b : blocks)
        box = box.united(b->geometry());
    for (const TDiagConnection* w : wires)
        box = box.united(BoxOfPoints(w->FPoints));
    box.adjust(-kPictureMargin, -kPictureMargin, kPictureMargin, kPictureMargin);
    auto* mime = new QMimeData;
    mime->setData(QString::fromLatin1(kClipboardMimeType), bytes);

    const double scale =
        std::min(1.0, double(kMaxPictureSide) / double(std::max(box.width(), box.height())));
    QImage image(std::max(1, int(box.width() * scale)), std::max(1, int(box.height() * scale)),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter p(&image);
        p.scale(scale, scale);
        p.translate(-box.topLeft());
        PaintSelection(p, blocks, wires);
    }
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
    }
    mime->setData(QStringLiteral("image/png"), png);
    mime->setImageData(image);

    QByteArray svg;
    {
        QBuffer buffer(&svg);
        buffer.open(QIODevice::WriteOnly);
        QSvgGenerator gen;
        gen.setOutputDevice(&buffer);
        gen.setSize(box.size());
        gen.setViewBox(QRect(QPoint(0, 0), box.size()));
        gen.setTitle(tr("Diagram"));
        QPainter p(&gen);
        p.fillRect(QRect(QPoint(0, 0), box.size()), Qt::white);
        p.translate(-box.topLeft());
        PaintSelection(p, blocks, wires);
    }
    mime->setData(QStringLiteral("image/svg+xml"), svg);
    return mime;
}

bool TDiagContainer::CopySelection() {
    QMimeData* mime = SelectionMimeData();
    if (!mime)
        return false;
    FPasteHash = qHash(mime->data(QString::fromLatin1(kClipboardMimeType)));
    FPasteCount = 0; // the first paste lands one step off the blocks copied
    QApplication::clipboard()->setMimeData(mime);
    return true;
}

bool TDiagContainer::CutSelection() {
    if (!FDesignMode || !ObjList || !ConList || SelectedBlocks().empty())
        return false;
    if (!CopySelection())
        return false;
    FPasteCount = -1; // the blocks are gone: the first paste puts them back where they were
    if (!FDirect)
        FDirect = std::make_unique<TDirectEditing>();
    {
        const TUndoStepScope step(UndoStack(), tr("Cut"));
        TDirectEditing::DeleteSelected(*this);
    }
    NoteSelection();
    return true;
}

// ---- paste ------------------------------------------------------------------------------------

bool TDiagContainer::CanPaste() const {
    if (!ObjList || !ConList)
        return false;
    const QMimeData* mime = QApplication::clipboard()->mimeData();
    return mime && mime->hasFormat(QString::fromLatin1(kClipboardMimeType));
}

bool TDiagContainer::PasteClipboard() {
    if (!FDesignMode || !CanPaste())
        return false;
    const QByteArray bytes =
        QApplication::clipboard()->mimeData()->data(QString::fromLatin1(kClipboardMimeType));
    // The cursor over the visible surface says where the paste goes.
    QPoint at;
    bool overSurface = false;
    if (FParent && FParent->isVisible()) {
        const TPoint c = InputState().CursorPos();
        at = FParent->mapFromGlobal(QPoint(c.X, c.Y));
        overSurface = FParent->visibleRegion().contains(at);
        // The surface's pixels are the diagram's times the zoom.
        if (const double z = SurfaceScale(); overSurface && z != 1.0)
            at = QPoint(int(std::floor(at.x() / z)), int(std::floor(at.y() / z)));
    }
    try {
        PasteBytes(bytes, overSurface ? &at : nullptr);
    } catch (const Exception& e) {
        ErrorMessageDlg(
            tr("The clipboard holds no diagram that can be pasted: %1").arg(e.Message()));
        return false;
    }
    return true;
}

void TDiagContainer::PasteBytes(const QByteArray& Bytes, const QPoint* At) {
    if (!ObjList || !ConList)
        return;
    TMemoryStream s(std::vector<uint8_t>(Bytes.begin(), Bytes.end()));
    if (s.Size() < 4)
        throw EReadError(QStringLiteral("The stream is cut short: 4 bytes wanted"));
    if (s.ReadUInt32() != kContainerSignature)
        throw EFormatError(QStringLiteral("The stream is no diagram (wrong signature)"), 0);

    // ---- read all of it aside; the open diagram is not touched.
    const int32_t blockCount = s.ReadCount("Block count", kBlockRecordMinSize);
    TDiagObjectList blocks(ObjList->GetParent());
    blocks.SetParentCanvas(ObjList->GetParentCanvas());
    blocks.LoadFromStream(s, {}, blockCount);
    const int64_t wiresAt = s.Position();
    const int32_t wireCount = s.ReadCount("Connection count", kConnectionRecordBase);
    if (int64_t(wireCount) + ConList->Count() > kMaxConnections)
        throw EFormatError(QStringLiteral("%1 connections do not fit beside the %2 there are")
                               .arg(wireCount)
                               .arg(ConList->Count()),
                           wiresAt);
    TDiagConnectList wires(static_cast<TCanvas*>(nullptr));
    wires.LoadFromStream(s, {}, wireCount);
    // Foreign controls belong to the diagram they were saved from: read past, never applied.
    const int32_t controlCount = s.ReadCount("Control count", kControlEntryMinSize);
    for (int32_t i = 0; i < controlCount; ++i) {
        (void)s.ReadStr();
        if (s.Remaining() < kRectSize)
            throw EFormatError(QStringLiteral("Control %1 is cut short").arg(i), s.Position());
        s.Seek(kRectSize, soCurrent);
    }
    const int64_t infoAt = s.Position();
    if (s.Remaining() < 8)
        throw EFormatError(QStringLiteral("Selection words are cut short: 8 bytes wanted"), infoAt);

    // Every wire must end on what comes with it: a block of the stream or a segment of one of
    // its wires. A key of no block here would attach it to a block of the open diagram.
    QSet<TObjKey> keys;
    for (int i = 0; i < blocks.Count(); ++i) {
        if (keys.contains(blocks.Items(i)->GetObjKey()))
            throw EFormatError(
                QStringLiteral("Block %1 repeats key %2").arg(i).arg(blocks.Items(i)->GetObjKey()),
                0);
        keys.insert(blocks.Items(i)->GetObjKey());
    }
    for (int i = 0; i < wires.Count(); ++i) {
        const TDiagConnection* w = wires.Items(i);
        for (const TObjKey k : {w->FSrcKey, w->FDstKey})
            if (k != 0 && !keys.contains(k))
                throw EFormatError(
                    QStringLiteral("Connection %1 ends on key %2, which no block holds")
                        .arg(i)
                        .arg(k),
                    wiresAt);
        for (const LongRec r : {w->FSrcCrossInfo, w->FDstCrossInfo}) {
            if (r.IsZero())
                continue;
            const int on = int(r.Hi) - 1;
            if (on < 0 || on >= wires.Count() || on == i || r.Lo < 1 ||
                int64_t(r.Lo) >= int64_t(wires.Items(on)->FPoints.size()))
                throw EFormatError(
                    QStringLiteral("Connection %1 ends on segment %2,%3, which is not there")
                        .arg(i)
                        .arg(r.Hi)
                        .arg(r.Lo),
                    wiresAt);
        }
    }

    // ---- where it lands
    QRect box;
    for (int i = 0; i < blocks.Count(); ++i)
        box = box.united(blocks.Items(i)->geometry());
    for (int i = 0; i < wires.Count(); ++i)
        box = box.united(BoxOfPoints(wires.Items(i)->FPoints));
    const size_t hash = qHash(Bytes);
    if (hash == FPasteHash) {
        ++FPasteCount;
    } else {
        FPasteHash = hash;
        FPasteCount = 0;
    }
    int dx = 0, dy = 0;
    const int g = FGridSize;
    if (At && box.isValid()) {
        auto snap = [g](int v) { return g > 0 ? int(std::lround(double(v) / g) * g) : v; };
        dx = WrapSub(snap(At->x()), box.left());
        dy = WrapSub(snap(At->y()), box.top());
    } else {
        const int64_t step = int64_t(g > 0 ? g : kPasteStep) * std::max(0, FPasteCount);
        dx = dy = int(std::clamp<int64_t>(step, 0, 1 << 20));
    }

    // ---- put it in: one step.
    PlacePasted(blocks, wires, dx, dy);
    NoteSelection();
}

void TDiagContainer::PlacePasted(TDiagObjectList& blocks, TDiagConnectList& wires, int dx, int dy) {
    const TUndoStepScope step(UndoStack(), tr("Paste"));
    const int firstWire = ConList->Count();
    std::vector<std::unique_ptr<TDiagObject>> newBlocks;
    while (blocks.Count() > 0)
        newBlocks.push_back(blocks.Remove(blocks.Items(blocks.Count() - 1)));
    std::reverse(newBlocks.begin(), newBlocks.end());
    std::vector<std::unique_ptr<TDiagConnection>> newWires;
    while (wires.Count() > 0)
        newWires.push_back(wires.Remove(wires.Items(wires.Count() - 1)));
    std::reverse(newWires.begin(), newWires.end());

    ObjList->DeselectAll(nullptr);
    ConList->DeselectAll(nullptr);
    SelInfo = LongRec{};
    SelObj = nullptr;
    if (!FDirect)
        FDirect = std::make_unique<TDirectEditing>();
    FDirect->Wires.clear();

    QHash<TObjKey, TObjKey> newKey;
    std::vector<TDiagObject*> placed;
    placed.reserve(newBlocks.size());
    for (auto& b : newBlocks) {
        const TObjKey old = b->FObjKey;
        b->SetBounds(WrapAdd(b->x(), dx), WrapAdd(b->y(), dy), b->width(), b->height());
        b->FObjKey = 0; // the list gives it a key no block there holds
        TDiagObject* raw = b.get();
        ObjList->Add(std::move(b));
        newKey[old] = raw->FObjKey;
        placed.push_back(raw);
    }
    for (TDiagObject* b : placed) {
        AssignObjEvents(b);
        b->SetSelected(true);
    }
    auto shifted = [firstWire](LongRec r) {
        return r.IsZero() ? r : LongRec{r.Lo, uint16_t(int(r.Hi) + firstWire)};
    };
    for (auto& w : newWires) {
        for (TPoint& p : w->FPoints)
            p = {WrapAdd(p.X, dx), WrapAdd(p.Y, dy)};
        w->FSrcKey = w->FSrcKey ? newKey.value(w->FSrcKey) : 0;
        w->FDstKey = w->FDstKey ? newKey.value(w->FDstKey) : 0;
        w->FSrcCrossInfo = shifted(w->FSrcCrossInfo);
        w->FDstCrossInfo = shifted(w->FDstCrossInfo);
        w->FSelectedIndex = -1;
        TDiagConnection* raw = w.get();
        ConList->Add(std::move(w));
        ResolveObjLinks(raw);
        ConList->PathChanged(raw);
        FDirect->Wires.insert(raw);
    }
    SelObj = placed.empty() ? nullptr : placed.front();
    if (FParent)
        FParent->update();
}

} // namespace vde
