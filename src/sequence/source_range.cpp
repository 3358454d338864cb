#include "sequence/source_range.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "sequence/frame_loader.h"

namespace vistel {

namespace {

constexpr float singleImageKmem = 0.9f;

void setSingleFrame() {
    viewerState.firstFrame = viewerState.lastFrame = viewerState.frameStep = 1;
    viewerState.currentFrame = viewerState.playFirst = viewerState.playLast = 1;
}

int32_t positiveStep(int32_t step) {
    const int64_t size = step < 0 ? -int64_t{step} : int64_t{step};
    return static_cast<int32_t>(std::clamp<int64_t>(size, 1, std::numeric_limits<int32_t>::max()));
}

void normaliseAnimation() {
    viewerState.animationShown = 1;
    if (!viewerState.forceZ) viewerState.loadZ = 0;
    if (viewerState.lastFrame < viewerState.firstFrame)
        std::swap(viewerState.firstFrame, viewerState.lastFrame);
    viewerState.frameStep = positiveStep(viewerState.frameStep);
    viewerState.currentFrame = viewerState.playFirst = viewerState.firstFrame;
    viewerState.playLast = viewerState.lastFrame;
}

}  // namespace

void beginSource() {
    viewerState.currentZoom = viewerState.magnify;
    viewerState.sourceName.clear();
    viewerState.sourceOpened = viewerState.quitRequested = 0;
    viewerState.oneFileStream = nullptr;
    if (loaderHooks.sourceBegins) loaderHooks.sourceBegins();
}

void takeRange(const FrameRange& range) {
    viewerState.animation = 1;
    viewerState.firstFrame = viewerState.currentFrame = viewerState.playFirst = range.start;
    viewerState.lastFrame = viewerState.playLast = range.end;
    viewerState.frameStep = range.step;
}

void forgetAnimation() {
    viewerState.animation = 0;
    setSingleFrame();
}

void normaliseRange() {
    if (viewerState.animation)
        normaliseAnimation();
    else
        setSingleFrame();
    if (viewerState.sequenceMode) return;
    viewerState.windowId = -1;
    if (viewerState.animation) return;
    viewerState.kmem = singleImageKmem;
    if (loaderHooks.clearImageState) loaderHooks.clearImageState();
}

PerFileValues::~PerFileValues() {
    viewerState.kmem = kmem_;
    viewerState.loadZ = loadZ_;
    viewerState.rfact = rfact_;
    viewerState.magnify = magnify_;
    viewerState.animationShown = animationShown_;
    viewerState.oneFile = oneFile_;
    viewerState.inter = inter_;
}

}  // namespace vistel
