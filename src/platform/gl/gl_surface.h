// What the two systems' halves of the surface share: everything between the creation of a rendering
// context and its end is plain OpenGL 1.1, the same on both. The system chooses the pixel format,
// makes the context current and swaps; then it uses these three routines.
#pragma once

namespace vistel::platform {

// To be called with a context that has just become current: `newContext` when it has just been
// created. Resets the pixel pipeline (alpha test, blending, depth and stencil test, lighting, fog,
// polygon offset, texturing and pixel transfer) and selects the draw buffer.
void resetPixelPipeline(bool newContext);

// Deletes the textures of the current context. To be called before the context is deleted.
void releaseDrawingObjects();

// The text for a person when the pixel format or the context is refused.
inline constexpr char cannotSetPixelFormat[] = "Unable to set pixel format.";
inline constexpr char cannotOpenSurface[] = "Unable to open opengl device.";

}  // namespace vistel::platform
