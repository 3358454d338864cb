#include "platform/gl/gl_state.h"

#include <algorithm>
#include <bit>

namespace vistel::platform {

PixelBox visibleBox(const DrawingState& state) {
    const PixelBox view{0, 0, state.viewWidth, state.viewHeight};
    if (!state.scissorTest) return view;
    const PixelBox& s = state.scissor;
    return {std::max(view.left, s.left), std::max(view.bottom, s.bottom),
            std::min(view.right, s.right), std::min(view.top, s.top)};
}

void resetPixelPipeline(Window* window, bool newContext) {
    DrawingState& state = *drawingState(window);
    if (newContext) {
        glDisable(GL_DITHER);
        state.picture = state.text = state.kept = GrowingTexture{};
        state.glyphs = GlyphAtlas{};
        glGetIntegerv(GL_MAX_TEXTURE_SIZE, &state.largestTexture);
        GLint view[4] = {};
        glGetIntegerv(GL_VIEWPORT, view);
        setViewport(window, view[2], view[3]);
        setScissor(window, state.scissor.left, state.scissor.bottom,
                   state.scissor.right - state.scissor.left,
                   state.scissor.top - state.scissor.bottom);
        setScissorTest(window, state.scissorTest);
        glColor4ubv(state.colour);
    }
    for (const GLenum stage :
         {GL_ALPHA_TEST, GL_BLEND, GL_DEPTH_TEST, GL_LIGHTING, GL_FOG, GL_POLYGON_OFFSET_FILL,
          GL_POLYGON_OFFSET_LINE, GL_POLYGON_OFFSET_POINT, GL_STENCIL_TEST, GL_TEXTURE_1D,
          GL_TEXTURE_2D}) {
        glDisable(stage);
    }
    glPixelTransferi(GL_MAP_COLOR, GL_FALSE);
    for (const GLenum scale :
         {GL_RED_SCALE, GL_GREEN_SCALE, GL_BLUE_SCALE, GL_ALPHA_SCALE, GL_DEPTH_SCALE}) {
        glPixelTransferf(scale, 1.0F);
    }
    for (const GLenum bias :
         {GL_RED_BIAS, GL_GREEN_BIAS, GL_BLUE_BIAS, GL_ALPHA_BIAS, GL_DEPTH_BIAS}) {
        glPixelTransferf(bias, 0.0F);
    }
    setDoubleBuffered(window, state.doubleBuffered);
}

void releaseDrawingObjects(Window* window) {
    DrawingState& state = *drawingState(window);
    for (GrowingTexture* texture :
         {&state.picture, &state.text, &state.kept, &state.glyphs.texture}) {
        if (texture->name != 0) glDeleteTextures(1, &texture->name);
        *texture = GrowingTexture{};
    }
    state.glyphs = GlyphAtlas{};
}

bool bindTexture(const DrawingState& state, GrowingTexture& texture, int width, int height,
                 GLint internalFormat) {
    const int largest = state.largestTexture;
    if (width > largest || height > largest) return false;
    if (texture.name == 0) glGenTextures(1, &texture.name);
    glBindTexture(GL_TEXTURE_2D, texture.name);
    if (width <= texture.width && height <= texture.height) return true;
    const auto powerOfTwo = [](int wanted, int present) {
        return static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(wanted, present))));
    };
    const GrowingTexture before = texture;
    texture.width = std::min(powerOfTwo(width, texture.width), largest);
    texture.height = std::min(powerOfTwo(height, texture.height), largest);
    while (glGetError() != GL_NO_ERROR) {
    }
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, texture.width, texture.height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);
    if (glGetError() != GL_NO_ERROR) {
        // No memory for this size: the old contents are gone as well.
        texture = {before.name, 0, 0};
        glBindTexture(GL_TEXTURE_2D, 0);
        return false;
    }
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    return true;
}

void drawTexturePart(const GrowingTexture& texture, const PixelBox& texels, const PixelBox& box) {
    const auto across = [&](int texel) {
        return static_cast<float>(texel) / static_cast<float>(texture.width);
    };
    const auto up = [&](int texel) {
        return static_cast<float>(texel) / static_cast<float>(texture.height);
    };
    // Pixels have their centres at whole coordinates, so their edges lie half a unit off.
    const float left = static_cast<float>(box.left) - 0.5F;
    const float right = static_cast<float>(box.right) - 0.5F;
    const float bottom = static_cast<float>(box.bottom) - 0.5F;
    const float top = static_cast<float>(box.top) - 0.5F;
    glEnable(GL_TEXTURE_2D);
    glBegin(GL_QUADS);
    glTexCoord2f(across(texels.left), up(texels.bottom));
    glVertex2f(left, bottom);
    glTexCoord2f(across(texels.right), up(texels.bottom));
    glVertex2f(right, bottom);
    glTexCoord2f(across(texels.right), up(texels.top));
    glVertex2f(right, top);
    glTexCoord2f(across(texels.left), up(texels.top));
    glVertex2f(left, top);
    glEnd();
    glDisable(GL_TEXTURE_2D);
}

void drawTexture(const GrowingTexture& texture, const PixelBox& box, int sourceWidth,
                 int sourceHeight) {
    drawTexturePart(texture, {0, 0, sourceWidth, sourceHeight}, box);
}

}  // namespace vistel::platform
