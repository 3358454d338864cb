#include "sequence/converter.h"

#include "host/image_plugins.h"
#include "host/tstring.h"
#include "iff/file_kind.h"

namespace vistel {

namespace {

constexpr const char* olderConverter = "rasconv";

// Every other kind is the image converter's.
constexpr struct {
    int kind;
    SourceReader reader;
} readers[] = {
    {fileKindImage, SourceReader::direct},
    {fileKindImageList, SourceReader::direct},
    {fileKindContainer, SourceReader::direct},
    {fileKindRaster1, SourceReader::olderConverter},
    {fileKindRaster2, SourceReader::olderConverter},
    {fileKindRaster3, SourceReader::olderConverter},
    {fileKindOldRaster, SourceReader::olderConverter},
};

}  // namespace

SourceReader readerOfKind(int kind) {
    for (const auto& entry : readers)
        if (entry.kind == kind) return entry.reader;
    return SourceReader::imageConverter;
}

SourceReader readerOfFile(const std::string& located, bool waitForWriter) {
    // Only a path of its own keeps the probe from taking a file of this name for standard input.
    const bool nameOfStream = Tstring(located).equalsIgnoringCase("stdin");
    const int kind = probeFileKind(nameOfStream ? "./" + located : located);
    if (waitForWriter && kind == fileKindUnreadable) return SourceReader::direct;
    return readerOfKind(kind);
}

const char* converterName(SourceReader reader) {
    return reader == SourceReader::olderConverter ? olderConverter : imageConverter;
}

std::string converterCommand(SourceReader reader, const std::string& program,
                             const std::string& file) {
    const char* options = reader == SourceReader::olderConverter ? "-s -B" : "";
    return platform::quotedCommand(program, options, file, "stdout");
}

}  // namespace vistel
