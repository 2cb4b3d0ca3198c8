// Model files (OBJ, glTF, GLB, and whatever else Assimp reads where the build has it) turned
// into scene objects with their materials and textures, through the file-type registry.
#pragma once

#include <string>
#include <vector>

#include "host/formats/model_builder.h"

class Scene;

// Adds the model's meshes, lines and points to the scene, reading through the format the
// registry finds for it; registers the model formats with the current host first if needed.
// False with one line saying why when the file cannot be used or shows nothing; `warnings`
// gets one line per problem that left something out.
bool LoadModel(const std::string& path, Scene& scene, const ModelOptions& options,
               std::vector<std::string>& warnings, std::string& error);
