// The image decoder's options, the same wherever it is included: only the formats textures
// come in, no file access of its own, and no SIMD paths, so that every build decodes alike.
#pragma once

#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_NO_STDIO
#define STBI_NO_SIMD
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#include <stb_image.h>
