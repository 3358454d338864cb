#include "sequence/frame_listing.h"

#include <algorithm>
#include <vector>

#include "host/messages.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

class Listing : public SequenceTest {
 protected:
    std::vector<NumberedFile> list(const Tstring& stem) {
        auto files = listNumberedFiles(state_.startDirectory, "", stem);
        std::ranges::sort(files, {}, &NumberedFile::number);
        return files;
    }
};

TEST_F(Listing, CountsEveryFileThatBeginsWithTheBasePart) {
    touch({"shot.bak", "shot.0012.iff", "other.3", "shot.-4"});
    const std::vector<NumberedFile> files = list("shot.");
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].number, -4);
    EXPECT_EQ(files[0].written, "-4");
    EXPECT_EQ(files[1].number, 0);
    EXPECT_EQ(files[1].written, "");
    EXPECT_EQ(files[1].after, "bak");
    EXPECT_EQ(files[2].number, 12);
    EXPECT_EQ(files[2].written, "0012");
    EXPECT_EQ(files[2].zeroWidth, 4);
    EXPECT_EQ(files[2].after, ".iff");
}

TEST_F(Listing, StopsAt4095NumbersAndTellsWhenThereAreMore) {
    for (int i = 1; i <= 4095; ++i) std::ofstream(folder_ / ("n." + std::to_string(i)));
    testing::internal::CaptureStderr();
    EXPECT_EQ(list("n.").size(), 4095u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    touch({"n.4096"});
    testing::internal::CaptureStderr();
    EXPECT_EQ(list("n.").size(), 4095u);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              formatMessage(Message::rVTTooManyFiles, {"n.", 4095}) + "\n");
}

TEST_F(Listing, NumbersBetweenPartsAreThoseOfEverySearchDirectory) {
    touch({"shot.7.iff", "shot.003.IFF", "Shot.5.iff", "shot.8.png", "shot.iff",
           "work/image/project/shot.1.iff", "work/tex/shot.2.iff"});
    EXPECT_EQ(numbersBetween(state_, {"shot.", ".iff"}), (std::vector<int>{1, 2, 3, 5, 7}));
}

TEST_F(Listing, NumbersOfFoldersCount) {
    touch({"run4/frame.iff", "run12/frame.iff", "run/frame.iff"});
    EXPECT_EQ(numbersBetween(state_, {"run", "/frame.iff"}), (std::vector<int>{4, 12}));
}

TEST_F(Listing, ANameExistsInAnySearchDirectory) {
    touch({"here", "work/tex/far/off"});
    EXPECT_TRUE(existsInPlaces(state_, "here"));
    EXPECT_TRUE(existsInPlaces(state_, "far/off"));
    EXPECT_FALSE(existsInPlaces(state_, "off"));
}

}  // namespace
}  // namespace vistel
