#include "sequence/incomplete_frames.h"

#include "sequence/source_stream.h"

namespace vistel {

void IncompleteFrames::note(int number, const Tstring& path, const platform::FileStamp& stamp) {
    File& file = files_[number];
    file.path = path;
    file.stamp.reset();
    if (!platform::modifiedJustNow(stamp)) file.stamp = stamp;
}

bool IncompleteFrames::haveChanged(int number) const {
    const auto entry = files_.find(number);
    if (entry == files_.end() || !platform::isRegularFile(entry->second.path)) return false;
    const SourceStream file(platform::openFile(entry->second.path, "r"), false);
    const auto stamp = file ? platform::fileStamp(file.file()) : std::nullopt;
    return stamp && stamp != entry->second.stamp;
}

}  // namespace vistel
