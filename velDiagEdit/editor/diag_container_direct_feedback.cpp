// Feedback of direct editing. The context menus: before a menu shows, the items that cannot
// apply to what is selected are disabled. Items are known by the names the command module gives
// them; items a host added itself are left alone. Without direct editing the menus are never
// touched, and the items disabled here are enabled again when it ends.

#include "velDiagEdit/editor/diag_container.h"

#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/editor/direct_editing_p.h"

#include <QEvent>
#include <QHash>
#include <algorithm>
#include <functional>

namespace vde {

namespace {

class TLeaveWatch : public QObject {
public:
    TLeaveWatch(QObject* Watched, std::function<void()> OnLeave)
        : FWatched(Watched), FOnLeave(std::move(OnLeave)) {}

protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override {
        if (Watched == FWatched && Event->type() == QEvent::Leave)
            FOnLeave();
        return false;
    }

private:
    QObject* FWatched;
    std::function<void()> FOnLeave;
};

} // namespace

void TDiagContainer::WatchLeave(bool On) {
    if (On == bool(FLeaveWatch) || !FParent)
        return;
    if (On) {
        FLeaveWatch = std::make_unique<TLeaveWatch>(FParent.data(), [this] { DirectMouseLeft(); });
        FParent->installEventFilter(FLeaveWatch.get());
    } else {
        FParent->removeEventFilter(FLeaveWatch.get());
        FLeaveWatch.reset();
    }
}

void TDiagContainer::DirectMouseLeft() {
    if (!DirectActive() || !FDirect || FDirect->Kind != TDirectEditing::gkNone)
        return;
    TDirectEditing& d = *FDirect;
    d.HotBlock = nullptr;
    d.HotMarker = 0;
    d.HotSegment = {};
    TDirectEditing::Repaint(*this, QRect());
    SetHint(QString());
}

void TDiagContainer::PrepareDirectMenu(TPopupMenu* Menu) {
    if (!Menu || !DirectActive())
        return;
    TDiagObject* block = SelectedBlock();
    const int marker = block ? block->GetSelMarkerIndex() : 0;
    const bool segment =
        !SelInfo.IsZero() && ConList && SelInfo.Hi >= 1 && int(SelInfo.Hi) <= ConList->Count() &&
        SelInfo.Lo >= 1 &&
        int64_t(SelInfo.Lo) < int64_t(ConList->Items(SelInfo.Hi - 1)->FPoints.size());
    const bool freeMarker = block && marker != 0 && ConList && ConList->ConnectIndex(block, 0) == 0;
    const bool textMarker = marker != 0 && dynamic_cast<TDiagText*>(block) != nullptr;
    const bool text = dynamic_cast<TDiagText*>(block) != nullptr;

    // What each known item needs; items with children are enabled while any child is.
    const QHash<QString, bool> wants{
        {QStringLiteral("mnuAddSegment"), segment || freeMarker},
        {QStringLiteral("mnuEditSegment"), segment},
        {QStringLiteral("mnuGetSegmentIndex"), segment},
        {QStringLiteral("mnuGetSegmentRect"), segment},
        {QStringLiteral("mnuDelSegment"), segment},
        {QStringLiteral("mnuAlignSegment"), segment},
        {QStringLiteral("mnuEndConnection"), segment && block && marker != 0},
        {QStringLiteral("mnuEndWithCross"), segment},
        {QStringLiteral("mnuEndWithSegment"), segment},
        {QStringLiteral("mnuChangeConType"), textMarker},
        {QStringLiteral("mnuChangeConSize"), textMarker},
        {QStringLiteral("mnuChangeConPos"), textMarker},
        {QStringLiteral("mnuDelete"), block != nullptr},
        {QStringLiteral("mnuShiftBy"), block != nullptr},
        {QStringLiteral("mnuSetInputCount"), text},
        {QStringLiteral("mnuSetOutputCount"), text},
        {QStringLiteral("mnuHorizMargin"), text},
        {QStringLiteral("mnuSetTitles"), text},
        {QStringLiteral("mnuSetTextSize"), text},
        {QStringLiteral("mnuSetTextPos"), text},
        {QStringLiteral("mnuAlignTitles"), block != nullptr},
    };
    // Only what was disabled here is enabled again: an item the host disabled stays so.
    auto set = [this](TMenuItem* item, bool on) {
        const auto mine = std::find(FMenuDisabled.begin(), FMenuDisabled.end(), item);
        if (on) {
            if (mine != FMenuDisabled.end()) {
                item->setEnabled(true);
                FMenuDisabled.erase(mine);
            }
        } else if (item->isEnabled()) {
            item->setEnabled(false);
            FMenuDisabled.emplace_back(item);
        }
    };
    // Returns whether the item ends up enabled.
    std::function<bool(TMenuItem*)> walk = [&](TMenuItem* item) -> bool {
        const auto it = wants.constFind(item->GetName());
        if (item->Count() == 0) {
            if (it == wants.constEnd()) {
                // Not one of ours: as it is (a kind under Create, a marker type, a host's item).
                return item->isEnabled();
            }
            set(item, *it);
            return *it;
        }
        bool any = false;
        for (int i = 0; i < item->Count(); ++i)
            any = walk(item->Items(i)) || any;
        if (it != wants.constEnd())
            any = any && *it;
        set(item, any);
        return any;
    };
    for (int i = 0; i < Menu->Count(); ++i)
        walk(Menu->Items()->Items(i));
}

void TDiagContainer::EnableDisabledMenuItems() {
    for (const QPointer<TMenuItem>& item : FMenuDisabled)
        if (item)
            item->setEnabled(true);
    FMenuDisabled.clear();
}

} // namespace vde
