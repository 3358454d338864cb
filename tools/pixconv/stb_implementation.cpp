// The bodies of the stb libraries. Their warnings are theirs.
#include "stb_memory.h"

#define STBI_MALLOC(bytes) vistel::stbAllocate(bytes)
#define STBI_REALLOC(block, bytes) vistel::stbReallocate(block, bytes)
#define STBI_FREE(block) vistel::stbFree(block)
#define STBIW_MALLOC(bytes) vistel::stbAllocate(bytes)
#define STBIW_REALLOC(block, bytes) vistel::stbReallocate(block, bytes)
#define STBIW_FREE(block) vistel::stbFree(block)
// A damaged file ends in a message, not in the program's end.
#define STBI_ASSERT(condition) ((void)0)
#define STBI_MAX_DIMENSIONS 65535
#define STBI_NO_STDIO
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#define STB_IMAGE_IMPLEMENTATION
#include <stb_image.h>
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
#pragma GCC diagnostic pop
