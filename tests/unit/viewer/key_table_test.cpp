#include "viewer/key_table.h"

#include "golden.h"
#include "viewer_fixture.h"

namespace vistel {

class KeyTableTest : public ViewerTest {};

TEST_F(KeyTableTest, TheManualListsTheKeysAsTheyAre) {
    std::string page =
        "# Keys\n\nGenerated from the program's own table (`src/viewer/key_table.cpp`).\n\n"
        "| Key | Action |\n|---|---|\n";
    for (const KeyBinding& binding : keyBindings()) {
        page += std::string("| ") + binding.keys + " | " + binding.help;
        page += binding.when == When::animation ? " (animations) |\n" : " |\n";
    }
    page += "| Escape | Leave full screen; while frames are loaded: stop loading. |\n";
    expectGolden(page, VISTEL_SOURCE_DIR "/docs/keys.md");
}

TEST_F(KeyTableTest, KeysOfAnimationsDoNothingOnASingleImage) {
    showAnimation(1, 1);
    for (const KeyBinding& binding : keyBindings()) {
        if (binding.when != When::animation) continue;
        const ViewerState before = viewerState;
        EXPECT_FALSE(runKey({.code = binding.code, .modifiers = {}})) << binding.keys;
        EXPECT_EQ(viewerState.frameStep, before.frameStep) << binding.keys;
        EXPECT_EQ(viewerState.playMode, before.playMode) << binding.keys;
        EXPECT_EQ(viewerState.paused, before.paused) << binding.keys;
    }
}

TEST_F(KeyTableTest, DigitsSetTheStep) {
    showAnimation(1, 30);
    for (int digit = 0; digit <= 9; ++digit) {
        runKey({.code = '0' + digit, .modifiers = {}});
        EXPECT_EQ(viewerState.frameStep, digit ? digit : 10);
    }
}

TEST_F(KeyTableTest, UnboundKeysDoNothing) {
    showAnimation(1, 3);
    EXPECT_FALSE(runKey({.code = 'H', .modifiers = {}}));
    EXPECT_FALSE(runKey({.code = 255, .modifiers = {}}));
    EXPECT_FALSE(runKey({.code = 100000, .modifiers = {}}));
}

TEST_F(KeyTableTest, PlayKeysWithAltPlayOnceFromTheFarEnd) {
    showAnimation(1, 9);
    viewerState.currentFrame = 5;
    Modifiers alt;
    alt.leftAlt = true;
    runKey({.code = characterKey('.'), .modifiers = alt});
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_EQ(viewerState.playMode, PlayMode::forward);
    EXPECT_EQ(viewerState.playOnce, 1);
    runKey({.code = characterKey(','), .modifiers = alt});
    EXPECT_EQ(viewerState.currentFrame, 9);
    EXPECT_EQ(viewerState.playMode, PlayMode::backward);
    runKey({.code = characterKey('.'), .modifiers = {}});
    EXPECT_EQ(viewerState.playOnce, 0);
}

TEST_F(KeyTableTest, RateKeysKeepTheRateBetween1And300) {
    showAnimation(1, 3);
    viewerState.frameRate = 299;
    Modifiers alt;
    alt.rightAlt = true;
    runKey({.code = keyPadAdd, .modifiers = alt});
    EXPECT_EQ(viewerState.frameRate, 300);
    viewerState.startFrameRate = 24;
    Modifiers control;
    control.leftControl = true;
    runKey({.code = keyPadSubtract, .modifiers = control});
    EXPECT_EQ(viewerState.frameRate, 24);
}

}  // namespace vistel
