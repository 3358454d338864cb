#include "sequence/foreign_input.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/temporary_file.h"

namespace vistel {

namespace {

// Of the groups that a frame stream begins with; no other type of picture begins so.
constexpr std::string_view groupInitials = "FLC";

bool awaitByte(FILE* stream, const platform::GoOn& goOn) {
    while (platform::awaitBytes(stream, 1) == 0)
        if (!platform::mayGoOn(goOn)) return false;
    return true;
}

InputTaken copyToFile(FILE* pipe, FILE* file, const platform::GoOn& goOn) {
    std::vector<char> block(64 << 10);
    while (awaitByte(pipe, goOn)) {
        // One byte may be all that comes without waiting.
        const size_t most = std::min(platform::awaitBytes(pipe, 0), block.size());
        const size_t got = std::fread(block.data(), 1, std::max<size_t>(most, 1), pipe);
        if (got == 0) return std::fflush(file) == 0 ? InputTaken::intoFile : InputTaken::failed;
        if (std::fwrite(block.data(), 1, got, file) != got) return InputTaken::failed;
    }
    return InputTaken::notWanted;
}

}  // namespace

bool beginsForeign(FILE* stream) {
    const int first = std::getc(stream);
    if (first == EOF) return false;
    std::ungetc(first, stream);
    return groupInitials.find(static_cast<char>(first)) == std::string_view::npos;
}

InputTaken takeForeignInput(FILE* pipe, const platform::GoOn& goOn) {
    if (!awaitByte(pipe, goOn)) return InputTaken::notWanted;
    if (!beginsForeign(pipe)) return InputTaken::asItIs;
    const platform::FilePtr file(platform::openTemporaryFile());
    if (!file) return InputTaken::failed;
    const InputTaken taken = copyToFile(pipe, file.get(), goOn);
    const bool put = taken == InputTaken::intoFile && platform::replaceStandardInput(file.get());
    return taken == InputTaken::intoFile && !put ? InputTaken::failed : taken;
}

}  // namespace vistel
