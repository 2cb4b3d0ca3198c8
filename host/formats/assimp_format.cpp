// Every other model format Assimp reads, on builds that have it. Its data-structure
// validation runs first, so that files its later steps would trip over are refused cleanly.
#include "host/formats/model_import.h"

#if defined(TESSERA_HAVE_ASSIMP)

#include <assimp/Importer.hpp>
#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <vector>

#include "core/stream/stream.h"
#include "host/formats/stream_reading.h"

namespace {

// An importer's file, read through a host stream it may or may not own.
class HostIOStream final : public Assimp::IOStream {
public:
    HostIOStream(q5_STREAM* stream, bool owned) : stream_(stream), owned_(owned) {
        stream_->Reset();
        stream_->Seek(0, 0);
    }
    ~HostIOStream() override {
        if (owned_) stream_->Release();
    }
    size_t Read(void* buffer, size_t size, size_t count) override {
        if (size == 0 || count == 0) return 0;
        const std::int64_t got = stream_->Read(buffer, static_cast<std::int64_t>(size * count));
        if (got < static_cast<std::int64_t>(size * count)) stream_->Reset();
        return got > 0 ? static_cast<size_t>(got) / size : 0;
    }
    size_t Write(const void*, size_t, size_t) override { return 0; }
    aiReturn Seek(size_t offset, aiOrigin origin) override {
        const std::int64_t size = stream_->GetSize();
        const std::int64_t base = origin == aiOrigin_SET   ? 0
                                  : origin == aiOrigin_CUR ? stream_->Tell()
                                                           : size;
        const std::int64_t target = base + static_cast<std::int64_t>(offset);
        if (target < 0 || target > size) return aiReturn_FAILURE;
        stream_->Reset();
        stream_->Seek(target, 0);
        return aiReturn_SUCCESS;
    }
    size_t Tell() const override { return static_cast<size_t>(stream_->Tell()); }
    size_t FileSize() const override { return static_cast<size_t>(stream_->GetSize()); }
    void Flush() override {}

private:
    q5_STREAM* stream_;
    bool owned_;
};

// The model's own stream for its file name, other files opened through the host.
class HostIOSystem final : public Assimp::IOSystem {
public:
    HostIOSystem(q5_STREAM& model, std::string path) : model_(model), path_(std::move(path)) {}
    bool Exists(const char* file) const override {
        return file == path_ || OpenReadStream(file) != nullptr;
    }
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(const char* file, const char* mode) override {
        if (mode == nullptr || std::string(mode).find_first_of("wa+") != std::string::npos)
            return nullptr;
        if (file == path_) return new HostIOStream(&model_, false);
        StreamHandle stream = OpenReadStream(file);
        return stream != nullptr ? new HostIOStream(stream.release(), true) : nullptr;
    }
    void Close(Assimp::IOStream* file) override { delete file; }

private:
    q5_STREAM& model_;
    std::string path_;
};

HostPicture* Texture(const aiScene& model, const aiString& name, ModelBuilder& builder) {
    if (const aiTexture* embedded = model.GetEmbeddedTexture(name.C_Str())) {
        if (embedded->mHeight == 0)
            return builder.TextureBytes(name.C_Str(),
                                        reinterpret_cast<const std::uint8_t*>(embedded->pcData),
                                        embedded->mWidth);
        Image image;
        image.width = static_cast<std::int32_t>(embedded->mWidth);
        image.height = static_cast<std::int32_t>(embedded->mHeight);
        image.channels = 4;
        const std::size_t count = static_cast<std::size_t>(image.width) * image.height;
        image.pixels.resize(count * 4);
        for (std::size_t i = 0; i < count; ++i) {
            const aiTexel& t = embedded->pcData[i];
            image.pixels[4 * i] = t.r;
            image.pixels[4 * i + 1] = t.g;
            image.pixels[4 * i + 2] = t.b;
            image.pixels[4 * i + 3] = t.a;
        }
        return builder.TexturePixels(name.C_Str(), image);
    }
    if (name.length > 0 && name.data[0] == '*') {
        builder.Warn(std::string("embedded texture ") + name.C_Str() +
                     " not found; drawn without it");
        return nullptr;
    }
    return builder.TextureFile(name.C_Str());
}

std::size_t Material(const aiScene& model, const aiMaterial& source, ModelBuilder& builder) {
    MaterialSource m;
    aiString name;
    if (source.Get(AI_MATKEY_NAME, name) == AI_SUCCESS) m.name = name.C_Str();
    aiColor3D diffuse;
    if (source.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == AI_SUCCESS)
        m.diffuse = Rgb{diffuse.r, diffuse.g, diffuse.b};
    aiColor3D specular(0, 0, 0);
    source.Get(AI_MATKEY_COLOR_SPECULAR, specular);
    m.specular = (specular.r + specular.g + specular.b) / 3;
    source.Get(AI_MATKEY_SHININESS, m.shininess);
    source.Get(AI_MATKEY_OPACITY, m.opacity);
    int sided = 0;
    m.twoSided = source.Get(AI_MATKEY_TWOSIDED, sided) == AI_SUCCESS && sided != 0;
    aiString file;
    if (source.GetTexture(aiTextureType_DIFFUSE, 0, &file) == AI_SUCCESS ||
        source.GetTexture(aiTextureType_BASE_COLOR, 0, &file) == AI_SUCCESS)
        m.diffuseTexture = Texture(model, file, builder);
    return builder.AddMaterial(m);
}

} // namespace

