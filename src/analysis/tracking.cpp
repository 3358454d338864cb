#include "analysis/tracking.h"

#include <algorithm>

#include "host/tstring.h"

namespace vistel {

bool Tracking::keep(int64_t place, const Pick& pick) {
    if (place < 0 || place >= room.value_or(0)) return false;
    picks[place] = pick;
    return true;
}

const Pick* Tracking::find(int64_t place) const {
    const auto found = picks.find(place);
    return found == picks.end() ? nullptr : &found->second;
}

TrackedFrames trackedFrames(const Tracking& tracking, int32_t first, int32_t last, int32_t step,
                            int32_t current) {
    TrackedFrames tracked;
    if (last < first) return tracked;
    const int64_t distance = int64_t{last} - first;
    tracked.frames = distance / step + 1;
    tracked.picked = std::count_if(
        tracking.picks.begin(), tracking.picks.end(),
        [&](const auto& pick) { return pick.first <= distance && pick.first % step == 0; });
    if (tracked.picked == tracked.frames) return tracked;
    int64_t count = std::clamp<int64_t>((int64_t{current} - first) / step, 0, tracked.frames - 1);
    while (tracking.find(count * step)) count = (count + 1) % tracked.frames;
    tracked.missing = static_cast<int32_t>(first + count * step);
    return tracked;
}

std::vector<TrackedPoint> trackedPoints(const Tracking& tracking, int32_t first, int32_t last,
                                        int shrink) {
    std::vector<TrackedPoint> points;
    for (const auto& [place, pick] : tracking.picks) {
        if (place > int64_t{last} - first) break;
        const float scale = float(pick.shrink) / float(shrink);
        points.push_back({static_cast<int32_t>(first + place),
                          pick.x * scale + float(tracking.origin.x),
                          pick.y * scale + float(tracking.origin.y)});
    }
    return points;
}

std::string trackingLines(std::span<const TrackedPoint> points) {
    std::string text;
    for (const TrackedPoint& point : points)
        text += formatPrintf("%d %.2f %.2f\n", point.frame, double(point.x), double(point.y));
    return text;
}

// "12.50@1, 13.00@2);", five to a line.
static std::string curveValues(std::span<const TrackedPoint> points, float TrackedPoint::*value) {
    constexpr size_t perLine = 5;
    std::string text;
    for (size_t i = 0; i < points.size(); ++i) {
        if (i > 0) text += ", ";
        if (i > 0 && i % perLine == 0) text += "\n              ";
        text += formatPrintf("%.2f@%d", double(points[i].*value), points[i].frame);
    }
    return text + ");\n";
}

std::string panCurves(std::string_view panX, std::span<const TrackedPoint> points) {
    return std::string(panX) + curveValues(points, &TrackedPoint::x) + "PanY = Linear(" +
           curveValues(points, &TrackedPoint::y);
}

float pixelLuminance(const FrameStore& frame, float x, float y) {
    if (frame.colour.empty()) return 0;
    const auto column = static_cast<int>(x), row = static_cast<int>(y);
    if (column < 0 || column >= frame.width || row < 0 || row >= frame.height) return 0;
    const uint32_t pixel = frame.colour.row(static_cast<size_t>(row))[column];
    const uint32_t sum = 77 * (pixel >> 16 & 255) + 151 * (pixel >> 8 & 255) + 28 * (pixel & 255);
    return float(sum) * 1.5318628e-5f;
}

std::string luminanceCurve(const Pick& pick, const ImageOrigin& origin, int32_t firstFrame,
                           std::span<const float> values) {
    std::string text =
        formatPrintf("Lum%d_%d = Linear(\n    ", static_cast<int>(pick.x + float(origin.x)),
                     static_cast<int>(pick.y) + origin.y);
    int64_t frame = firstFrame;
    for (size_t i = 0; i < values.size(); ++i, ++frame) {
        const bool last = i + 1 == values.size();
        text += formatPrintf("%.4f@%d%s", double(values[i]), static_cast<int>(frame),
                             last             ? ")\n"
                             : frame % 6 == 0 ? ",\n    "
                                              : ", ");
    }
    return text;
}

}  // namespace vistel
