#include "app/source_opening.h"

#include <algorithm>
#include <utility>

#include "host/messages.h"
#include "iff/result_codes.h"
#include "iff/with_memory.h"
#include "sequence/frame_name.h"
#include "sequence/frame_range.h"

namespace vistel {

static constexpr float singleImageKmem = 0.9f;

void beginSource(const StartUpServices& services) {
    viewerState.currentZoom = viewerState.magnify;
    viewerState.sourceName.clear();
    viewerState.sourceFolder.clear();
    viewerState.sourceOpened = viewerState.quitRequested = 0;
    viewerState.oneFileStream = {};
    callIfSet(services.sourceBegins);
}

Tstring discoverSequence(const Tstring& name, const StartUpServices& services) {
    const bool found = !namesCommand(name) && services.discover && services.discover(name) != 0;
    return found && name.ends_with('.') ? Tstring(name.substr(0, name.size() - 1)) : name;
}

void normaliseRange(const StartUpServices& services) {
    if (viewerState.animation) {
        orderRange(viewerState);
        if (!viewerState.forceZ) viewerState.loadZ = 0;
    } else {
        forgetAnimation(viewerState);
    }
    if (viewerState.sequenceMode) return;
    viewerState.windowId = -1;
    if (viewerState.animation) return;
    viewerState.kmem = singleImageKmem;
    callIfSet(services.clearImageState);
}

int openAndShow(const Tstring& name, const StartUpServices& services) {
    FrameStore frame;
    const int code = services.openSource ? services.openSource(name, frame) : -1;
    rememberFolder(viewerState, viewerState.sourceFolder);
    if (!frame.hasPicture() || !services.showSource) return code;
    // Without memory to show it the next source has its turn.
    const int shown = withMemory([&] {
        services.showSource(std::move(frame));
        return int{iffOk};
    });
    if (shown == iffOk) return code;
    printError(name + ": " + errorText(shown));
    return shown;
}

int reopenSource(const Tstring& givenName, const FrameRange& range,
                 const StartUpServices& services) {
    viewerState.animation = 0;
    viewerState.nameParts.reset();
    viewerState.failuresTold.clear();
    if (range.step != 0) takeRange(viewerState, range);
    viewerState.magnify = std::max(viewerState.pendingZoom, 1);
    viewerState.rfact = std::max(viewerState.pendingShrink, 1);
    const PerFileValues values;
    beginSource(services);
    const Tstring name = discoverSequence(givenName, services);
    viewerState.fileName = name;
    viewerState.nativeFileName = name.replacingAll('/', '\\');
    viewerState.pendingOpen.clear();
    normaliseRange(services);
    return openAndShow(name, services);
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
