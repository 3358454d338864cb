#include "analysis/missing_planes.h"

#include <gtest/gtest.h>

namespace vistel {

TEST(MissingPlanes, EachRequestHasItsConditionAndItsMessage) {
    constexpr uint32_t mask = 0x2, depth = 0x4, black = 0x10;
    const struct {
        PlaneRequest request;
        LoadedPlanes loaded;  // colour, depth, flags
        const char* message;  // null: shown
    } rows[] = {
        {PlaneRequest::colour, {true, false, 0}, nullptr},
        {PlaneRequest::colour, {true, false, mask}, nullptr},
        {PlaneRequest::colour, {true, true, black | mask}, "s_VistelStrings.rVTNoColor"},
        {PlaneRequest::colour, {false, true, 0}, "s_VistelStrings.rVTNoColor"},
        {PlaneRequest::mask, {true, false, mask}, nullptr},
        {PlaneRequest::mask, {true, false, mask | black}, nullptr},
        {PlaneRequest::mask, {true, true, depth}, "s_VistelStrings.rVTNoMask"},
        {PlaneRequest::mask, {false, true, mask}, "s_VistelStrings.rVTNoMask"},
        {PlaneRequest::depth, {false, true, 0}, nullptr},
        {PlaneRequest::depth, {true, true, depth}, nullptr},
        {PlaneRequest::depth, {true, false, depth}, "s_VistelStrings.rVTZNotLoaded"},
        {PlaneRequest::depth, {true, false, mask}, "s_VistelStrings.rVTNoZBuffer"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(missingPlaneMessage(row.request, row.loaded), row.message);
}

}  // namespace vistel
