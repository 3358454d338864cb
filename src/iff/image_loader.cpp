// The form and group handlers: which groups are walked, and what happens when an image is complete.

#include "iff/image_loader.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "host/tstring.h"
#include "iff/image_description.h"
#include "iff/image_parse.h"
#include "iff/with_memory.h"
#include "platform/files.h"

namespace vistel {

static ImageParse& parseOf(IffReader& group) { return *static_cast<ImageParse*>(group.user); }

static void listGroup(const IffReader& group, const ImageParse& parse) {
    if (!parse.listing()) return;
    const std::string line =
        listingLine(group.depth(), group.chunkId(), group.chunkSize(), group.groupType());
    platform::writeReport(printable(line) + "\n", parse.request.goOn);
}

static int walkGroup(IffReader& group, ImageParse& parse) {
    IffReader chunks;
    int result = group.enter(chunks);
    if (result != iffOk) return result;
    do {
        result = chunks.dispatch();
        if (result > 0) result = handleChunk(chunks, parse);
    } while (result == iffOk);
    // What the system says of a failure is asked for when much else has been done.
    if (result == iffIoError && parse.systemError == 0) parse.systemError = errno;
    chunks.leave();
    return result == iffEndOfGroup ? iffOk : result;
}

// Whoever is given a frame may read every pixel of its planes. Colour can be shown without depth.
static int completePlanes(ImageForm& form) {
    FrameStore& frame = form.frame;
    const uint64_t bytes = uint64_t(frame.width) * uint64_t(frame.height) * sizeof(uint32_t);
    if (!memoryJustified(bytes, form.dataBytes) ||
        (!frame.colour.empty() && !frame.colour.complete())) {
        frame.clear();
        return iffNoMemory;
    }
    if (frame.z.empty() || frame.z.complete()) return iffOk;
    frame.z.free();
    return iffNoMemory;
}

// The planes of a form that has been read, complete: iffOk also when there are none.
static int finishPlanes(ImageForm& form) {
    if (form.blackTiles && !form.frame.hasPicture())
        if (const int code = makeBlackPicture(form); code != iffOk) return code;
    return form.frame.hasPicture() ? completePlanes(form) : int{iffOk};
}

static int handOver(ImageForm& form, ImageParse& parse, int error) {
    parse.decoder.settle();
    if (const int code = finishPlanes(form); error == iffOk) error = code;
    if (error != iffOk && !form.frame.hasPicture()) return error;
    parse.frame = std::move(form.frame);
    const ImageLoadRequest& request = parse.request;
    const int code = request.formRead ? request.formRead(request.owner, parse.frame, error) : iffOk;
    if (error != iffOk) return error;
    return code == iffOk && form.wanted ? iffParsingComplete : code;
}

static int readImageForm(IffReader& group, ImageParse& parse) {
    ImageForm form;
    form.wanted = parse.rereading();
    ImageForm* const outer = std::exchange(parse.form, &form);
    ++parse.openForms;
    const int result = walkGroup(group, parse);
    --parse.openForms;
    parse.form = outer;
    outer->heldForms = true;
    // A form that only held other images is no image itself.
    if (form.heldForms && !form.headerRead) return result;
    return result == iffParsingComplete ? result : handOver(form, parse, result);
}

// Each image form that is open holds its planes.
static constexpr int maxOpenForms = 4;

static int handleForm(IffReader& group) {
    ImageParse& parse = parseOf(group);
    const ImageLoadRequest& request = parse.request;
    listGroup(group, parse);
    const bool tiles = group.groupType() == iffId("TBMP");
    if (tiles && !request.loadPixels && !request.showAll) return iffBlockIgnored;
    const bool image = group.groupType() == iffId("CIMG");
    if (image && parse.openForms >= maxOpenForms) return iffBlockIgnored;
    if (image && ++parse.formCount != request.wantedForm && parse.rereading())
        return iffBlockIgnored;
    if (group.depth() >= request.maxLevel) return iffBlockIgnored;
    return image ? readImageForm(group, parse) : walkGroup(group, parse);
}

static bool listedAndOpen(IffReader& group) {
    const ImageParse& parse = parseOf(group);
    listGroup(group, parse);
    return group.depth() < parse.request.maxLevel;
}

static int handleGroup(IffReader& group) {
    return listedAndOpen(group) ? group.parseGroup() : iffBlockIgnored;
}

// The chunks of a property group are plain ones.
static int handleProperties(IffReader& group) {
    return listedAndOpen(group) ? walkGroup(group, parseOf(group)) : iffBlockIgnored;
}

static int parseImages(const ImageLoadRequest& request, FrameStore& frame) {
    ImageParse parse(request, frame);
    IffReader root;
    root.handlers = {handleForm, handleGroup, handleGroup, handleProperties, {}};
    root.user = &parse;
    root.retryCount = request.waitForWriter ? -1 : 0;
    root.goOn = request.goOn;
    const int result = parseWholeFile(root, request.stream);
    if (result == iffIoError && parse.systemError != 0) errno = parse.systemError;
    return result == iffParsingComplete ? iffOk : result;
}

int loadImages(const ImageLoadRequest& request, FrameStore& frame) {
    frame.clear();
    return withMemory([&] { return parseImages(request, frame); });
}

}  // namespace vistel
