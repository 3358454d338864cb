// The chunk handler: what each plain chunk of a frame file means. One row for each identifier.

#include <algorithm>
#include <bit>

#include "host/byte_order.h"
#include "host/tstring.h"
#include "iff/image_description.h"
#include "iff/image_parse.h"
#include "platform/files.h"

namespace vistel {

static constexpr uint32_t longestText = 255;

// Whether a body that says something about the picture, but does not make it, has the bytes it
// needs. One that is too short says nothing and is passed over.
static bool bodyHolds(const IffReader& chunk, uint32_t n) {
    return chunk.sizeKnown() && chunk.chunkSize() >= n;
}

static int readText(IffReader& chunk, ImageParse&, std::string& text) {
    if (!chunk.sizeKnown() || chunk.chunkSize() > longestText) return iffOk;
    char body[longestText + 1] = {};
    if (const int code = chunk.readBytes(body, chunk.chunkSize()); code != iffOk) return code;
    text = body;  // up to a zero byte
    return iffOk;
}

static int handleText(IffReader& chunk, ImageParse& parse, std::string& content) {
    return parse.rereading() ? iffOk : readText(chunk, parse, content);
}

static int handleName(IffReader& chunk, ImageParse& parse, std::string& content) {
    if (parse.rereading()) return iffOk;
    const int code = readText(chunk, parse, content);
    if (code == iffOk) parse.form->frame.imageName = content;
    return code;
}

static int readHeader(IffReader& chunk, ImageHeader& header) {
    uint8_t bytes[ImageHeader::encodedSize];
    if (const int code = chunk.readBytes(bytes, sizeof bytes); code != iffOk) return code;
    return decodeImageHeader(bytes, header);
}

// What tiles of an earlier header have left.
static void startAnew(ImageForm& form) {
    form.frame.colour.free();
    form.frame.z.free();
    form.frame.tiles.clear();
    form.blackTiles = false;
    form.dataBytes = 0;
}

static int handleHeader(IffReader& chunk, ImageParse& parse, std::string& content) {
    if (!parse.formCounts()) return iffOk;
    ImageForm& form = *parse.form;
    ImageHeader header;
    if (const int code = readHeader(chunk, header); code != iffOk) {
        form.frame.clear();
        form.headerRead = false;
        return code;
    }
    startAnew(form);
    form.headerRead = true;
    form.frame.header = header;
    form.display = displaySize(header.width, header.height, parse.request.fit);
    form.colourFormat = colourTileFormat(header);
    if (parse.listing()) content = describeImage(header);
    return iffOk;
}

static int handleRect(IffReader& chunk, ImageParse& parse, std::string& content) {
    TileRect rect;
    if (!parse.listing() || !bodyHolds(chunk, 8)) return iffOk;
    const int code = readTileRect(chunk, rect);
    if (code == iffOk) content = describeTile(rect);
    return code;
}

static int handleColour(IffReader& chunk, ImageParse& parse, std::string& content) {
    if (!parse.formCounts()) return iffOk;
    if (!parse.form->headerRead) return iffNoImageHeader;
    if (!parse.request.loadPixels) return handleRect(chunk, parse, content);
    const ImageLoadRequest& request = parse.request;
    if (!platform::mayGoOn(request.goOn)) return iffAborted;
    if (request.decodeColour) return loadColourTile(chunk, parse);
    return request.countTile ? request.countTile(chunk, parse.form->frame) : iffOk;
}

static int handleDepth(IffReader& chunk, ImageParse& parse, std::string& content) {
    if (!parse.formCounts() || !parse.request.loadZ) return iffOk;
    if (!parse.form->headerRead) return iffNoImageHeader;
    if (!parse.request.loadPixels) return handleRect(chunk, parse, content);
    return platform::mayGoOn(parse.request.goOn) ? loadDepthTile(chunk, parse) : iffAborted;
}

static int handleDepthPlanes(IffReader& chunk, ImageParse& parse, std::string& content) {
    uint8_t body[8];
    if (!parse.listing() || !bodyHolds(chunk, sizeof body)) return iffOk;
    if (const int code = chunk.readBytes(body, sizeof body); code != iffOk) return code;
    content = formatPrintf("%f %f", double{std::bit_cast<float>(readBig32(body))},
                           double{std::bit_cast<float>(readBig32(body + 4))});
    return iffOk;
}

static int handleIcon(IffReader& chunk, ImageParse& parse, std::string& content) {
    uint8_t body[4];
    if (!parse.listing() || !bodyHolds(chunk, sizeof body)) return iffOk;
    if (const int code = chunk.readBytes(body, sizeof body); code != iffOk) return code;
    content = formatPrintf("%dx%d icon, 24 bits", readBig16(body), readBig16(body + 2));
    return iffOk;
}

static int handleUser(IffReader&, ImageParse&, std::string& content) {
    content = "User block";
    return iffOk;
}

static int handleSoundFormat(IffReader& chunk, ImageParse& parse, std::string& content) {
    if (parse.rereading() || !bodyHolds(chunk, SoundFormat::shortBody)) return iffOk;
    uint8_t body[SoundFormat::longBody + 255];
    const size_t size = std::min<size_t>(chunk.chunkSize(), sizeof body);
    if (const int code = chunk.readBytes(body, size); code != iffOk) return code;
    const SoundFormat format = decodeSoundFormat(body, size);
    parse.soundUsable = format.usable;
    if (parse.listing()) content = describeSound(format);
    return iffOk;
}

// The hardware that could play a sound out of a frame file; looked for once in a run.
static bool soundHardwareThere() {
    static const bool there =
        platform::FilePtr(platform::openFile("/dev/hdsp/hdsp0master", "r+")) != nullptr;
    return there;
}

// Sound in a frame file is described, never played.
static int handleSound(IffReader&, ImageParse& parse, std::string& content) {
    if (!parse.listing() || !parse.request.loadPixels) return iffOk;
    if (!parse.soundUsable)
        content = "Unknown sample format...";
    else if (!soundHardwareThere())
        content = "No hardware to play sound...";
    return iffOk;
}

namespace {

struct ChunkRow {
    int32_t id;
    // Reads of the body what it needs; the rest is skipped. `content` is what the report says.
    int (*handle)(IffReader& chunk, ImageParse& parse, std::string& content);
};

constexpr ChunkRow chunkTable[] = {
    {iffId("RGBA"), handleColour},       // colour tile; after TBHD
    {iffId("ZBUF"), handleDepth},        // depth tile; after TBHD
    {iffId("RGB2"), handleRect},         // second colour tile: listed only
    {iffId("ABUF"), handleRect},         // listed only
    {iffId("TBHD"), handleHeader},       // before any tile
    {iffId("NAME"), handleName},         //
    {iffId("DATE"), handleText},         //
    {iffId("AUTH"), handleText},         //
    {iffId("ANNO"), handleText},         //
    {iffId("VERS"), handleText},         //
    {iffId("HIST"), handleText},         //
    {iffId("(c) "), handleText},         //
    {iffId("ZPLC"), handleDepthPlanes},  // two floats
    {iffId("ICON"), handleIcon},         // two 16-bit sizes, pixels
    {iffId("USER"), handleUser},         //
    {iffId("COMM"), handleSoundFormat},  // sound format; before SSND
    {iffId("SSND"), handleSound},        // sound samples
};

}  // namespace

int handleChunk(IffReader& chunk, ImageParse& parse) {
    const bool listing = parse.listing();
    const auto report = [&](const std::string& text) {
        platform::writeReport(text, parse.request.goOn);
    };
    if (listing)
        report(printable(listingLine(chunk.depth(), chunk.chunkId(), chunk.chunkSize(), 0)));
    std::string content;
    int code = iffOk;
    for (const ChunkRow& row : chunkTable) {
        if (row.id != chunk.chunkId()) continue;
        code = row.handle(chunk, parse, content);
        break;
    }
    if (listing) report(contentLine(content));
    return code;
}

}  // namespace vistel
