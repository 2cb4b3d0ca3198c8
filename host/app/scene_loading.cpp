// Filling a scene from model files.
#include "host/app/scene_loading.h"

#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/formats/model_file.h"
#include "host/formats/model_formats.h"
#include "host/scene/scene.h"

bool PrepareModelFormats(HostAPI& host, const std::string& settingsFile, std::string& error) {
    RegisterModelFormats(host);
    return LoadFormatChoices(host, FormatChoicesFile(settingsFile), error);
}

bool LoadModels(const std::vector<std::string>& paths, bool twoSided, Scene& scene,
                std::vector<std::string>& warnings, std::string& error) {
    ModelOptions options;
    options.twoSided = twoSided;
    for (const std::string& path : paths) {
        if (!LoadModel(path, scene, options, warnings, error)) {
            // One file's reason already names it; among several the reader needs to know which.
            if (paths.size() > 1 && error.find(path) == std::string::npos)
                error = path + ": " + error;
            return false;
        }
    }
    return true;
}

std::size_t TriangleCount(const Scene& scene) {
    std::size_t count = 0;
    for (const SceneObject& o : scene.Objects()) count += o.geometry.triangles.size();
    return count;
}

bool ModelFormatList(const std::string& settingsFile, std::string& list, std::string& error) {
    IniSettings none;
    HostAPI formats(none);
    if (!PrepareModelFormats(formats, settingsFile, error)) return false;
    list = ListModelFormats();
    if (*MissingFormatsHint() != 0) list += std::string("(") + MissingFormatsHint() + ")\n";
    return true;
}
