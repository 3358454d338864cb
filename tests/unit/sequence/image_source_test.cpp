#include "sequence/image_source.h"

#include "sequence/frame_listing.h"
#include "source_fixture.h"

namespace vistel {
namespace {

class Source : public SourceTest {
 protected:
    // The descriptor that the next file gets: the lowest one that is free.
    int nextDescriptor() {
        write("probe", "");
        const platform::FilePtr file(platform::openFile(path("probe"), "r"));
        return platform::streamDescriptor(file.get());
    }
};

// --- single files --------------------------------------------------------------------------------

TEST_F(Source, AFilesPictureIsRead) {
    write("a.iff", imageForm(7));
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(state_.sourceName, "a.iff");
    EXPECT_EQ(state_.openedName, "a.iff");
    EXPECT_EQ(state_.sourceOpened, 1);
    EXPECT_EQ(state_.sourceIsPipe, 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(output_, "");
}

TEST_F(Source, OfSeveralImagesTheFirstIsRead) {
    write("two.iff", imageForm(7) + imageForm(8));
    EXPECT_EQ(open("two.iff"), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(errors_, "");
}

TEST_F(Source, AFormWithoutAPictureIsPassedOver) {
    write("late.iff", chunk("FORM", "AIFF") + imageForm(8));
    EXPECT_EQ(open("late.iff"), 0);
    EXPECT_EQ(red(), 8);
}

// --- tiles that are counted -----------------------------------------------------------------------

TEST_F(Source, TilesThatAreCountedAreThoseOfTheWholeSourceAndAreNoPicture) {
    write("two.iff", imageForm(7) + imageForm(8));
    state_.histogram = 1;
    int tiles = 0;
    terms_.countTile = [&](IffReader&, const FrameStore&) {
        ++tiles;
        return int{iffOk};
    };
    EXPECT_EQ(open("two.iff"), 0);
    EXPECT_EQ(tiles, 2);
    EXPECT_FALSE(frame_.hasPicture());
    EXPECT_EQ(errors_, "");
    Results none = {{iffOk, -1}};
    EXPECT_EQ(readAgain({1}), none);
    EXPECT_EQ(tiles, 2);
}

TEST_F(Source, TheFirstPictureStaysWhileTheTilesBehindItAreCounted) {
    write("two.iff", imageForm(7) + imageForm(8));
    int asked = 0;
    terms_.countTile = [&](IffReader&, const FrameStore&) { return int{iffOk}; };
    EXPECT_EQ(open("two.iff"), 0);
    EXPECT_EQ(red(), 7);
    terms_.goOn = [&] { return ++asked < 2; };  // once for each tile
    EXPECT_EQ(open("two.iff"), iffAborted);
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Source, AMissingFileIsReportedByItsBaseName) {
    EXPECT_EQ(open("deep/none.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("none.iff: ")) << errors_;
    EXPECT_EQ(state_.sourceOpened, 0);
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Source, AFolderIsNoFile) {
    fs::create_directories(folder_ / "folder.iff");
    EXPECT_EQ(open("folder.iff"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("folder.iff: ")) << errors_;
}

TEST_F(Source, AFolderIsNamedWithItsSlash) {
    fs::create_directories(folder_ / "folder");
    EXPECT_EQ(open("folder/"), iffNotIff);
    EXPECT_TRUE(errors_.starts_with("folder/: ")) << errors_;
}

TEST_F(Source, ANameOfTenThousandDigitsIsReported) {
    EXPECT_EQ(open(std::string(10000, '7')), iffNotIff);
    EXPECT_NE(errors_, "");
}

TEST_F(Source, AFileOfNoBytesIsReported) {
    write("empty.iff", "");
    EXPECT_EQ(open("empty.iff"), iffNotIff);
    const std::string file = fromStartDirectory(state_.startDirectory, "empty.iff");
    EXPECT_EQ(errors_, file + ": " + messageText(Message::rVTNoImage) + "\n");
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Source, AContainerWithoutImageIsReported) {
    write("sound.iff", chunk("FORM", "AIFF"));
    EXPECT_EQ(open("sound.iff"), iffNotIff);
    EXPECT_TRUE(contains(errors_, "sound.iff")) << errors_;
}

TEST_F(Source, ADamagedFileIsReportedWithItsNameOnce) {
    write("cut.iff", imageForm(7).substr(0, 80));
    const int result = open("cut.iff");
    EXPECT_LT(result, 0);
    EXPECT_EQ(errors_.find("cut.iff: " + errorText(result)), 0u) << errors_;
    EXPECT_EQ(errors_.find("cut.iff", 1), std::string::npos) << errors_;
}

// A picture whose end is missing, behind its whole tile.
TEST_F(Source, WhatThereIsOfADamagedPictureIsReadAndItsDamageReported) {
    std::string bytes = imageForm(7);
    bytes.replace(bytes.find("CIMG") - 4, 4, bigEndian(0x200, 4));
    bytes.replace(bytes.find("TBMP") - 4, 4, bigEndian(0x100, 4));
    write("long.iff", bytes);
    const int result = open("long.iff");
    EXPECT_LT(result, 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(errors_, "long.iff: " + errorText(result) + "\n");
}

TEST_F(Source, AVerboseReportEndsWithALineEnd) {
    write("a.iff", imageForm(7));
    state_.verbose = 1;
    EXPECT_EQ(open("a.iff"), 0);
    EXPECT_TRUE(output_.ends_with("\n"));
}

TEST_F(Source, ALoadThatTheUserLeftIsNoError) {
    write("a.iff", imageForm(7));
    terms_.goOn = [] { return false; };
    EXPECT_EQ(open("a.iff"), iffAborted);
    EXPECT_EQ(errors_, "");
    EXPECT_FALSE(frame_.hasPicture());
}

TEST_F(Source, APercentSignInANameIsNoFormat) {
    write("50%s%n%d.iff", imageForm(7));
    EXPECT_EQ(open("50%s%n%d.iff"), 0);
    EXPECT_EQ(open("none%s%n%d.iff"), iffNotIff);
    EXPECT_TRUE(contains(errors_, "none%s%n%d.iff")) << errors_;
}

// --- while the picture is shown ------------------------------------------------------------------

TEST_F(Source, NoFileStaysOpenBehindItsPicture) {
    write("two.iff", imageForm(7) + imageForm(8));
    const int before = nextDescriptor();
    EXPECT_EQ(open("two.iff"), 0);
    EXPECT_EQ(nextDescriptor(), before);
    EXPECT_FALSE(state_.oneFileStream);
    std::error_code error;
    EXPECT_TRUE(fs::remove(folder_ / "two.iff", error)) << error.message();
}

TEST_F(Source, ACommandHasBeenReleasedBehindItsPicture) {
    write("a.any", foreignFile(convert::andStay, imageForm(7)));
    const int before = nextDescriptor();
    const std::string program = childProgram(ChildRole::convert);
    EXPECT_EQ(open("pipe:" + platform::quotedCommand(program, path("a.any"), "stdout")), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(Source, AConverterHasBeenReleasedBehindItsPicture) {
    write("a.any", foreignFile(convert::andStay, imageForm(7)));
    converterProgram = [](SourceReader) {
        return std::optional<std::string>(childProgram(ChildRole::convert));
    };
    const int before = nextDescriptor();
    EXPECT_EQ(open("a.any"), 0);
    EXPECT_EQ(red(), 7);
    EXPECT_EQ(state_.sourceIsPipe, 1);
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(Source, TheFileOfAOneFileAnimationStaysOpen) {
    write("all.iff", imageForm(7) + imageForm(8));
    setRange(1, 2, 1);
    state_.oneFile = 1;
    EXPECT_EQ(open("all.iff"), 0);
    ASSERT_TRUE(state_.oneFileStream);
    EXPECT_FALSE(state_.oneFileStream.isPipe());
}

// --- commands ------------------------------------------------------------------------------------

TEST_F(Source, ACommandsPictureIsRead) {
    write("shot.1", imageForm(21));
    const Tstring name = printing(path("shot.1"));
    EXPECT_EQ(open(name), 0);
    EXPECT_EQ(red(), 21);
    EXPECT_EQ(state_.sourceName, name);
    EXPECT_EQ(state_.sourceIsPipe, 1);
}

TEST_F(Source, ACommandThatFailsIsReported) {
    EXPECT_EQ(open("pipe:no_such_command_here"), iffNotIff);
    const std::string text = messageText(Message::rVTNoImage);
    EXPECT_TRUE(contains(errors_, "pipe:no_such_command_here: " + text)) << errors_;
}

TEST_F(Source, ACommandThatWritesNothingHoldsNoImage) {
    write("nothing", "");
    const Tstring name = printing(path("nothing"));
    EXPECT_EQ(open(name), iffNotIff);
    EXPECT_EQ(errors_, name + ": " + messageText(Message::rVTNoImage) + "\n");
}

TEST_F(Source, AnEmptyCommandIsRefused) {
    for (const char* name : {"pipe:", "pipe:  "}) {
        EXPECT_EQ(open(name), iffNotIff);
        EXPECT_EQ(errors_, formatMessage(Message::rVTEmptyCommand, {name}) + "\n");
    }
}

TEST_F(Source, TestModeReadsTheOutputOfTheTestCommand) {
    write("test.iff", imageForm(31));
    const std::string program = childProgram(ChildRole::printFile);
    platform::setEnvironmentVariable("VTTEST",
                                     platform::quotedCommand(program, path("test.iff"), "stdout"));
    state_.testMode = 1;
    EXPECT_EQ(open("Pipe"), 0);
    EXPECT_EQ(red(), 31);
    EXPECT_EQ(state_.sourceIsPipe, 1);
    EXPECT_EQ(state_.sourceName, messageText(Message::rVTPipedCmd));
}

}  // namespace
}  // namespace vistel
