// glTF 2.0 models, as JSON with their buffers and images beside them or as one binary GLB file,
// parsed by tinygltf; every file it reads comes through the host's streams.
#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <vector>

#include "core/stream/stream.h"
#include "host/formats/gltf_config.h"
#include "host/formats/model_import.h"
#include "host/formats/stream_reading.h"

namespace {

// Node trees deeper than this are taken for loops, and a file that places meshes more often
// than this for a tree that shares its branches many times over.
constexpr int kMostNodeDepth = 64;
constexpr std::size_t kMostNodeVisits = 100000;

// Column-major 4 x 4, as glTF stores it.
using Matrix = std::array<double, 16>;

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            for (int k = 0; k < 4; ++k) m[c * 4 + r] += a[k * 4 + r] * b[c * 4 + k];
    return m;
}

Matrix NodeMatrix(const tinygltf::Node& node) {
    if (node.matrix.size() == 16) {
        Matrix m;
        std::copy(node.matrix.begin(), node.matrix.end(), m.begin());
        return m;
    }
    Matrix t = kIdentity, r = kIdentity, s = kIdentity;
    if (node.translation.size() == 3)
        for (int k = 0; k < 3; ++k) t[12 + k] = node.translation[static_cast<std::size_t>(k)];
    if (node.rotation.size() == 4) {
        const double x = node.rotation[0], y = node.rotation[1], z = node.rotation[2],
                     w = node.rotation[3];
        r = {1 - 2 * (y * y + z * z),
             2 * (x * y + z * w),
             2 * (x * z - y * w),
             0,
             2 * (x * y - z * w),
             1 - 2 * (x * x + z * z),
             2 * (y * z + x * w),
             0,
             2 * (x * z + y * w),
             2 * (y * z - x * w),
             1 - 2 * (x * x + y * y),
             0,
             0,
             0,
             0,
             1};
    }
    if (node.scale.size() == 3)
        for (int k = 0; k < 3; ++k) s[k * 5] = node.scale[static_cast<std::size_t>(k)];
    return Multiply(t, Multiply(r, s));
}

// The file's buffers and images as the parser asks for them, through the host's streams.
bool FileExists(const std::string& path, void*) {
    return OpenReadStream(path) != nullptr;
}
std::string ExpandPath(const std::string& path, void*) {
    return path;
}
bool ReadFile(std::vector<unsigned char>* out, std::string* err, const std::string& path, void*) {
    StreamHandle stream = OpenReadStream(path);
    if (stream != nullptr && ReadWholeStream(*stream, *out)) return true;
    if (err != nullptr) *err += "cannot read " + path + "\n";
    return false;
}
bool WriteFile(std::string* err, const std::string&, const std::vector<unsigned char>&, void*) {
    if (err != nullptr) *err += "models are only read\n";
    return false;
}
// Keeps an image's encoded bytes for the host's decoder, which reads only those used. The
// parser hands over a buffer view's bytes without checking that the view lies in its buffer.
bool KeepImage(tinygltf::Image* image, const int, std::string*, std::string*, int, int,
               const unsigned char* bytes, int size, void* model) {
    const auto& m = *static_cast<const tinygltf::Model*>(model);
    if (image->bufferView >= 0) {
        const auto& view = m.bufferViews[static_cast<std::size_t>(image->bufferView)];
        const auto& data = m.buffers[static_cast<std::size_t>(view.buffer)].data;
        if (view.byteOffset > data.size() || view.byteLength > data.size() - view.byteOffset)
            return true;
    }
    if (size > 0) image->image.assign(bytes, bytes + size);
    image->width = image->height = -1;
    return true;
}

