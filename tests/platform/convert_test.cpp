#include "velDiagEdit/platform/convert.h"
#include "velDiagEdit/platform/errors.h"

#include <gtest/gtest.h>

using namespace vde;

TEST(StrToInt, AcceptsLeadingBlanks) {
    EXPECT_EQ(StrToInt(QStringLiteral("  42")), 42);
    EXPECT_EQ(StrToInt(QStringLiteral("\t-7")), -7);
}

TEST(StrToInt, RejectsTrailingBlanks) {
    EXPECT_THROW(StrToInt(QStringLiteral("42 ")), EConvertError);
}

TEST(StrToInt, RejectsEmptyAndSignOnly) {
    EXPECT_THROW(StrToInt(QString()), EConvertError);
    EXPECT_THROW(StrToInt(QStringLiteral("-")), EConvertError);
    EXPECT_THROW(StrToInt(QStringLiteral("   ")), EConvertError);
}

TEST(StrToInt, RejectsGarbageWithClearMessage) {
    try {
        StrToInt(QStringLiteral("1x"));
        FAIL() << "no error";
    } catch (const EConvertError& e) {
        EXPECT_TRUE(e.Message().contains(QStringLiteral("'1x'")));
    }
}

TEST(StrToInt, ThirtyTwoBitLimits) {
    EXPECT_EQ(StrToInt(QStringLiteral("2147483647")), 2147483647);
    EXPECT_EQ(StrToInt(QStringLiteral("-2147483648")), INT32_MIN);
    EXPECT_THROW(StrToInt(QStringLiteral("2147483648")), EConvertError);
    EXPECT_THROW(StrToInt(QStringLiteral("99999999999999999999")), EConvertError);
}

TEST(StrToInt, PlusSign) {
    EXPECT_EQ(StrToInt(QStringLiteral("+5")), 5);
}
