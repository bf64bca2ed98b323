#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/platform/errors.h"

#include <gtest/gtest.h>

using namespace vde;

TEST(StrToPoint, ReadsXAndY) {
    EXPECT_EQ(StrToPoint(QStringLiteral("10,-4")), (TPoint{10, -4}));
    EXPECT_EQ(PointToStr({10, -4}), QStringLiteral("10,-4"));
}

TEST(StrToPoint, LeadingBlanksOnlyAreAccepted) {
    EXPECT_EQ(StrToPoint(QStringLiteral(" 1, 2")), (TPoint{1, 2}));
    EXPECT_THROW(StrToPoint(QStringLiteral("1 ,2")), EConvertError);
}

TEST(StrToPoint, MissingSecondPieceIsAnError) {
    EXPECT_THROW(StrToPoint(QStringLiteral("5")), EConvertError);
    EXPECT_THROW(StrToPoint(QString()), EConvertError);
}

TEST(StrToLongRec, HighWordComesFirst) {
    const LongRec r = StrToLongRec(QStringLiteral("3,12"));
    EXPECT_EQ(r.Hi, 3);
    EXPECT_EQ(r.Lo, 12);
}

TEST(StrToLongRec, CutsToSixteenBits) {
    const LongRec r = StrToLongRec(QStringLiteral("70000,1"));
    EXPECT_EQ(r.Hi, 4464);
    EXPECT_EQ(r.Lo, 1);
    EXPECT_EQ(StrToLongRec(QStringLiteral("-1,0")).Hi, 0xFFFF);
    EXPECT_THROW(StrToLongRec(QStringLiteral("3")), EConvertError);
    EXPECT_THROW(StrToLongRec(QStringLiteral("3,x")), EConvertError);
}

TEST(IntArrayToString, JoinsWithCommas) {
    const int32_t a[] = {4, 7, -1, 30};
    EXPECT_EQ(IntArrayToString(a, 4), QStringLiteral("4,7,-1,30"));
}

TEST(IntArrayToString, NoElementsIsEmpty) {
    EXPECT_EQ(IntArrayToString(nullptr, 0), QString());
}

TEST(StringToIntArray, TrimsAndFillsOnlyWhatItHas) {
    int32_t a[4] = {9, 9, 9, 9};
    StringToIntArray(QStringLiteral("1, 2 ,3"), a, 4);
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(a[2], 3);
    EXPECT_EQ(a[3], 9);
}

TEST(StringToIntArray, StopsAtCount) {
    int32_t a[3] = {0, 0, 7};
    StringToIntArray(QStringLiteral("1,2,3,4"), a, 2);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(a[2], 7);
    EXPECT_THROW(StringToIntArray(QStringLiteral("1,z"), a, 2), EConvertError);
}

TEST(TypeNames, DiagObjectTypes) {
    EXPECT_EQ(GoodDiagObjTypeName(0), QStringLiteral("None"));
    EXPECT_EQ(GoodDiagObjTypeName(1), QStringLiteral("Text"));
    EXPECT_EQ(GoodDiagObjTypeName(2), QStringLiteral("AndLogic"));
    EXPECT_EQ(GoodDiagObjTypeName(3), QStringLiteral("OrLogic"));
    EXPECT_EQ(GoodDiagObjTypeName(4), QStringLiteral("RSTrigger"));
}

TEST(TypeNames, MarkerTypes) {
    EXPECT_EQ(GoodMarkerTypeCount(), 3);
    EXPECT_EQ(GoodMarkerTypeName(0), QStringLiteral("Direct"));
    EXPECT_EQ(GoodMarkerTypeName(1), QStringLiteral("Inversion"));
    EXPECT_EQ(GoodMarkerTypeName(2), QStringLiteral("Arrow"));
}

TEST(DefaultObjectSize, PerKind) {
    EXPECT_EQ(DefaultObjectSize(doText), (TPoint{150, 50}));
    EXPECT_EQ(DefaultObjectSize(doAndLogic), (TPoint{60, 100}));
    EXPECT_EQ(DefaultObjectSize(doOrLogic), (TPoint{60, 100}));
    EXPECT_EQ(DefaultObjectSize(doRSTrigger), (TPoint{100, 200}));
}

TEST(DefaultObjectSize, NoneLeavesTheResultAlone) {
    TPoint p{7, 8};
    DefaultObjectSize(doNone, p);
    EXPECT_EQ(p, (TPoint{7, 8}));
}