std::uint64_t AssimpHandler(std::uint32_t operation, std::uintptr_t stream, std::uintptr_t scene,
                            std::uintptr_t) {
    if (operation != kModelOpRead || stream == 0 || scene == 0) return 0;
    ModelImport& request = ModelImport::Of(scene);
    ModelBuilder& builder = request.builder;
    Assimp::Importer importer;
    importer.SetIOHandler(new HostIOSystem(*reinterpret_cast<q5_STREAM*>(stream), request.path));
    // Placement is baked into the vertices, so every mesh is one object of the scene.
    const aiScene* model = importer.ReadFile(
        request.path, aiProcess_ValidateDataStructure | aiProcess_Triangulate |
                          aiProcess_GenSmoothNormals | aiProcess_JoinIdenticalVertices |
                          aiProcess_PreTransformVertices | aiProcess_SortByPType);
    if (model == nullptr) {
        request.error = importer.GetErrorString();
        return 0;
    }
    std::vector<std::size_t> materials;
    for (unsigned i = 0; i < model->mNumMaterials; ++i)
        materials.push_back(Material(*model, *model->mMaterials[i], builder));
    for (unsigned i = 0; i < model->mNumMeshes; ++i) {
        const aiMesh& mesh = *model->mMeshes[i];
        SceneObject object;
        object.name = mesh.mName.C_Str();
        MeshGeometry& g = object.geometry;
        g.positions.reserve(mesh.mNumVertices);
        for (unsigned v = 0; v < mesh.mNumVertices; ++v) {
            const aiVector3D& p = mesh.mVertices[v];
            g.positions.emplace_back(p.x, p.y, p.z);
            if (mesh.HasNormals())
                g.normals.emplace_back(mesh.mNormals[v].x, mesh.mNormals[v].y, mesh.mNormals[v].z);
            if (mesh.HasTextureCoords(0))
                g.uvs.emplace_back(mesh.mTextureCoords[0][v].x, mesh.mTextureCoords[0][v].y);
        }
        for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
            const aiFace& face = mesh.mFaces[f];
            const unsigned* k = face.mIndices;
            if (face.mNumIndices == 3)
                g.triangles.push_back({{k[0], k[1], k[2]}, 7});
            else if (face.mNumIndices == 2)
                g.segments.push_back({k[0], k[1]});
            else if (face.mNumIndices == 1)
                g.points.push_back(k[0]);
        }
        object.material = mesh.mMaterialIndex < materials.size() ? materials[mesh.mMaterialIndex]
                                                                 : builder.DefaultMaterial();
        builder.AddObject(std::move(object));
    }
    return 1;
}

#else

std::uint64_t AssimpHandler(std::uint32_t, std::uintptr_t, std::uintptr_t, std::uintptr_t) {
    return 0;
}

#endif
