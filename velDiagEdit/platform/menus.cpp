#include "velDiagEdit/platform/menus.h"

#include "velDiagEdit/platform/event_boundary.h"

#include <QMenu>
#include <algorithm>

namespace vde {

// ---- TMenuItem -------------------------------------------------------------------------------

TMenuItem::TMenuItem(QObject* AOwner) : QAction(AOwner) {
    connect(this, &QAction::triggered, this, [this] { Click(); });
}

TMenuItem::~TMenuItem() {
    Clear();
    if (FParentItem)
        FParentItem->Detach(this);
}

void TMenuItem::SetCaption(const QString& Value) {
    FTrCaption = {};
    setText(Value);
}

void TMenuItem::SetTrCaption(const QByteArray& Context, const QByteArray& Source) {
    const bool hooked = !FTrCaption.IsEmpty();
    FTrCaption = {Context, Source};
    setText(FTrCaption.Translated());
    if (!hooked)
        OnLanguageChange(this, [this] {
            if (!FTrCaption.IsEmpty())
                setText(FTrCaption.Translated());
        });
}

TMenuItem* TMenuItem::Items(int Index) const {
    if (Index < 0 || Index >= Count())
        return nullptr;
    return FItems[size_t(Index)];
}

int TMenuItem::IndexOf(const TMenuItem* Item) const {
    const auto it = std::find(FItems.begin(), FItems.end(), Item);
    return it == FItems.end() ? -1 : int(it - FItems.begin());
}

void TMenuItem::Add(TMenuItem* Item) {
    Attach(Count(), Item);
}

void TMenuItem::Insert(int Index, TMenuItem* Item) {
    Attach(std::clamp(Index, 0, Count()), Item);
}

void TMenuItem::Attach(int Index, TMenuItem* Item) {
    if (!Item || Item == this || IndexOf(Item) >= 0)
        return;
    if (Item->FParentItem)
        Item->FParentItem->Remove(Item);
    QMenu* menu = SubMenu();
    QAction* before = Index < Count() ? FItems[size_t(Index)] : nullptr;
    FItems.insert(FItems.begin() + Index, Item);
    Item->FParentItem = this;
    Item->setParent(this);
    menu->insertAction(before, Item);
}

void TMenuItem::Remove(TMenuItem* Item) {
    if (IndexOf(Item) < 0)
        return;
    Detach(Item);
    Item->setParent(nullptr);
}

void TMenuItem::Detach(TMenuItem* Item) {
    const int i = IndexOf(Item);
    if (i < 0)
        return;
    FItems.erase(FItems.begin() + i);
    Item->FParentItem = nullptr;
    if (FSubMenu)
        FSubMenu->removeAction(Item);
}

void TMenuItem::Clear() {
    while (!FItems.empty())
        delete FItems.back(); // the child's destructor detaches it
}

TMenuItem* TMenuItem::Find(const QString& Name) {
    if (objectName().compare(Name, Qt::CaseInsensitive) == 0)
        return this;
    for (TMenuItem* item : FItems)
        if (TMenuItem* found = item->Find(Name))
            return found;
    return nullptr;
}

void TMenuItem::Click() {
    const TNotifyEvent handler = OnClick;
    if (!handler)
        return;
    RunInEventBoundary("menu", [&] { handler(this); });
}

QMenu* TMenuItem::SubMenu() {
    if (!FSubMenu) {
        FSubMenu = std::make_unique<QMenu>();
        FSubMenu->setTitle(text());
        connect(this, &QAction::changed, FSubMenu.get(), [this] { FSubMenu->setTitle(text()); });
        setMenu(FSubMenu.get());
    }
    return FSubMenu.get();
}

// ---- TPopupMenu ------------------------------------------------------------------------------

TPopupMenu::TPopupMenu(QObject* AOwner) : QObject(AOwner), FItems(new TMenuItem(this)) {}

TPopupMenu::~TPopupMenu() = default;

QMenu* TPopupMenu::Menu() const {
    return FItems->SubMenu();
}

void TPopupMenu::Popup(int X, int Y) {
    PopupService().Popup(this, TPoint{X, Y});
}

// ---- popup services --------------------------------------------------------------------------

namespace {
IPopupService* gPopupService = nullptr;
} // namespace

IPopupService& PopupService() {
    static TQtPopupService qtService;
    return gPopupService ? *gPopupService : qtService;
}

void SetPopupService(IPopupService* service) {
    gPopupService = service;
}

void TQtPopupService::Popup(TPopupMenu* Menu, TPoint ScreenPos) {
    if (Menu)
        Menu->Menu()->popup(QPoint(ScreenPos.X, ScreenPos.Y));
}

void TRecordingPopupService::Popup(TPopupMenu* Menu, TPoint ScreenPos) {
    Records.push_back({Menu, Menu ? Menu->GetName() : QString(), ScreenPos});
}

bool TRecordingPopupService::Click(const QString& Name) {
    const TRecord* last = Last();
    if (!last || !last->Menu)
        return false;
    TMenuItem* item = last->Menu->Find(Name);
    if (!item || item == last->Menu->Items())
        return false;
    item->trigger();
    return true;
}

TScopedPopupService::TScopedPopupService(IPopupService* s) : FPrevious(gPopupService) {
    SetPopupService(s);
}

TScopedPopupService::~TScopedPopupService() {
    SetPopupService(FPrevious);
}

} // namespace vde
