// What the window shows: the frame on screen, how it is laid out and viewed. The record that
// everything in this folder works on, and all that it knows of the rest of the program.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/colour_lut.h"
#include "analysis/display_buffer.h"
#include "analysis/plane_views.h"
#include "analysis/relief.h"
#include "analysis/tracking.h"
#include "analysis/view_mode.h"
#include "iff/frame_store.h"
#include "sequence/sequence_state.h"

namespace vistel {

// How a source is shown in its window. Flags are 0 or 1.
struct ShowOptions {
    int32_t noWinBorder = 0;    // -B: window without border
    int32_t fullScreen = 0;     // -d, "Full Screen" command
    int32_t noRescale = 0;      // -F, "Full Resolution" command: no fitting to the screen
    int32_t sequenceMode = 0;   // -S: the file list repeats, each file for sequenceDelay
    int32_t sequenceDelay = 0;  // -T: seconds between files in sequence mode
    int32_t halfHeight = 0;     // frames are half as high as the picture they stand for
    int32_t windowId = -1;      // below 1: the window is created when the next image is shown
};

struct ColourOptions {
    int32_t lutActive = 0;  // -K, -g: the display look-up table is in use
    int32_t cineonLog = 0;  // -K: the table converts logarithmic film data
    float defGamma = 1.0f;  // -g: gamma of all three channels at start
};

// The picture's place in the window.
struct PictureLayout {
    int width = 0, height = 0;     // of the shown frame, image pixels
    int zoom = 1;                  // window pixels per image pixel
    int startZoom = 1;             // the zoom given at start: margins and window are made for it
    int marginX = 0, marginY = 0;  // window pixels between the window's edge and the picture
    // The window was made for the largest frame that the source has shown: its sides in a window,
    // image pixels, and the margins round it.
    int largestWidth = 0, largestHeight = 0;
    int windowMarginX = 0, windowMarginY = 0;
    int visibleWidth = 0, visibleHeight = 0;  // window pixels
    float panX = 0, panY = 0;  // image column and row at the picture's lower-left corner
    bool clearWanted = true;   // the margins must be painted
};

// What full screen was entered with, to come back to.
struct WindowView {
    int width = 0, height = 0;  // of the frame, image pixels
    int zoom = 0;
    float panX = 0, panY = 0;
};

// What the status line says.
struct StatusFields {
    int frame = 0;               // number of the frame
    int frameRate = 1;           // frames per second, at least 1
    bool skips = false;          // late frames are skipped
    const char* direction = "";  // "F", "BS" ...: how it plays
    const char* source = "";     // "Mem", "Dsk", "???": where the frame came from
    bool partly = false;         // the play range is not the whole sequence
    int playFirst = 0, playLast = 0;
    float framesPerSecond = 0;
};

constexpr float startReliefDepth = -0.1f;

// What is known of the picture of one source, forgotten with it.
struct PictureSession {
    FrameStore* shown = nullptr;            // the frame on screen
    ChannelMode mode = ChannelMode::all;    // what is shown of it
    ChannelMode chosen = ChannelMode::all;  // by key, for each frame that has it
    ZScale zScale = ZScale::wholeRange;
    std::optional<ChannelMode> bumpSource;        // the view that a relief is made from
    ChannelMode chosenSource = ChannelMode::all;  // the same by key, for frames that have it
    bool reliefInverted = false;
    float reliefDepth = startReliefDepth;  // slope of the relief; negative: lit from the other side
    int reliefAmount = 0;                  // 0 grey to 256: how much of the colours a relief has
    bool profiles = false;                 // profile lines over a relief
    int controlChannel = 0;                // 1 blue, 2 green, 3 red; 0 none
    bool controlComplement = false;        // the control channel was chosen with Shift
    PictureLayout layout;
    WindowView beforeFullScreen;
    StatusFields status;
    std::string title;       // of the window
    bool bandShown = false;  // a message band covers the picture
};

// The pixels that are shown, built when they are drawn, in buffers that are kept from frame to
// frame.
struct PictureViews {
    bool stale = true;
    const uint32_t* displayed = nullptr;
    DisplayBuffer corrected;            // stored pixels through the look-up table
    DisplayBuffer grey;                 // a plane, the depth, the luminance; heights of a relief
    const uint32_t* heights = nullptr;  // of the relief built last
    DisplayBuffer relief;
    std::vector<uint8_t> shade;
    ReliefShader shader;
    std::vector<ProfilePoint> profile;  // of one row
};

struct ShownPicture : SequenceState, ShowOptions, ColourOptions, PictureSession {
    ColourLut lut;
    bool filmAtStart = false;  // cineonLog as the options left it
    PictureViews views;
    Tracking tracking;
};

}  // namespace vistel
