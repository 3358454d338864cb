#include "app/start_up.h"

#include <gtest/gtest.h>

#include <array>

#include "app/start_up_fixture.h"
#include "host/application.h"
#include "platform/file_address.h"
#include "platform/files.h"

namespace vistel {
namespace {

using StartUp = StartUpTest;

TEST_F(StartUp, WithoutOptionsTheDefaultsHold) {
    viewerState.verbose = 1;  // of an earlier run
    const CommandLine line = start({});
    const ViewerState& s = viewerState;
    EXPECT_EQ(line.outcome, StartUpOutcome::goOn);
    EXPECT_EQ(line.firstFile, 1u);
    EXPECT_EQ(s.verbose, 0);
    EXPECT_EQ(s.maxLevel, 0xFFFFFFF0u);
    EXPECT_EQ(s.rfact, 1);
    EXPECT_EQ(s.magnify, 1);
    EXPECT_EQ(s.loadZ, 1);
    EXPECT_EQ(s.inter, 1);
    EXPECT_EQ(s.defGamma, 1.0f);
    EXPECT_EQ(s.kmem, 0.9f);
    EXPECT_EQ(s.windowId, -1);
    EXPECT_EQ(s.lutActive, 0);
    EXPECT_EQ(s.animation, 0);
    EXPECT_EQ(s.pendingOpen, "");
    EXPECT_EQ(s.frameRate, 24);
    EXPECT_EQ(s.startFrameRate, 24);
    EXPECT_EQ(s.savedFrameRate, 24);
}

TEST_F(StartUp, TheServicesAreCalledInTheirOrder) {
    start({"-F"});
    EXPECT_EQ(recorder.calls, callsBeforeOptions + "check 40028 1\ndisplay table\n");
    EXPECT_EQ(applicationName(), "VisTel");
}

TEST_F(StartUp, TheViewerIsJoinedToTheNewState) {
    StartUpServices services = recordedServices();
    services.joinViewer = [] { viewerState.goOn = [] { return false; }; };
    const char* words[] = {"vistel"};
    startUp(1, words, services);
    EXPECT_FALSE(platform::mayGoOn(viewerState.goOn));
}

TEST_F(StartUp, SearchDirectoriesComeFromOptionsEnvironmentOrDefaults) {
    start({});
    const std::array<Tstring, 6> defaults = {"",
                                             "./",
                                             "/usr/users/graph/image/./",
                                             "/usr/users/graph/tex/./",
                                             "/usr/users/graph/image/",
                                             "/usr/users/graph/tex/"};
    EXPECT_EQ(viewerState.searchDirs, defaults);

    platform::setEnvironmentVariable("GRAPH", "/g^2s");
    platform::setEnvironmentVariable("PROJ", "show");
    start({});
    EXPECT_EQ(viewerState.searchDirs[2], "/g^2s/image/show/");
    EXPECT_EQ(viewerState.searchDirs[5], "/g^2s/tex/");

    start({"-W", "/w", "-P", "p"});
    EXPECT_EQ(viewerState.searchDirs[3], "/w/tex/p/");
    EXPECT_EQ(viewerState.workDir, "/w");
}

TEST_F(StartUp, TheHelpBaseLiesBelowTheInstallLocation) {
    platform::setEnvironmentVariable("TAVO_LOCATION", "C:/Program Files/Tavo 8");
    start({});
    EXPECT_EQ(viewerState.helpBase, "file:///C:/Program%20Files/Tavo%208/docs/ext/VisTel/");
}

TEST_F(StartUp, AnInstallLocationThatIsNotSetIsFoundFromTheProgram) {
    platform::setEnvironmentVariable("TAVO_LOCATION", "");
    start({});
    const Tstring root = installRoot(platform::programPath());
    EXPECT_FALSE(root.empty());
    EXPECT_EQ(platform::environmentVariable("TAVO_LOCATION"), root);
    EXPECT_EQ(viewerState.helpBase, platform::fileAddress(root + "/docs/ext/VisTel/"));
    EXPECT_FALSE(viewerState.helpBase.starts_with("file:////"));
}

TEST_F(StartUp, TheInstallRootIsTwoLevelsAboveTheProgram) {
    struct Row {
        const char* path;
        const char* root;
    };
    constexpr Row rows[] = {
        {"C:\\Tavo\\bin\\vistel.exe", "C:/Tavo"},
        {"/opt/tavo/bin/vistel", "/opt/tavo"},
        {"C:\\vistel.exe", "C:"},
        {"/bin/vistel", ""},
        {"vistel", "vistel"},
        {"", ""},
    };
    for (const Row& row : rows) EXPECT_EQ(installRoot(row.path), row.root) << row.path;
}

TEST_F(StartUp, TheDirectoryOfTheStartIsKept) {
    ASSERT_TRUE(platform::setCurrentDirectory(folder().string()));
    start({});
    EXPECT_EQ(viewerState.startDirectory, platform::currentDirectory());
}

TEST_F(StartUp, ACallerThatPassesNoNameIsServedToo) {
    const CommandLine line = startUp(0, nullptr, recordedServices());
    EXPECT_EQ(line.outcome, StartUpOutcome::goOn);
    EXPECT_EQ(line.firstFile, line.words.size());
}

TEST_F(StartUp, ServicesMayBeMissing) {
    const char* words[] = {"vistel", "-F", "-D", "-u", "s"};
    EXPECT_EQ(startUp(5, words, StartUpServices{}).outcome, StartUpOutcome::goOn);
}

}  // namespace
}  // namespace vistel
