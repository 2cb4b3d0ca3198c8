// OBJ models with their MTL materials, parsed by tinyobjloader's streaming interface: the
// parser hands over each element as it reads it, so nothing but the scene's own tables grows.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <limits>
#include <map>
#include <memory>
#include <vector>

#include <tiny_obj_loader.h>

#include "core/stream/stream.h"
#include "host/formats/model_import.h"
#include "host/formats/stream_reading.h"

namespace {

constexpr std::uint32_t kEmpty = std::numeric_limits<std::uint32_t>::max();

// A corner's position, texture coordinate and normal index (-1: none), as one vertex of a part.
struct Corner {
    std::int32_t v, vt, vn;
    bool operator==(const Corner&) const = default;
};

// Open addressing from corners to vertex numbers, kept at most half full.
class CornerMap {
public:
    // The vertex of `c`, or `fresh` after recording it as that vertex.
    std::uint32_t Find(const Corner& c, std::uint32_t fresh) {
        if (2 * (count_ + 1) > slots_.size()) Grow();
        std::size_t i = Hash(c) & (slots_.size() - 1);
        while (slots_[i].vertex != kEmpty) {
            if (slots_[i].corner == c) return slots_[i].vertex;
            i = (i + 1) & (slots_.size() - 1);
        }
        slots_[i] = {c, fresh};
        ++count_;
        return fresh;
    }
    void Release() { std::vector<Slot>().swap(slots_); }

private:
    struct Slot {
        Corner corner;
        std::uint32_t vertex = kEmpty;
    };
    static std::size_t Hash(const Corner& c) {
        std::uint64_t h = static_cast<std::uint32_t>(c.v) * 0x9E3779B97F4A7C15ull;
        h ^= (static_cast<std::uint64_t>(static_cast<std::uint32_t>(c.vt)) << 32 |
              static_cast<std::uint32_t>(c.vn)) *
             0xC2B2AE3D27D4EB4Full;
        return static_cast<std::size_t>(h ^ (h >> 29));
    }
    void Grow() {
        std::vector<Slot> old = std::move(slots_);
        slots_.assign(old.empty() ? 1024 : old.size() * 2, Slot{});
        count_ = 0;
        for (const Slot& s : old)
            if (s.vertex != kEmpty) Find(s.corner, s.vertex);
    }
    std::vector<Slot> slots_;
    std::size_t count_ = 0;
};

// The faces of one material.
struct Part {
    int material = -1;
    SceneObject object;
    CornerMap corners;
    std::vector<std::int32_t> positionOf; // of each vertex, for normals made from faces
    bool missingNormals = false;
};

// Lines and points: the streaming parser skips them, so the stream buffer notes them as the
// text passes, with the number of vertices before each for relative indices.
struct MarkLine {
    bool points;
    std::int64_t verticesBefore;
    std::string text;
};

class MarkTap final : public StreamBuffer {
public:
    using StreamBuffer::StreamBuffer;
    std::vector<MarkLine>& Marks() {
        if (state_ == State::Collect) marks_.push_back(std::move(current_));
        state_ = State::Start;
        return marks_;
    }

protected:
    void Inspect(const char* d, std::size_t n) override {
        std::size_t i = 0;
        while (i < n) {
            switch (state_) {
            case State::Skip:
            case State::Collect: {
                const auto* nl = static_cast<const char*>(std::memchr(d + i, '\n', n - i));
                const std::size_t end = nl != nullptr ? static_cast<std::size_t>(nl - d) : n;
                if (state_ == State::Collect) current_.text.append(d + i, end - i);
                i = end;
                if (nl == nullptr) break;
                ++i;
                if (state_ == State::Collect) marks_.push_back(std::move(current_));
                state_ = State::Start;
                break;
            }
            case State::Start: {
                const char c = d[i++];
                if (c == ' ' || c == '\t' || c == '\r' || c == '\n') break;
                state_ = c == 'v'   ? State::AfterV
                         : c == 'l' ? State::AfterL
                         : c == 'p' ? State::AfterP
                                    : State::Skip;
                break;
            }
            default: {
                const char c = d[i++];
                const bool blank = c == ' ' || c == '\t';
                if (blank && state_ == State::AfterV) ++vertices_;
                if (blank && state_ != State::AfterV) {
                    current_ = MarkLine{state_ == State::AfterP, vertices_, {}};
                    state_ = State::Collect;
                } else {
                    state_ = c == '\n' ? State::Start : State::Skip;
                }
                break;
            }
            }
        }
    }

private:
    enum class State { Start, AfterV, AfterL, AfterP, Skip, Collect };
    State state_ = State::Start;
    std::int64_t vertices_ = 0;
    MarkLine current_;
    std::vector<MarkLine> marks_;
};

// MTL files beside the model, read through the host's streams.
class MaterialLibraries final : public tinyobj::MaterialReader {
public:
    MaterialLibraries(ModelBuilder& builder) : builder_(builder) {}
    bool operator()(const std::string& name, std::vector<tinyobj::material_t>* materials,
                    std::map<std::string, int>* names, std::string* warn,
                    std::string* err) override {
        const std::string path = builder_.Folder().empty() ? name : builder_.Folder() + "/" + name;
        StreamHandle stream = OpenReadStream(path);
        if (stream == nullptr) {
            builder_.Warn("material library " + name + " not found; default materials used");
            return false;
        }
        StreamBuffer buffer(*stream);
        std::istream in(&buffer);
        tinyobj::LoadMtl(names, materials, &in, warn, err);
        return true;
    }

private:
    ModelBuilder& builder_;
};

class ObjReader {
public:
    explicit ObjReader(ModelBuilder& builder) : builder_(builder) {}

