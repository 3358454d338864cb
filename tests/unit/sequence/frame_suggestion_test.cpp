#include "sequence/frame_suggestion.h"

#include "host/messages.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

class Suggestion : public SequenceTest {
 protected:
    std::string told(const Tstring& name) {
        testing::internal::CaptureStderr();
        suggestFrames(state_, name);
        return testing::internal::GetCapturedStderr();
    }
    static std::string frames(const char* pattern, int first, int last) {
        return (first == last ? formatMessage(Message::rVTFrameHint, {pattern, first})
                              : formatMessage(Message::rVTFramesHint, {pattern, first, last})) +
               "\n";
    }
};

TEST_F(Suggestion, NamesTheFilesThatBeginAsTheNameDoes) {
    touch({"shot.0001.png", "shot.0004.png", "shot_2.iff", "shotgun.5", "other.1"});
    for (const char* name : {"shot", "shot.", "shot.#.tif", "shot.%d", "shot.7.iff", "shot.png"})
        EXPECT_TRUE(told(name).starts_with(frames("shot.#.png", 1, 4))) << name;
    EXPECT_EQ(told("shot"), frames("shot.#.png", 1, 4) + frames("shot_@.iff", 2, 2));
    EXPECT_EQ(told("sho"), "");
    EXPECT_EQ(told("none"), "");
}

TEST_F(Suggestion, TheNumberOfAnExtensionIsNoFrameNumber) {
    touch({"shot.01.jp2", "shot.02.jp2"});
    EXPECT_EQ(told("shot"), frames("shot.@@.jp2", 1, 2));
}

TEST_F(Suggestion, AFolderIsAnsweredByItsLargestSequences) {
    touch({"f/readme2.txt", "f/b.1", "f/b.2", "f/a.1", "f/a.2", "f/a.3", "f/c.1", "f/c.2", "f/d.1",
           "f/d.2"});
    EXPECT_EQ(told("f/"), frames("f/a.@", 1, 3) + frames("f/b.@", 1, 2) + frames("f/c.@", 1, 2));
    EXPECT_EQ(told("nowhere/"), "");
}

TEST_F(Suggestion, NothingIsSaidOfFilesThatNoPatternNames) {
    touch({"a#.1", "a#.2"});
    EXPECT_EQ(told("a"), "");
}

TEST_F(Suggestion, TheSearchDirectoriesAreLookedAt) {
    touch({"work/image/project/far.1", "work/image/project/far.2"});
    EXPECT_EQ(told("far"), frames("far.@", 1, 2));
}

}  // namespace
}  // namespace vistel
