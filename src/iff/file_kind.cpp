#include "iff/file_kind.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/files.h"

namespace vistel {

namespace {

using Word = std::array<uint8_t, 4>;

constexpr Word rasterSignature = {0x87, 0xCF, 0x03, 0x2B};
constexpr Word packedSignature = {0x01, 0xDA, 0x01, 0x01};
constexpr Word oldRasterSignature = {0x02, 0x4A, 0x02, 0x0A};

bool readWord(FILE* stream, Word& word) {
    return std::fread(word.data(), 1, word.size(), stream) == word.size();
}

bool pushWordBack(FILE* stream, const Word& word) {
    for (size_t i = word.size(); i-- > 0;) {
        if (std::ungetc(word[i], stream) == EOF) return false;
    }
    return true;
}

bool begins(const Word& word, const char* threeCharacters) {
    return std::memcmp(word.data(), threeCharacters, 3) == 0;
}

bool opensContainer(const Word& first) {
    return begins(first, "FOR") || begins(first, "LIS") || begins(first, "CAT");
}

int rasterKind(const Word& number) {
    const bool small = number[1] == 0 && number[2] == 0 && number[3] == 0;
    return small && number[0] <= 3 ? number[0] : int{fileKindOther};
}

int containerKind(const Word& first, const Word& type) {
    if (!begins(type, "CIM")) return fileKindContainer;
    return begins(first, "FOR") ? fileKindImage : fileKindImageList;
}

// Reads what is needed; `back` gets the words read, in the order in which they go back.
int readKind(FILE* stream, std::vector<Word>& back) {
    Word first, second, type;
    if (!readWord(stream, first)) return fileKindUnreadable;
    back = {first};
    if (first == packedSignature) return fileKindPacked;
    if (first == oldRasterSignature) return fileKindOldRaster;
    const bool raster = first == rasterSignature;
    if (!raster && !opensContainer(first)) return fileKindOther;

    if (!readWord(stream, second)) return fileKindUnreadable;
    back = {second, first};
    if (raster) return rasterKind(second);

    if (!readWord(stream, type)) return fileKindUnreadable;
    back = {second, type, first};
    return containerKind(first, type);
}

bool isStandardInput(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return name == "stdin";
}

}  // namespace

bool startsAsImage(std::span<const uint8_t> start) {
    Word first, type;
    if (start.size() < 3 * first.size()) return false;
    std::copy_n(start.begin(), first.size(), first.begin());
    std::copy_n(start.begin() + 2 * first.size(), type.size(), type.begin());
    return opensContainer(first) && containerKind(first, type) != fileKindContainer;
}

int probeStream(FILE* stream, bool pushBack) {
    std::vector<Word> back;
    const int kind = readKind(stream, back);
    if (!pushBack) return kind;
    for (const Word& word : back) {
        if (!pushWordBack(stream, word)) return fileKindUnreadable;
    }
    return kind;
}

int probeFileKind(const std::string& name) {
    if (isStandardInput(name)) return probeStream(stdin, true);
    const platform::FilePtr file(platform::openFile(name, "r"));
    return file ? probeStream(file.get(), false) : fileKindUnreadable;
}

}  // namespace vistel
