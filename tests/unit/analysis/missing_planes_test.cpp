#include "analysis/missing_planes.h"

#include <gtest/gtest.h>

namespace vistel {

TEST(MissingPlanes, EachRequestHasItsConditionAndItsMessage) {
    constexpr uint32_t mask = 0x2, depth = 0x4, black = 0x10;
    const struct {
        PlaneRequest request;
        LoadedPlanes loaded;  // colour, depth, flags
        Message message;      // none: shown
    } rows[] = {
        {PlaneRequest::colour, {true, false, 0}, Message::none},
        {PlaneRequest::colour, {true, false, mask}, Message::none},
        {PlaneRequest::colour, {true, true, black | mask}, Message::rVTNoColor},
        {PlaneRequest::colour, {false, true, 0}, Message::rVTNoColor},
        {PlaneRequest::mask, {true, false, mask}, Message::none},
        {PlaneRequest::mask, {true, false, mask | black}, Message::none},
        {PlaneRequest::mask, {true, true, depth}, Message::rVTNoMask},
        {PlaneRequest::mask, {false, true, mask}, Message::rVTNoMask},
        {PlaneRequest::depth, {false, true, 0}, Message::none},
        {PlaneRequest::depth, {true, true, depth}, Message::none},
        {PlaneRequest::depth, {true, false, depth}, Message::rVTZNotLoaded},
        {PlaneRequest::depth, {true, false, mask}, Message::rVTNoZBuffer},
    };
    for (const auto& row : rows)
        EXPECT_EQ(missingPlaneMessage(row.request, row.loaded), row.message);
}

}  // namespace vistel
