// The face-group walk over a host mesh.
#include "zbuffer/face_group.h"

#include "core/math/point.h"
#include "interface/material.h"
#include "interface/mesh.h"
#include "interface/view.h"
#include "zbuffer/raster/polygon_dispatch.h"
#include "zbuffer/raster/texture_binding.h"
#include "zbuffer/shading.h"

#include <algorithm>
#include <cmath>

namespace {

enum class TextureSource { None, Diffuse, HalfBright, Reflection };

// Slot-7 textures are drawn flat in mid grey, which the flat textured filler turns into half
// brightness.
constexpr RgbBytes kHalfBrightColour{128, 128, 128};

// The rasterizer's 0..255 opacity: 0 below 0.0 (and for NaN), 255 above 1.0, truncated between.
std::int32_t OpacityByte(float opacity) {
    if (!(opacity >= 0.0f)) return 0;
    if (opacity > 1.0f) return 255;
    return static_cast<std::int32_t>(opacity * 255.0);
}

std::uint8_t ClampByte(double c) {
    return static_cast<std::uint8_t>(c > 0.0 ? (c < 255.0 ? c : 255.0) : 0.0);
}

RgbBytes ColourOf(const q5_VERTEXCOLOUR& c) {
    return RgbBytes{c.red, c.green, c.blue};
}
RgbBytes ColourOf(const q5_COLOUR6& c) {
    return RgbBytes{c.red, c.green, c.blue};
}

// The material's diffuse colour scaled up until its brightest channel is full, times its
// intensity; with the selection highlight, mostly the host's highlight colour.
RgbBytes ReflectionColour(const q5_MATERIAL& m, bool highlight, std::uint32_t highlightColour) {
    const float r = m.diffuse[0], g = m.diffuse[1], b = m.diffuse[2], k = m.intensity;
    double c[3];
    if (r + g + b > 0.03f) {
        const float s = 255.0f / std::max({r, g, b});
        c[0] = ClampByte(std::trunc(r * s * k));
        c[1] = ClampByte(std::trunc(g * s * k));
        c[2] = ClampByte(std::trunc(b * s * k));
    } else {
        c[0] = c[1] = c[2] = ClampByte(std::trunc(k * 255.0f));
    }
    if (highlight) {
        for (int i = 0; i < 3; ++i) {
            const double h = (highlightColour >> (8 * i)) & 0xFF;
            c[i] = std::trunc(h / 255.0 * 204.0 + c[i] * 0.2);
        }
    }
    return RgbBytes{ClampByte(c[0]), ClampByte(c[1]), ClampByte(c[2])};
}

class FaceWalk {
public:
    FaceWalk(FaceTarget& target, q5_MESH& mesh, const q5_FACERUN& run, const q5_RENDERSTATE& state,
             const POINT3D* placed)
        : target_(target), mesh_(mesh), run_(run), state_(state), placed_(placed) {
        for (int k = 0; k < 3; ++k) cornerList_[k] = &corner_[k];
    }

    // False when the walk has to stop at this face.
    bool DrawFace(std::uint32_t f);
    // Draws the triangles that still wait.
    void Finish() { queue_.Flush(target_.rc); }

private:
    const q5_MATERIAL* MaterialOf(const q5_MESHFACE& face) const;
    void SetUpMaterial(const q5_MATERIAL& m);
    bool LocateCorners(std::uint32_t f, const q5_MESHFACE& face);
    void FillCorners(std::uint32_t f);
    RgbBytes FaceColour(std::uint32_t f, bool back, const q5_MATERIAL& m) const;
    RgbBytes CornerColour(std::uint32_t f, int k, bool back) const;
    void SetSphereMap(std::uint32_t f);

    FaceTarget& target_;
    q5_MESH& mesh_;
    const q5_FACERUN& run_;
    const q5_RENDERSTATE& state_;
    const POINT3D* placed_;

    // Choices of the material in use; they stand while faces repeat it.
    const q5_MATERIAL* material_ = nullptr;
    TextureSource source_ = TextureSource::None;
    RgbBytes sourceColour_; // flat colour of slot-7 and reflection textures

