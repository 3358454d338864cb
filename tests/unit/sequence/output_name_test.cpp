#include "sequence/output_name.h"

#include "host/image_plugins.h"
#include "sequence_fixture.h"

namespace vistel {
namespace {

class OutputNames : public SequenceTest {
 protected:
    void SetUp() override {
        SequenceTest::SetUp();
        state_.animation = 1;
        state_.currentFrame = 12;
        state_.fileName = "shot";
        state_.sourceName = "one.iff";
    }
    Tstring chosen(const char* name, bool animation) {
        saving_.saveName = name;
        saving_.saveNameSet = 1;
        saving_.saveAnimation = animation;
        return outputName(saving_, state_);
    }
    Saving saving_;
};

TEST_F(OutputNames, AreThoseOfTheProgramUntilOneIsChosen) {
    EXPECT_EQ(outputName(saving_, state_), "vistel.out.12");
    state_.padNum = 1;
    EXPECT_EQ(outputName(saving_, state_), "vistel.out.0012");
    state_.searchDirs[0] = "work/";
    EXPECT_EQ(outputName(saving_, state_), "work/vistel.out.0012");
    state_.animation = 0;
    EXPECT_EQ(outputName(saving_, state_), "work/vistel.out.0012");
}

TEST_F(OutputNames, AreThoseOfTheSourceInOverwriteMode) {
    saving_.overwriteMode = 1;
    EXPECT_EQ(outputName(saving_, state_), "shot.12");
    state_.searchDirs[0] = "work/";
    EXPECT_EQ(outputName(saving_, state_), "work/shot.12");
    state_.padNum = 1;
    EXPECT_EQ(outputName(saving_, state_), "work/shot.0012");
    state_.animation = 0;
    EXPECT_EQ(outputName(saving_, state_), "one.iff");
}

TEST_F(OutputNames, HaveTheNumberWhereTheChosenOneHasItsHashes) {
    saving_.overwriteMode = 1;  // does not count
    for (const bool animation : {false, true}) {
        EXPECT_EQ(chosen("myanimation###.iff", animation), "myanimation012.iff");
        EXPECT_EQ(chosen("myanimation#.iff", animation), "myanimation12.iff");
        EXPECT_EQ(chosen("a#b#.iff", animation), "a012.iff");
        EXPECT_EQ(chosen("/proj#1/shot##", animation), "/proj#1/shot12");
    }
    state_.currentFrame = 1;
    EXPECT_EQ(chosen("myanimation###.iff", true), "myanimation001.iff");
}

TEST_F(OutputNames, HaveItBeforeTheLastDotInAnAnimation) {
    state_.currentFrame = 1;
    EXPECT_EQ(chosen("shot.iff", true), "shot1.iff");
    EXPECT_EQ(chosen("shot", true), "shot1");
    EXPECT_EQ(chosen("a.b.png", true), "a.b1.png");
    EXPECT_EQ(chosen("/v1.2/shot", true), "/v1.2/shot1");
    EXPECT_EQ(chosen("shot.iff", false), "shot.iff");
    EXPECT_EQ(chosen("shot", false), "shot");
}

class OutputTargets : public OutputNames {
 protected:
    void SetUp() override {
        OutputNames::SetUp();
        loadAllPXFPlugins();
        saving_.overwriteMode = 1;
    }
    OutputTarget target() { return outputTarget(saving_, state_, {}); }
};

TEST_F(OutputTargets, AreTheFilesThatFramesAreReadFrom) {
    write("take.012.iff", imageForm(1));
    state_.openedName = "take.@@@.iff";
    const OutputTarget found = target();
    EXPECT_TRUE(found.path.ends_with("take.012.iff")) << found.path;
    EXPECT_TRUE(found.isSource);
    EXPECT_FALSE(found.formatKey);
    EXPECT_EQ(found.refusal, "");
    saving_.overwriteMode = 0;
    EXPECT_EQ(target().path, "vistel.out.12");
    EXPECT_FALSE(target().isSource);
}

TEST_F(OutputTargets, KeepTheirTypeOrAreRefused) {
    state_.animation = 0;
    const struct {
        const char *name, *bytes, *key, *refusal;
    } rows[] = {
        {"a.png", "\x89PNG\r\n\x1a\n and so on", "png", ""},
        {"a.TGA", "neither this nor that", "tga", ""},
        {"a.gif", "GIF89a and so on", nullptr, "GIF"},
        {"a.unknown", "\x89PNG\r\n\x1a\n and so on", nullptr, "its name"},
    };
    for (const auto& row : rows) {
        write(row.name, row.bytes);
        state_.openedName = row.name;
        const OutputTarget found = target();
        EXPECT_EQ(found.formatKey.value_or("(none)"), row.key ? row.key : "(none)") << row.name;
        EXPECT_TRUE(contains(found.refusal, row.refusal)) << found.refusal;
        EXPECT_EQ(found.refusal.empty(), row.key != nullptr) << row.name;
    }
}

TEST_F(OutputTargets, OfASourceWithoutFilesAreRefused) {
    for (const char* name : {"", "pipe:emit one"}) {
        state_.openedName = name;
        EXPECT_NE(target().refusal, "") << name;
    }
    state_.openedName = "all.iff";
    write("all.iff", imageForm(1) + imageForm(2));
    state_.oneFile = 1;
    EXPECT_NE(target().refusal, "");
    state_.oneFileStream = {};
}

TEST_F(OutputTargets, OfFramesThatAreGoneAreWhereTheyWouldBe) {
    state_.openedName = "shot.#";
    EXPECT_EQ(target().path, "shot.12");
    EXPECT_FALSE(target().isSource);
}

TEST_F(OutputTargets, HaveTheTypeThatWasChosenWithTheName) {
    state_.openedName = "shot.#";
    saving_.saveFormatKey = "png";
    EXPECT_FALSE(target().formatKey);  // belongs to a chosen name
    (void)chosen("a.png", false);
    EXPECT_EQ(target().formatKey, "png");
    saving_.saveFormatKey = "";
    EXPECT_FALSE(target().formatKey);
}

}  // namespace
}  // namespace vistel
