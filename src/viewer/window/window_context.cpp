#include "viewer/window/window_context.h"

namespace vistel {

WindowContext& windowContext() {
    static thread_local WindowContext context;
    return context;
}

}  // namespace vistel