std::string PercentDecoded(const std::string& uri) {
    std::string out;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() &&
            std::isxdigit(static_cast<unsigned char>(uri[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(uri[i + 2]))) {
            out += static_cast<char>(std::stoi(uri.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            out += uri[i];
        }
    }
    return out;
}

class GltfReader {
public:
    explicit GltfReader(ModelBuilder& builder) : builder_(builder) {}
    bool Read(q5_STREAM& stream, std::string& error);

private:
    // The accessor's elements as `width` floats each (normalized integers scaled to 0..1 or
    // -1..1); false when it is missing or reaches beyond its buffer.
    bool Floats(int accessor, int width, std::vector<float>& out) const;
    bool Indices(int accessor, std::vector<std::uint32_t>& out) const;
    const std::uint8_t* Element(const tinygltf::Accessor& a, std::size_t elementBytes,
                                std::size_t& stride) const;
    std::size_t Material(int index);
    HostPicture* Texture(int index);
    void Node(int index, const Matrix& parent, int depth);
    void Primitive(const tinygltf::Primitive& primitive, const Matrix& placement,
                   const std::string& name);

    ModelBuilder& builder_;
    tinygltf::Model model_;
    std::vector<std::size_t> materials_; // scene material of each file material, or unset
    std::vector<char> materialMade_;
    std::size_t skipped_ = 0;
    std::size_t visits_ = 0;
};

const std::uint8_t* GltfReader::Element(const tinygltf::Accessor& a, std::size_t elementBytes,
                                        std::size_t& stride) const {
    if (a.bufferView < 0 || static_cast<std::size_t>(a.bufferView) >= model_.bufferViews.size())
        return nullptr;
    const tinygltf::BufferView& view = model_.bufferViews[static_cast<std::size_t>(a.bufferView)];
    if (view.buffer < 0 || static_cast<std::size_t>(view.buffer) >= model_.buffers.size())
        return nullptr;
    const std::vector<unsigned char>& data =
        model_.buffers[static_cast<std::size_t>(view.buffer)].data;
    stride = view.byteStride != 0 ? view.byteStride : elementBytes;
    if (stride < elementBytes || a.count == 0 || a.count - 1 > view.byteLength / stride)
        return nullptr;
    const std::size_t start = view.byteOffset + a.byteOffset;
    const std::size_t reach = a.byteOffset + stride * (a.count - 1) + elementBytes;
    if (view.byteOffset > data.size() || view.byteLength > data.size() - view.byteOffset ||
        reach > view.byteLength || start < view.byteOffset)
        return nullptr;
    return data.data() + start;
}

bool GltfReader::Floats(int index, int width, std::vector<float>& out) const {
    if (index < 0 || static_cast<std::size_t>(index) >= model_.accessors.size()) return false;
    const tinygltf::Accessor& a = model_.accessors[static_cast<std::size_t>(index)];
    const int components = tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(a.type));
    const int bytes =
        tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(a.componentType));
    if (components < width || bytes <= 0) return false;
    std::size_t stride = 0;
    const std::uint8_t* base = Element(a, static_cast<std::size_t>(components * bytes), stride);
    if (base == nullptr) return false;
    out.resize(a.count * static_cast<std::size_t>(width));
    for (std::size_t i = 0; i < a.count; ++i) {
        const std::uint8_t* e = base + i * stride;
        for (int k = 0; k < width; ++k) {
            const std::uint8_t* c = e + k * bytes;
            float v = 0;
            switch (a.componentType) {
            case TINYGLTF_COMPONENT_TYPE_FLOAT:
                std::memcpy(&v, c, 4);
                break;
            case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
                v = *c / 255.0f;
                break;
            case TINYGLTF_COMPONENT_TYPE_BYTE:
                v = std::max(static_cast<std::int8_t>(*c) / 127.0f, -1.0f);
                break;
            case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT: {
                std::uint16_t u;
                std::memcpy(&u, c, 2);
                v = u / 65535.0f;
                break;
            }
            case TINYGLTF_COMPONENT_TYPE_SHORT: {
                std::int16_t s;
                std::memcpy(&s, c, 2);
                v = std::max(s / 32767.0f, -1.0f);
                break;
            }
            default:
                return false;
            }
            out[i * static_cast<std::size_t>(width) + static_cast<std::size_t>(k)] = v;
        }
    }
    return true;
}

