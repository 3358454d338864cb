#include "platform/key_translation.h"

#include <gtest/gtest.h>

#include "platform/input_event.h"

using vistel::characterKey;
using vistel::platform::KeyTranslator;

namespace {

constexpr int semicolonKey = 186, bracketKey = 219;  // on an English keyboard

struct KeyRow {
    int virtualKey;
    bool extended;
    int code;
};

void expectCodes(std::initializer_list<KeyRow> rows) {
    KeyTranslator keys;
    for (const KeyRow& row : rows) {
        for (const bool down : {true, false}) {
            EXPECT_EQ(keys.translate(row.virtualKey, row.extended, down), row.code)
                << row.virtualKey << (row.extended ? " extended" : "") << (down ? " down" : " up");
        }
    }
}

}  // namespace

TEST(KeyTranslation, TellsLeftAndRightModifiersApart) {
    expectCodes({
        {16, false, vistel::keyLeftShift},
        {16, true, vistel::keyRightShift},
        {17, false, vistel::keyLeftControl},
        {17, true, vistel::keyRightControl},
        {18, false, vistel::keyLeftAlt},
        {18, true, vistel::keyRightAlt},
    });
}

TEST(KeyTranslation, KeypadKeysAreDigitsWhetherNumLockIsOnOrOff) {
    expectCodes({
        {45, false, 96},   // Insert
        {35, false, 97},   // End
        {40, false, 98},   // Down
        {34, false, 99},   // Page Down
        {37, false, 100},  // Left
        {12, false, 101},  // Clear
        {39, false, 102},  // Right
        {36, false, 103},  // Home
        {38, false, 104},  // Up
        {33, false, 105},  // Page Up
        {46, false, 110},  // Delete
        {96, false, 96},   // the same keys with NumLock
        {105, false, 105},
        {110, false, 110},
    });
}

TEST(KeyTranslation, NavigationKeysBesideTheKeypadKeepTheirCodes) {
    for (const int key : {12, 33, 34, 35, 36, 37, 38, 39, 40, 45, 46}) {
        expectCodes({{key, true, key}});
    }
}

TEST(KeyTranslation, OtherKeysAreTheirVirtualKeyCodes) {
    for (const int key :
         {65, 90, 48, 57, 8, 9, 13, 27, 32, 106, 107, 109, 111, 112, 123, 144, 145, 246, 254}) {
        expectCodes({{key, false, key}, {key, true, key}});
    }
}

TEST(KeyTranslation, ALayoutKeyIsLearnedFromItsCharacter) {
    KeyTranslator keys;
    EXPECT_EQ(keys.translate(semicolonKey, false, true), 0);
    const KeyTranslator::Learned learned = keys.learn(';');
    EXPECT_EQ(learned.code, 256 + 59);
    EXPECT_FALSE(learned.released);
    EXPECT_EQ(keys.translate(semicolonKey, false, false), 256 + 59);
    EXPECT_EQ(keys.translate(semicolonKey, false, true), 256 + 59);
    EXPECT_EQ(keys.translate(semicolonKey, false, false), 256 + 59);
}

TEST(KeyTranslation, AReleaseBeforeTheCharacterIsReportedWithIt) {
    KeyTranslator keys;
    EXPECT_EQ(keys.translate(semicolonKey, false, true), 0);
    EXPECT_EQ(keys.translate(semicolonKey, false, false), 0);
    const KeyTranslator::Learned learned = keys.learn(';');
    EXPECT_EQ(learned.code, characterKey(';'));
    EXPECT_TRUE(learned.released);
    EXPECT_EQ(keys.translate(semicolonKey, false, true), characterKey(';'));
}

TEST(KeyTranslation, TheReleaseMarkIsForOneKeyOnly) {
    KeyTranslator keys;
    keys.translate(semicolonKey, false, true);
    keys.translate(semicolonKey, false, false);
    keys.learn(';');
    keys.translate(bracketKey, false, true);
    EXPECT_FALSE(keys.learn('[').released);
    // Nor does it survive a key that typed nothing.
    constexpr int accentKey = 192;
    keys.translate(accentKey, false, true);
    keys.translate(accentKey, false, false);
    constexpr int quoteKey = 222;
    keys.translate(quoteKey, false, true);
    const KeyTranslator::Learned learned = keys.learn('\'');
    EXPECT_EQ(learned.code, characterKey('\''));
    EXPECT_FALSE(learned.released);
}

TEST(KeyTranslation, EachLayoutKeyHasItsOwnCharacter) {
    KeyTranslator keys;
    keys.translate(semicolonKey, false, true);
    keys.learn(';');
    keys.translate(bracketKey, false, true);
    keys.learn('[');
    EXPECT_EQ(keys.translate(semicolonKey, false, true), characterKey(';'));
    EXPECT_EQ(keys.translate(bracketKey, false, true), characterKey('['));
}

TEST(KeyTranslation, ACharacterWithoutAWaitingKeyTeachesNothing) {
    KeyTranslator keys;
    EXPECT_EQ(keys.learn('a').code, 0);
    EXPECT_EQ(keys.translate('A', false, true), 'A');
    EXPECT_EQ(keys.learn('a').code, 0);
    keys.translate(semicolonKey, false, true);
    keys.learn(';');
    EXPECT_EQ(keys.learn(';').code, 0);
}

TEST(KeyTranslation, AReleaseAloneTeachesNothing) {
    KeyTranslator keys;
    EXPECT_EQ(keys.translate(semicolonKey, false, false), 0);
    EXPECT_EQ(keys.learn(';').code, 0);
}

TEST(KeyTranslation, LayoutKeysAre146To245) {
    for (const int key : {146, 245}) {
        KeyTranslator keys;
        EXPECT_EQ(keys.translate(key, false, true), 0) << key;
        EXPECT_EQ(keys.learn('x').code, characterKey('x')) << key;
        EXPECT_EQ(keys.translate(key, false, true), characterKey('x')) << key;
    }
}
