#include "sequence/converter.h"

#include <climits>

#include "sequence_fixture.h"

namespace vistel {
namespace {

using FileReaders = SequenceTest;

TEST(SourceReaders, FollowTheFileKind) {
    const struct {
        int kind;
        SourceReader reader;
    } rows[] = {{-1, SourceReader::imageConverter}, {0, SourceReader::imageConverter},
                {1, SourceReader::olderConverter},  {2, SourceReader::olderConverter},
                {3, SourceReader::olderConverter},  {4, SourceReader::direct},
                {5, SourceReader::direct},          {6, SourceReader::direct},
                {7, SourceReader::imageConverter},  {8, SourceReader::olderConverter},
                {9, SourceReader::imageConverter},  {INT_MAX, SourceReader::imageConverter}};
    for (const auto& row : rows) EXPECT_EQ(readerOfKind(row.kind), row.reader) << row.kind;
}

TEST(ConverterCommand, HasTheOptionsOfItsConverterAndOneArgument) {
    const std::string image = converterCommand(SourceReader::imageConverter, "conv", "a b");
    EXPECT_FALSE(contains(image, " -s")) << image;
    EXPECT_TRUE(contains(image, "a b")) << image;
    EXPECT_TRUE(contains(image, " stdout")) << image;
    const std::string older = converterCommand(SourceReader::olderConverter, "conv", "a b");
    EXPECT_TRUE(contains(older, " -s -B ")) << older;
    EXPECT_LT(older.find(" -s -B "), older.find("a b")) << older;
    EXPECT_LT(older.find("a b"), older.find(" stdout")) << older;
    EXPECT_STREQ(converterName(SourceReader::imageConverter), "pixconv");
    EXPECT_STREQ(converterName(SourceReader::olderConverter), "rasconv");
}

TEST_F(FileReaders, FollowHowTheFileBegins) {
    const struct {
        const char* name;
        std::string bytes;
        SourceReader reader, waiting;
    } rows[] = {
        {"frame", imageForm(1), SourceReader::direct, SourceReader::direct},
        {"words", "neither picture nor container, just words", SourceReader::imageConverter,
         SourceReader::imageConverter},
        {"raster", std::string("\x02\x4A\x02\x0A", 4) + std::string(60, '\0'),
         SourceReader::olderConverter, SourceReader::olderConverter},
        {"begun", "FO", SourceReader::imageConverter, SourceReader::direct},
        {"stdin", imageForm(1), SourceReader::direct, SourceReader::direct},
    };
    for (const auto& row : rows) {
        write(row.name, row.bytes);
        EXPECT_EQ(readerOfFile(row.name, false), row.reader) << row.name;
        EXPECT_EQ(readerOfFile(row.name, true), row.waiting) << row.name;
    }
}

}  // namespace
}  // namespace vistel
