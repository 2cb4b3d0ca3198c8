// The host's mesh and face-group request as the renderer reads them. Records are packed:
// their layouts are the host's and fixed.
#pragma once

#include <cstddef>
#include <cstdint>

struct q5_MATERIAL;

#pragma pack(push, 1)
// Position in view space and the clip code (bit 0 ignored, bits 1-7: outside a plane).
struct q5_MESHVERTEX {
    float x, y, z;
    std::uint8_t clipCode;
};
// Primary (front) vertex colour; the leading bytes are the host's own.
struct q5_VERTEXCOLOUR {
    std::uint8_t host[11];
    std::uint8_t red, green, blue;
    std::uint8_t hostTail;
};
// Secondary vertex colours, face colours and back-face colours share this layout.
struct q5_COLOUR6 {
    std::uint8_t host[3];
    std::uint8_t red, green, blue;
};
struct q5_MESHFACE {
    std::uint32_t material; // index into the material table
    std::uint8_t flags;     // bits 0-2: draw edge k (corner k to k + 1) when outlining
    std::uint32_t vertex[3];
};
#pragma pack(pop)

static_assert(sizeof(q5_MESHVERTEX) == 13);
static_assert(sizeof(q5_VERTEXCOLOUR) == 15);
static_assert(offsetof(q5_VERTEXCOLOUR, red) == 11);
static_assert(offsetof(q5_VERTEXCOLOUR, blue) == 13);
static_assert(sizeof(q5_COLOUR6) == 6);
static_assert(offsetof(q5_COLOUR6, red) == 3);
static_assert(sizeof(q5_MESHFACE) == 17);
static_assert(offsetof(q5_MESHFACE, vertex) == 5);

// A host mesh. Every table but vertices and faces is optional (null when absent).
class q5_MESH {
public:
    const q5_MESHVERTEX* vertices = nullptr;
    std::uint32_t vertexCount = 0;
    const q5_VERTEXCOLOUR* primaryColours = nullptr; // per vertex; present: lit by vertex colours
    const q5_COLOUR6* secondaryColours = nullptr;    // per vertex, for back faces
    const q5_MESHFACE* faces = nullptr;
    std::uint32_t faceCount = 0;
    const q5_COLOUR6* faceColours = nullptr;         // per face
    const q5_COLOUR6* backFaceColours = nullptr;     // per face
    const std::uint16_t (*cornerRemap)[3] = nullptr; // per face: corner k uses list entry remap[k]
    const std::uint32_t (*cornerNormalIndex)[3] = nullptr;   // per face, into normals
    const std::uint32_t (*cornerTexcoordIndex)[3] = nullptr; // per face, into texcoords
    const float (*normals)[3] = nullptr;                     // view-space unit normals
    const float (*texcoords)[2] = nullptr;                   // s, t
    const float (*faceTint)[3] = nullptr;                    // per face, multiplies corner colours
    const std::uint32_t* faceFlags = nullptr;                // per face; kFaceTwoSided
    q5_MATERIAL* const* materials = nullptr;                 // by face material index
    std::uint32_t materialCount = 0;
    q5_MATERIAL* defaultMaterial = nullptr;

    static constexpr std::uint32_t kFaceTwoSided = 16;
};

// One face-group request: a run of faces and how to draw them.
struct q5_FACERUN {
    std::uint32_t firstFace = 0;
    std::uint32_t faceCount = 0;
    float opacity = 1.0f;
    std::uint8_t flags = 0;

    static constexpr std::uint8_t kBlend = 1 << 0;
    static constexpr std::uint8_t kUseMaterialTransparency = 1 << 1;
    static constexpr std::uint8_t kTwoSided = 1 << 2;
    static constexpr std::uint8_t kTexturedAllowed = 1 << 3;
    static constexpr std::uint8_t kHighlight = 1 << 7;
};

// Host render state of the current face group.
struct q5_RENDERSTATE {
    bool refine = false;                       // subdivide large textured triangles
    bool twoSidedColouring = false;            // back faces take the secondary colours
    std::uint32_t highlightColour = 0;         // red in the low byte
    double viewDirection[3] = {0.0, 0.0, 1.0}; // unit vector for sphere mapping
};
