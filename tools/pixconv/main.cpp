// pixconv: the image converter that the viewer calls. What it does is told by its usage text.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "codecs.h"
#include "convert.h"
#include "host/image_plugins.h"
#include "platform/files.h"
#include "platform/process.h"
#include "test_chart.h"

namespace {

using namespace vistel;

constexpr const char* usage =
    "usage: pixconv FILE stdout        writes FILE as a frame stream to standard output\n"
    "       pixconv [-t KEY] FILE      writes the frame stream on standard input to FILE\n"
    "       pixconv - stdout           the same of a picture on standard input\n"
    "       pixconv                    writes a test picture as a frame stream\n"
    "       pixconv --formats          lists the types: key, name, extensions, abilities\n"
    "       pixconv --help             this text\n";

constexpr const char* details =
    "\n"
    "What FILE is told by its first bytes when it is read; when it is written, by KEY (the first\n"
    "column of --formats) or by its extension. A name without extension, or with a number for "
    "one,\n"
    "is a frame file. Of a file with several pictures the first is read. A file that is there is\n"
    "replaced once the new one is whole; the same for the file behind a symbolic link. A file\n"
    "with several names, of another owner or in a folder that may not be written to is written\n"
    "over, then. A picture that takes more than 64 MB and more than its file justifies is not\n"
    "read. Of a file that is cut or damaged what could be read of the picture is written, the\n"
    "rest black and clear, as a frame stream that ends early too.\n"
    "\n"
    "Channels of 16 bits stay as wide; a type that holds only 8 takes the nearest value. Floating\n"
    "point colour is taken as linear light: clamped to 0..1 and put through the sRGB curve to 8\n"
    "bits, and the other way when such a file is written; what is no number becomes 0. Masks are\n"
    "linear, and kept as they are stored: colour is never multiplied or divided by them. Depth is\n"
    "kept by frame files and OpenEXR. Logarithmic film data stays as it is stored, Radiance light\n"
    "in the exposure in which it was stored. CMYK and Lab become what screens show, without a\n"
    "profile.\n"
    "\n"
    "Cineon is written as readers take it: as logarithmic densities of film, white at code 685\n"
    "and black at 95. DPX is written as video (Rec. 709). Frames made of Cineon files, or of DPX\n"
    "files that say so, carry a remark that their samples are film codes: these are written as\n"
    "they are, to DPX as printing densities.\n"
    "\n"
    "Written are 16 bits to frame files, PNG, TIFF, Portable Anymap and SGI files, the nearest of "
    "10\n"
    "to DPX and Cineon, 8 to all others but floating point ones. JPEG, Portable Anymap (but "
    ".pam),\n"
    "Portable Float Map, Radiance HDR, DPX and Cineon files hold no mask: it is left out. "
    "Portable\n"
    "Anymaps are written by what the picture is, colour or grey, whether they are called .ppm, "
    ".pgm\n"
    "or .pbm; .pam as such. Of the further channels of a Photoshop document the first is the "
    "mask,\n"
    "the others are left out.\n"
    "\n"
    "Exit status 0, or 1 with a line on standard error.\n";

// The exit status of what was printed.
int printed() {
    if (platform::finishStandardOutput()) return 0;
    std::fprintf(stderr, "pixconv: standard output: %s\n", std::strerror(errno));
    return 1;
}

int help() {
    std::fputs(usage, stdout);
    std::fputs(details, stdout);
    return printed();
}

int listFormats() {
    int key = 0, name = 0, extensions = 0;
    const auto widen = [](int& column, const char* text) {
        column = std::max(column, static_cast<int>(std::strlen(text)));
    };
    for (const ImageType& type : allImageTypes()) {
        widen(key, type.key);
        widen(name, type.name);
        widen(extensions, type.extensions);
    }
    for (const ImageType& type : allImageTypes())
        std::printf("%-*s  %-*s  %-*s  %-4s  %-5s%s\n", key, type.key, name, type.name, extensions,
                    type.extensions, type.reads ? "read" : "", type.writes ? "write" : "",
                    type.multiFrame ? "  multi-frame" : "");
    return printed();
}

int finish(const Failure& failure, const std::string& file) {
    if (!failure) return 0;
    if (!failure->empty())
        std::fprintf(stderr, "pixconv: %s: %s\n", file.c_str(), failure->c_str());
    return 1;
}

// Where the caller has closed it, everything would seem to be written.
Failure checkStandardOutput() {
    if (!platform::wasClosed(1)) return {};
    return "standard output: " + std::string(std::strerror(EBADF));
}

constexpr const char* standardInput = "standard input";

Failure pictureFromInput() {
    if (Failure failure = checkStandardOutput()) return failure;
    if (platform::isTerminal(0))
        return "it is a terminal; a picture is to come from a pipe or file";
    return toFrame(stdin, stdout);
}

// Nobody types a frame stream: a file is meant to be read.
Failure terminalRefusal(const std::string& file) {
    return "standard input is a terminal; to convert " + file + " write: pixconv " + file +
           " stdout";
}

int writeChart() {
    Picture chart;
    Failure failure = checkStandardOutput();
    if (!failure) failure = makeTestChart(chart);
    if (!failure) failure = writeFrame(chart, stdout);
    return finish(failure, "test picture");
}

// The words "[-t KEY] FILE"; the key may also be attached, and "--" ends the options.
struct Target {
    std::string key, file;
};
std::optional<Target> parseTarget(const std::vector<std::string>& words) {
    Target target;
    size_t at = 0;
    for (; at < words.size() && words[at].starts_with("-t"); ++at) {
        target.key = words[at].substr(2);
        if (!target.key.empty()) continue;
        if (++at == words.size()) return {};
        target.key = words[at];
    }
    if (at < words.size() && words[at] == "--")
        ++at;
    else if (at < words.size() && words[at].starts_with("-"))
        return {};
    if (at + 1 != words.size() || words[at].empty()) return {};
    target.file = words[at];
    return target;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    platform::keepStandardStreams();
    platform::setBinaryFileMode();
    platform::ignoreClosedReaders();
    if (words.empty()) return writeChart();
    if (words.size() == 1 && words[0] == "--help") return help();
    if (words.size() == 1 && words[0] == "--formats") return listFormats();
    if (words.size() == 2 && words[0] == "-" && words[1] == "stdout")
        return finish(pictureFromInput(), standardInput);
    if (words.size() == 2 && words[1] == "stdout" && words[0] != "-t") {
        Failure failure = checkStandardOutput();
        if (!failure) failure = toFrame(words[0], stdout);
        return finish(failure, words[0]);
    }
    const std::optional<Target> target = parseTarget(words);
    if (!target) {
        std::fputs(usage, stderr);
        return 1;
    }
    if (platform::isTerminal(0)) return finish(terminalRefusal(target->file), target->file);
    return finish(fromFrame(stdin, target->file, target->key), target->file);
}
