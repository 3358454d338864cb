#include <gtest/gtest.h>

#include "iff/iff_context.h"

namespace vistel {
namespace {

TEST(GroupTable, TheFourteenIdentifiersHaveTheirKindAndAlignment) {
    struct Row {
        const char (&id)[5];
        IffGroupKind kind;
        uint32_t mask;
    };
    const Row rows[] = {
        {"FOR4", IffGroupKind::form, 3},          {"FORM", IffGroupKind::form, 1},
        {"FOR8", IffGroupKind::form, 7},          {"CAT4", IffGroupKind::concatenation, 3},
        {"CAT ", IffGroupKind::concatenation, 1}, {"CAT8", IffGroupKind::concatenation, 7},
        {"LIS4", IffGroupKind::list, 3},          {"LIST", IffGroupKind::list, 1},
        {"LIS8", IffGroupKind::list, 7},          {"PRO4", IffGroupKind::property, 3},
        {"PROP", IffGroupKind::property, 1},      {"PRO8", IffGroupKind::property, 7},
        {"PATH", IffGroupKind::reserved, 0},      {"INCL", IffGroupKind::reserved, 0},
    };
    ASSERT_EQ(iffGroupTable().size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(iffGroupTable()[i].id, iffId(rows[i].id)) << rows[i].id;
        EXPECT_EQ(iffGroupTable()[i].kind, rows[i].kind) << rows[i].id;
        EXPECT_EQ(iffGroupTable()[i].alignMask, rows[i].mask) << rows[i].id;
        EXPECT_EQ(findIffGroup(iffId(rows[i].id)), &iffGroupTable()[i]);
    }
    EXPECT_EQ(findIffGroup(iffId("TBHD")), nullptr);
    EXPECT_EQ(findIffGroup(iffId("for4")), nullptr);
}

}  // namespace
}  // namespace vistel
