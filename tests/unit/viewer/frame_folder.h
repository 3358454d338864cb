// A folder with frame files of 4 x 4 pixels of one red, for tests that read them.
#pragma once

#include <string>

#include "platform/files.h"
#include "sequence/sequence_fixture.h"
#include "viewer/viewer_state.h"

namespace vistel {

// The current folder while it lives; empty at first.
class FrameFolder {
 public:
    FrameFolder()
        : before_(fs::current_path()),
          folder_(fs::temp_directory_path() /
                  ("vistel_viewer_" + std::to_string(std::random_device{}()))) {
        fs::create_directories(folder_);
        fs::current_path(folder_);
        viewerState.startDirectory = platform::currentDirectory();
        viewerState.searchDirs[0] = "";
    }
    ~FrameFolder() {
        viewerState.openedName.clear();
        fs::current_path(before_);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    FrameFolder(const FrameFolder&) = delete;
    FrameFolder& operator=(const FrameFolder&) = delete;

    static void write(const std::string& name, int red) {
        std::ofstream(name, std::ios::binary) << imageForm(red);
    }
    // The animation NAME.FIRST to NAME.LAST, whose red is ten times the frame's number, becomes the
    // viewer's source.
    static void animation(const std::string& name, int first, int last) {
        for (int number = first; number <= last; ++number)
            write(name + "." + std::to_string(number), number * 10);
        viewerState.fileName = name;
        viewerState.sourceOpened = 1;
        viewerState.animation = first != last;
        viewerState.firstFrame = viewerState.playFirst = viewerState.currentFrame = first;
        viewerState.lastFrame = viewerState.playLast = last;
        viewerState.frameStep = 1;
        viewerState.openedName = name;
    }

 private:
    fs::path before_, folder_;
};

}  // namespace vistel
