#include "host/font.h"

#include <gtest/gtest.h>

namespace vistel::qdGR {
namespace {

TEST(FontDescription, WeightSlantAndPixelSizeAreRead) {
    struct Row {
        const char* description;
        int height, weight;
        bool italic;
    };
    constexpr Row rows[] = {
        {"-*-helvetica-bold-r-normal--10-*-*-*-*-*-iso8859-1", -11, 700, false},
        {"-*-helvetica-BOLD-r-normal--10-*-*-*-*-*-iso8859-1", -11, 700, false},
        {"-*-helvetica-medium-r-normal--10-*-*-*-*-*-iso8859-1", -11, 400, false},
        {"-*-helvetica-bolder-i-normal--18-*-*-*-*-*-iso8859-1", -19, 400, true},
        {"-*-helvetica-*-I-normal--*-*-*-*-*-*-iso8859-1", -11, 400, true},
        {"-*-helvetica-bold-o-normal--14-*", -15, 700, false},
        {"-bold-bold-x-bold-i-i-8", -9, 400, false},
        {"-*-helvetica-bold", -12, 700, false},
        {"-*", -12, 400, false},
        {"", -12, 400, false},
        {"-------", -1, 400, false},
        {"-*-x-bold-r-n--99999999999-*", -1001, 700, false},
    };
    for (const Row& row : rows) {
        const platform::FontRequest request = parseFontDescription(row.description);
        EXPECT_EQ(request.height, row.height) << row.description;
        EXPECT_EQ(request.weight, row.weight) << row.description;
        EXPECT_EQ(request.italic, row.italic) << row.description;
    }
}

TEST(ViewerFont, MeasuresAndRendersText) {
    const Font& font = viewerFont();
    EXPECT_EQ(font.width(""), 0);
    EXPECT_GT(font.width("Luminance"), 0);
    EXPECT_EQ(font.width("Red"), font.width("R") + font.width("e") + font.width("d"));
    EXPECT_GT(font.width("caf\xC3\xA9"), font.width("caf"));
    EXPECT_EQ(&viewerFont(), &font);
}

}  // namespace
}  // namespace vistel::qdGR