bool GltfReader::Indices(int index, std::vector<std::uint32_t>& out) const {
    if (index < 0 || static_cast<std::size_t>(index) >= model_.accessors.size()) return false;
    const tinygltf::Accessor& a = model_.accessors[static_cast<std::size_t>(index)];
    const int bytes =
        tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(a.componentType));
    if (a.type != TINYGLTF_TYPE_SCALAR || (bytes != 1 && bytes != 2 && bytes != 4)) return false;
    std::size_t stride = 0;
    const std::uint8_t* base = Element(a, static_cast<std::size_t>(bytes), stride);
    if (base == nullptr) return false;
    out.resize(a.count);
    for (std::size_t i = 0; i < a.count; ++i) {
        const std::uint8_t* e = base + i * stride;
        if (bytes == 1) {
            out[i] = *e;
        } else if (bytes == 2) {
            std::uint16_t u;
            std::memcpy(&u, e, 2);
            out[i] = u;
        } else {
            std::memcpy(&out[i], e, 4);
        }
    }
    return true;
}

HostPicture* GltfReader::Texture(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= model_.textures.size()) return nullptr;
    const int source = model_.textures[static_cast<std::size_t>(index)].source;
    if (source < 0 || static_cast<std::size_t>(source) >= model_.images.size()) {
        builder_.Warn("texture " + std::to_string(index) + " has no image; drawn without it");
        return nullptr;
    }
    const tinygltf::Image& image = model_.images[static_cast<std::size_t>(source)];
    if (!image.image.empty())
        return builder_.TextureBytes(image.name.empty() ? "image " + std::to_string(source)
                                                        : image.name,
                                     image.image.data(), image.image.size());
    if (!image.uri.empty()) return builder_.TextureFile(PercentDecoded(image.uri));
    builder_.Warn("image " + std::to_string(source) + " holds no data; drawn without it");
    return nullptr;
}

std::size_t GltfReader::Material(int index) {
    if (index < 0 || static_cast<std::size_t>(index) >= model_.materials.size())
        return builder_.DefaultMaterial();
    const auto i = static_cast<std::size_t>(index);
    if (materialMade_[i]) return materials_[i];
    const tinygltf::Material& m = model_.materials[i];
    const auto& pbr = m.pbrMetallicRoughness;
    MaterialSource source;
    source.name = m.name;
    if (pbr.baseColorFactor.size() == 4) {
        source.diffuse = Rgb{static_cast<float>(pbr.baseColorFactor[0]),
                             static_cast<float>(pbr.baseColorFactor[1]),
                             static_cast<float>(pbr.baseColorFactor[2])};
        if (m.alphaMode == "BLEND") source.opacity = static_cast<float>(pbr.baseColorFactor[3]);
    }
    source.twoSided = m.doubleSided;
    source.specular = static_cast<float>(0.25 * (1.0 - pbr.roughnessFactor));
    source.shininess = 32;
    if (pbr.baseColorTexture.index >= 0)
        source.diffuseTexture = Texture(pbr.baseColorTexture.index);
    materialMade_[i] = 1;
    return materials_[i] = builder_.AddMaterial(source);
}

