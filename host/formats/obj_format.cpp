// OBJ models with their MTL materials, parsed by tinyobjloader's streaming interface: the
// parser hands over each element as it reads it, so nothing but the scene's own tables grows.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
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

// Lines and points: the streaming parser skips them, so they are noted as the text passes,
// with the number of vertices before each for relative indices.
struct MarkLine {
    bool points;
    std::int64_t verticesBefore;
    std::string text;
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

    void Vertex(float x, float y, float z) { positions_.insert(positions_.end(), {x, y, z}); }
    void Normal(float x, float y, float z) { normals_.insert(normals_.end(), {x, y, z}); }
    void Uv(float s, float t) { uvs_.insert(uvs_.end(), {s, t}); }
    void Face(const tinyobj::index_t* indices, int count);
    void Mark(bool points, const char* text, std::size_t size) {
        marks_.push_back({points, static_cast<std::int64_t>(positions_.size() / 3),
                          std::string(text, size)});
    }

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
    std::vector<MarkLine> marks_;
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

// tinyobjloader's line reader takes each character through a string, which dominated loading
// large models: the plain forms of vertex, normal, texture-coordinate and face lines are read
// here as each block arrives, lines and points noted, and every other line goes on to
// tinyobjloader. It finishes a line before asking for the next, so calls keep the file's order.
class ObjFeed final : public std::streambuf {
public:
    ObjFeed(q5_STREAM& stream, ObjReader& reader)
        : stream_(stream), reader_(reader), buffer_(kBlockBytes) {}
    // What a call to the reader threw, which the parser's stream would otherwise swallow.
    void Rethrow() const {
        if (failure_) std::rethrow_exception(failure_);
    }

protected:
    int_type underflow() override;

private:
    static constexpr std::size_t kBlockBytes = 1 << 18;
    static bool Blank(char c) { return c == ' ' || c == '\t'; }
    static bool Digit(char c) { return static_cast<unsigned>(c - '0') < 10; }
    static const char* SkipBlanks(const char* p, const char* end) {
        while (p < end && Blank(*p)) ++p;
        return p;
    }
    bool Refill();
    bool TakeLine(const char* p, const char* end);
    static const char* Number(const char* p, const char* end, float& out);
    static const char* Index(const char* p, const char* end, int& out);
    // Up to `most` numbers to the end of the line; how many, or -1 when the line is not plain.
    static int Numbers(const char* p, const char* end, float* out, int most);
    bool TakeFace(const char* p, const char* end);

    q5_STREAM& stream_;
    ObjReader& reader_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0, end_ = 0; // the text not yet taken
    bool atEnd_ = false;
    std::exception_ptr failure_;
};

bool ObjFeed::Refill() {
    if (atEnd_) return false;
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size()); // a very long line
    const std::int64_t n =
        stream_.Read(buffer_.data() + end_, static_cast<std::int64_t>(buffer_.size() - end_));
    if (n <= 0) {
        atEnd_ = true;
        return false;
    }
    end_ += static_cast<std::size_t>(n);
    return true;
}

// [+-]digits[.digits], at most 7 decimals, to the float tinyobjloader makes of it: the same
// operations in the same order.
inline const char* ObjFeed::Number(const char* p, const char* end, float& out) {
    static constexpr double kTenths[] = {1.0,    0.1,     0.01,     0.001,
                                         0.0001, 0.00001, 0.000001, 0.0000001};
    bool negative = false;
    if (p < end && (*p == '-' || *p == '+')) negative = *p++ == '-';
    if (p == end || !Digit(*p)) return nullptr;
    double mantissa = 0.0;
    while (p < end && Digit(*p)) {
        mantissa *= 10;
        mantissa += static_cast<int>(*p++ - '0');
    }
    if (p < end && *p == '.') {
        ++p;
        for (int read = 1; p < end && Digit(*p); ++read) {
            if (read == 8) return nullptr;
            mantissa += static_cast<int>(*p++ - '0') * kTenths[read];
        }
    }
    if (p < end && !Blank(*p)) return nullptr;
    out = static_cast<float>((negative ? -1 : 1) * mantissa);
    return p;
}

// -?digits, at most 9 of them.
inline const char* ObjFeed::Index(const char* p, const char* end, int& out) {
    const bool negative = p < end && *p == '-';
    if (negative) ++p;
    const char* first = p;
    int value = 0;
    while (p < end && Digit(*p)) value = value * 10 + (*p++ - '0');
    if (p == first || p - first > 9) return nullptr;
    out = negative ? -value : value;
    return p;
}

int ObjFeed::Numbers(const char* p, const char* end, float* out, int most) {
    int count = 0;
    for (p = SkipBlanks(p, end); p < end; p = SkipBlanks(p, end)) {
        if (count == most || (p = Number(p, end, out[count])) == nullptr) return -1;
        ++count;
    }
    return count;
}

