#include "report.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>

#include "audio/format_table.h"
#include "audio/sound_track.h"

namespace vistel {

static const char* miscName(int32_t type) {
    constexpr const char* names[] = {"(c) ", "AUTH", "NAME", "ANNO", "APPL", "MIDI"};
    return names[type - afMiscCopyright];
}

SoundReport reportOf(const std::string& name, AFfilehandle& file) {
    SoundReport report;
    report.name = name;
    report.opened = true;
    int32_t version = 0, sampleFormat = 0;
    report.format = audioFormats[tablePositionOf(AFgetfilefmt(&file, &version))].name;
    report.version = static_cast<uint32_t>(version);
    report.channels = AFgetchannels(&file, afDefaultTrack);
    report.rate = AFgetrate(&file, afDefaultTrack);
    AFgetsampfmt(&file, afDefaultTrack, &sampleFormat, &report.width);
    report.sampleFormat = sampleFormat == afUnsigned ? "unsigned" : "two's complement";
    report.frames = AFgetframecnt(&file, afDefaultTrack);
    report.markers = file.track().markers;
    for (int32_t i = 0; i < file.miscCount; ++i) {
        const AFmiscChunk& chunk = file.misc[static_cast<size_t>(i)];
        report.chunks.push_back({miscName(chunk.type), chunk.size});
    }
    if (const char* reason = SoundTrack::whyNotPlayed(file)) report.notPlayed = reason;
    return report;
}

// Names come from the file: what a terminal would act on is not printed.
static std::string printableText(const std::string& text) {
    std::string shown;
    for (const char c : text) shown += static_cast<unsigned char>(c) < ' ' || c == 127 ? '.' : c;
    return shown;
}

void printText(const SoundReport& report) {
    std::printf("%s\n", report.name.c_str());
    std::printf("  format         %s\n", report.format.c_str());
    if (report.version != 0) std::printf("  version        0x%08" PRIX32 "\n", report.version);
    std::printf("  channels       %" PRId32 "\n", report.channels);
    std::printf("  rate           %.10g\n", report.rate);
    std::printf("  width          %" PRId32 " bits\n", report.width);
    std::printf("  sample format  %s\n", report.sampleFormat.c_str());
    std::printf("  frames         %" PRId64 "\n", report.frames);
    for (const AFmarker& marker : report.markers)
        std::printf("  marker %-7" PRId32 " %" PRIu32 " %s\n", marker.id, marker.position,
                    printableText(marker.name).c_str());
    for (const SoundReport::Chunk& chunk : report.chunks)
        std::printf("  chunk %-8s %" PRIu32 " bytes\n", chunk.name.c_str(), chunk.bytes);
    std::printf("  played         %s\n",
                report.notPlayed.empty() ? "yes" : ("no: " + report.notPlayed).c_str());
}

// Bytes that are no text of their own are told as the characters with these numbers.
static std::string quoted(const std::string& text) {
    std::string quotes = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') quotes += '\\';
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
        quotes += byte < ' ' || byte > 126 ? std::string(escaped) : std::string(1, c);
    }
    return quotes + '"';
}

static std::string number(double value) {
    if (!std::isfinite(value)) return "null";
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

static void printJsonOf(const SoundReport& report) {
    std::printf("{\"file\": %s, \"opened\": %s", quoted(report.name).c_str(),
                report.opened ? "true" : "false");
    if (!report.opened) {
        std::printf("}");
        return;
    }
    std::printf(", \"format\": %s, \"version\": %" PRIu32 ", \"channels\": %" PRId32,
                quoted(report.format).c_str(), report.version, report.channels);
    std::printf(", \"rate\": %s, \"width\": %" PRId32 ", \"sampleFormat\": %s",
                number(report.rate).c_str(), report.width, quoted(report.sampleFormat).c_str());
    std::printf(", \"frames\": %" PRId64 ", \"markers\": [", report.frames);
    const char* comma = "";
    for (const AFmarker& marker : report.markers) {
        std::printf("%s{\"id\": %" PRId32 ", \"position\": %" PRIu32 ", \"name\": %s}", comma,
                    marker.id, marker.position, quoted(marker.name).c_str());
        comma = ", ";
    }
    std::printf("], \"chunks\": [");
    comma = "";
    for (const SoundReport::Chunk& chunk : report.chunks) {
        std::printf("%s{\"name\": %s, \"bytes\": %" PRIu32 "}", comma, quoted(chunk.name).c_str(),
                    chunk.bytes);
        comma = ", ";
    }
    std::printf("], \"played\": %s, \"notPlayed\": %s}",
                report.notPlayed.empty() ? "true" : "false", quoted(report.notPlayed).c_str());
}

void printJson(const std::vector<SoundReport>& reports) {
    std::printf("[");
    for (size_t i = 0; i < reports.size(); ++i) {
        std::printf(i == 0 ? "\n " : ",\n ");
        printJsonOf(reports[i]);
    }
    std::printf("\n]\n");
}

}  // namespace vistel
