// Model loading through Assimp when the build has it.
#include "host/formats/model_file.h"

#include "host/scene/scene.h"

#if defined(TESSERA_HAVE_ASSIMP)

#include <assimp/Importer.hpp>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <filesystem>
#include <map>

#include "host/formats/png_file.h"

namespace {

// Texture slots filled from the importer's texture kinds.
struct SlotSource {
    aiTextureType type;
    int slot;
};
constexpr SlotSource kSlotSources[] = {
    {aiTextureType_DIFFUSE, kSlotDiffuse},
    {aiTextureType_REFLECTION, kSlotReflection},
    {aiTextureType_LIGHTMAP, kSlotHalfBright},
};

class ModelReader {
public:
    ModelReader(const std::string& path, Scene& scene)
        : folder_(std::filesystem::path(path).parent_path()), scene_(scene) {}

    // A texture file named by the model, relative to the model's folder; null when unreadable.
    HostPicture* Texture(const std::string& name, std::string& warning) {
        std::string file = name;
        for (char& c : file)
            if (c == '\\') c = '/';
        const std::string full = (folder_ / file).string();
        const auto known = textures_.find(full);
        if (known != textures_.end()) return known->second;
        Image image;
        HostPicture* picture = nullptr;
        if (ReadPng(full, image, warning))
            picture = scene_.Hold(HostPicture::FromPixels(image.width, image.height, image.channels,
                                                          image.pixels.data()));
        textures_[full] = picture;
        return picture;
    }

    std::size_t Material(const aiMaterial& source, float& opacity, bool& twoSided,
                         std::string& warning) {
        HostMaterial m;
        aiString name;
        if (source.Get(AI_MATKEY_NAME, name) == AI_SUCCESS) m.name = name.C_Str();
        aiColor3D diffuse(0.8f, 0.8f, 0.8f);
        source.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
        m.colour = {diffuse.r, diffuse.g, diffuse.b};
        for (int k = 0; k < 3; ++k) m.driver.diffuse[k] = (&diffuse.r)[k];
        aiColor3D specular(0, 0, 0);
        source.Get(AI_MATKEY_COLOR_SPECULAR, specular);
        m.specular = (specular.r + specular.g + specular.b) / 3;
        float shininess = 0;
        if (source.Get(AI_MATKEY_SHININESS, shininess) == AI_SUCCESS && shininess > 0)
            m.shininess = shininess;
        opacity = 1.0f;
        source.Get(AI_MATKEY_OPACITY, opacity);
        int sided = 0;
        twoSided = source.Get(AI_MATKEY_TWOSIDED, sided) == AI_SUCCESS && sided != 0;
        for (const SlotSource& s : kSlotSources) {
            aiString file;
            if (source.GetTexture(s.type, 0, &file) != AI_SUCCESS) continue;
            m.driver.textures[s.slot] = Texture(file.C_Str(), warning);
        }
        return scene_.AddMaterial(m);
    }

private:
    std::filesystem::path folder_;
    Scene& scene_;
    std::map<std::string, HostPicture*> textures_;
};

} // namespace

bool ModelFilesSupported() {
    return true;
}

bool LoadModel(const std::string& path, Scene& scene, std::string& error) {
    Assimp::Importer importer;
    // Placement is baked into the vertices, so every mesh is one object of the scene.
    const aiScene* model = importer.ReadFile(
        path, aiProcess_Triangulate | aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices |
                  aiProcess_PreTransformVertices | aiProcess_SortByPType);
    if (model == nullptr) {
        error = "cannot load " + path + ": " + importer.GetErrorString();
        return false;
    }
    ModelReader reader(path, scene);
    std::vector<std::size_t> materials;
    std::vector<float> opacities;
    std::vector<char> twoSided;
    std::string warning;
    for (unsigned i = 0; i < model->mNumMaterials; ++i) {
        float opacity = 1;
        bool sided = false;
        materials.push_back(reader.Material(*model->mMaterials[i], opacity, sided, warning));
        opacities.push_back(opacity);
        twoSided.push_back(sided ? 1 : 0);
    }
    std::size_t added = 0;
    for (unsigned i = 0; i < model->mNumMeshes; ++i) {
        const aiMesh& mesh = *model->mMeshes[i];
        if ((mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) == 0 || !mesh.HasNormals()) continue;
        SceneObject object;
        object.name = mesh.mName.C_Str();
        MeshGeometry& g = object.geometry;
        for (unsigned v = 0; v < mesh.mNumVertices; ++v) {
            const aiVector3D& p = mesh.mVertices[v];
            const aiVector3D& n = mesh.mNormals[v];
            const POINT2D uv = mesh.HasTextureCoords(0) ? POINT2D(mesh.mTextureCoords[0][v].x,
                                                                  mesh.mTextureCoords[0][v].y)
                                                        : POINT2D(0, 0);
            g.positions.emplace_back(p.x, p.y, p.z);
            g.normals.emplace_back(n.x, n.y, n.z);
            g.uvs.push_back(uv);
        }
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            if (face.mNumIndices != 3) continue;
            g.triangles.push_back({{face.mIndices[0], face.mIndices[1], face.mIndices[2]}, 7});
        }
        if (mesh.mMaterialIndex < materials.size()) {
            object.material = materials[mesh.mMaterialIndex];
            object.opacity = opacities[mesh.mMaterialIndex];
            object.twoSided = twoSided[mesh.mMaterialIndex] != 0;
        } else {
            object.material = scene.AddMaterial(HostMaterial{});
        }
        scene.AddObject(std::move(object));
        ++added;
    }
    if (added == 0) {
        error = path + " holds no triangle meshes";
        return false;
    }
    if (!warning.empty()) error = warning; // a texture that could not be read; drawn without
    return true;
}

#else

bool ModelFilesSupported() {
    return false;
}

bool LoadModel(const std::string& path, Scene&, std::string& error) {
    error = "cannot load " + path +
            ": this build reads no model files; install Assimp (Debian package libassimp-dev) "
            "and build again";
    return false;
}

#endif