void GltfReader::Primitive(const tinygltf::Primitive& primitive, const Matrix& m,
                           const std::string& name) {
    std::vector<float> positions, normals, uvs;
    const auto attribute = [&](const char* key) {
        const auto found = primitive.attributes.find(key);
        return found == primitive.attributes.end() ? -1 : found->second;
    };
    if (!Floats(attribute("POSITION"), 3, positions)) {
        ++skipped_;
        return;
    }
    const std::size_t count = positions.size() / 3;
    if (!Floats(attribute("NORMAL"), 3, normals) || normals.size() != positions.size())
        normals.clear();
    if (!Floats(attribute("TEXCOORD_0"), 2, uvs) || uvs.size() / 2 != count) uvs.clear();
    std::vector<std::uint32_t> indices;
    if (primitive.indices >= 0) {
        if (!Indices(primitive.indices, indices)) {
            ++skipped_;
            return;
        }
    } else {
        indices.resize(count);
        for (std::size_t i = 0; i < count; ++i) indices[i] = static_cast<std::uint32_t>(i);
    }
    for (std::uint32_t& i : indices)
        if (i >= count) {
            ++skipped_;
            return;
        }

    SceneObject object;
    object.name = name;
    MeshGeometry& g = object.geometry;
    // Normals go through the inverse transpose, whose scale does not matter once normalized.
    const double a = m[0], b = m[4], c = m[8], d = m[1], e = m[5], f = m[9], gg = m[2], h = m[6],
                 k = m[10];
    const double cof[9] = {e * k - f * h, f * gg - d * k, d * h - e * gg,
                           c * h - b * k, a * k - c * gg, b * gg - a * h,
                           b * f - c * e, c * d - a * f,  a * e - b * d};
    const double det = a * cof[0] + b * cof[1] + c * cof[2];
    const double side = det < 0 ? -1.0 : 1.0;
    g.positions.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const float* p = &positions[3 * i];
        g.positions.emplace_back(
            static_cast<float>(m[0] * p[0] + m[4] * p[1] + m[8] * p[2] + m[12]),
            static_cast<float>(m[1] * p[0] + m[5] * p[1] + m[9] * p[2] + m[13]),
            static_cast<float>(m[2] * p[0] + m[6] * p[1] + m[10] * p[2] + m[14]));
        if (!normals.empty()) {
            const float* n = &normals[3 * i];
            g.normals.emplace_back(
                static_cast<float>(side * (cof[0] * n[0] + cof[3] * n[1] + cof[6] * n[2])),
                static_cast<float>(side * (cof[1] * n[0] + cof[4] * n[1] + cof[7] * n[2])),
                static_cast<float>(side * (cof[2] * n[0] + cof[5] * n[1] + cof[8] * n[2])));
            POINT3D& q = g.normals.back();
            const float length = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
            if (length > 0) q = POINT3D(q.x / length, q.y / length, q.z / length);
        }
        // glTF counts t from the top of the picture.
        if (!uvs.empty()) g.uvs.emplace_back(uvs[2 * i], 1.0f - uvs[2 * i + 1]);
    }
    const auto triangle = [&](std::uint32_t p, std::uint32_t q, std::uint32_t r,
                              std::uint8_t edges) {
        if (det < 0)
            g.triangles.push_back(
                {{p, r, q},
                 static_cast<std::uint8_t>(((edges & 1) << 2) | (edges & 2) | ((edges >> 2) & 1))});
        else
            g.triangles.push_back({{p, q, r}, edges});
    };
    const std::size_t n = indices.size();
    switch (primitive.mode) {
    case TINYGLTF_MODE_TRIANGLES:
    case -1:
        for (std::size_t i = 0; i + 2 < n; i += 3)
            triangle(indices[i], indices[i + 1], indices[i + 2], 7);
        break;
    case TINYGLTF_MODE_TRIANGLE_STRIP:
        for (std::size_t i = 0; i + 2 < n; ++i)
            if (i % 2 == 0)
                triangle(indices[i], indices[i + 1], indices[i + 2], 7);
            else
                triangle(indices[i + 1], indices[i], indices[i + 2], 7);
        break;
    case TINYGLTF_MODE_TRIANGLE_FAN:
        for (std::size_t i = 1; i + 1 < n; ++i) triangle(indices[0], indices[i], indices[i + 1], 7);
        break;
    case TINYGLTF_MODE_POINTS:
        g.points = indices;
        break;
    case TINYGLTF_MODE_LINE:
        for (std::size_t i = 0; i + 1 < n; i += 2)
            g.segments.push_back({indices[i], indices[i + 1]});
        break;
    case TINYGLTF_MODE_LINE_STRIP:
    case TINYGLTF_MODE_LINE_LOOP:
        for (std::size_t i = 0; i + 1 < n; ++i) g.segments.push_back({indices[i], indices[i + 1]});
        if (primitive.mode == TINYGLTF_MODE_LINE_LOOP && n > 2)
            g.segments.push_back({indices[n - 1], indices[0]});
        break;
    default:
        ++skipped_;
        return;
    }
    object.material = Material(primitive.material);
    builder_.AddObject(std::move(object));
}

