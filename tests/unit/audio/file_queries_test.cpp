#include "audio/audio_files.h"

namespace vistel::test {
namespace {

TEST(FileQueries, ABadHandleIsTold) {
    Reports reports;
    AFfilehandle stale;
    stale.magic = 0;
    int32_t format, width;
    for (AFfilehandle* file : {static_cast<AFfilehandle*>(nullptr), &stale}) {
        EXPECT_EQ(AFgetfilefmt(file, nullptr), 0);
        EXPECT_EQ(AFgetframecnt(file, afDefaultTrack), 0);
        EXPECT_EQ(AFgetchannels(file, afDefaultTrack), 0);
        EXPECT_EQ(AFgetrate(file, afDefaultTrack), 0.0);
        EXPECT_EQ(AFgetsampfmt(file, afDefaultTrack, &format, &width), -1);
    }
    std::string expected;
    for (const char* complaint : {"null file handle", "invalid file handle"})
        for (const char* operation :
             {"AFgetfilefmt", "AFgetframecnt", "AFgetchannels", "AFgetrate", "AFgetsampfmt"})
            expected += std::string("1 ") + operation + ": " + complaint + "\n";
    EXPECT_EQ(reports.all(), expected);
}

TEST(FileQueries, OnlyTheSampleFormatTakesAnyTrack) {
    const OpenedFile file(aiff(common(1, 0, 16)));
    Reports reports;
    EXPECT_EQ(AFgetframecnt(file.handle.get(), 1), 0);
    EXPECT_EQ(AFgetchannels(file.handle.get(), 2), 0);
    EXPECT_EQ(AFgetrate(file.handle.get(), 1002), 0.0);
    int32_t format = 0, width = 0;
    EXPECT_EQ(AFgetsampfmt(file.handle.get(), 3, &format, &width), 0);
    EXPECT_EQ(width, 16);
    EXPECT_EQ(reports.all(),
              "24 AFgetframecnt: invalid track id 1\n24 AFgetchannels: invalid track id 2\n"
              "24 AFgetrate: invalid track id 1002\n");
}

}  // namespace
}  // namespace vistel::test
