// Registering the model formats with the core file-type registry.
#include "host/formats/model_formats.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "core/containers/collection.h"
#include "core/filetype/file_type.h"
#include "core/filetype/format_detect.h"
#include "core/platform/icon.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "core/stream/stream.h"
#include "host/formats/model_import.h"
#include "host/formats/stream_reading.h"
#include "interface/gapi.h"

#if defined(TESSERA_HAVE_ASSIMP)
#include <assimp/Importer.hpp>
#include <assimp/importerdesc.h>
#endif

namespace {

constexpr std::uint32_t kModelFlags = kModelFormatKind | kFileTypeCap400;

// Text formats have no magic number; an OBJ file starts with one of its element keywords or a
// comment, which other text model formats that start with "#" are not.
constexpr const char* kObjSignature =
    "signature=\"v \"; signature=\"vn \"; signature=\"vt \"; signature=\"f \";"
    "signature=\"o \"; signature=\"g \"; signature=\"s \"; signature=\"mtllib\";"
    "signature=\"usemtl\"; signature=\"#\"; antisignature=\"#VRML\"; antisignature=\"#Inventor\"";
constexpr const char* kGltfSignature = "signature=\"{\"";
constexpr const char* kGlbSignature = "signature=0:67 6C 54 46";

struct OwnFormat {
    const char16_t* extensions;
    const char16_t* name;
    const char* signature;
    q5_FILETYPEPROC handler;
    q5_GUID id;
};
const OwnFormat kOwnFormats[] = {
    {u"obj",
     u"Wavefront OBJ",
     kObjSignature,
     &ObjHandler,
     {0x7E55E001, 0x0B1E, 0x4F00, {0x80, 0x00, 0x4F, 0x42, 0x4A, 0x00, 0x00, 0x01}}},
    {u"gltf",
     u"glTF 2.0",
     kGltfSignature,
     &GltfHandler,
     {0x7E55E001, 0x0B1E, 0x4F00, {0x80, 0x00, 0x47, 0x4C, 0x54, 0x46, 0x00, 0x02}}},
    {u"glb",
     u"glTF 2.0 binary",
     kGlbSignature,
     &GltfHandler,
     {0x7E55E001, 0x0B1E, 0x4F00, {0x80, 0x00, 0x47, 0x4C, 0x42, 0x00, 0x00, 0x03}}},
};


// A cube drawn in outline, the icon of every model format.
std::int32_t ModelIcon(q5_GAPI& host) {
    q5_HICON icons[2] = {};
    for (int which = 0; which < 2; ++which) {
        const std::int32_t size = which == 0 ? 16 : 32;
        const std::int32_t stride = (size + 15) / 16 * 2;
        std::vector<std::uint8_t> andMask(static_cast<std::size_t>(stride * size), 0xFF);
        std::vector<std::uint8_t> xorMask(andMask.size(), 0);
        const auto plot = [&](std::int32_t x, std::int32_t y, bool white) {
            const std::size_t at = static_cast<std::size_t>(y * stride + x / 8);
            const auto bit = static_cast<std::uint8_t>(0x80 >> (x % 8));
            andMask[at] = static_cast<std::uint8_t>(andMask[at] & ~bit);
            xorMask[at] = static_cast<std::uint8_t>(white ? xorMask[at] | bit : xorMask[at] & ~bit);
        };
        const std::int32_t s = size * 5 / 8, o = size / 4, x0 = size / 16,
                           y0 = size - 1 - size / 16;
        // Faces white first, then every edge black over them.
        for (std::int32_t d = 0; d <= o; ++d)
            for (std::int32_t i = 0; i <= s; ++i)
                for (std::int32_t j = 0; j <= s; ++j)
                    if (i == s || j == s || d == 0) plot(x0 + i + d, y0 - j - d, true);
        const auto line = [&](std::int32_t xa, std::int32_t ya, std::int32_t xb, std::int32_t yb) {
            const std::int32_t steps = std::max(std::abs(xb - xa), std::abs(yb - ya));
            for (std::int32_t k = 0; k <= steps; ++k)
                plot(xa + (xb - xa) * k / std::max(steps, 1),
                     ya + (yb - ya) * k / std::max(steps, 1), false);
        };
        const std::int32_t fx[4] = {x0, x0 + s, x0 + s, x0}, fy[4] = {y0, y0, y0 - s, y0 - s};
        for (int k = 0; k < 4; ++k) {
            line(fx[k], fy[k], fx[(k + 1) % 4], fy[(k + 1) % 4]);
            line(fx[k] + o, fy[k] - o, fx[(k + 1) % 4] + o, fy[(k + 1) % 4] - o);
        }
        for (int k = 1; k < 4; ++k) line(fx[k], fy[k], fx[k] + o, fy[k] - o);
        icons[which] = q5plat::CreateMonoIcon(size, size, andMask.data(), xorMask.data());
    }
    std::int32_t index = host.SetIcons(icons[0], icons[1], -1);
    // Index 0 reads as "no icon" in a format record.
    if (index == 0) index = host.SetIcons(icons[0], icons[1], -1);
    q5plat::DestroyIcon(icons[0]);
    q5plat::DestroyIcon(icons[1]);
    return std::max(index, 0);
}

FILETYPE* Register(q5_GAPI& host, const char16_t* extensions, const char16_t* name,
                   const char* signature, q5_FILETYPEPROC handler, const q5_GUID& id,
                   std::int32_t icon) {
    FILETYPE* type = host.RegisterType(extensions, name, icon, kModelFlags, id);
    if (type == nullptr) return nullptr;
    type->signature = signature;
    type->handler = handler;
    return type;
}

#if defined(TESSERA_HAVE_ASSIMP)
// An identifier that stays the same between runs: the importer's name hashed into the tail.
q5_GUID AssimpId(const std::string& name) {
    std::uint64_t h = 0xCBF29CE484222325ull;
    for (unsigned char c : name) h = (h ^ c) * 0x100000001B3ull;
    q5_GUID id{0x7E55E002, 0x0A55, 0x4F00, {}};
    for (int k = 0; k < 8; ++k) id.Data4[k] = static_cast<std::uint8_t>(h >> (8 * k));
    return id;
}

void RegisterAssimpFormats(q5_GAPI& host, std::int32_t icon) {
    Assimp::Importer importer;
    for (std::size_t i = 0; i < importer.GetImporterCount(); ++i) {
        const aiImporterDesc* d = importer.GetImporterInfo(i);
        if (d == nullptr || d->mFileExtensions == nullptr || d->mName == nullptr) continue;
        std::string list;
        for (char c : std::string(d->mFileExtensions)) list += c == ' ' ? ',' : c;
        while (!list.empty() && list.back() == ',') list.pop_back();
        if (list.empty()) continue;
        std::string name = d->mName;
        for (const char* tail : {" Importer", " Reader", " importer", " reader"})
            if (name.size() > std::strlen(tail) && name.ends_with(tail))
                name.resize(name.size() - std::strlen(tail));
        Register(host, Utf8ToWide(list).c_str(), Utf8ToWide(name + " (Assimp)").c_str(), nullptr,
                 &AssimpHandler, AssimpId(d->mName), icon);
    }
}
#endif

void ForEachModelFormat(const auto& visit) {
    q5_GAPI* host = q5GetHostAPI();
    q5_COLLECTION* types = host != nullptr ? host->GetFileTypes() : nullptr;
    for (std::int64_t i = 0; types != nullptr && i < types->Count(); ++i) {
        auto* type = static_cast<FILETYPE*>(types->At(i));
        if (type->Kind() == kModelFormatKind) visit(*type);
    }
}

} // namespace

