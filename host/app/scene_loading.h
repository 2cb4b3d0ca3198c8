// Filling a scene from model files, shared by tessera-render and tessera-view.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class HostAPI;
class Scene;

// Registers the model formats with `host` and applies the format choices kept beside the
// settings file (none when `settingsFile` is empty); false with a reason.
bool PrepareModelFormats(HostAPI& host, const std::string& settingsFile, std::string& error);

// Adds every file to `scene` in order; `twoSided` draws the back faces of every object. Stops
// at the first file that cannot be used, with one line in `error` naming it when there are
// several; `warnings` gets one line per problem that left something out.
bool LoadModels(const std::vector<std::string>& paths, bool twoSided, Scene& scene,
                std::vector<std::string>& warnings, std::string& error);

std::size_t TriangleCount(const Scene& scene);

// The model formats the program reads, as --list-formats prints them, with the format choices
// kept beside the settings file; false with a reason.
bool ModelFormatList(const std::string& settingsFile, std::string& list, std::string& error);
