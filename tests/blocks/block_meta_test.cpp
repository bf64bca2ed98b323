// Blocks are QObjects with their own meta-object: a host (and the library) tells the kinds apart
// with qobject_cast and the class names, without dynamic_cast.

#include "blocks/block_test_util.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"
#include "velDiagEdit/platform/graphic_host.h"

#include <QPushButton>
#include <gtest/gtest.h>

using namespace vde;
using namespace vde::test;

namespace {

class BlockMetaTest : public BlockListTest {};

TEST_F(BlockMetaTest, EveryKindCarriesItsOwnClassName) {
    const std::pair<TDiagObjectType, const char*> kinds[] = {{doText, "vde::TDiagText"},
                                                             {doAndLogic, "vde::TDiagAndLogic"},
                                                             {doOrLogic, "vde::TDiagOrLogic"},
                                                             {doRSTrigger, "vde::TDiagRSTrigger"}};
    for (const auto& [type, name] : kinds) {
        TDiagObject* o = List.CreateObjByDiagType(type, {0, 0, 60, 100});
        ASSERT_NE(o, nullptr);
        EXPECT_STREQ(o->metaObject()->className(), name);
    }
}

TEST_F(BlockMetaTest, TheKindsInheritAlongTheirChain) {
    TDiagObject* trigger = List.CreateObjByDiagType(doRSTrigger, {0, 0, 60, 100});
    for (const char* base : {"vde::TDiagLogic", "vde::TDiagText", "vde::TDiagObject",
                             "vde::TGraphicControl", "QObject"})
        EXPECT_TRUE(trigger->inherits(base)) << base;
    // A block has no window of its own.
    EXPECT_FALSE(trigger->isWidgetType());
    TDiagObject* text = List.CreateObjByDiagType(doText, {0, 0, 60, 100});
    EXPECT_FALSE(text->inherits("vde::TDiagLogic"));
}

TEST_F(BlockMetaTest, QObjectCastTellsBlocksFromTheParentsOtherChildren) {
    List.CreateObjByDiagType(doAndLogic, {0, 0, 60, 100});
    List.CreateObjByDiagType(doText, {100, 0, 160, 100});
    new QPushButton(&Parent); // a host's own control on the same parent
    // Blocks are the parent's graphic controls; its child widgets are the host's own.
    std::vector<QObject*> onParent;
    for (TGraphicControl* c : TGraphicHost::ControlsOf(&Parent))
        onParent.push_back(c);
    for (QWidget* child : Parent.findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        onParent.push_back(child);
    int blocks = 0, logic = 0, graphic = 0, others = 0;
    for (QObject* o : onParent) {
        blocks += qobject_cast<TDiagObject*>(o) != nullptr;
        logic += qobject_cast<TDiagLogic*>(o) != nullptr;
        graphic += qobject_cast<TGraphicControl*>(o) != nullptr;
        others += qobject_cast<TGraphicControl*>(o) == nullptr;
    }
    EXPECT_EQ(blocks, 2);
    EXPECT_EQ(logic, 1);
    EXPECT_EQ(graphic, 2);
    EXPECT_EQ(others, 1);
}

} // namespace
