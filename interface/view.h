// The host's view object, render settings and render context as the driver reads them.
#pragma once

#include "interface/types.h"

struct ScreenVertex;
struct q5_MATERIAL;
class q5_MESH;

// Settings of the current render, owned by the host's view. The driver only reads the
// values named by the driver queries (see DRIVER3D's callbacks) and the flags below.
struct q5_RENDERSETTINGS {
    std::uint32_t flags = 0;      // kFlagDepthFade and host bits
    std::int32_t intKind1 = 4096; // answered for integer query kind 1
    std::uint8_t byteKind4 = 32;  // answered for integer query kind 4
    bool flagKind2 = true;        // answered for flag query kind 2
    bool flagKind8 = false;       // answered for flag query kind 8
    bool flagKind9 = false;       // answered for flag query kind 9
    std::uint8_t flag1002 = 0;    // SetParam / GetParam id 1002
    // Background-picture mode when the render context leaves it to the view (low 7 bits:
    // 0 stretch, 2 centre, any other tile).
    std::uint8_t backgroundMode = 0;

    static constexpr std::uint32_t kFlagDepthFade = 0x1000;
};

// The host's camera view: clipping, projection and the render's look.
class q5_VIEW {
public:
    // Null when the view has no settings for the current render.
    virtual q5_RENDERSETTINGS* RenderSettings() = 0;
    // The integer the view keeps for integer query kind 3.
    virtual std::int32_t DriverQueryValue() = 0;
    // The driver is being dropped by RemoveDriver.
    virtual void OnDriverDetached(std::int32_t a, std::int32_t b) = 0;
    // "Use second processor" changed while this driver was attached.
    virtual void OnDriverSettingsChanged() = 0;
    // Colours carry red in the low byte.
    virtual std::uint32_t SecondBackgroundColour() = 0;
    virtual std::uint32_t FadeColour() = 0;
    virtual double SupersampleFactor() = 0;

    // Clipping and projection of face corners. Corners arrive as ScreenVertex records holding
    // the view-space position as floats in x, y, z (bit patterns), the clip code, colours and
    // s, t; the view clips them against its planes into `out` (count: 3 in, the result out;
    // room for 16 records) and projects to x, y in 1/256 pixel and integer depth z.
    virtual bool ClipPolygon(ScreenVertex* const corners[3], ScreenVertex* out, int& count) = 0;
    virtual bool ClipTexturedPolygon(ScreenVertex* const corners[3], ScreenVertex* out,
                                     int& count) = 0;
    virtual void ProjectVertices(ScreenVertex* vertices, int count, int stride) = 0;
    virtual void ProjectVertexList(ScreenVertex* const* vertices, int count) = 0;
    // Projects one view-space point into `out` (x, y, z as for the others).
    virtual void ProjectPoint(const float point[3], ScreenVertex& out) = 0;
    // Makes the mesh's texture coordinates ready for the material's texture in `slot`.
    virtual void PrepareTextureCoordinates(q5_MESH* mesh, const q5_MATERIAL* material,
                                           int slot) = 0;

protected:
    ~q5_VIEW() = default;
};

// The host's progress report of the current render.
struct q5_PROGRESS {
    // Optional; returns false when the user cancels.
    bool (*callback)(q5_PROGRESS* self) = nullptr;
    bool abort = false;

    static bool Cancelled(q5_PROGRESS* p) {
        return p != nullptr && ((p->callback != nullptr && !p->callback(p)) || p->abort);
    }
};

// The host's render context handed to Attach.
struct q5_RENDERCONTEXT {
    q5_VIEW* view = nullptr;
    q5_PROGRESS* progress = nullptr;
    // Depth mapping of the view: integer depth = scale * z + offset.
    double depthScale = 0.0;
    double depthOffset = 0.0;
    // Background-picture mode; negative: the view's render settings decide.
    std::int32_t backgroundMode = -1;
    // The part of the camera's picture the frame shows, when the driver's region flag is set,
    // in frame units: left, top, width, height.
    float regionLeft = 0.0f, regionTop = 0.0f, regionWidth = 0.0f, regionHeight = 0.0f;
};