    ScreenVertex corner_[3];
    ScreenVertex* cornerList_[3];
    std::uint32_t vertexIndex_[3] = {};
    int listIndex_[3] = {}; // entry of the face's per-corner lists that corner k uses
    TriangleQueue queue_;   // untextured triangles; drawn before anything else is
};

const q5_MATERIAL* FaceWalk::MaterialOf(const q5_MESHFACE& face) const {
    if (mesh_.materials != nullptr && face.material < mesh_.materialCount &&
        mesh_.materials[face.material] != nullptr)
        return mesh_.materials[face.material];
    return mesh_.defaultMaterial;
}

void FaceWalk::SetUpMaterial(const q5_MATERIAL& m) {
    material_ = &m;
    RasterContext& rc = target_.rc;
    float opacity = run_.opacity;
    if (run_.flags & q5_FACERUN::kUseMaterialTransparency) opacity *= m.transparency;
    rc.opacity = OpacityByte(opacity);

    if (m.textures[kSlotDiffuse] != nullptr) {
        source_ = TextureSource::Diffuse;
        BindMaterialTexture(rc, &m, kSlotDiffuse);
        target_.view.PrepareTextureCoordinates(&mesh_, &m, kSlotDiffuse);
    } else if (m.textures[kSlotHalfBright] != nullptr) {
        source_ = TextureSource::HalfBright;
        sourceColour_ = kHalfBrightColour;
        BindMaterialTexture(rc, &m, kSlotHalfBright);
        target_.view.PrepareTextureCoordinates(&mesh_, &m, kSlotHalfBright);
    } else if (m.textures[kSlotReflection] == nullptr) {
        source_ = TextureSource::None;
    } else {
        source_ = TextureSource::Reflection;
        sourceColour_ =
            ReflectionColour(m, (run_.flags & q5_FACERUN::kHighlight) != 0, state_.highlightColour);
        BindMaterialTexture(rc, &m, kSlotReflection);
    }
}

bool FaceWalk::LocateCorners(std::uint32_t f, const q5_MESHFACE& face) {
    if (mesh_.vertices == nullptr) return false;
    for (int k = 0; k < 3; ++k) {
        const int entry = mesh_.cornerRemap != nullptr ? mesh_.cornerRemap[f][k] : k;
        if (entry > 2 || face.vertex[entry] >= mesh_.vertexCount) return false;
        listIndex_[k] = entry;
        vertexIndex_[k] = face.vertex[entry];
    }
    return true;
}

void FaceWalk::FillCorners(std::uint32_t f) {
    for (int k = 0; k < 3; ++k) {
        ScreenVertex& c = corner_[k];
        c = ScreenVertex{};
        const std::uint32_t vi = vertexIndex_[k];
        const q5_MESHVERTEX& v = mesh_.vertices[vi];
        if (placed_ != nullptr) {
            const float p[3] = {placed_[vi].x, placed_[vi].y, placed_[vi].z};
            SetViewPosition(c, p);
        } else {
            const float p[3] = {v.x, v.y, v.z};
            SetViewPosition(c, p);
        }
        c.clipCode = v.clipCode;
        if (mesh_.texcoords != nullptr) {
            const std::uint32_t ti = mesh_.cornerTexcoordIndex != nullptr
                                         ? mesh_.cornerTexcoordIndex[f][listIndex_[k]]
                                         : vi;
            c.s = mesh_.texcoords[ti][0];
            c.t = mesh_.texcoords[ti][1];
        }
    }
}

RgbBytes FaceWalk::FaceColour(std::uint32_t f, bool back, const q5_MATERIAL& m) const {
    const q5_COLOUR6* table =
        back && mesh_.backFaceColours != nullptr ? mesh_.backFaceColours : mesh_.faceColours;
    const RgbBytes c = table != nullptr ? ColourOf(table[f])
                                        : ColourToBytes(m.diffuse[0], m.diffuse[1], m.diffuse[2]);
    return mesh_.faceTint != nullptr ? TintColour(c, mesh_.faceTint[f]) : c;
}

RgbBytes FaceWalk::CornerColour(std::uint32_t f, int k, bool back) const {
    const std::uint32_t vi = vertexIndex_[k];
    const RgbBytes c = back && mesh_.secondaryColours != nullptr
                           ? ColourOf(mesh_.secondaryColours[vi])
                           : ColourOf(mesh_.primaryColours[vi]);
    return mesh_.faceTint != nullptr ? TintColour(c, mesh_.faceTint[f]) : c;
}

// Per-corner normals when the mesh has them, else the plane of the face.
void FaceWalk::SetSphereMap(std::uint32_t f) {
    double faceNormal[3] = {0.0, 0.0, 0.0};
    if (mesh_.normals == nullptr) {
        float p[3][3];
        for (int k = 0; k < 3; ++k) GetViewPosition(corner_[k], p[k]);
        const double e1[3] = {p[1][0] - p[0][0], p[1][1] - p[0][1], p[1][2] - p[0][2]};
        const double e2[3] = {p[2][0] - p[0][0], p[2][1] - p[0][1], p[2][2] - p[0][2]};
        faceNormal[0] = e1[1] * e2[2] - e1[2] * e2[1];
        faceNormal[1] = e1[2] * e2[0] - e1[0] * e2[2];
        faceNormal[2] = e1[0] * e2[1] - e1[1] * e2[0];
        const double length =
            std::sqrt(faceNormal[0] * faceNormal[0] + faceNormal[1] * faceNormal[1] +
                      faceNormal[2] * faceNormal[2]);
        if (length > 0.0)
            for (double& c : faceNormal) c /= length;
    }
    for (int k = 0; k < 3; ++k) {
        if (mesh_.normals == nullptr) {
            SetSphereMapCoordinates(corner_[k], state_.viewDirection, faceNormal);
            continue;
        }
        const std::uint32_t ni = mesh_.cornerNormalIndex != nullptr
                                     ? mesh_.cornerNormalIndex[f][listIndex_[k]]
                                     : vertexIndex_[k];
        const double n[3] = {mesh_.normals[ni][0], mesh_.normals[ni][1], mesh_.normals[ni][2]};
        SetSphereMapCoordinates(corner_[k], state_.viewDirection, n);
    }
}

bool FaceWalk::DrawFace(std::uint32_t f) {
    const q5_MESHFACE& face = mesh_.faces[f];
    const q5_MATERIAL* material = MaterialOf(face);
    if (material == nullptr) return false;
    if (material != material_) SetUpMaterial(*material);
    if (!LocateCorners(f, face)) return false;
    FillCorners(f);

    const bool twoSided =
        (run_.flags & q5_FACERUN::kTwoSided) || (material->flags & q5_MATERIAL::kTwoSided) ||
        (mesh_.faceFlags != nullptr && (mesh_.faceFlags[f] & q5_MESH::kFaceTwoSided));
    const bool lit = mesh_.primaryColours != nullptr &&
                     (source_ == TextureSource::None || source_ == TextureSource::Diffuse);

    bool back = false;
    if (twoSided && state_.twoSidedColouring) {
        const Facing facing = FacingTest(target_, cornerList_);
        if (facing == Facing::Outside) return true;
        back = facing == Facing::Back;
    }
    const RgbBytes faceColour = FaceColour(f, back, *material);
    for (int k = 0; k < 3; ++k) {
        const RgbBytes c = lit ? CornerColour(f, k, back) : faceColour;
        corner_[k].red = c.red;
        corner_[k].green = c.green;
        corner_[k].blue = c.blue;
    }

    if (material->flags & q5_MATERIAL::kDrawEdges) {
        queue_.Flush(target_.rc);
        DrawTriangleEdges(target_, cornerList_, face.flags, lit ? nullptr : &faceColour);
        return true;
    }

    std::uint8_t flags = lit ? 0 : kPolygonFlat;
    if (run_.flags & q5_FACERUN::kBlend) flags |= kPolygonBlended;
    if (twoSided) flags |= kPolygonTwoSided;
    RasterContext& rc = target_.rc;
    // A material whose picture could not be bound is drawn untextured.
    const bool textured = (run_.flags & q5_FACERUN::kTexturedAllowed) &&
                          source_ != TextureSource::None && rc.sampleTexel != nullptr;
    if (textured) {
        queue_.Flush(rc);
        if (source_ == TextureSource::Reflection) SetSphereMap(f);
        if (!lit) rc.flatColour = source_ == TextureSource::Diffuse ? faceColour : sourceColour_;
        DrawTexturedTriangle(target_, cornerList_, flags, state_.refine);
    } else {
        if (!lit) rc.flatColour = faceColour;
        DrawUntexturedTriangle(target_, cornerList_, flags, &queue_);
    }
    return true;
}

} // namespace

std::int32_t DrawFaceRun(FaceTarget& target, q5_MESH& mesh, const q5_FACERUN& run,
                         const q5_RENDERSTATE& state, const POINT3D* placed) {
    FaceWalk walk(target, mesh, run, state, placed);
    const std::uint64_t end = static_cast<std::uint64_t>(run.firstFace) + run.faceCount;
    std::uint64_t f = run.firstFace;
    for (; f < end; ++f) {
        if (mesh.faces == nullptr || f >= mesh.faceCount) break;
        if (!walk.DrawFace(static_cast<std::uint32_t>(f))) break;
    }
    walk.Finish();
    return f == end ? 1 : -1;
}
