// The request a model format's handler receives through FILETYPE::Func3d: the host's scene
// travels as the registry's opaque q5_SCENE pointer.
#pragma once

#include <cstdint>
#include <string>

#include "host/formats/model_builder.h"

class q5_SCENE;
class q5_STREAM;

// Func3d operation: read the model from the stream into the request's builder; 1 on success,
// 0 with the request's error set.
inline constexpr std::uint32_t kModelOpRead = 1;

struct ModelImport {
    ModelBuilder& builder;
    std::string path; // the model's file, for messages and for the files it names
    std::string error;

    q5_SCENE* AsScene() { return reinterpret_cast<q5_SCENE*>(this); }
    static ModelImport& Of(std::uintptr_t scene) { return *reinterpret_cast<ModelImport*>(scene); }
};

// The body of a handler whose Reader(builder).Read(stream, error) reads a whole model.
template <typename Reader>
std::uint64_t ReadWith(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene) {
    if (operation != kModelOpRead || stream == 0 || scene == 0) return 0;
    ModelImport& request = ModelImport::Of(scene);
    Reader reader(request.builder);
    return reader.Read(*reinterpret_cast<q5_STREAM*>(stream), request.error) ? 1 : 0;
}

// The handlers, with the registry's signature; each reads only kModelOpRead.
std::uint64_t ObjHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                         std::uintptr_t object);
std::uint64_t GltfHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                          std::uintptr_t object);
// Only in builds with Assimp.
std::uint64_t AssimpHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                            std::uintptr_t object);
