#include "exr_rows.h"

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfRgbaFile.h>

#include <algorithm>
#include <new>
#include <utility>

#include "exr_window.h"

namespace vistel {

namespace {

constexpr float wholeNumberScale = 1.0f / 4294967295.0f;

uint64_t widthOf(const Imf::Header& header) {
    return uint64_t(int64_t{header.dataWindow().max.x} - header.dataWindow().min.x + 1);
}

void addSlice(Imf::FrameBuffer& frame, const Imf::Header& header, const std::string& name,
              ExrRow& row, float missing) {
    row.values.assign(widthOf(header), missing);
    const Imf::Channel* channel =
        name.empty() ? nullptr : header.channels().findChannel(name.c_str());
    if (!channel) return;
    row.step = uint32_t(channel->xSampling);
    row.rowStep = uint32_t(channel->ySampling);
    if (channel->type == Imf::UINT) row.scale = wholeNumberScale;
    // Every row lands in the same memory.
    const int64_t left = int64_t{header.dataWindow().min.x} / channel->xSampling;
    auto* base = reinterpret_cast<char*>(reinterpret_cast<intptr_t>(row.values.data()) -
                                         left * int64_t{sizeof(float)});
    frame.insert(name, Imf::Slice(Imf::FLOAT, base, sizeof(float), 0, channel->xSampling,
                                  channel->ySampling, missing));
}

// Keeps the first failure. What the library throws for want of memory is passed on.
template <class Step>
bool succeeds(Step&& step, Failure& failure) {
    try {
        step();
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& problem) {
        if (!failure) failure = "the file is damaged: " + std::string(problem.what());
        return false;
    }
}

// The first row that is read for the sake of a later one: that of a channel of lower resolution.
int firstRead(const ExrRows& rows, int first, int dataTop) {
    uint32_t step = rows.depth.rowStep;
    for (const ExrRow& row : rows.sample) step = std::max(step, row.rowStep);
    return std::max(dataTop, first - int(std::min<int64_t>(step - 1, int64_t{first} - dataTop)));
}

// From the bottom row of a tile or block of rows on, the next one's first row.
int behindBlock(int y, int top, uint64_t blockRows) {
    const uint64_t in = uint64_t(int64_t{y} - top) / blockRows;
    return int(std::min<int64_t>(int64_t{top} + int64_t((in + 1) * blockRows), INT32_MAX));
}

}  // namespace

ExrPlace::ExrPlace(const Imf::Header& header) {
    const Imath::Box2i data = header.dataWindow(), display = header.displayWindow();
    const ExrExtent dataExtent{data.min.x, data.min.y, data.max.x, data.max.y};
    const ExrExtent extent{display.min.x, display.min.y, display.max.x, display.max.y};
    shift = int64_t{data.min.x} - display.min.x;
    from = std::max<int64_t>(shift, 0);
    to = std::min<int64_t>(shift + dataExtent.width, extent.width);
    first = std::max(data.min.y, display.min.y);
    last = std::min(data.max.y, display.max.y);
    top = display.min.y;
}

void storeExrRow(const ExrRows& rows, const ExrPlace& place, uint32_t y, Picture& picture) {
    uint8_t* pixel = picture.row(y) + 4 * place.from;
    for (int64_t x = place.from; x < place.to; ++x, pixel += 4) {
        const auto at = static_cast<size_t>(x - place.shift);
        for (int i = 0; i < (picture.colour ? 3 : 1); ++i)
            pixel[i] = byteFromLinear(rows.sample[i].at(at));
        pixel[3] = byteFromMask(rows.sample[3].at(at));
    }
    for (int64_t x = place.from; x < place.to && !picture.z.empty(); ++x)
        picture.zRow(y)[x] = rows.depth.values[size_t(x - place.shift) / rows.depth.step];
}

Failure readExrRows(Imf::InputFile& file, const ExrChannels& names, uint64_t blockRows,
                    Picture& picture) {
    const Imf::Header& header = file.header();
    const ExrPlace place(header);
    ExrRows rows;
    Imf::FrameBuffer frame;
    for (int i = 0; i < 3; ++i) addSlice(frame, header, names.colour[i], rows.sample[i], 0);
    addSlice(frame, header, names.mask, rows.sample[3], 1);
    addSlice(frame, header, names.depth, rows.depth, 0);
    file.setFrameBuffer(frame);
    const int dataTop = header.dataWindow().min.y;
    picture.rowsRead = picture.height - uint32_t(std::max(place.last - place.first + 1, 0));
    Failure failure;
    bool failed = false;
    for (int64_t y = firstRead(rows, place.first, dataTop); y <= place.last; ++y) {
        const int row = int(y);
        const auto read = [&] { return succeeds([&] { file.readPixels(row); }, failure); };
        // After a failure the library may be wrong once about where the file stands.
        const bool again = std::exchange(failed, false);
        failed = !read() && !(again && read());
        if (failed) {
            y = int64_t{behindBlock(row, dataTop, blockRows)} - 1;
            continue;
        }
        if (row < place.first) continue;
        storeExrRow(rows, place, place.rowOf(row), picture);
        ++picture.rowsRead;
    }
    return failure;
}

Failure readLuminanceChroma(Imf::IStream& input, const ExrChannels& names, Picture& picture) {
    Imf::RgbaInputFile file(input, names.layer, 0);
    const ExrPlace place(file.header());
    const uint64_t width = widthOf(file.header());
    std::vector<Imf::Rgba> pixels(width);
    file.setFrameBuffer(pixels.data() - file.dataWindow().min.x, 1, 0);
    ExrRows rows;
    for (ExrRow& row : rows.sample) row.values.resize(width);
    picture.rowsRead = picture.height - uint32_t(std::max(place.last - place.first + 1, 0));
    Failure failure;
    // Colour is computed from the rows around: behind a missing one no further is sure.
    for (int64_t y = place.first; y <= place.last && !failure; ++y) {
        if (!succeeds([&] { file.readPixels(int(y)); }, failure)) break;
        for (size_t x = 0; x < width; ++x) {
            rows.sample[0].values[x] = pixels[x].r;
            rows.sample[1].values[x] = pixels[x].g;
            rows.sample[2].values[x] = pixels[x].b;
            rows.sample[3].values[x] = pixels[x].a;
        }
        storeExrRow(rows, place, place.rowOf(int(y)), picture);
        ++picture.rowsRead;
    }
    return failure;
}

}  // namespace vistel
