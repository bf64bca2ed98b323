// Popup menus and the popup service.

#include "velDiagEdit/platform/menus.h"

#include <QMenu>
#include <QPointer>
#include <gtest/gtest.h>

using namespace vde;

namespace {

TMenuItem* Item(const QString& name, const QString& caption, intptr_t tag = 0) {
    auto* i = new TMenuItem(nullptr);
    i->SetName(name);
    i->SetCaption(caption);
    i->Tag = tag;
    return i;
}

} // namespace

TEST(Menus, ItemsAreAddedAndInsertedInOrderAndShownInTheQtMenu) {
    TPopupMenu pm(nullptr);
    pm.Add(Item(QStringLiteral("mnuA"), QStringLiteral("A")));
    pm.Add(Item(QStringLiteral("mnuC"), QStringLiteral("C")));
    pm.Insert(1, Item(QStringLiteral("mnuB"), QStringLiteral("B")));
    ASSERT_EQ(pm.Count(), 3);
    EXPECT_EQ(pm.Items()->Items(0)->GetName(), QStringLiteral("mnuA"));
    EXPECT_EQ(pm.Items()->Items(1)->GetName(), QStringLiteral("mnuB"));
    EXPECT_EQ(pm.Items()->Items(2)->GetCaption(), QStringLiteral("C"));
    EXPECT_EQ(pm.Items()->Items(3), nullptr);
    const QList<QAction*> shown = pm.Menu()->actions();
    ASSERT_EQ(shown.size(), 3);
    EXPECT_EQ(shown[0]->text(), QStringLiteral("A"));
    EXPECT_EQ(shown[1]->text(), QStringLiteral("B"));
    EXPECT_EQ(shown[2]->text(), QStringLiteral("C"));
}

TEST(Menus, ASubmenuHoldsItsItemsAndFindLooksThroughTheWholeTree) {
    TPopupMenu pm(nullptr);
    TMenuItem* create = Item(QStringLiteral("mnuCreate"), QStringLiteral("Create"));
    pm.Add(create);
    create->Add(Item(QStringLiteral("mnuText"), QStringLiteral("Text"), 1));
    create->Add(Item(QStringLiteral("mnuAndLogic"), QStringLiteral("AndLogic"), 2));
    EXPECT_EQ(create->Count(), 2);
    TMenuItem* found = pm.Find(QStringLiteral("MNUANDLOGIC"));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->Tag, 2);
    EXPECT_EQ(found->GetParentItem(), create);
    EXPECT_EQ(pm.Find(QStringLiteral("mnuNothing")), nullptr);
    ASSERT_NE(create->menu(), nullptr);
    EXPECT_EQ(create->menu()->actions().size(), 2);
}

TEST(Menus, ClickCallsOnClickWithTheItemAsSender) {
    TMenuItem* item = Item(QStringLiteral("mnuX"), QStringLiteral("X"), 7);
    std::unique_ptr<TMenuItem> owner(item);
    QObject* sender = nullptr;
    item->OnClick = [&](QObject* s) { sender = s; };
    item->trigger();
    EXPECT_EQ(sender, item);
    sender = nullptr;
    item->Click();
    EXPECT_EQ(sender, item);
}

TEST(Menus, AnItemWithoutHandlerDoesNothingWhenChosen) {
    TMenuItem item(nullptr);
    EXPECT_NO_THROW(item.trigger());
}

TEST(Menus, TheOwnerFreesItsItemsAndAFreedItemLeavesItsParent) {
    QPointer<TMenuItem> a, b;
    {
        TPopupMenu pm(nullptr);
        a = Item(QStringLiteral("a"), QStringLiteral("a"));
        b = Item(QStringLiteral("b"), QStringLiteral("b"));
        pm.Add(a);
        pm.Add(b);
        delete a.data();
        EXPECT_EQ(pm.Count(), 1);
        EXPECT_EQ(pm.Items()->Items(0), b.data());
        EXPECT_EQ(pm.Menu()->actions().size(), 1);
    }
    EXPECT_TRUE(a.isNull());
    EXPECT_TRUE(b.isNull());
}

TEST(Menus, RemoveHandsTheItemBackWithoutFreeingIt) {
    TPopupMenu pm(nullptr);
    TMenuItem* a = Item(QStringLiteral("a"), QStringLiteral("a"));
    pm.Add(a);
    pm.Items()->Remove(a);
    EXPECT_EQ(pm.Count(), 0);
    EXPECT_EQ(a->GetParentItem(), nullptr);
    EXPECT_TRUE(pm.Menu()->actions().isEmpty());
    delete a;
}

TEST(Menus, MovingAnItemToAnotherParentTakesItOutOfTheFirst) {
    TPopupMenu p1(nullptr), p2(nullptr);
    TMenuItem* a = Item(QStringLiteral("a"), QStringLiteral("a"));
    p1.Add(a);
    p2.Add(a);
    EXPECT_EQ(p1.Count(), 0);
    EXPECT_EQ(p2.Count(), 1);
    EXPECT_EQ(a->GetParentItem(), p2.Items());
}

TEST(PopupService, TheRecordingServiceNotesMenuAndPointAndClicksByName) {
    TRecordingPopupService rec;
    TScopedPopupService guard(&rec);
    TPopupMenu pm(nullptr);
    pm.SetName(QStringLiteral("pmObjects"));
    TMenuItem* item = Item(QStringLiteral("mnuDelete"), QStringLiteral("Delete"));
    int clicks = 0;
    item->OnClick = [&](QObject*) { ++clicks; };
    pm.Add(item);
    EXPECT_FALSE(rec.Click(QStringLiteral("mnuDelete")));
    pm.Popup(120, 340);
    ASSERT_EQ(rec.Records.size(), 1u);
    EXPECT_EQ(rec.Records[0].Menu, &pm);
    EXPECT_EQ(rec.Records[0].MenuName, QStringLiteral("pmObjects"));
    EXPECT_EQ(rec.Records[0].ScreenPos, (TPoint{120, 340}));
    EXPECT_TRUE(rec.Click(QStringLiteral("mnuDelete")));
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(rec.Click(QStringLiteral("mnuMissing")));
}

TEST(PopupService, TheQtServiceShowsTheMenuAtTheScreenPointWithoutWaiting) {
    TPopupMenu pm(nullptr);
    pm.Add(Item(QStringLiteral("a"), QStringLiteral("Alpha")));
    TQtPopupService qt;
    qt.Popup(&pm, {50, 60});
    EXPECT_TRUE(pm.Menu()->isVisible());
    EXPECT_EQ(pm.Menu()->pos(), QPoint(50, 60));
    pm.Menu()->close();
}

TEST(PopupService, TheScopedGuardPutsBackTheServiceBefore) {
    TRecordingPopupService outer, inner;
    {
        TScopedPopupService g1(&outer);
        {
            TScopedPopupService g2(&inner);
            EXPECT_EQ(&PopupService(), &inner);
        }
        EXPECT_EQ(&PopupService(), &outer);
    }
    EXPECT_NE(dynamic_cast<TQtPopupService*>(&PopupService()), nullptr);
}
