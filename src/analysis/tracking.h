// Tracking: points that the user picks, one for each frame, and luminance curves. All that is
// written of them is text for other programs; what makes it works on plain records.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "iff/frame_store.h"

namespace vistel {

// A point in pixels of the picture that it was picked in, from its lower left corner.
struct Pick {
    float x = 0, y = 0;
    int shrink = 1;  // of that picture
};

// What is added to columns and rows that are written: where the image lies in the one that it is a
// part of. Nothing that is read today tells, so both stay 0.
struct ImageOrigin {
    int32_t x = 0, y = 0;
};

// One for the whole run.
struct Tracking {
    bool on = false;              // F5: picks are kept
    bool luminanceCurve = false;  // F8: picks write luminance curves instead
    ImageOrigin origin;
    // Of how many frames picks are kept: as many as there were when tracking was first switched on.
    // None: it never was. Other sequences that are opened later change nothing.
    std::optional<int64_t> room;
    std::map<int64_t, Pick> picks;  // by the frame's number less the first frame's

    // Keeps a pick in the place of an earlier one. False, with nothing changed, without room.
    bool keep(int64_t place, const Pick& pick);
    // Null when there is none.
    const Pick* find(int64_t place) const;
};

// The frames of an animation that have a pick and those that have none.
struct TrackedFrames {
    int64_t frames = 0, picked = 0;
    std::optional<int32_t> missing;  // the first one without, from the current frame on and round
};
TrackedFrames trackedFrames(const Tracking& tracking, int32_t first, int32_t last, int32_t step,
                            int32_t current);

// A pick as it is written.
struct TrackedPoint {
    int32_t frame = 0;
    float x = 0, y = 0;
};

// The picks of the frames from first to last in their order, in pixels of a picture that is shrunk
// so, with the origin added.
std::vector<TrackedPoint> trackedPoints(const Tracking& tracking, int32_t first, int32_t last,
                                        int shrink);

// A line "FRAME X Y" for each point.
std::string trackingLines(std::span<const TrackedPoint> points);

// The columns and the rows as a curve each: "PanX = Linear(12.50@1, 13.00@2);". `panX` is how the
// first one begins; the other one begins with "PanY = Linear(" in every language.
std::string panCurves(std::string_view panX, std::span<const TrackedPoint> points);

// How bright a pixel of the stored picture is, 0 to 1: (77 a + 151 b + 28 c) / 65280 with a in bits
// 16 to 23 of the stored pixel, b in 8 to 15, c in 0 to 7. 0 outside the picture and of a frame
// without colours. Column and row are truncated.
float pixelLuminance(const FrameStore& frame, float x, float y);

// The curve of one pixel, a value for each frame from the first one on: "Lum4_7 = Linear(0.2500@1,
// ...)". A line ends after each frame whose number is a multiple of 6.
std::string luminanceCurve(const Pick& pick, const ImageOrigin& origin, int32_t firstFrame,
                           std::span<const float> values);

}  // namespace vistel
