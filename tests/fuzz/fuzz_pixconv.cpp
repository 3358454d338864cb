// The whole converter: any bytes as a file of the type that the first byte chooses, or of the one
// that they are recognised as; what can be read is written as a frame and read again, a part of it
// as one that ends early.
//     build/fuzz/bin/fuzz_pixconv -max_len=4096 tests/fuzz/corpus/fuzz_pixconv

#include <cstdlib>

#include "codecs.h"
#include "convert.h"
#include "input_file.h"
#include "memory_rule.h"
#include "platform/files.h"

using namespace vistel;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const size_t choice = data[0];
    ++data;
    --size;
    const SourceFile source{"picture", fileOf(data, size), size};
    Failure failure;
    const Codec* codec =
        choice < allCodecs().size() ? allCodecs()[choice] : codecForReading(source, failure);
    if (!codec) return 0;
    Picture picture;
    picture.mostBytes = justifiedBytes(codec->key, size);  // as the converter does
    failure = codec->read(source, picture);
    if (failure && failure->empty()) std::abort();
    // Large pictures are right, but take time that is better spent on other bytes.
    if ((failure && !picture.partIsThere()) ||
        picture.samples.size() + picture.wideSamples.size() > 4000000)
        return 0;
    const platform::FilePtr frame(freshFile());
    if (failure) {  // a part: a stream that ends early
        if (writeFrame(picture, platform::duplicateStream(frame.get()), FrameExtent::part))
            std::abort();
        std::rewind(frame.get());
        Picture part;
        if (!readFrame(frame.get(), part)) std::abort();
        return 0;
    }
    if (tavoCodec.write(picture, {"frame", frame.get()})) std::abort();
    std::rewind(frame.get());
    Picture again;
    if (readFrame(frame.get(), again)) std::abort();
    if (again.samples != picture.samples || again.wideSamples != picture.wideSamples) std::abort();
    return 0;
}
