// Between the two systems' halves of the surface and what they share: everything between the
// creation of a rendering context and its end is plain OpenGL 1.1, the same on both.
#pragma once

namespace vistel::platform {

struct Window;
struct DrawingState;

// --- each system's -------------------------------------------------------------------------------

// The drawing state that is kept with the window; null without a window.
DrawingState* drawingState(Window* window);

// Makes the window's context the current one of this thread when it is not. False when there is
// none.
bool makeSurfaceCurrent(Window* window);

// --- shared --------------------------------------------------------------------------------------

// To be called when the window's context has become current: `newContext` when it has just been
// created. Resets the pixel pipeline (alpha test, blending, depth and stencil test, lighting, fog,
// polygon offset, texturing and pixel transfer) and selects the draw buffer.
void resetPixelPipeline(Window* window, bool newContext);

// Deletes the textures of the window's context, which is current. To be called before the context
// is deleted.
void releaseDrawingObjects(Window* window);

// The text for a person when the pixel format or the context is refused.
inline constexpr char cannotSetPixelFormat[] = "Unable to set pixel format.";
inline constexpr char cannotOpenSurface[] = "Unable to open opengl device.";

}  // namespace vistel::platform
