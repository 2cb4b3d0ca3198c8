// Turning what a model file holds into scene objects and materials.
#include "host/formats/model_builder.h"

#include <algorithm>
#include <cmath>

#include "host/formats/texture_file.h"

namespace {

// What a material without a colour of its own is drawn in.
constexpr Rgb kNeutralGrey{0.7f, 0.7f, 0.7f};

bool Finite(const POINT3D& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

bool Usable(const POINT3D& n) {
    return Finite(n) && (n.x != 0 || n.y != 0 || n.z != 0);
}

} // namespace

ModelBuilder::ModelBuilder(Scene& scene, std::string folder, const ModelOptions& options)
    : scene_(scene), folder_(std::move(folder)), options_(options) {}

std::size_t ModelBuilder::AddMaterial(const MaterialSource& source) {
    HostMaterial m;
    m.name = source.name;
    // A black or missing colour with no texture is a material the file did not describe.
    const bool described = source.diffuse.has_value() &&
                           (source.diffuse->red > 0 || source.diffuse->green > 0 ||
                            source.diffuse->blue > 0 || source.diffuseTexture != nullptr);
    m.colour = described ? *source.diffuse : kNeutralGrey;
    if (!source.diffuse.has_value() && source.diffuseTexture != nullptr) m.colour = {1, 1, 1};
    for (float* c : {&m.colour.red, &m.colour.green, &m.colour.blue})
        if (!std::isfinite(*c)) *c = kNeutralGrey.red;
    m.driver.diffuse[0] = m.colour.red;
    m.driver.diffuse[1] = m.colour.green;
    m.driver.diffuse[2] = m.colour.blue;
    m.driver.textures[kSlotDiffuse] = source.diffuseTexture;
    m.specular = std::isfinite(source.specular) ? std::clamp(source.specular, 0.0f, 1.0f) : 0.0f;
    if (std::isfinite(source.shininess) && source.shininess > 0)
        m.shininess = std::min(source.shininess, 1024.0f);
    if (source.twoSided) m.driver.flags |= q5_MATERIAL::kTwoSided;
    const std::size_t index = scene_.AddMaterial(m);
    opacities_.resize(index + 1, 1.0f);
    opacities_[index] =
        std::isfinite(source.opacity) ? std::clamp(source.opacity, 0.0f, 1.0f) : 1.0f;
    return index;
}

std::size_t ModelBuilder::DefaultMaterial() {
    if (!defaultMaterial_) defaultMaterial_ = AddMaterial(MaterialSource{});
    return *defaultMaterial_;
}

HostPicture* ModelBuilder::Remember(const std::string& key, HostPicture* picture) {
    textures_[key] = picture;
    return picture;
}

HostPicture* ModelBuilder::TextureFile(const std::string& name) {
    std::string file = name;
    for (char& c : file)
        if (c == '\\') c = '/';
    const std::string full =
        folder_.empty() || (!file.empty() && file[0] == '/') ? file : folder_ + "/" + file;
    if (const auto known = textures_.find(full); known != textures_.end()) return known->second;
    Image image;
    std::string error;
    // Files exported elsewhere often name the exporter's own folders; the picture beside the
    // model is what users copied along.
    const std::size_t slash = file.find_last_of('/');
    const std::string beside =
        folder_.empty() ? file.substr(slash + 1) : folder_ + "/" + file.substr(slash + 1);
    if (!ReadImageFile(full, image, error) &&
        (slash == std::string::npos || !ReadImageFile(beside, image, error))) {
        Warn("texture " + name + " not used (" + error + "); drawn without it");
        return Remember(full, nullptr);
    }
    return Remember(full, scene_.Hold(HostPicture::FromPixels(
                              image.width, image.height, image.channels, image.pixels.data())));
}

HostPicture* ModelBuilder::TextureBytes(const std::string& key, const std::uint8_t* data,
                                        std::size_t size) {
    if (const auto known = textures_.find(key); known != textures_.end()) return known->second;
    Image image;
    std::string error;
    if (!DecodeImage(data, size, image, error)) {
        Warn("embedded texture " + key + " not used (" + error + "); drawn without it");
        return Remember(key, nullptr);
    }
    return TexturePixels(key, image);
}

HostPicture* ModelBuilder::TexturePixels(const std::string& key, const Image& image) {
    if (const auto known = textures_.find(key); known != textures_.end()) return known->second;
    HostPicture* picture =
        HostPicture::FromPixels(image.width, image.height, image.channels, image.pixels.data());
    if (picture == nullptr) Warn("embedded texture " + key + " not used; drawn without it");
    return Remember(key, scene_.Hold(picture));
}

void ModelBuilder::AddObject(SceneObject object) {
    MeshGeometry& g = object.geometry;
    std::vector<char> finite(g.positions.size());
    for (std::size_t i = 0; i < g.positions.size(); ++i) finite[i] = Finite(g.positions[i]);
    const std::size_t before = g.triangles.size();
    std::size_t nonFinite = 0;
    std::erase_if(g.triangles, [&](const MeshGeometry::Triangle& t) {
        for (std::uint32_t v : t.v)
            if (v >= g.positions.size() || !finite[v]) return ++nonFinite, true;
        const POINT3D n = Cross(g.positions[t.v[1]] - g.positions[t.v[0]],
                                g.positions[t.v[2]] - g.positions[t.v[0]]);
        return !Usable(n);
    });
    nonFinite_ += nonFinite;
    degenerate_ += before - g.triangles.size() - nonFinite;
    std::erase_if(g.segments, [&](const std::array<std::uint32_t, 2>& s) {
        return s[0] >= g.positions.size() || s[1] >= g.positions.size() || !finite[s[0]] ||
               !finite[s[1]];
    });
    std::erase_if(g.points, [&](std::uint32_t p) { return p >= g.positions.size() || !finite[p]; });
    if (g.triangles.empty() && g.segments.empty() && g.points.empty()) return;
    // Whatever is not finite would still spoil the bounds that frame the camera.
    const auto anyFinite = std::find(finite.begin(), finite.end(), 1);
    const POINT3D stand = g.positions[static_cast<std::size_t>(anyFinite - finite.begin())];
    for (std::size_t i = 0; i < g.positions.size(); ++i)
        if (!finite[i]) g.positions[i] = stand;

    bool normalsUsable = g.normals.size() == g.positions.size();
    for (std::size_t i = 0; normalsUsable && i < g.normals.size(); ++i)
        normalsUsable = Usable(g.normals[i]) || !finite[i];
    if (!normalsUsable) g.ComputeNormals();
    if (!g.uvs.empty() && g.uvs.size() != g.positions.size()) g.uvs.clear();
    for (POINT2D& uv : g.uvs)
        if (!std::isfinite(uv.x) || !std::isfinite(uv.y)) uv = POINT2D(0, 0);
    kept_ += g.triangles.size();
    keptMarks_ += g.segments.size() + g.points.size();
    objects_.push_back(std::move(object));
}

void ModelBuilder::Warn(const std::string& text) {
    warnings_.push_back(text);
}

bool ModelBuilder::Finish(const std::string& modelName, std::string& error) {
    if (kept_ == 0 && keptMarks_ == 0) {
        if (nonFinite_ > 0 && degenerate_ == 0)
            error = modelName + " shows nothing: its coordinates are not finite numbers";
        else if (degenerate_ > 0)
            error = modelName + " shows nothing: every face has zero area";
        else
            error = modelName + " shows nothing: it holds no faces, lines or points";
        return false;
    }
    if (nonFinite_ > 0)
        Warn(std::to_string(nonFinite_) +
             " faces with coordinates that are not finite numbers left out");
    bool allClear = !objects_.empty();
    for (const SceneObject& o : objects_)
        allClear = allClear && o.material < opacities_.size() && opacities_[o.material] == 0.0f;
    if (allClear) Warn("every material of " + modelName + " has opacity 0; drawn opaque instead");
    for (SceneObject& o : objects_) {
        if (o.material < opacities_.size() && !allClear) o.opacity = opacities_[o.material];
        const bool materialSided =
            o.material < scene_.MaterialCount() &&
            (scene_.Material(o.material).driver.flags & q5_MATERIAL::kTwoSided) != 0;
        o.twoSided = options_.twoSided || materialSided || !o.geometry.IsClosed();
        scene_.AddObject(std::move(o));
    }
    objects_.clear();
    return true;
}
