#include "viewer/commands/key_table.h"

#include <algorithm>
#include <string>

#include "golden.h"
#include "viewer/viewer_fixture.h"

namespace vistel {

class KeyTableTest : public ViewerTest {};

TEST_F(KeyTableTest, TheManualListsTheKeysAsTheyAre) {
    std::string page =
        "# Keys\n\nGenerated from the program's own table "
        "(`src/viewer/commands/key_table.cpp`).\n\n"
        "| Key | Action |\n|---|---|\n";
    for (const KeyBinding& binding : keyBindings()) {
        page += std::string("| ") + binding.keys;
        page += binding.edge == Edge::release ? " released | " : " | ";
        page += binding.help;
        page += binding.when == When::animation ? " (animations) |\n" : " |\n";
    }
    page += "| Escape | While frames are loaded: stop loading. |\n";
    expectGolden(page, fileOfTree("docs/keys.md"));
}

TEST_F(KeyTableTest, KeysOfAnimationsDoNothingOnASingleImage) {
    showAnimation(1, 1);
    for (const KeyBinding& binding : keyBindings()) {
        if (binding.when != When::animation) continue;
        const int32_t step = viewerState.frameStep;
        const Playing before = viewerState;
        EXPECT_FALSE(runKey(viewerState, {.code = binding.code, .modifiers = {}})) << binding.keys;
        EXPECT_EQ(viewerState.frameStep, step) << binding.keys;
        EXPECT_EQ(viewerState.playMode, before.playMode) << binding.keys;
        EXPECT_EQ(viewerState.paused, before.paused) << binding.keys;
    }
}

TEST_F(KeyTableTest, DigitsSetTheStep) {
    showAnimation(1, 30);
    for (int digit = 0; digit <= 9; ++digit) {
        runKey(viewerState, {.code = '0' + digit, .modifiers = {}});
        EXPECT_EQ(viewerState.frameStep, digit ? digit : 10);
    }
}

TEST_F(KeyTableTest, UnboundKeysDoNothing) {
    showAnimation(1, 3);
    EXPECT_FALSE(runKey(viewerState, {.code = 'H', .modifiers = {}}));
    EXPECT_FALSE(runKey(viewerState, {.code = 255, .modifiers = {}}));
    EXPECT_FALSE(runKey(viewerState, {.code = 100000, .modifiers = {}}));
}

TEST_F(KeyTableTest, PlayKeysWithAltPlayOnceFromTheFarEnd) {
    showAnimation(1, 9);
    viewerState.currentFrame = 5;
    Modifiers alt;
    alt.leftAlt = true;
    runKey(viewerState, {.code = characterKey('.'), .modifiers = alt});
    EXPECT_EQ(viewerState.currentFrame, 1);
    EXPECT_EQ(viewerState.playMode, PlayMode::forward);
    EXPECT_EQ(viewerState.playOnce, 1);
    runKey(viewerState, {.code = characterKey(','), .modifiers = alt});
    EXPECT_EQ(viewerState.currentFrame, 9);
    EXPECT_EQ(viewerState.playMode, PlayMode::backward);
    runKey(viewerState, {.code = characterKey('.'), .modifiers = {}});
    EXPECT_EQ(viewerState.playOnce, 0);
}

TEST_F(KeyTableTest, RateKeysKeepTheRateBetween1And300) {
    showAnimation(1, 3);
    viewerState.frameRate = 299;
    Modifiers alt;
    alt.rightAlt = true;
    runKey(viewerState, {.code = keyPadAdd, .modifiers = alt});
    EXPECT_EQ(viewerState.frameRate, 300);
    viewerState.startFrameRate = 24;
    Modifiers control;
    control.leftControl = true;
    runKey(viewerState, {.code = keyPadSubtract, .modifiers = control});
    EXPECT_EQ(viewerState.frameRate, 24);
}

TEST_F(KeyTableTest, SpaceAndTResetTheClock) {
    showAnimation(1, 9);
    viewerState.playMode = PlayMode::forward;
    viewerState.clock.step(5);
    EXPECT_TRUE(key(keySpace));
    EXPECT_EQ(viewerState.paused, 1);
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
    viewerState.clock.step(5);
    EXPECT_TRUE(key(keySpace));
    EXPECT_EQ(viewerState.paused, 0);
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
    EXPECT_EQ(viewerState.playMode, PlayMode::forward);
    viewerState.clock.step(5);
    EXPECT_TRUE(key('T'));
    EXPECT_EQ(viewerState.frameSkip, 1);
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
    key('T');
    EXPECT_EQ(viewerState.frameSkip, 0);
}

TEST_F(KeyTableTest, STogglesPingPong) {
    showAnimation(1, 9);
    EXPECT_TRUE(key('S'));
    EXPECT_EQ(viewerState.pingPong, 1);
    EXPECT_TRUE(key('S'));
    EXPECT_EQ(viewerState.pingPong, 0);
}

TEST_F(KeyTableTest, ArrowsStepWhileStoppedAndJumpWithControl) {
    struct Row {
        PlayMode mode;
        int code;
        unsigned held;
        int expected;
        bool changed;
    };
    const Row rows[] = {
        {PlayMode::stopped, keyLeftArrow, none, 4, true},
        {PlayMode::stopped, keyRightArrow, none, 6, true},
        {PlayMode::stopped, keyLeftArrow, shift | alt, 4, true},
        {PlayMode::stopped, keyLeftArrow, control, 2, true},
        {PlayMode::stopped, keyRightArrow, control, 8, true},
        {PlayMode::forward, keyRightArrow, none, 5, false},
        {PlayMode::forward, keyLeftArrow, none, 5, false},
        {PlayMode::forward, keyLeftArrow, control, 2, true},
    };
    for (const Row& row : rows) {
        showAnimation(1, 9);
        viewerState.playFirst = 2;
        viewerState.playLast = 8;
        viewerState.currentFrame = 5;
        viewerState.playMode = row.mode;
        EXPECT_EQ(key(row.code, row.held), row.changed);
        EXPECT_EQ(viewerState.currentFrame, row.expected);
    }
}

TEST_F(KeyTableTest, AStepOfPlaybackIsNoJumpEvenWhileControlIsHeld) {
    showAnimation(1, 9);
    viewerState.currentFrame = 5;
    viewerState.playMode = PlayMode::forward;
    const Press step{.code = keyRightArrow, .synthetic = true, .modifiers = modifiersOf(control)};
    EXPECT_TRUE(runKey(viewerState, step));
    EXPECT_EQ(viewerState.currentFrame, 6);
}

TEST_F(KeyTableTest, PlayKeysGoOnFromWherePlayingIs) {
    showAnimation(1, 9);
    viewerState.currentFrame = 5;
    viewerState.paused = 1;
    viewerState.clock.step(5);
    EXPECT_TRUE(key(characterKey(',')));
    EXPECT_EQ(viewerState.playMode, PlayMode::backward);
    EXPECT_EQ(viewerState.currentFrame, 5);
    EXPECT_EQ(viewerState.paused, 0);
    EXPECT_EQ(viewerState.clock.framesDue(), 0);
}

TEST_F(KeyTableTest, TheCharactersThatAreKeysAreThoseOfTheTable) {
    std::string characters;
    for (int character = 32; character < 127; ++character) {
        if (findBinding({.code = characterKey(char(character)), .modifiers = {}}))
            characters += char(character);
    }
    std::string known(keyCharacters);
    std::sort(known.begin(), known.end());
    EXPECT_EQ(characters, known);
}

}  // namespace vistel
