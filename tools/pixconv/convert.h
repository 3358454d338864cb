// The two ways of the converter: any picture file to a frame stream, and back.
#pragma once

#include <cstdio>
#include <string>

#include "codec.h"

namespace vistel {

// The codec for a file by its first bytes and, where these do not tell, by its extension. Null when
// neither does; the failure then says why.
const Codec* codecForReading(const SourceFile& source, Failure& failure);

// The codec of a key or, with an empty key, of the file's extension. A name without extension, or
// with a number for one, is a frame of our own. Null when there is none that can be written.
const Codec* codecForWriting(const std::string& path, const std::string& key, Failure& failure);

// Reads the file, which must be a regular one, and writes the frame stream to `out`, which is
// closed unless it is a standard stream. Of a file that is cut or damaged the part that could be
// read is written as a stream that ends early too, so that nobody takes it for the whole; then the
// failure tells what is wrong. An empty failure text: whoever read the output has gone, and nobody
// needs to be told.
[[nodiscard]] Failure toFrame(const std::string& path, FILE* out);

// The same of a picture that comes as a stream, such as a pipe; its first bytes alone tell what it
// is. `in` is not closed.
[[nodiscard]] Failure toFrame(FILE* in, FILE* out);

// Reads a frame stream from `in` (not closed) and writes the file. A key or extension that cannot
// be written is told before anything is read; of a pipe that held a picture the rest is read too,
// for the sake of who writes it. Nothing is opened for writing before, and the new file takes its
// name once it is whole: a failure leaves what was there. A symbolic link stays, the file behind it
// is replaced; one that leads nowhere is refused. What cannot be replaced without harm is written
// over, then (UnfinishedFile). Devices and pipes are written directly.
[[nodiscard]] Failure fromFrame(FILE* in, const std::string& path, const std::string& key);

// Writes a picture as a frame stream; `out` and failure as above. The stream of a part has all its
// pixels, but not its end.
enum class FrameExtent { whole, part };
[[nodiscard]] Failure writeFrame(const Picture& picture, FILE* out,
                                 FrameExtent extent = FrameExtent::whole);

// Reads a frame stream's first picture, from a file or a pipe.
[[nodiscard]] Failure readFrame(FILE* in, Picture& picture);

}  // namespace vistel
