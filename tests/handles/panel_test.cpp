#include "common/test_util.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/panel.h"

#include <QLabel>
#include <QPointer>
#include <QWidget>
#include <gtest/gtest.h>

using namespace vde;

TEST(Panel, StartsRaisedInButtonFaceWithTheClassicSize) {
    TPanel panel(nullptr);
    EXPECT_EQ(panel.GetBevelOuter(), bvRaised);
    EXPECT_EQ(panel.GetColor(), clBtnFace);
    EXPECT_EQ(panel.size(), QSize(185, 41));
    EXPECT_EQ(panel.frameShape(), QFrame::Panel);
    EXPECT_EQ(panel.GetCursor(), crDefault);
    EXPECT_EQ(panel.Owner(), nullptr);
}

TEST(Panel, WithoutBevelItIsFilledWithItsColourToTheEdge) {
    QWidget host;
    host.resize(40, 40);
    host.setAutoFillBackground(true);
    QPalette pal = host.palette();
    pal.setColor(QPalette::Window, Qt::white);
    host.setPalette(pal);
    auto* panel = new TPanel(&host);
    panel->SetParent(&host);
    panel->SetBevelOuter(bvNone);
    panel->SetColor(clBlack);
    panel->setGeometry(10, 10, 5, 5);
    panel->show();
    EXPECT_EQ(panel->frameWidth(), 0);
    QImage img = test::WhiteImage(40, 40);
    host.render(&img);
    for (int y = 10; y < 15; ++y)
        for (int x = 10; x < 15; ++x)
            EXPECT_EQ(test::PixelColor(img, x, y), clBlack) << x << "," << y;
    EXPECT_EQ(test::PixelColor(img, 9, 12), clWhite);
    EXPECT_EQ(test::PixelColor(img, 15, 12), clWhite);
    EXPECT_EQ(test::PixelColor(img, 12, 9), clWhite);
    EXPECT_EQ(test::PixelColor(img, 12, 15), clWhite);
}

TEST(Panel, CursorMapsToTheQtShape) {
    QWidget host;
    host.setCursor(Qt::CrossCursor);
    auto* panel = new TPanel(&host);
    panel->SetParent(&host);
    panel->SetCursor(crSizeNESW);
    EXPECT_EQ(panel->GetCursor(), crSizeNESW);
    EXPECT_EQ(panel->cursor().shape(), Qt::SizeBDiagCursor);
    panel->SetCursor(crDefault);
    EXPECT_EQ(panel->GetCursor(), crDefault);
    EXPECT_EQ(panel->cursor().shape(), Qt::CrossCursor); // the parent's again
}

TEST(Panel, ParentDecidesWhereItShowsNotWhoOwnsIt) {
    QObject owner;
    QWidget window;
    auto* panel = new TPanel(&owner);
    panel->setObjectName(QStringLiteral("p"));
    panel->SetParent(&window);
    EXPECT_EQ(panel->parentWidget(), &window);
    EXPECT_EQ(panel->Owner(), &owner);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("p")), panel);
}

TEST(Panel, OnAParentItShowsWithItUnlessHidden) {
    QWidget window;
    window.show();
    auto* shown = new TPanel(&window);
    shown->SetParent(&window);
    EXPECT_TRUE(shown->isVisible());
    auto* hidden = new TPanel(&window);
    hidden->hide();
    hidden->SetParent(&window);
    EXPECT_TRUE(hidden->isHidden());
    auto* parentless = new TPanel(&window);
    parentless->SetParent(nullptr);
    EXPECT_FALSE(parentless->isVisible());
}

TEST(Components, FindComponentLooksAtDirectChildrenAndOwnedComponentsIgnoringCase) {
    QObject owner;
    auto* child = new QObject(&owner);
    child->setObjectName(QStringLiteral("Alpha"));
    auto* grandChild = new QObject(child);
    grandChild->setObjectName(QStringLiteral("Deep"));
    QObject elsewhere;
    auto* owned = new QObject(&elsewhere);
    owned->setObjectName(QStringLiteral("Beta"));
    InsertComponent(&owner, owned);

    EXPECT_EQ(FindComponent(&owner, QStringLiteral("alpha")), child);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("BETA")), owned);
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("Deep")), nullptr);
    EXPECT_EQ(FindComponent(&owner, QString()), nullptr);
    EXPECT_EQ(FindComponent(nullptr, QStringLiteral("Alpha")), nullptr);
}

TEST(Components, OwnerFreesWhatItOwnsWhateverItsQtParent) {
    QWidget window;
    QPointer<TPanel> panel;
    {
        QObject owner;
        panel = new TPanel(&owner);
        panel->SetParent(&window);
        ASSERT_FALSE(panel.isNull());
    }
    EXPECT_TRUE(panel.isNull());
    EXPECT_TRUE(window.children().isEmpty());
}

TEST(Components, ComponentFreedEarlierIsForgottenByItsOwner) {
    QObject owner;
    auto* panel = new TPanel(&owner);
    panel->setObjectName(QStringLiteral("gone"));
    delete panel;
    EXPECT_EQ(FindComponent(&owner, QStringLiteral("gone")), nullptr);
    // The owner's destructor must not free it a second time (checked by the sanitizer build).
}

TEST(Components, OwnerThatIsAlsoTheQtParentFreesOnce) {
    QPointer<TPanel> panel;
    {
        QWidget owner;
        panel = new TPanel(&owner);
        panel->SetParent(&owner);
        EXPECT_EQ(panel->parentWidget(), &owner);
    }
    EXPECT_TRUE(panel.isNull());
}
