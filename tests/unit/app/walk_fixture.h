// A command line whose files are walked over with services that record: what the tests of the walk
// start from.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/file_walk.h"
#include "app/recorded_services.h"
#include "app/start_up.h"
#include "platform/files.h"
#include "settings/own_settings.h"

namespace vistel {

// The state as it is when a source is opened.
struct SeenState : LoadOptions, FramePosition, ShowOptions {
    explicit SeenState(const ViewerState& state)
        : LoadOptions(state),
          FramePosition(state),
          ShowOptions(state),
          sourceName(state.sourceName),
          sourceOpened(state.sourceOpened),
          streamKept(state.oneFileStream) {}

    Tstring sourceName;
    int32_t sourceOpened;
    bool streamKept;  // of a one-file animation
};

class WalkTest : public OwnSettings {
 protected:
    using Words = std::vector<const char*>;

    void SetUp() override {
        OwnSettings::SetUp();
        viewerState = ViewerState{};
        ASSERT_TRUE(platform::setCurrentDirectory(folder().string()));
        start_ = platform::currentDirectory();
        services_ = recordedServices();
        recorder.opening = [this](const Tstring&) {
            see();
            return 0;
        };
    }
    void TearDown() override {
        viewerState = ViewerState{};
        OwnSettings::TearDown();
    }

    void see() { seen_.emplace_back(viewerState); }

    // Parses the words and walks the files; what the openers saw is in `seen_`.
    FileCounts walk(Words words) {
        words.insert(words.begin(), "vistel");
        seen_.clear();
        recorder.calls.clear();
        line_ = startUp(static_cast<int>(words.size()), words.data(), services_);
        return walkFiles(line_, services_);
    }

    // "open" calls only, one word each.
    static std::string opened() {
        std::string names;
        const std::string& calls = recorder.calls;
        for (size_t at = 0; at < calls.size();) {
            const size_t end = calls.find('\n', at);
            const std::string call = calls.substr(at, end - at);
            if (call.starts_with("open ")) names += "[" + call.substr(5) + "]";
            at = end + 1;
        }
        return names;
    }

    static std::string range(const FramePosition& s) {
        return formatPrintf("%d..%d step %d at %d, play %d..%d%s", s.firstFrame, s.lastFrame,
                            s.frameStep, s.currentFrame, s.playFirst, s.playLast,
                            s.animation ? "" : ", single");
    }
    static constexpr const char* singleFrame = "1..1 step 1 at 1, play 1..1, single";

    StartUpServices services_;
    CommandLine line_;
    std::vector<SeenState> seen_;
    std::string start_;
};

}  // namespace vistel
