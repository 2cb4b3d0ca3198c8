// The OBJ and glTF handlers over arbitrary bytes, reached through the file-type registry as
// the host reaches them. The first byte picks the format: OBJ, glTF as JSON, or GLB.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/filetype/file_type.h"
#include "core/stream/stream.h"
#include "host/app/host_api.h"
#include "host/formats/model_builder.h"
#include "host/formats/model_formats.h"
#include "host/formats/model_import.h"
#include "host/scene/scene.h"

namespace {

// Files the input names are looked for here, where there are none.
constexpr const char* kNowhere = "/nonexistent-model-fuzz-folder";

FILETYPE* const* Formats() {
    static IniSettings settings;
    static HostAPI host(settings);
    static FILETYPE* formats[3] = {};
    if (formats[0] == nullptr) {
        host.SetMessageSink([](std::int32_t, const std::string&) {});
        RegisterModelFormats(host);
        formats[0] = GetTypeByName(u"Wavefront OBJ");
        formats[1] = GetTypeByName(u"glTF 2.0");
        formats[2] = GetTypeByName(u"glTF 2.0 binary");
    }
    return formats;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    FILETYPE* type = Formats()[data[0] % 3];
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    if (type == nullptr || stream == nullptr) __builtin_trap();
    Scene scene;
    ModelBuilder builder(scene, kNowhere, ModelOptions{});
    ModelImport request{builder, std::string(kNowhere) + "/model", {}};
    std::string error;
    if (type->Func3d(kModelOpRead, stream, request.AsScene(), nullptr) != 0)
        builder.Finish("model", error);
    stream->Release();
    return 0;
}
