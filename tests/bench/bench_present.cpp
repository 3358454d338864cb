// Presenting a 1920 x 1080 picture in a real window (./bench starts a virtual display where there
// is none). Each iteration ends with a swap, and with what the driver still has to do for it.
//
//     present/picture    as the viewer shows a frame: upload and draw
//     present/quad       the same textured quad without the upload: what no viewer can beat
//     present/raster     by drawing pixels
//     present/zoomed     an eighth of the picture, eight times as large

#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench_pictures.h"
#include "platform/gl/gl_state.h"
#include "platform/surface.h"
#include "platform/window.h"

namespace {

using namespace vistel;

constexpr int width = 1920, height = 1080;

platform::Window* window = nullptr;

const bench::Picture& picture(int number) {
    static const bench::Picture pictures[] = {bench::makePicture(bench::PictureKind::typical, 0),
                                              bench::makePicture(bench::PictureKind::typical, 1)};
    return pictures[number % 2];
}

platform::PixelSource wholePicture(int number) {
    return {picture(number).colour.data(), width, 0, 0, width, height};
}

bool openSurface() {
    const platform::WindowSink sink{nullptr,           [](void*, int, unsigned) {},
                                    [](void*, int) {}, [](void*) {},
                                    [](void*) {},      [](void*) {},
                                    [](void*) {}};
    window = platform::openWindow({"bench", {0, 0, width, height}, false}, sink);
    if (!platform::createSurface(window)) return false;
    platform::setDoubleBuffered(window, true);
    platform::setViewport(window, width, height);
    return true;
}

void present() {
    platform::swapBuffers(window);
    glFinish();
    platform::pumpMessages();
}

void asTheViewer(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) {
        platform::drawPixels(window, 0, 0, wholePicture(number++), 1);
        present();
    }
}

void quadAlone(benchmark::State& state) {
    platform::drawPixels(window, 0, 0, wholePicture(0), 1);
    platform::DrawingState& drawing = *platform::drawingState(window);
    for (auto _ : state) {
        glBindTexture(GL_TEXTURE_2D, drawing.picture.name);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
        platform::drawTexture(drawing.picture, {0, 0, width, height}, width, height);
        present();
    }
}

void byRaster(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) {
        glRasterPos2i(0, 0);
        glDrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, picture(number++).colour.data());
        present();
    }
}

void zoomed(benchmark::State& state) {
    constexpr int zoom = 8;
    int number = 0;
    for (auto _ : state) {
        platform::PixelSource part = wholePicture(number++);
        part.width = width / zoom;
        part.height = height / zoom;
        platform::drawPixels(window, 0, 0, part, zoom);
        present();
    }
}

BENCHMARK(asTheViewer)->Name("present/picture")->UseRealTime();
BENCHMARK(quadAlone)->Name("present/quad")->UseRealTime();
BENCHMARK(byRaster)->Name("present/raster")->UseRealTime();
BENCHMARK(zoomed)->Name("present/zoomed")->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (!openSurface()) {
        std::fprintf(stderr, "bench_present: no window\n");
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    platform::closeWindow(window);
}
