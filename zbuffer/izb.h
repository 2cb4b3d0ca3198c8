// IZB: the software Z-buffer render driver, the one concrete DRIVER3D of this module.
#pragma once

#include <vector>

#include "core/math/point.h"
#include "interface/driver.h"
#include "zbuffer/driver_module.h"
#include "zbuffer/mark_list.h"
#include "zbuffer/raster/raster_context.h"
#include "zbuffer/raster/screen_point.h"

using LineRoutine = void (*)(RasterContext&, const ScreenPoint&, const ScreenPoint&, RgbBytes);

// This driver's description of its surfaces; making the driver current copies it into its
// rasterizer context, whose surface fields are then the current surface.
struct SurfaceRecord {
    std::uint8_t* colourBits = nullptr;
    std::int32_t* depth = nullptr;
    std::int32_t colourStride = 0; // bytes per colour row
    std::int32_t depthStride = 0;  // bytes per depth row
    std::int32_t W = 0, H = 0;
    std::int32_t Hm1 = 0;
    std::int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0; // clip bounds, inclusive pixels
    std::int32_t supersampling = 0;
};

// Each driver owns its rasterizer context, current surface and mark list, so drivers on
// different threads never share mutable state.
class IZB final : public DRIVER3D {
public:
    // `module` outlives the driver: the plug-in frame's own record.
    explicit IZB(const DriverModule& module);

    void DeleteThis() override;
    const char* GetInterfaceName() override;
    std::int32_t GetInterfaceVersion() override;
    std::uint64_t SetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type) override;
    std::uint64_t GetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type) override;

    std::int32_t Attach(std::uint64_t window, q5_RENDERCONTEXT* context) override;
    std::int32_t Unnamed12() override;
    std::int64_t GetValue(std::int32_t id, std::int64_t argument) override;
    std::int64_t QueryCaps(std::int32_t id) override;
    bool GetDriverString(q5_WCHAR* buffer, std::int32_t kind) override;
    bool ShowOptions(q5_HWND parent) override;
    bool Unnamed17() override;
    std::int32_t DrawFaceGroupPlaced(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state,
                                     const MATRIX3D* placement) override;
    std::int32_t DrawScreenPolygon(const ScreenVertex* vertices, std::int32_t count) override;
    std::int32_t SetMatrix(const float* matrix4x4) override;
    void DepthOffset(std::uint32_t n) override;
    bool FrameStep(std::int32_t phase) override;
    std::int32_t DrawScreenLine(const ScreenVertex* a, const ScreenVertex* b) override;
    void Resize(std::int32_t width, std::int32_t height) override;
    void ClearFrame(std::uint32_t colour) override;
    bool PresentRect(q5_HDC dc, const q5_URECT* rect) override;
    Q5RESULT SetBkImage(TPicture* picture) override;
    std::int32_t Unnamed28() override;
    std::int32_t Unnamed29() override;
    std::int32_t DrawText(std::int32_t x, std::int32_t y, const q5_WCHAR* text,
                          std::uint32_t colour) override;
    void MarkId(std::uint64_t id) override;
    std::int32_t IsIdMarked(std::uint64_t id) override;
    bool DrawXorLine(q5_HWND window, q5_FPOINT a, q5_FPOINT b) override;
    std::int32_t DrawFrameBorder(std::int32_t ignored, std::int32_t thickness,
                                 std::uint32_t colour) override;
    std::int32_t Unnamed35() override;
    std::int32_t Unnamed36() override;
    void DrawLine2D(q5_FPOINT a, q5_FPOINT b, std::uint32_t colour) override;

    void SetPair(std::uint32_t a, std::uint32_t b) override;
    std::int32_t DrawPoint(const ScreenVertex* v) override;
    std::int32_t DrawWideLine(const ScreenVertex* a, const ScreenVertex* b) override;
    std::int32_t DrawBoldLine(const ScreenVertex* a, const ScreenVertex* b) override;
    std::int32_t DrawScreenTriangle(const ScreenVertex* a, const ScreenVertex* b,
                                    const ScreenVertex* c) override;
    std::int32_t DrawScreenLines(const ScreenVertex* vertices, std::int32_t count) override;
    std::int32_t DrawFaceGroup(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state) override;
    std::int32_t DrawScreenPoints(const ScreenVertex* vertices, std::int32_t count) override;
    std::int32_t TextureHook(TPicture* picture, std::int32_t create, std::int32_t a,
                             std::int32_t b) override;
    std::int32_t TextureUpdate(TPicture* picture, std::int32_t a, std::int32_t x, std::int32_t y,
                               std::int32_t w, std::int32_t h, std::int32_t b) override;
    std::int32_t Notify(std::int32_t kind) override;
    std::int32_t SetCopyTarget(TPicture* picture) override;
    std::int32_t DrawScreenQuad(const q5_SCREENQUAD* quad) override;
    // Slot 56, appended by this driver.
    virtual void Unnamed56();

private:
    ~IZB() = default;
    // Renderer state, in the order the driver has always kept it.
    std::uint64_t reservedWord = 0; // zeroed whenever the depth buffer is freed
    q5_HMEM depthMemory = nullptr;
    q5_HBITMAP colourBitmap = nullptr;
    q5_HBITMAP savedBitmap = nullptr;
    LineRoutine lineRoutine;
    std::uint32_t depthEntryCount = 0;
    std::uint32_t colourSize = 0;
    bool useTwoThreads = true;
    bool refine = true;
    std::uint32_t flags = 0;
    std::uint32_t pair[2] = {0, 0};
    float param1003 = 0.0f;
    TPicture* copyTarget = nullptr;
    SurfaceRecord surface;

    static constexpr std::uint32_t kFlagValue108 = 1u << 0;
    static constexpr std::uint32_t kFlagQueried108 = 1u << 1;
    static constexpr std::uint32_t kFlagFadeApplied = 1u << 2;

    void ReadSettings();
    void FreeSurfaces();
    void CreateSurfaces();
    void MakeCurrent();
    void FillColour(std::uint32_t colour);
    void ClearDepth();
    void ApplyDepthFade();
    void BeginSupersampled();
    void EndSupersampled();
    void DestroySurfacesOnRelease();
    void DrawBackgroundPicture(std::uint32_t colour);
    void CopyFrameTo(TPicture& target) const;

    // Vertex positions placed by DrawFaceGroupPlaced; grows to the largest mesh seen, so no
    // face group allocates once that size is reached.
    std::vector<POINT3D> placedPositions_;

    const DriverModule& module_;
    RasterContext raster_;
    MarkList marks_;
    bool flag1001_ = false;           // SetParam / GetParam id 1001
    bool supersampleRequest_ = false; // set by phases 2 and 4, cleared by phase 6
};
