// ViewerState: the one process-wide record of the viewer. Fields only; every subsystem above the
// parsers reads and writes them directly. It belongs to the main thread.
//
// The comment of each field names its unit, and the option or command that sets it. Integers used as
// flags are 0 or 1.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "host/tstring.h"

namespace vistel {

struct FrameRange {
    int32_t start = 0, end = 0, step = 0;
};

enum class PlayMode : int32_t { stopped = 0, forward = 1, backward = 2 };

struct ViewerState {
    // --- Options and flags ---------------------------------------------------------------------
    int32_t verbose = 0;         // -v: print file names, results, image descriptions
    int32_t noWinBorder = 0;     // -B: window without border
    int32_t fullScreen = 0;      // -d, "Full Screen" command
    int32_t noRescale = 0;       // -F, "Full Resolution" command: no fitting to the screen
    int32_t showAll = 0;         // -a: accept image chunks that inter = 0 would skip
    int32_t inter = 1;           // -c clears: 0 skips the pixel and depth chunks
    int32_t loadZ = 1;           // -z clears; an animation clears it unless forceZ
    int32_t forceZ = 0;          // -Z: animations keep loadZ
    int32_t histogram = 0;       // -e: entropy histogram of compressed pixel bytes
    int32_t padNum = 0;          // -p: built frame names get a zero-padded number
    int32_t findFirst = 0;       // -f: step forward to the first frame that exists
    int32_t sequenceMode = 0;    // -S: the file list repeats, each file for sequenceDelay
    int32_t sequenceDelay = 0;   // -T: seconds between files in sequence mode
    int32_t synchro = 0;         // -w: wait for frames that are still being written
    int32_t testMode = 0;        // -t: frames come from the converter's test pipe
    int32_t oneFile = 0;         // -N: all frames of the animation lie in one file
    int32_t lutActive = 0;       // -K, -g: the display look-up table is in use
    int32_t cineonLog = 0;       // -K: the table converts logarithmic film data
    float defGamma = 1.0f;       // -g: gamma of all three channels at start
    float kmem = 0.9f;           // -k (value x 0.9): above 0, loaded frames stay in memory
    int32_t magnify = 1;         // -m: zoom factor, 1..8
    int32_t currentZoom = 1;     // magnify as it was when the file was opened: its start-up zoom
    int32_t rfact = 1;           // -s: shrink factor, at least 1
    uint32_t maxLevel = 0xFFFFFFF0;  // -l: nesting level from which groups are skipped
    Tstring workDir;             // -W, GRAPH: root of the frame search directories
    Tstring projectName;         // -P, PROJ: project below workDir
    std::array<Tstring, 6> searchDirs;  // places of frame files; order changes as frames are found
    Tstring helpBase;            // "file:///" + install root + "/docs/ext/VisTel/"

    // --- Frame range and position --------------------------------------------------------------
    int32_t animation = 0;  // an animation range is in force
    int32_t firstFrame = 0, lastFrame = 0, frameStep = 0;
    int32_t currentFrame = 0;          // number of the frame being opened or shown
    int32_t playFirst = 1, playLast = 1;  // bounds of playback
    int32_t padWidth = 0;              // digits of the number in names; 0 unknown, 1 unpadded
    int32_t animationShown = 0;        // an animation (not a single image) is being shown

    // --- Frame rate, frames per second ---------------------------------------------------------
    int32_t savedFrameRate = 24;  // kept between runs
    int32_t frameRate = 24;       // in force, 1..300
    int32_t startFrameRate = 24;  // chosen at start

    // --- Sound ---------------------------------------------------------------------------------
    Tstring audioFile;        // -u
    int32_t audioOffset = 0;  // frame at which the sound starts
    int32_t soundOn = 0;

    // --- Current source ------------------------------------------------------------------------
    Tstring fileName;         // as given, a trailing dot removed when a sequence was found
    Tstring nativeFileName;   // the same with backslashes
    Tstring sourceName;       // name under which the source is shown
    int32_t sourceIsPipe = 0;
    int32_t sourceOpened = 0;         // a stream was opened for the current file argument
    FILE* oneFileStream = nullptr;    // open stream of a one-file animation
    int32_t rereading = 0;            // one selected frame is being read again
    Tstring startDirectory;           // folder in force when the file argument was taken

    // --- Requests from menus, drained by the start-up loop -------------------------------------
    Tstring pendingOpen;
    FrameRange pendingRange;
    int32_t pendingRangeSet = 0;
    int32_t pendingZoom = 0, pendingShrink = 0;
    int32_t quitRequested = 0;
    int32_t windowId = -1;  // below 1: the window is created when the next image is shown

    // --- Saving and saved settings -------------------------------------------------------------
    Tstring saveName;
    int32_t saveNameSet = 0;
    int32_t saveAnimation = 0;
    Tstring saveFormatKey;
    int32_t overwriteMode = 0;
    int32_t filterIndex = 0;
    Tstring lastFolder;  // at most 259 bytes

    // --- Playing -------------------------------------------------------------------------------
    PlayMode playMode = PlayMode::stopped;
    int32_t paused = 0;
    int32_t pingPong = 0;      // S: reverse at the range ends instead of wrapping
    int32_t playOnce = 0;      // Alt with the play keys
    int32_t frameSkip = 0;     // T: skip frames when behind the clock
    int32_t luminanceCurve = 0;  // F8: picking a point writes its luminance through the frames
    int32_t halfHeight = 0;    // frames are half as high as the picture they stand for

    // --- Window --------------------------------------------------------------------------------
    int32_t controlBarShown = 0;
    int32_t viewerLoopRunning = 0;
    int32_t soundLoaded = 0;
};

inline ViewerState viewerState;

}  // namespace vistel
