// Model files (OBJ, glTF, PLY, 3DS, ... whatever the model importer reads) turned into scene
// objects with their materials and PNG textures.
#pragma once

#include <string>

class Scene;

// False when this build was configured without the model importer.
bool ModelFilesSupported();

// Adds the model's meshes to the scene; false with a reason when the file cannot be used.
bool LoadModel(const std::string& path, Scene& scene, std::string& error);
