// PNG reading and writing over the platform's PNG codec.
#include "host/formats/png_file.h"

#include <cctype>
#include <filesystem>

#include "core/platform/output_file.h"
#include "core/platform/png_codec.h"

namespace {

bool HasPngExtension(const std::string& path) {
    const auto name = std::filesystem::path(path).filename().string();
    if (name.size() < 4) return false;
    std::string extension = name.substr(name.size() - 4);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension == ".png";
}

} // namespace

bool CheckPngOutput(const std::string& path, std::string& error) {
    if (path == kStandardOutputName) return true;
    const auto cannot = [&](const std::string& why) {
        error = "cannot write " + path + ": " + why;
        return false;
    };
    switch (q5plat::QueryOutputKind(path.c_str())) {
    case q5plat::OutputKind::Folder:
        return cannot("it names a folder");
    case q5plat::OutputKind::Device:
    case q5plat::OutputKind::Link:
        // Not ours to name: written as it is.
        return q5plat::CheckCanWriteInPlace(path.c_str(), error) || cannot(error);
    case q5plat::OutputKind::Missing:
    case q5plat::OutputKind::File:
        break;
    }
    const std::filesystem::path name(path);
    if (!name.has_filename()) return cannot("it names a folder");
    if (!HasPngExtension(path))
        return cannot("pictures are PNG files, so the name must end in .png");
    const std::string folder = name.has_parent_path() ? name.parent_path().string() : ".";
    switch (q5plat::QueryOutputKind(folder.c_str(), true)) {
    case q5plat::OutputKind::Folder:
        break;
    case q5plat::OutputKind::Missing:
        return cannot("folder " + folder + " does not exist");
    default:
        return cannot(folder + " is a file, not a folder");
    }
    return q5plat::CheckCanReplace(path.c_str(), error) || cannot(error);
}

bool IsPngStream(const std::string& path) {
    if (path == kStandardOutputName) return true;
    return q5plat::QueryOutputKind(path.c_str(), true) == q5plat::OutputKind::Device;
}

bool ReadPng(const std::string& path, Image& image, std::string& error) {
    q5plat::PngPixels png;
    if (!q5plat::DecodePngFile(path.c_str(), png, error)) {
        error = "cannot read " + path + ": " + error;
        return false;
    }
    image.width = png.width;
    image.height = png.height;
    image.channels = png.hasAlpha ? 4 : 3;
    const std::size_t count = static_cast<std::size_t>(png.width) * png.height;
    image.pixels.resize(count * image.channels);
    std::uint8_t* out = image.pixels.data();
    for (std::size_t i = 0; i < count; ++i, out += image.channels) {
        const std::uint8_t* in = png.bgra.data() + 4 * i;
        out[0] = in[2];
        out[1] = in[1];
        out[2] = in[0];
        if (png.hasAlpha) out[3] = in[3];
    }
    return true;
}

bool WritePng(const std::string& path, const Image& image, std::string& error) {
    const std::size_t count = static_cast<std::size_t>(image.width) * image.height;
    if (image.width < 1 || image.height < 1 || (image.channels != 3 && image.channels != 4) ||
        image.pixels.size() < count * image.channels) {
        error = "cannot write " + path + ": the image is empty";
        return false;
    }
    std::vector<std::uint8_t> bgra(count * 4);
    const std::uint8_t* in = image.pixels.data();
    for (std::size_t i = 0; i < count; ++i, in += image.channels) {
        bgra[4 * i + 0] = in[2];
        bgra[4 * i + 1] = in[1];
        bgra[4 * i + 2] = in[0];
        bgra[4 * i + 3] = image.channels == 4 ? in[3] : 255;
    }

    std::vector<std::uint8_t> png;
    if (!q5plat::EncodePng(bgra.data(), image.width, image.height,
                           4 * static_cast<std::size_t>(image.width), image.channels == 4, png,
                           error)) {
        error = "cannot write " + path + ": " + error;
        return false;
    }
    bool written = false;
    if (path == kStandardOutputName) {
        written = q5plat::WriteStandardOutput(png.data(), png.size(), error);
    } else {
        switch (q5plat::QueryOutputKind(path.c_str())) {
        case q5plat::OutputKind::Missing:
        case q5plat::OutputKind::File:
            written = q5plat::ReplaceFileAtomically(path.c_str(), png.data(), png.size(), error);
            break;
        case q5plat::OutputKind::Folder:
            error = "it names a folder";
            break;
        case q5plat::OutputKind::Link:
        case q5plat::OutputKind::Device:
            written = q5plat::WriteInPlace(path.c_str(), png.data(), png.size(), error);
            break;
        }
    }
    if (!written) error = "cannot write " + path + ": " + error;
    return written;
}

Image ImageFromFrame(const std::uint8_t* bits, std::int32_t width, std::int32_t height,
                     std::int32_t stride) {
    Image image;
    image.width = width;
    image.height = height;
    image.channels = 3;
    image.pixels.resize(static_cast<std::size_t>(width) * height * 3);
    std::uint8_t* out = image.pixels.data();
    for (std::int32_t y = 0; y < height; ++y) {
        const std::uint8_t* row = bits + static_cast<std::ptrdiff_t>(height - 1 - y) * stride;
        for (std::int32_t x = 0; x < width; ++x, out += 3) {
            out[0] = row[4 * x + 2];
            out[1] = row[4 * x + 1];
            out[2] = row[4 * x + 0];
        }
    }
    return image;
}
