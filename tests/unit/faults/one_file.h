// One file that is written and loaded again and again; making files is what takes the time.
#pragma once

#include <string>
#include <vector>

#include "faults/fault_points.h"
#include "iff/every_form.h"
#include "iff/image_loader.h"

namespace vistel::test {

// A way of reading a frame file.
struct Way {
    const char* name;
    int wantedForm = 0;
    bool verbose = false, loadPixels = true, showAll = false, pipe = false;
    uint32_t shrink = 1;
};

constexpr Way everyWay[] = {
    {.name = "a full pass with its report", .verbose = true},
    {.name = "a full pass of a pipe", .verbose = true, .pipe = true},
    {.name = "rectangles only", .verbose = true, .loadPixels = false, .showAll = true},
    {.name = "no tiles, of a pipe", .loadPixels = false, .pipe = true},
    {.name = "the third form again, at half size", .wantedForm = 3, .shrink = 2},
};

class OneFile {
 public:
    void write(const Bytes& bytes) { file_.write(bytes); }

    // The code; the frames that were handed over are looked at in full and dropped.
    int load(const Way& way) {
        ImageLoadRequest request;
        const platform::FilePtr stream(platform::openFile(file_.name(), "r"));
        if (!stream) return iffIoError;
        request.stream = stream.get();
        request.wantedForm = way.wantedForm;
        request.verbose = way.verbose;
        request.loadPixels = way.loadPixels;
        request.showAll = way.showAll;
        request.fit.shrink = way.shrink;
        request.fit.maxWidth = request.fit.maxHeight = 4000;
        request.owner = this;
        request.formRead = [](void* owner, FrameStore& frame, int error) {
            static_cast<OneFile*>(owner)->look(frame, error);
            return int{iffOk};
        };
        forms = 0;
        FrameStore working;
        return loadImages(request, working);
    }

    const std::string& name() const { return file_.name(); }
    int forms = 0;  // handed over by the last load
    bool errorsListed = true;

 private:
    void look(const FrameStore& frame, int error) {
        ++forms;
        errorsListed &= listed(error);
        volatile uint32_t sum = 0;
        const auto width = static_cast<size_t>(frame.width);
        const auto height = static_cast<size_t>(frame.height);
        for (size_t y = 0; y < height && frame.hasPicture(); ++y) {
            const size_t last = y % 2 ? width - 1 : 0;
            if (!frame.colour.empty()) sum = sum + frame.colour.row(y)[last];
            if (!frame.z.empty()) sum = sum + static_cast<uint32_t>(frame.z.row(y)[last] != 0);
        }
    }
    TemporaryFile file_;
};

// Loads the file the given way, as a pipe where it says so.
inline int loadAs(OneFile& file, const Way& way) {
    if (!way.pipe) return file.load(way);
    const PipesOnly pipes;
    return file.load(way);
}

}  // namespace vistel::test
