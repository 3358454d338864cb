// Text in the current colour. Plain characters are kept in one texture, a cell for each, so that a
// line that changes with every frame is drawn without making anything anew.
#include <algorithm>

#include "platform/gl/gl_state.h"

namespace vistel::platform {

namespace {

constexpr int atlasSide = 512;  // texels
constexpr int cellWidth = 32, cellHeight = 64;
constexpr int cellsInRow = atlasSide / cellWidth;

bool isPlain(char character) { return static_cast<unsigned char>(character) < plainCharacters; }

// The lower left texel of a character's cell.
PixelBox cellOf(char character) {
    const int index = static_cast<unsigned char>(character);
    const int left = index % cellsInRow * cellWidth, bottom = index / cellsInRow * cellHeight;
    return {left, bottom, left + cellWidth, bottom + cellHeight};
}

// Coverage has its first row at the top, a texture at the bottom.
void upload(const TextCoverage& coverage, int left, int bottom) {
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (int row = 0; row < coverage.height; ++row) {
        glTexSubImage2D(GL_TEXTURE_2D, 0, left, bottom + coverage.height - 1 - row, coverage.width,
                        1, GL_ALPHA, GL_UNSIGNED_BYTE,
                        coverage.rows.data() + static_cast<size_t>(row) * coverage.width);
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
}

// The character's place in the atlas, which is bound; made at its first use. Null for one that does
// not fit a cell.
const GlyphCell* findGlyph(GlyphAtlas& atlas, FontHandle* font, char character) {
    GlyphCell& cell = atlas.cells[static_cast<unsigned char>(character)];
    if (!cell.known) {
        const TextCoverage coverage = renderText(font, std::string(1, character));
        if (coverage.width > cellWidth || coverage.height > cellHeight) return nullptr;
        const PixelBox box = cellOf(character);
        upload(coverage, box.left, box.bottom);
        cell = {true, coverage.width, coverage.height, coverage.descent};
    }
    return &cell;
}

bool bindAtlas(DrawingState& state, FontHandle* font) {
    GlyphAtlas& atlas = state.glyphs;
    if (atlas.font != font) {
        atlas.font = font;
        std::fill(std::begin(atlas.cells), std::end(atlas.cells), GlyphCell{});
    }
    return bindTexture(state, atlas.texture, atlasSide, atlasSide, GL_ALPHA8);
}

bool bindGlyphs(DrawingState& state, FontHandle* font, std::string_view text) {
    return std::all_of(text.begin(), text.end(), isPlain) && bindAtlas(state, font) &&
           std::all_of(text.begin(), text.end(), [&](char character) {
               return findGlyph(state.glyphs, font, character) != nullptr;
           });
}

void drawGlyphs(const GlyphAtlas& atlas, int x, int y, std::string_view text) {
    for (const char character : text) {
        const GlyphCell& cell = atlas.cells[static_cast<unsigned char>(character)];
        const PixelBox from = cellOf(character);
        const int bottom = y - cell.descent;
        drawTexturePart(atlas.texture,
                        {from.left, from.bottom, from.left + cell.width, from.bottom + cell.height},
                        {x, bottom, x + cell.width, bottom + cell.height});
        x += cell.width;
    }
}

// A text with other characters than plain ones goes as a whole.
void drawWhole(DrawingState& state, FontHandle* font, int x, int y, std::string_view text) {
    const TextCoverage coverage = renderText(font, std::string(text));
    const int width = coverage.width, height = coverage.height;
    if (width <= 0 || height <= 0) return;
    if (!bindTexture(state, state.text, width, height, GL_ALPHA8)) return;
    upload(coverage, 0, 0);
    const int bottom = y - coverage.descent;
    drawTexturePart(state.text, {0, 0, width, height}, {x, bottom, x + width, bottom + height});
}

}  // namespace

void drawText(Window* window, FontHandle* font, int x, int y, std::string_view text) {
    DrawingState* const state = drawOn(window);
    if (!state) return;
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (bindGlyphs(*state, font, text))
        drawGlyphs(state->glyphs, x, y, text);
    else
        drawWhole(*state, font, x, y, text);
    glDisable(GL_BLEND);
}

}  // namespace vistel::platform
