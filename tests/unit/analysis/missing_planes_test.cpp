#include "analysis/missing_planes.h"

#include <gtest/gtest.h>

namespace vistel {

TEST(MissingPlanes, EachRequestHasItsConditionAndItsMessage) {
    constexpr uint32_t mask = 0x2, depth = 0x4, black = 0x10;
    const struct {
        ChannelMode view;
        LoadedPlanes loaded;  // colour, depth, flags
        Message message;      // none: shown
    } rows[] = {
        {ChannelMode::all, {true, false, 0}, Message::none},
        {ChannelMode::red, {true, false, mask}, Message::none},
        {ChannelMode::luminance, {true, false, black}, Message::rVTNoColor},
        {ChannelMode::all, {true, true, black | mask}, Message::rVTNoColor},
        {ChannelMode::all, {false, true, 0}, Message::rVTNoColor},
        {ChannelMode::matte, {true, false, mask}, Message::none},
        {ChannelMode::matte, {true, false, mask | black}, Message::none},
        {ChannelMode::matte, {true, true, depth}, Message::rVTNoMask},
        {ChannelMode::matte, {false, true, mask}, Message::rVTNoMask},
        {ChannelMode::zBuffer, {false, true, 0}, Message::none},
        {ChannelMode::zBuffer, {true, true, depth}, Message::none},
        {ChannelMode::zBuffer, {true, false, depth}, Message::rVTZNotLoaded},
        {ChannelMode::zBuffer, {true, false, mask}, Message::rVTNoZBuffer},
    };
    for (const auto& row : rows) EXPECT_EQ(missingPlaneMessage(row.view, row.loaded), row.message);
}

}  // namespace vistel