bool ObjFeed::TakeFace(const char* p, const char* end) {
    constexpr int kMostCorners = 64;
    tinyobj::index_t corners[kMostCorners];
    int count = 0;
    for (p = SkipBlanks(p, end); p < end; p = SkipBlanks(p, end)) {
        if (count == kMostCorners) return false;
        tinyobj::index_t& c = corners[count++];
        c = {0, 0, 0};
        if ((p = Index(p, end, c.vertex_index)) == nullptr) return false;
        if (p < end && *p == '/') {
            ++p;
            if (p < end && *p != '/' && (p = Index(p, end, c.texcoord_index)) == nullptr)
                return false;
            if (p < end && *p == '/' && (p = Index(p + 1, end, c.normal_index)) == nullptr)
                return false;
        }
        if (p < end && !Blank(*p)) return false;
    }
    if (count > 0) reader_.Face(corners, count);
    return true;
}

// Takes the line [p, end), without its line break, when it is one of the plain forms.
bool ObjFeed::TakeLine(const char* p, const char* end) {
    p = SkipBlanks(p, end);
    if (p == end || *p == '#') return true;
    const char c = *p;
    const std::size_t left = static_cast<std::size_t>(end - p);
    float n[4];
    if (c == 'v' && left > 1 && Blank(p[1])) {
        const int count = Numbers(p + 2, end, n, 4);
        if (count < 3) return false;
        reader_.Vertex(n[0], n[1], n[2]);
        return true;
    }
    if (c == 'v' && left > 2 && (p[1] == 'n' || p[1] == 't') && Blank(p[2])) {
        const int count = Numbers(p + 3, end, n, 3);
        if (p[1] == 'n' && count == 3) reader_.Normal(n[0], n[1], n[2]);
        else if (p[1] == 't' && count >= 2) reader_.Uv(n[0], n[1]);
        else return false;
        return true;
    }
    if (c == 'f' && left > 1 && Blank(p[1])) return TakeFace(p + 2, end);
    if ((c == 'l' || c == 'p') && left > 1 && Blank(p[1])) {
        reader_.Mark(c == 'p', p + 2, left - 2);
        return true;
    }
    return false;
}

ObjFeed::int_type ObjFeed::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    try {
        for (;;) {
            char* const text = buffer_.data();
            const auto* newline =
                static_cast<char*>(std::memchr(text + begin_, '\n', end_ - begin_));
            if (newline == nullptr && Refill()) continue;
            if (newline == nullptr && begin_ == end_) return traits_type::eof();
            char* const start = text + begin_;
            const std::size_t stop = newline != nullptr ? newline - text : end_; // the break
            const std::size_t next = newline != nullptr ? stop + 1 : end_;
            const std::size_t length = stop > begin_ && text[stop - 1] == '\r'
                                           ? stop - begin_ - 1
                                           : stop - begin_;
            if (TakeLine(start, start + length)) {
                begin_ = next;
                continue;
            }
            // The parser ends a line at a lone carriage return too: so does this line here.
            char* line = start;
            char* const limit = text + next;
            auto* cr = static_cast<char*>(std::memchr(line, '\r', limit - line));
            char* last = limit;
            if (cr != nullptr && cr + 1 < limit && cr[1] != '\n') {
                *cr = '\n';
                last = cr + 1;
            }
            begin_ = static_cast<std::size_t>(last - text);
            setg(line, line, last);
            return traits_type::to_int_type(*gptr());
        }
    } catch (...) {
        failure_ = std::current_exception();
        return traits_type::eof();
    }
}

bool ObjReader::Read(q5_STREAM& stream, std::string& error) {
    stream.Reset();
    if (stream.Seek(0, 0) != 0) {
        error = "cannot read the file";
        return false;
    }
    ObjFeed feed(stream, *this);
    std::istream in(&feed);
    // Lines of forms the feed leaves to the parser still come through these.
    tinyobj::callback_t calls;
    calls.vertex_cb = [](void* self, tinyobj::real_t x, tinyobj::real_t y, tinyobj::real_t z,
                         tinyobj::real_t) { static_cast<ObjReader*>(self)->Vertex(x, y, z); };
    calls.normal_cb = [](void* self, tinyobj::real_t x, tinyobj::real_t y, tinyobj::real_t z) {
        static_cast<ObjReader*>(self)->Normal(x, y, z);
    };
    calls.texcoord_cb = [](void* self, tinyobj::real_t s, tinyobj::real_t t, tinyobj::real_t) {
        static_cast<ObjReader*>(self)->Uv(s, t);
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
    feed.Rethrow();
    if (!parsed) {
        error = err.empty() ? "not an OBJ file" : err.substr(0, err.find('\n'));
        return false;
    }
    std::vector<float>().swap(normals_);
    std::vector<float>().swap(uvs_);
    std::vector<Direct>().swap(direct_);
    Finish(marks_);
    return true;
}

} // namespace

std::uint64_t ObjHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                         std::uintptr_t) {
    return ReadWith<ObjReader>(operation, stream, scene);
}
