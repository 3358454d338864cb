#include "sequence/form_reader.h"

#include <utility>

#include "iff/result_codes.h"

namespace vistel {

namespace {

struct Reading {
    FrameStore& frame;
    bool& found;
};

int takeForm(void* owner, FrameStore& frame, int error) {
    auto& reading = *static_cast<Reading*>(owner);
    if (error == iffAborted) return error;
    reading.frame = std::move(frame);
    reading.found = true;
    return error ? error : iffParsingComplete;
}

}  // namespace

int readForm(const ImageLoadRequest& request, int number, FrameStore& frame, bool& found) {
    found = false;
    Reading reading{frame, found};
    ImageLoadRequest one = request;
    one.wantedForm = number;
    one.formRead = takeForm;
    one.owner = &reading;
    FrameStore working;
    const int result = loadImages(one, working);
    return result == iffParsingComplete ? int{iffOk} : result;
}

}  // namespace vistel
