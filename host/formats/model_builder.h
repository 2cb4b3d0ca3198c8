// What every model format hands the scene: materials with the defaults users expect, textures
// decoded once each, objects checked for what can be drawn, and one warning per problem.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/formats/png_file.h"
#include "host/scene/scene.h"

struct ModelOptions {
    bool twoSided = false; // draw back faces of every object, closed or not
};

// A material as a file describes it; what it leaves out stays empty.
struct MaterialSource {
    std::string name;
    std::optional<Rgb> diffuse;
    float opacity = 1.0f;
    float specular = 0.0f;
    float shininess = 0.0f;
    bool twoSided = false;
    HostPicture* diffuseTexture = nullptr; // from Texture*; null when none or unreadable
};

class ModelBuilder {
public:
    // `folder` is where the model's file lies; texture names are relative to it.
    ModelBuilder(Scene& scene, std::string folder, const ModelOptions& options);

    std::size_t AddMaterial(const MaterialSource& source);
    // The neutral material of objects the file gives none, made on first use.
    std::size_t DefaultMaterial();
    // A texture file named by the model (back slashes allowed), decoded once however often it is
    // named; null when it cannot be read, which is reported once.
    HostPicture* TextureFile(const std::string& name);
    // A texture the model carries as encoded bytes, known by `key`.
    HostPicture* TextureBytes(const std::string& key, const std::uint8_t* data, std::size_t size);
    // A texture the model carries as decoded pixels.
    HostPicture* TexturePixels(const std::string& key, const Image& image);

    // Takes an object whose geometry holds positions, optional normals and texture
    // coordinates, triangles, lines and points. Triangles with a corner that is not a finite
    // point, or of zero area, are dropped; normals are made when missing or unusable.
    void AddObject(SceneObject object);

    void Warn(const std::string& text);
    // Finishes the scene: opacity of every material 0 taken as opaque, back faces of open
    // objects drawn. False, with one line saying why, when nothing can be drawn.
    bool Finish(const std::string& modelName, std::string& error);
    const std::vector<std::string>& Warnings() const { return warnings_; }

    const std::string& Folder() const { return folder_; }

private:
    HostPicture* Remember(const std::string& key, HostPicture* picture);

    Scene& scene_;
    std::string folder_;
    ModelOptions options_;
    std::map<std::string, HostPicture*> textures_;
    std::vector<float> opacities_; // by scene material index
    std::optional<std::size_t> defaultMaterial_;
    std::vector<SceneObject> objects_; // handed to the scene by Finish
    std::vector<std::string> warnings_;
    std::size_t nonFinite_ = 0, degenerate_ = 0, kept_ = 0, keptMarks_ = 0;
};
