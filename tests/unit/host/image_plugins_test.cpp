#include "host/image_plugins.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

using namespace vistel;

namespace {

std::vector<std::string> words(const char* text) {
    std::istringstream stream(text);
    std::vector<std::string> found;
    for (std::string word; stream >> word;) found.push_back(word);
    return found;
}

// Before the others of this file: once loaded, plug-ins stay.
TEST(ImagePlugins, AreNotThereBeforeTheyAreLoaded) {
    EXPECT_TRUE(PXF_getPluginNames().empty());
    EXPECT_EQ(PXF_getOnlyExtensions(), "");
    EXPECT_EQ(PXF_getKeyFromPluginName("VisTel Frame"), "");
    EXPECT_FALSE(PXF_hasWriteSupport("VisTel Frame"));
    loadAllPXFPlugins();
    EXPECT_EQ(PXF_getPluginNames().size(), allImageTypes().size());
}

TEST(ImagePlugins, AreAskedByTheirNames) {
    loadAllPXFPlugins();
    struct Row {
        const char *name, *key, *extension;
        bool writes, multiFrame;
    };
    const Row rows[] = {
        {"VisTel Frame", "tavo", ".iff", true, false},
        {"SGI Image", "sgi", ".sgi", true, false},
        {"Portable Anymap", "pnm", ".ppm", true, false},
        {"GIF", "gif", ".gif", false, true},
        {"Photoshop Document", "psd", ".psd", false, false},
        {"no such type", "", "", false, false},
        {"tavo", "", "", false, false},  // a key is not a name
        {"", "", "", false, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(PXF_getKeyFromPluginName(row.name), row.key) << row.name;
        EXPECT_EQ(PXF_getExtFromPluginName(row.name), row.extension) << row.name;
        EXPECT_EQ(PXF_hasWriteSupport(row.name), row.writes) << row.name;
        EXPECT_EQ(PXF_isMultiFrameFormat(row.name), row.multiFrame) << row.name;
    }
}

TEST(ImagePlugins, OurOwnFramesComeFirst) {
    loadAllPXFPlugins();
    ASSERT_FALSE(PXF_getPluginNames().empty());
    EXPECT_EQ(PXF_getPluginNames()[0], "VisTel Frame");
}

TEST(ImagePlugins, PatternsOfAllExtensionsCanBeContinued) {
    loadAllPXFPlugins();
    std::string expected;
    for (const ImageType& type : allImageTypes())
        for (const std::string& extension : words(type.extensions))
            expected += "*." + extension + ";";
    EXPECT_EQ(PXF_getOnlyExtensions(), expected);
    EXPECT_EQ(expected.find("*.iff;"), 0u);
    EXPECT_EQ(expected.back(), ';');
}

TEST(ImagePlugins, NoKeyNameOrExtensionIsThereTwice) {
    std::set<std::string> keys, names, extensions;
    for (const ImageType& type : allImageTypes()) {
        EXPECT_TRUE(keys.insert(type.key).second) << type.key;
        EXPECT_TRUE(names.insert(type.name).second) << type.name;
        EXPECT_FALSE(words(type.extensions).empty()) << type.key;
        for (const std::string& extension : words(type.extensions)) {
            EXPECT_TRUE(extensions.insert(extension).second) << extension;
            EXPECT_TRUE(std::none_of(extension.begin(), extension.end(), [](char c) {
                return c == '.' || (c >= 'A' && c <= 'Z');
            })) << extension;
        }
    }
}

}  // namespace
