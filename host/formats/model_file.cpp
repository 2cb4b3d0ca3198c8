// Loading a model file through the format the registry finds for it.
#include "host/formats/model_file.h"

#include <filesystem>

#include "core/filetype/file_type.h"
#include "core/services/host_link.h"
#include "host/formats/model_formats.h"
#include "host/formats/model_import.h"
#include "host/formats/stream_reading.h"
#include "host/scene/scene.h"
#include "interface/gapi.h"

bool LoadModel(const std::string& path, Scene& scene, const ModelOptions& options,
               std::vector<std::string>& warnings, std::string& error) {
    q5_GAPI* host = q5GetHostAPI();
    if (host == nullptr) {
        error = "cannot load " + path + ": no host to register the model formats with";
        return false;
    }
    RegisterModelFormats(*host);
    StreamHandle stream = OpenReadStream(path);
    if (stream == nullptr) {
        error = "cannot open " + path + ": no such file, or not readable";
        return false;
    }
    FILETYPE* type = FindModelFormat(*stream, path);
    if (type == nullptr) {
        const std::string hint = MissingFormatsHint();
        error = "cannot load " + path + ": not a model format this program reads" +
                (hint.empty() ? std::string(" (see --list-formats)") : " (" + hint + ")");
        return false;
    }
    const std::filesystem::path file(path);
    ModelBuilder builder(scene, file.parent_path().string(), options);
    ModelImport request{builder, path, {}};
    const bool read = type->Func3d(kModelOpRead, stream.get(), request.AsScene(), nullptr) != 0;
    stream.reset();
    warnings = builder.Warnings();
    if (!read) {
        const std::string why = request.error.substr(0, request.error.find('\n'));
        error = "cannot load " + path + ": " + (why.empty() ? "the file cannot be read" : why);
        return false;
    }
    if (!builder.Finish(file.filename().string(), error)) return false;
    warnings = builder.Warnings();
    return true;
}
