#pragma once
// Popup menus over QMenu/QAction. A TPopupMenu holds a tree of TMenuItem; an item with children
// opens a submenu. Choosing an item calls its OnClick with the item as Sender, inside the event
// boundary, so an error raised there is shown to the user and goes no further.
//
// Popping a menu up goes through a replaceable popup service: the Qt one shows the QMenu at a
// screen point and returns at once; tests install a recording one that notes which menu was
// asked for and where, and can then choose an item by name, so no test waits on a menu.

#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/translations.h"
#include "velDiagEdit/platform/types.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QAction>
#include <QPointer>
#include <QString>
#include <memory>
#include <vector>

class QMenu;

namespace vde {

class TPopupMenu;

class VELDIAGEDIT_EXPORT TMenuItem : public QAction {
    Q_OBJECT
public:
    // AOwner (may be null) frees the item when it goes, unless a parent item took it first.
    explicit TMenuItem(QObject* AOwner);
    ~TMenuItem() override;

    QString GetName() const { return objectName(); }
    void SetName(const QString& Value) { setObjectName(Value); }
    QString GetCaption() const { return text(); }
    // A caption of the host's own: shown as given, whatever the language.
    void SetCaption(const QString& Value);
    // A caption that follows the language: Source translated in Context now and again whenever
    // the application's translators change. With no translation it is Source itself.
    void SetTrCaption(const QByteArray& Context, const QByteArray& Source);
    const TTrText& GetTrCaption() const { return FTrCaption; }
    // Any value the owner gives the item; a block kind, a marker type.
    intptr_t Tag = 0;
    TNotifyEvent OnClick;

    int Count() const { return int(FItems.size()); }
    TMenuItem* Items(int Index) const;
    int IndexOf(const TMenuItem* Item) const;
    // The item takes ownership of its children.
    void Add(TMenuItem* Item);
    void Insert(int Index, TMenuItem* Item);
    // Takes the child out without freeing it.
    void Remove(TMenuItem* Item);
    // Frees every child.
    void Clear();
    TMenuItem* GetParentItem() const { return FParentItem; }
    // First item called Name (ignoring case) in this item's subtree, the item itself included.
    TMenuItem* Find(const QString& Name);

    // What choosing the item does: OnClick(this) inside the event boundary.
    void Click();

    // The submenu that shows the children (made on first use).
    QMenu* SubMenu();

private:
    void Attach(int Index, TMenuItem* Item);
    void Detach(TMenuItem* Item);
    std::vector<TMenuItem*> FItems;
    TMenuItem* FParentItem = nullptr;
    std::unique_ptr<QMenu> FSubMenu;
    TTrText FTrCaption;
};

class VELDIAGEDIT_EXPORT TPopupMenu : public QObject {
    Q_OBJECT
public:
    explicit TPopupMenu(QObject* AOwner);
    ~TPopupMenu() override;

    QString GetName() const { return objectName(); }
    void SetName(const QString& Value) { setObjectName(Value); }
    // The root item: its children are the menu's entries.
    TMenuItem* Items() const { return FItems; }
    int Count() const { return FItems->Count(); }
    void Add(TMenuItem* Item) { FItems->Add(Item); }
    void Insert(int Index, TMenuItem* Item) { FItems->Insert(Index, Item); }
    TMenuItem* Find(const QString& Name) const { return FItems->Find(Name); }
    // The menu shown on screen.
    QMenu* Menu() const;

    // Shows the menu at the screen point X, Y through the popup service.
    void Popup(int X, int Y);

private:
    TMenuItem* FItems;
};

class VELDIAGEDIT_EXPORT IPopupService {
public:
    virtual ~IPopupService() = default;
    virtual void Popup(TPopupMenu* Menu, TPoint ScreenPos) = 0;
};

// The popup service in force (the Qt one unless another was installed).
VELDIAGEDIT_EXPORT IPopupService& PopupService();
// Installs `service` (not owned); nullptr goes back to the Qt one.
VELDIAGEDIT_EXPORT void SetPopupService(IPopupService* service);

class VELDIAGEDIT_EXPORT TQtPopupService : public IPopupService {
public:
    void Popup(TPopupMenu* Menu, TPoint ScreenPos) override;
};

// Records every popup; Click chooses an item of the last menu shown, by name.
class VELDIAGEDIT_EXPORT TRecordingPopupService : public IPopupService {
public:
    struct TRecord {
        QPointer<TPopupMenu> Menu;
        QString MenuName;
        TPoint ScreenPos;
    };
    std::vector<TRecord> Records;

    void Popup(TPopupMenu* Menu, TPoint ScreenPos) override;
    const TRecord* Last() const { return Records.empty() ? nullptr : &Records.back(); }
    // Chooses the item called Name in the last menu shown; false when there is no such item.
    bool Click(const QString& Name);
};

// Installs a popup service for the lifetime of the guard and then puts back the one before it.
class VELDIAGEDIT_EXPORT TScopedPopupService {
public:
    explicit TScopedPopupService(IPopupService* s);
    ~TScopedPopupService();
    TScopedPopupService(const TScopedPopupService&) = delete;
    TScopedPopupService& operator=(const TScopedPopupService&) = delete;

private:
    IPopupService* FPrevious;
};

} // namespace vde
