// The compiled bodies of the header-only model and image libraries, once for the host. The
// glTF library includes the system's own headers here on Windows; nothing of ours sees them.
#define STB_IMAGE_IMPLEMENTATION
#include "host/formats/stb_image_config.h"

#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include "host/formats/gltf_config.h"
#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
