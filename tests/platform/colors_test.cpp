#include "velDiagEdit/platform/colors.h"

#include <QApplication>
#include <QPalette>
#include <gtest/gtest.h>

using namespace vde;

TEST(Colors, PlainColourIsBGR) {
    EXPECT_EQ(ToQColor(0x0000FF), QColor(255, 0, 0));
    EXPECT_EQ(ToQColor(0xFF0000), QColor(0, 0, 255));
    EXPECT_EQ(FromQColor(QColor(1, 2, 3)), 0x030201u);
}

TEST(Colors, ButtonFaceFollowsThePalette) {
    EXPECT_EQ(ToQColor(clBtnFace),
              QApplication::palette().color(QPalette::Active, QPalette::Button));
}

TEST(Colors, SystemColourFlag) {
    EXPECT_TRUE(IsSystemColor(0xFF00000F));
    EXPECT_FALSE(IsSystemColor(0x00C0C0C0));
}
