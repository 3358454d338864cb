// What the loading of frames works on: the options that say what is read of a file and how, the
// places where frame files are looked for, the range and the position in an animation, and the
// source that is open. Fields only; they belong to the main thread.
//
// The comment of each field names its unit, and the option or command that sets it. Integers used
// as flags are 0 or 1.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "host/tstring.h"
#include "sequence/converted_files.h"
#include "sequence/incomplete_frames.h"
#include "sequence/source_stream.h"
#include "sequence/told_frames.h"

namespace vistel {

struct FrameRange {
    int32_t start = 0, end = 0, step = 0;
};

struct LoadOptions {
    int32_t verbose = 0;      // -v: print file names, results, image descriptions
    int32_t showAll = 0;      // -a: accept image chunks that inter = 0 would skip
    int32_t inter = 1;        // -c clears: 0 skips the pixel and depth chunks
    int32_t loadZ = 1;        // -z clears; an animation clears it unless forceZ
    int32_t forceZ = 0;       // -Z: animations keep loadZ
    int32_t histogram = 0;    // -e: entropy histogram of compressed pixel bytes
    int32_t padNum = 0;       // -p: built frame names get a zero-padded number
    int32_t findFirst = 0;    // -f: step forward to the first frame that exists
    int32_t synchro = 0;      // -w: wait for frames that are still being written
    int32_t testMode = 0;     // -t: frames come from the converter's test pipe
    int32_t oneFile = 0;      // -N: all frames of the animation lie in one file
    float kmem = 0.9f;        // -k (value x 0.9): above 0, loaded frames stay in memory
    int32_t magnify = 1;      // -m: zoom factor, 1..8
    int32_t currentZoom = 1;  // magnify as it was when the file was opened: its start-up zoom
    int32_t rfact = 1;        // -s: shrink factor, at least 1
    uint32_t maxLevel = 0xFFFFFFF0;  // -l: nesting level from which groups are skipped
};

struct FramePlaces {
    Tstring workDir;                    // -W, GRAPH: root of the frame search directories
    Tstring projectName;                // -P, PROJ: project below workDir
    std::array<Tstring, 6> searchDirs;  // in the order in which they are tried; the last one that
                                        // had a frame comes first
    Tstring startDirectory;             // folder in force when the file argument was taken
};

struct FramePosition {
    int32_t animation = 0;  // an animation range is in force
    int32_t firstFrame = 0, lastFrame = 0, frameStep = 0;
    int32_t currentFrame = 0;             // number of the frame being opened or shown
    int32_t playFirst = 1, playLast = 1;  // bounds of playback
    int32_t padWidth = 0;                 // digits of the number in names; 0 unknown, 1 unpadded
    int32_t animationShown = 0;           // an animation (not a single image) is being shown
};

struct CurrentSource {
    Tstring fileName;            // as given, a trailing dot removed when a sequence was found
    Tstring nativeFileName;      // the same with backslashes
    Tstring sourceName;          // name under which the source is shown
    Tstring openedName;          // as openImageSource was given it; empty: standard input
    Tstring sourceFolder;        // the folder that was entered with a file; empty: none
    int32_t fileNumber = 0;      // its place among the file arguments, from 1
    int32_t fileCount = 0;       // file arguments; 0: the source is none of them
    int32_t sourceIsPipe = 0;    // frames come out of a command
    int32_t sourceOpened = 0;    // a stream was opened for the current file argument
    SourceStream oneFileStream;  // open stream of a one-file animation
    std::shared_ptr<ConvertedFiles> converted = std::make_shared<ConvertedFiles>();
    IncompleteFrames incomplete;
};

struct SequenceState : LoadOptions, FramePlaces, FramePosition, CurrentSource {
    ToldFrames told;  // in this session
};

}  // namespace vistel
