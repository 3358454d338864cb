#include "text_header.h"

#include "codec_files.h"

using namespace vistel;
using namespace vistel::test;

namespace {

// A file of this text, and the source that reads it.
struct Text {
    explicit Text(const std::string& text) : file(std::tmpfile()), size(text.size()) {
        if (!file || std::fwrite(text.data(), 1, size, file.get()) != size) ADD_FAILURE();
        std::rewind(file.get());
    }
    platform::FilePtr file;
    size_t size;
    ByteSource source{{"text", file.get(), size}};
};

TEST(TextHeader, WordsStandBetweenBlanksAndComments) {
    Text text("  P5\t12\r\n# a comment 7\n34#behind a word\n\v255\n" + std::string(90, 'x') + " y");
    for (const char* word : {"P5", "12", "34", "255"}) EXPECT_EQ(readWord(text.source), word);
    EXPECT_EQ(readWord(text.source), std::string(80, 'x'));
    EXPECT_EQ(readWord(text.source), "y");
    EXPECT_EQ(readWord(text.source), "");
}

TEST(TextHeader, OnlyOneBlankBehindAWordIsTaken) {
    Text text("255\n\n\x01");
    EXPECT_EQ(readWord(text.source), "255");
    EXPECT_EQ(text.source.next(), '\n');
}

TEST(TextHeader, NumbersHaveDigitsOnlyAndFitThirtyOneBits) {
    const struct {
        const char* word;
        bool valid;
        uint32_t number;
    } rows[] = {
        {"0", true, 0},           {"007", true, 7},          {"2147483647", true, 2147483647},
        {"2147483648", false, 0}, {"99999999999", false, 0}, {"", false, 0},
        {"-1", false, 0},         {"+1", false, 0},          {"1.5", false, 0},
        {"12x", false, 0},        {"0x10", false, 0}};
    for (const auto& row : rows) {
        uint32_t number = 0;
        EXPECT_EQ(parseNumber(row.word, number), row.valid) << row.word;
        if (row.valid) {
            EXPECT_EQ(number, row.number) << row.word;
        }
        Text text(row.word);
        EXPECT_EQ(readNumber(text.source, number), row.valid) << row.word;
    }
}

TEST(TextHeader, LinesLoseTheirEndOfEitherKind) {
    Text text("one\r\ntwo\n\n" + std::string(100, 'z') + "\nlast");
    for (const std::string& line : {std::string("one"), std::string("two"), std::string(),
                                    std::string(80, 'z'), std::string("last"), std::string()})
        EXPECT_EQ(readLine(text.source), line);
}

}  // namespace
