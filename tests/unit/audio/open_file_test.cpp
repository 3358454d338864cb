#include <fcntl.h>

#include "audio/audio_files.h"

namespace vistel::test {
namespace {

TEST(OpenFile, AFileThatIsNotThereIsTold) {
    Reports reports;
    EXPECT_EQ(AFopenfile("no/such.aiff", "r", nullptr), nullptr);
    AFfilesetup setup;
    EXPECT_EQ(AFopenfile("no/such.aiff", "w", &setup), nullptr);
    EXPECT_EQ(AFopenfile("x", "a", nullptr), nullptr);
    EXPECT_EQ(AFopenfile("x", nullptr, nullptr), nullptr);
    EXPECT_EQ(reports.all(),
              "3 AFopenfile: open(no/such.aiff, O_RDONLY) returned -1\n"
              "3 AFopenfile: open(no/such.aiff, O_WRONLY|O_CREAT|O_TRUNC) returned -1\n"
              "10 AFopenfile: unrecognized mode a\n10 AFopenfile: unrecognized mode (null)\n");
}

TEST(OpenFile, WhatIsNotRecognisedIsTold) {
    for (const char* bytes : {"", "abc", ".snd12345678", "some text that is longer"}) {
        Reports reports;
        const OpenedFile file(bytes);
        EXPECT_FALSE(file);
        EXPECT_EQ(reports.all(), "0 AFopenfile: WARNING " + file.file.name() +
                                     " does not have a recognized audio file format\n");
    }
    AFfilesetup setup;
    setup.format = -1;
    EXPECT_NE(refused(aiff({}), &setup).find("does not have a recognized"), std::string::npos);
}

TEST(OpenFile, ASetupThatIsNoneIsTold) {
    Reports reports;
    AFfilesetup stale;
    stale.magic = 0;
    const TemporaryFile kept(Bytes("what was there"));
    EXPECT_EQ(AFopenfile(kept.name(), "w", nullptr), nullptr);
    EXPECT_EQ(AFopenfile(kept.name(), "w", &stale), nullptr);
    EXPECT_EQ(AFopenfile(kept.name(), "r", &stale), nullptr);
    EXPECT_EQ(reports.all(),
              "23 AFopenfile: invalid AFfilesetup argument\n"
              "23 AFopenfile: invalid AFfilesetup argument\n"
              "23 AFopenfile: invalid AFfilesetup argument\n");
    EXPECT_EQ(kept.read(), Bytes("what was there"));
}

#ifndef O_BINARY
#define O_BINARY 0
#endif

TEST(OpenFile, ADescriptorIsReadUnderItsName) {
    Reports reports;
    const TemporaryFile good(aiff(common(1, 1, 8).add(sound(Bytes().u8(5)))));
    {
        const Handle file(AFopenfd(open(good.name().c_str(), O_RDONLY | O_BINARY), "r", nullptr));
        ASSERT_TRUE(file);
        EXPECT_EQ(file->name, "<read file>");
        int8_t sample = 0;
        EXPECT_EQ(AFreadframes(file.get(), afDefaultTrack, &sample, 1), 1);
        EXPECT_EQ(sample, 5);
    }
    const TemporaryFile bad(Bytes("nothing"));
    EXPECT_EQ(AFopenfd(open(bad.name().c_str(), O_RDONLY | O_BINARY), "r", nullptr), nullptr);
    EXPECT_EQ(AFopennamedfd(open(bad.name().c_str(), O_RDONLY | O_BINARY), "r", "it", nullptr),
              nullptr);
    EXPECT_EQ(AFopenfd(0, "x", nullptr), nullptr);
    EXPECT_EQ(reports.all(),
              "0 AFopenfd: WARNING <read file> does not have a recognized audio file format\n"
              "0 AFopennamedfd: WARNING it does not have a recognized audio file format\n"
              "10 AFopenfd: unrecognized mode x\n");
}

TEST(OpenFile, ClosesWhatIsAHandleAndNothingElse) {
    Reports reports;
    EXPECT_EQ(AFclosefile(nullptr), -1);
    AFfilehandle stale;
    stale.magic = 0;
    EXPECT_EQ(AFclosefile(&stale), -1);
    EXPECT_EQ(reports.all(), "");
    OpenedFile file(aiff({}));
    EXPECT_EQ(AFclosefile(file.handle.release()), 0);
    OpenedFile odd(aiff({}));
    odd->access = 3;
    EXPECT_EQ(AFclosefile(odd.handle.release()), -1);
    EXPECT_EQ(reports.all(), "10 AFclosefile: unrecognized access mode 3\n");
}

TEST(OpenFile, ManyFilesOneAfterTheOtherLeaveNoneOpen) {
    Reports reports;
    const TemporaryFile good(aiff({})), bad(aiff("COM"));
    for (int i = 0; i < 3000; ++i) {
        const Handle file(AFopenfile(good.name(), "r", nullptr));
        ASSERT_TRUE(file) << i;
        ASSERT_EQ(AFopenfile(bad.name(), "r", nullptr), nullptr);
    }
}

}  // namespace
}  // namespace vistel::test
