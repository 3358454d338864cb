// The words of a command line, one per line of the input, through the option table and the walk
// over the files, with services that make their pictures themselves.
//
//   fuzz_options corpus/fuzz_options -max_total_time=30
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/file_walk.h"
#include "app/option_table.h"
#include "app/start_up.h"
#include "app/usage.h"
#include "viewer/viewer_state.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CommandLine line;
    line.words.emplace_back("vistel");
    Tstring word;
    for (size_t i = 0; i < size && line.words.size() < 64; ++i) {
        if (data[i] != '\n' && data[i] != 0) {
            word += static_cast<char>(data[i]);
            continue;
        }
        line.words.push_back(word);
        word.clear();
    }
    line.words.push_back(word);

    viewerState = ViewerState{};
    StartUpServices services;
    services.openSource = [](const Tstring& name, FrameStore& frame) {
        return !name.empty() && frame.colour.allocate(1, 1) ? 0 : -4;
    };
    services.showSource = [](FrameStore&& frame) {
        if (!frame.hasPicture()) __builtin_trap();
        viewerState.windowId = viewerState.quitRequested = 1;
    };
    services.discover = [](const Tstring& stem) { return static_cast<int>(stem.size() % 2); };
    parseOptions(line, services);
    if (line.firstFile > line.words.size()) __builtin_trap();
    completeState(line, services);
    if (viewerState.magnify < 1 || viewerState.magnify > 8 || viewerState.rfact < 1)
        __builtin_trap();
    walkFiles(line, services);
    return 0;
}
