// A start of the program on a command line, with services that record and settings of its own.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "app/recorded_services.h"
#include "app/start_up.h"
#include "platform/process.h"
#include "platform/settings_store.h"
#include "settings/own_settings.h"

namespace vistel {

class StartUpTest : public OwnSettings {
 protected:
    using Words = std::vector<const char*>;

    void SetUp() override {
        OwnSettings::SetUp();
        viewerState = ViewerState{};
        platform::setEnvironmentVariable("TAVO_LOCATION", "/opt/tavo");
        platform::setEnvironmentVariable("GRAPH", "");
        platform::setEnvironmentVariable("PROJ", "");
        setSavedRate("24");
    }
    void TearDown() override {
        viewerState = ViewerState{};
        OwnSettings::TearDown();
    }
    static void setSavedRate(const char* text) { platform::writeSetting("FPS", text); }

    static CommandLine start(Words words) {
        words.insert(words.begin(), "vistel");
        return startUp(static_cast<int>(words.size()), words.data(), recordedServices());
    }
};

}  // namespace vistel