void GltfReader::Node(int index, const Matrix& parent, int depth) {
    if (index < 0 || static_cast<std::size_t>(index) >= model_.nodes.size() ||
        depth > kMostNodeDepth || ++visits_ > kMostNodeVisits)
        return;
    const tinygltf::Node& node = model_.nodes[static_cast<std::size_t>(index)];
    const Matrix placement = Multiply(parent, NodeMatrix(node));
    if (node.mesh >= 0 && static_cast<std::size_t>(node.mesh) < model_.meshes.size()) {
        const tinygltf::Mesh& mesh = model_.meshes[static_cast<std::size_t>(node.mesh)];
        for (const tinygltf::Primitive& p : mesh.primitives) Primitive(p, placement, mesh.name);
    }
    for (int child : node.children) Node(child, placement, depth + 1);
}

bool GltfReader::Read(q5_STREAM& stream, std::string& error) {
    std::vector<std::uint8_t> bytes;
    if (!ReadWholeStream(stream, bytes) || bytes.size() > 0xFFFFFFFFu) {
        error = "cannot read the file";
        return false;
    }
    tinygltf::TinyGLTF parser;
    parser.SetFsCallbacks({&FileExists, &ExpandPath, &ReadFile, &WriteFile, nullptr});
    parser.SetImageLoader(&KeepImage, &model_);
    std::string err, warn;
    const auto length = static_cast<unsigned>(bytes.size());
    const std::string folder = builder_.Folder().empty() ? "." : builder_.Folder();
    const bool binary = bytes.size() >= 4 && std::memcmp(bytes.data(), "glTF", 4) == 0;
    const bool parsed =
        binary ? parser.LoadBinaryFromMemory(&model_, &err, &warn, bytes.data(), length, folder)
               : parser.LoadASCIIFromString(&model_, &err, &warn,
                                            reinterpret_cast<const char*>(bytes.data()), length,
                                            folder);
    std::vector<std::uint8_t>().swap(bytes);
    if (!parsed) {
        while (!err.empty() && (err.back() == '\n' || err.back() == ' ')) err.pop_back();
        const auto cut = err.find('\n');
        error = err.empty() ? "not a glTF file" : err.substr(0, cut);
        return false;
    }
    materials_.assign(model_.materials.size(), 0);
    materialMade_.assign(model_.materials.size(), 0);
    if (!model_.scenes.empty()) {
        const std::size_t scene =
            model_.defaultScene >= 0 &&
                    static_cast<std::size_t>(model_.defaultScene) < model_.scenes.size()
                ? static_cast<std::size_t>(model_.defaultScene)
                : 0;
        for (int node : model_.scenes[scene].nodes) Node(node, kIdentity, 0);
    } else {
        for (const tinygltf::Mesh& mesh : model_.meshes)
            for (const tinygltf::Primitive& p : mesh.primitives) Primitive(p, kIdentity, mesh.name);
    }
    if (skipped_ > 0)
        builder_.Warn(std::to_string(skipped_) + " parts with unreadable data left out");
    return true;
}

} // namespace

std::uint64_t GltfHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                          std::uintptr_t) {
    return ReadWith<GltfReader>(operation, stream, scene);
}
