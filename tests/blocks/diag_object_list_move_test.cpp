// Moving a block to another place in the block list.

#include "blocks/block_test_util.h"

#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class DiagObjectListMoveTest : public BlockListTest {
protected:
    TDiagObject* a = nullptr;
    TDiagObject* b = nullptr;
    TDiagObject* c = nullptr;
    TDiagObject* d = nullptr;

    void SetUp() override {
        a = List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
        b = List.CreateObjByDiagType(doOrLogic, {100, 0, 160, 100});
        c = List.CreateObjByDiagType(doText, {200, 0, 260, 100});
        d = List.CreateObjByDiagType(doRSTrigger, {300, 0, 360, 100});
    }

    std::vector<TDiagObject*> Order() const { return List.All(); }
};

} // namespace

TEST_F(DiagObjectListMoveTest, MovingTheLastBlockForwardShiftsTheOthersBack) {
    List.Move(3, 1);
    EXPECT_EQ(Order(), (std::vector<TDiagObject*>{a, d, b, c}));
}

TEST_F(DiagObjectListMoveTest, MovingTheFirstBlockBackShiftsTheOthersForward) {
    List.Move(0, 2);
    EXPECT_EQ(Order(), (std::vector<TDiagObject*>{b, c, a, d}));
}

TEST_F(DiagObjectListMoveTest, MovingKeepsKeysAndOwner) {
    const TObjKey key = d->GetObjKey();
    List.Move(3, 0);
    EXPECT_EQ(d->GetObjKey(), key);
    EXPECT_EQ(d->FOwner, &List);
    EXPECT_EQ(List.FindObjByKey(key), d);
}

TEST_F(DiagObjectListMoveTest, AnIndexOutOfRangeOrTheSameIndexChangesNothing) {
    const auto before = Order();
    List.Move(-1, 0);
    List.Move(0, 4);
    List.Move(4, 0);
    List.Move(2, 2);
    EXPECT_EQ(Order(), before);
}