void RegisterModelFormats(q5_GAPI& host) {
    if (GetFileINFO(kOwnFormats[0].id, 0) != nullptr) return;
    const std::int32_t icon = ModelIcon(host);
    for (const OwnFormat& f : kOwnFormats)
        Register(host, f.extensions, f.name, f.signature, f.handler, f.id, icon);
#if defined(TESSERA_HAVE_ASSIMP)
    RegisterAssimpFormats(host, icon);
#endif
}

std::string FormatChoicesFile(const std::string& settingsFile) {
    if (settingsFile.empty()) return {};
    const std::filesystem::path folder = std::filesystem::path(settingsFile).parent_path();
    return (folder / "filetypes.cfg").string();
}

bool LoadFormatChoices(q5_GAPI& host, const std::string& file, std::string& error) {
    if (file.empty()) return true;
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) return true;
    StreamHandle stream = OpenReadStream(file);
    if (stream == nullptr || !host.LoadFiletypeConfig(stream.get())) {
        error = "cannot read the format choices in " + file;
        return false;
    }
    return true;
}

FILETYPE* FindModelFormat(q5_STREAM& stream, const std::string& path) {
    const std::u16string name = Utf8ToWide(path);
    FTINFO info;
    info.kind = kModelFormatKind;
    FILETYPE* byName = GetFileTypeByExt(name.c_str(), nullptr, &info);
    std::vector<std::uint8_t> prefix(kDetectPrefixBytes);
    stream.Reset();
    const std::int64_t size = stream.GetSize();
    std::int64_t got = 0;
    if (stream.Seek(0, 0) == 0)
        got = stream.Read(prefix.data(), std::min<std::int64_t>(size, kDetectPrefixBytes));
    prefix.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
    stream.Reset();
    stream.Seek(0, 0);
    if (byName != nullptr &&
        (byName->signature == nullptr ||
         q5MatchSignature(byName->signature, prefix.data(), prefix.size(), size)))
        return byName;
    FTINFO content;
    content.kind = kModelFormatKind;
    content.options = kFtContent | kFtCapFilter | kFtCap400;
    FILETYPE* found = q5GetFileFormat(&stream, nullptr, &content);
    stream.Reset();
    stream.Seek(0, 0);
    // A file its own format's parser may still read, though it starts unusually.
    return found != nullptr ? found : byName;
}

std::string ListModelFormats() {
    std::string text;
    ForEachModelFormat([&](const FILETYPE& type) {
        std::string extensions = WideToUtf8(type.extensions);
        std::replace(extensions.begin(), extensions.end(), ',', ' ');
        std::string line = WideToUtf8(type.name);
        line.resize(std::max<std::size_t>(line.size() + 1, 40), ' ');
        text += line + extensions + (type.IsEnabled() ? "" : "  (disabled)") + "\n";
    });
    return text;
}

const char* MissingFormatsHint() {
#if defined(TESSERA_HAVE_ASSIMP)
    return "";
#else
    return "this build reads OBJ and glTF only; on Linux, install libassimp-dev and build again "
           "for the other model formats";
#endif
}