    bool Read(q5_STREAM& stream, std::string& error);

private:
    Part& Current() {
        if (current_ < 0) {
            parts_.push_back(std::make_unique<Part>());
            current_ = 0;
            byMaterial_[-1] = 0;
        }
        return *parts_[static_cast<std::size_t>(current_)];
    }
    void UseMaterial(int material);
    void Face(const tinyobj::index_t* indices, int count);
    void Finish(const std::vector<MarkLine>& marks);
    void AddMarks(const std::vector<MarkLine>& marks);
    std::size_t SceneMaterial(int material);

    struct Direct {
        std::int32_t vt = -1, vn = -1;
        std::uint32_t vertex = kEmpty;
        int part = -1;
    };

    ModelBuilder& builder_;
    std::vector<float> positions_, normals_, uvs_;
    std::vector<Direct> direct_; // by position: the first vertex made of it
    std::vector<tinyobj::material_t> materials_;
    std::vector<std::unique_ptr<Part>> parts_;
    std::map<int, int> byMaterial_;
    std::map<int, std::size_t> sceneMaterials_;
    int current_ = -1;
    std::size_t badFaces_ = 0;
};

// OBJ counts from 1, and backwards from the last one defined when negative; 0 is none.
std::int32_t Resolve(int raw, std::size_t defined) {
    const auto n = static_cast<std::int64_t>(defined);
    const std::int64_t i = raw > 0 ? std::int64_t{raw} - 1 : raw < 0 ? n + raw : -1;
    return i >= 0 && i < n ? static_cast<std::int32_t>(i) : -1;
}

void ObjReader::UseMaterial(int material) {
    const auto known = byMaterial_.find(material);
    if (known != byMaterial_.end()) {
        current_ = known->second;
        return;
    }
    parts_.push_back(std::make_unique<Part>());
    parts_.back()->material = material;
    current_ = static_cast<int>(parts_.size() - 1);
    byMaterial_[material] = current_;
}

void ObjReader::Face(const tinyobj::index_t* indices, int count) {
    if (count < 3) return;
    Part& part = Current();
    MeshGeometry& g = part.object.geometry;
    constexpr int kMostCorners = 64;
    std::uint32_t vertex[kMostCorners];
    if (count > kMostCorners) {
        ++badFaces_;
        return;
    }
    for (int k = 0; k < count; ++k) {
        const Corner c{Resolve(indices[k].vertex_index, positions_.size() / 3),
                       Resolve(indices[k].texcoord_index, uvs_.size() / 2),
                       Resolve(indices[k].normal_index, normals_.size() / 3)};
        if (c.v < 0) {
            ++badFaces_;
            return;
        }
        const auto fresh = static_cast<std::uint32_t>(g.positions.size());
        // Most positions have one texture coordinate and normal in one part: those skip the
        // hash table.
        if (static_cast<std::size_t>(c.v) >= direct_.size()) direct_.resize(positions_.size() / 3);
        Direct& d = direct_[static_cast<std::size_t>(c.v)];
        if (d.vertex == kEmpty) d = {c.vt, c.vn, fresh, current_};
        if (d.vt == c.vt && d.vn == c.vn && d.part == current_)
            vertex[k] = d.vertex;
        else
            vertex[k] = part.corners.Find(c, fresh);
        if (vertex[k] != fresh) continue;
        const float* p = &positions_[3 * static_cast<std::size_t>(c.v)];
        g.positions.emplace_back(p[0], p[1], p[2]);
        part.positionOf.push_back(c.v);
        if (c.vn >= 0) {
            const float* n = &normals_[3 * static_cast<std::size_t>(c.vn)];
            g.normals.emplace_back(n[0], n[1], n[2]);
        } else {
            g.normals.emplace_back(0.0f, 0.0f, 0.0f);
            part.missingNormals = true;
        }
        if (c.vt >= 0 && g.uvs.size() < fresh) g.uvs.resize(fresh, POINT2D(0, 0));
        if (c.vt >= 0 || !g.uvs.empty())
            g.uvs.push_back(c.vt >= 0 ? POINT2D(uvs_[2 * static_cast<std::size_t>(c.vt)],
                                                uvs_[2 * static_cast<std::size_t>(c.vt) + 1])
                                      : POINT2D(0, 0));
    }
    // A fan; only the polygon's own sides are outline edges.
    for (int k = 1; k + 1 < count; ++k) {
        const std::uint8_t edges =
            static_cast<std::uint8_t>((k == 1 ? 1 : 0) | 2 | (k + 2 == count ? 4 : 0));
        g.triangles.push_back({{vertex[0], vertex[k], vertex[k + 1]}, edges});
    }
}

std::size_t ObjReader::SceneMaterial(int material) {
    if (material < 0 || static_cast<std::size_t>(material) >= materials_.size())
        return builder_.DefaultMaterial();
    if (const auto known = sceneMaterials_.find(material); known != sceneMaterials_.end())
        return known->second;
    const tinyobj::material_t& m = materials_[static_cast<std::size_t>(material)];
    MaterialSource source;
    source.name = m.name;
    source.diffuse = Rgb{m.diffuse[0], m.diffuse[1], m.diffuse[2]};
    source.opacity = m.dissolve;
    source.specular = (m.specular[0] + m.specular[1] + m.specular[2]) / 3;
    source.shininess = m.shininess;
    if (!m.diffuse_texname.empty()) source.diffuseTexture = builder_.TextureFile(m.diffuse_texname);
    return sceneMaterials_[material] = builder_.AddMaterial(source);
}

void ObjReader::AddMarks(const std::vector<MarkLine>& marks) {
    if (marks.empty()) return;
    SceneObject object;
    object.name = "lines and points";
    MeshGeometry& g = object.geometry;
    std::map<std::int32_t, std::uint32_t> vertexOf;
    const std::size_t defined = positions_.size() / 3;
    const auto vertex = [&](std::int32_t v) {
        const auto [at, added] =
            vertexOf.try_emplace(v, static_cast<std::uint32_t>(g.positions.size()));
        if (added) {
            const float* p = &positions_[3 * static_cast<std::size_t>(v)];
            g.positions.emplace_back(p[0], p[1], p[2]);
        }
        return at->second;
    };
    for (const MarkLine& line : marks) {
        std::vector<std::uint32_t> corners;
        const char* p = line.text.c_str();
        while (*p != 0) {
            char* end = nullptr;
            const long raw = std::strtol(p, &end, 10);
            if (end == p) {
                ++p;
                continue;
            }
            p = end;
            while (*p != 0 && *p != ' ' && *p != '\t') ++p; // "/vt" of a line corner
            const auto before = static_cast<std::size_t>(
                std::min<std::int64_t>(line.verticesBefore, static_cast<std::int64_t>(defined)));
            const std::int32_t v =
                raw > INT32_MIN && raw < INT32_MAX ? Resolve(static_cast<int>(raw), before) : -1;
            if (v >= 0) corners.push_back(vertex(v));
        }
        if (line.points) {
            g.points.insert(g.points.end(), corners.begin(), corners.end());
        } else {
            for (std::size_t k = 1; k < corners.size(); ++k)
                g.segments.push_back({corners[k - 1], corners[k]});
        }
    }
    object.material = builder_.DefaultMaterial();
    builder_.AddObject(std::move(object));
}

void ObjReader::Finish(const std::vector<MarkLine>& marks) {
    for (auto& part : parts_) {
        part->corners.Release();
        MeshGeometry& g = part->object.geometry;
        if (part->missingNormals) {
            // Faces without normals are smooth across every corner at the same position.
            std::vector<POINT3D> sum(positions_.size() / 3, POINT3D(0, 0, 0));
            for (const MeshGeometry::Triangle& t : g.triangles) {
                const POINT3D n = Cross(g.positions[t.v[1]] - g.positions[t.v[0]],
                                        g.positions[t.v[2]] - g.positions[t.v[0]]);
                for (std::uint32_t v : t.v) {
                    POINT3D& s = sum[static_cast<std::size_t>(part->positionOf[v])];
                    s = POINT3D(s.x + n.x, s.y + n.y, s.z + n.z);
                }
            }
            for (std::size_t v = 0; v < g.normals.size(); ++v) {
                POINT3D& n = g.normals[v];
                if (n.x != 0 || n.y != 0 || n.z != 0) continue;
                n = sum[static_cast<std::size_t>(part->positionOf[v])];
                const float length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
                n = length > 0 ? POINT3D(n.x / length, n.y / length, n.z / length)
                               : POINT3D(0, 0, 0);
            }
        }
        std::vector<std::int32_t>().swap(part->positionOf);
        if (g.triangles.empty()) continue;
        part->object.material = SceneMaterial(part->material);
        part->object.name =
            part->material >= 0 && static_cast<std::size_t>(part->material) < materials_.size()
                ? materials_[static_cast<std::size_t>(part->material)].name
                : "faces";
        builder_.AddObject(std::move(part->object));
    }
    parts_.clear();
    AddMarks(marks);
    if (badFaces_ > 0)
        builder_.Warn(std::to_string(badFaces_) + " faces with missing vertices left out");
}

bool ObjReader::Read(q5_STREAM& stream, std::string& error) {
    stream.Reset();
    if (stream.Seek(0, 0) != 0) {
        error = "cannot read the file";
        return false;
    }
    MarkTap tap(stream);
    std::istream in(&tap);
    tinyobj::callback_t calls;
    calls.vertex_cb = [](void* self, tinyobj::real_t x, tinyobj::real_t y, tinyobj::real_t z,
                         tinyobj::real_t) {
        auto& p = static_cast<ObjReader*>(self)->positions_;
        p.insert(p.end(), {x, y, z});
    };
    calls.normal_cb = [](void* self, tinyobj::real_t x, tinyobj::real_t y, tinyobj::real_t z) {
        auto& n = static_cast<ObjReader*>(self)->normals_;
        n.insert(n.end(), {x, y, z});
    };
    calls.texcoord_cb = [](void* self, tinyobj::real_t s, tinyobj::real_t t, tinyobj::real_t) {
        auto& uv = static_cast<ObjReader*>(self)->uvs_;
        uv.insert(uv.end(), {s, t});
    };
    calls.index_cb = [](void* self, tinyobj::index_t* indices, int count) {
        static_cast<ObjReader*>(self)->Face(indices, count);
    };
    calls.usemtl_cb = [](void* self, const char*, int material) {
        static_cast<ObjReader*>(self)->UseMaterial(material);
    };
    calls.mtllib_cb = [](void* self, const tinyobj::material_t* materials, int count) {
        static_cast<ObjReader*>(self)->materials_.assign(materials, materials + count);
    };
    MaterialLibraries libraries(builder_);
    std::string warn, err;
    const bool parsed = tinyobj::LoadObjWithCallback(in, calls, this, &libraries, &warn, &err);
    if (!parsed) {
        error = err.empty() ? "not an OBJ file" : err.substr(0, err.find('\n'));
        return false;
    }
    std::vector<float>().swap(normals_);
    std::vector<float>().swap(uvs_);
    std::vector<Direct>().swap(direct_);
    Finish(tap.Marks());
    return true;
}

} // namespace

std::uint64_t ObjHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                         std::uintptr_t) {
    if (operation != kModelOpRead || stream == 0 || scene == 0) return 0;
    ModelImport& request = ModelImport::Of(scene);
    ObjReader reader(request.builder);
    return reader.Read(*reinterpret_cast<q5_STREAM*>(stream), request.error) ? 1 : 0;
}
