// bench_load: loads a sequence into memory as the viewer does, without a window, and ends.
//
//     bench_load STEM FRAMES [SAVED]
//
// STEM ends in a dot; its first FRAMES files are loaded by the viewer's own loader into the
// viewer's frame slots (VISTEL_THREADS says with how many threads). The time of the whole process
// is what a user waits; printed are, one "name value" to a line:
//
//     frame_seconds   from opening the source until the last frame is kept, for each frame
//     frame_bytes     growth of the resident set, for each frame
//     needed_bytes    pixels and tile list of one frame
//     save_seconds    when SAVED is given: until each frame is written as SAVED with its number
//
// Ends non-zero unless every frame was kept at full size, and saved.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

#include "iff/result_codes.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "sequence/frame_range.h"
#include "sequence/frame_sequence.h"
#include "sequence/frame_writer.h"
#include "sequence/image_source.h"
#include "viewer/playback/frame_display.h"
#include "viewer/playback/load_animation.h"
#include "viewer/show_source.h"
#include "viewer/viewer_state.h"

namespace {

using namespace vistel;

// Bytes; 0 when the system does not tell.
size_t residentBytes() {
    const platform::FilePtr status(std::fopen("/proc/self/statm", "r"));
    size_t pages = 0;
    if (!status || std::fscanf(status.get(), "%*u %zu", &pages) != 1) return 0;
    return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// The viewer's own steps with a source, but for the window. False when its first picture could not
// be read.
bool loadAllFrames(const Tstring& name) {
    FrameStore first;
    if (openImageSource(viewerState, name, readTerms(viewerState), false, first) != iffOk)
        return false;
    keepFrame(viewerState, viewerState.currentFrame, std::move(first));
    loadRemainingFrames(viewerState);
    return true;
}

// The state as the start-up leaves it for the arguments "-F STEM".
void prepareState() {
    viewerState.startDirectory = platform::currentDirectory();
    viewerState.noRescale = 1;
    installViewer(viewerState);
}

bool chooseRange(const Tstring& stem, int frames) {
    if (!discoverNumberedFiles(viewerState, stem, viewerState)) return false;
    viewerState.lastFrame = viewerState.firstFrame + (frames - 1) * viewerState.frameStep;
    orderRange(viewerState);
    viewerState.loadZ = 0;
    return true;
}

size_t bytesNeeded(const FrameStore& frame) {
    return static_cast<size_t>(frame.header.width) * frame.header.height * sizeof(uint32_t) +
           frame.tiles.size() * sizeof(TileRect);
}

// Kept, and not shrunk.
bool isComplete(const FrameStore* frame) {
    return frame && frame->width == static_cast<int>(frame->header.width) &&
           frame->height == static_cast<int>(frame->header.height) && !frame->colour.empty();
}

int countComplete() {
    int complete = 0;
    for (int frame = viewerState.firstFrame; frame <= viewerState.lastFrame;
         frame += viewerState.frameStep) {
        complete += isComplete(viewerState.slots.find(frame));
    }
    return complete;
}

bool saveAll(const Tstring& stem) {
    for (int frame = viewerState.firstFrame; frame <= viewerState.lastFrame;
         frame += viewerState.frameStep) {
        OutputTarget target;
        target.path = stem + std::to_string(frame);
        FrameWriter writer;
        if (!writer.open(target)) return false;
        if (writer.write(*viewerState.slots.find(frame), false).code != iffOk) return false;
    }
    return true;
}

double secondsSince(uint64_t start) {
    return static_cast<double>(platform::tickMicroseconds() - start) * 1e-6;
}

int fail(const char* what) {
    std::fprintf(stderr, "bench_load: %s\n", what);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const int frames = argc == 3 || argc == 4 ? std::atoi(argv[2]) : 0;
    if (frames < 1) return fail("usage: bench_load STEM FRAMES [SAVED]");
    Tstring stem = argv[1];
    prepareState();

    const size_t bytesBefore = residentBytes();
    const uint64_t start = platform::tickMicroseconds();
    if (!chooseRange(stem, frames)) return fail("no such sequence");
    stem.pop_back();
    if (!loadAllFrames(stem)) return fail("a frame could not be read");
    const double seconds = secondsSince(start);
    const size_t bytes = residentBytes() - bytesBefore;

    if (countComplete() != frames) return fail("not every frame was kept");
    const FrameStore& first = *viewerState.slots.find(viewerState.firstFrame);
    std::printf("frame_seconds %.9f\n", seconds / frames);
    std::printf("frame_bytes %.0f\n", static_cast<double>(bytes) / frames);
    std::printf("needed_bytes %zu\n", bytesNeeded(first));
    if (argc == 4) {
        const uint64_t saving = platform::tickMicroseconds();
        if (!saveAll(argv[3])) return fail("a frame could not be saved");
        std::printf("save_seconds %.9f\n", secondsSince(saving) / frames);
    }
    return 0;
}
