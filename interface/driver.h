// The driver class chain: q5_DRIVER (any driver) and DRIVER3D (a 3D render driver).
#pragma once

#include "interface/extension.h"

class q5_VIEW;
struct q5_PROGRESS;
class TPicture;
struct q5_RENDERCONTEXT;
class q5_MESH;
struct q5_FACERUN;
struct q5_RENDERSTATE;
struct q5_SCREENQUAD;
struct ScreenVertex;
struct MATRIX3D;

struct q5_FPOINT {
    float x, y;
};

// Rectangle of PresentRect, in pixels.
struct q5_URECT {
    std::uint32_t left, top, right, bottom;
};

// Layout numbers of QueryCaps 18, 19 and 20 that ChooseDriver checks against its own build.
inline constexpr std::int64_t kLayoutCheck18 = 316;
inline constexpr std::int64_t kLayoutCheck19 = 1200;
inline constexpr std::int64_t kLayoutCheck20 = 576;
inline constexpr std::int32_t kDriverInterfaceVersion = 145;

// QueryCaps ids the hosts read: the driver's "Render\ZB\Use2Thread" and "Render\ZB\Refine".
inline constexpr std::int32_t kCapsUseTwoThreads = 15;
inline constexpr std::int32_t kCapsRefine = 16;
// GetValue ids of the finished frame.
inline constexpr std::int32_t kValueWidth = 100;
inline constexpr std::int32_t kValueHeight = 101;
inline constexpr std::int32_t kValueColourBits = 102;
inline constexpr std::int32_t kValueDepthBits = 104;
inline constexpr std::int32_t kValueDepthBytes = 105;
// What ClearFrame leaves in every depth entry: nothing drawn there.
inline constexpr std::int32_t kClearedDepth = 0x7FFFFFFF;

class DRIVER3D;

// The 27 abstract operations from slot 11 on are declared by DRIVER3D, which knows their
// types; q5_DRIVER only supplies the five defaults that close its table (slots 38-42).
class q5_DRIVER : public q5_EXTENSION {
public:
    // Slots 11-37.
    virtual std::int32_t Attach(std::uint64_t window, q5_RENDERCONTEXT* context) = 0;
    virtual std::int32_t Unnamed12() = 0;
    virtual std::int64_t GetValue(std::int32_t id, std::int64_t argument) = 0;
    virtual std::int64_t QueryCaps(std::int32_t id) = 0;
    virtual bool GetDriverString(q5_WCHAR* buffer, std::int32_t kind) = 0;
    virtual bool ShowOptions(q5_HWND parent) = 0;
    virtual bool Unnamed17() = 0;
    // Draws the faces with the mesh's vertex positions placed by `placement` first (null: as
    // they are).
    virtual std::int32_t DrawFaceGroupPlaced(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state,
                                             const MATRIX3D* placement) = 0;
    virtual std::int32_t DrawScreenPolygon(const ScreenVertex* vertices, std::int32_t count) = 0;
    virtual std::int32_t SetMatrix(const float* matrix4x4) = 0;
    virtual void DepthOffset(std::uint32_t n) = 0;
    virtual bool FrameStep(std::int32_t phase) = 0;
    virtual std::int32_t DrawScreenLine(const ScreenVertex* a, const ScreenVertex* b) = 0;
    virtual void Resize(std::int32_t width, std::int32_t height) = 0;
    virtual void ClearFrame(std::uint32_t colour) = 0;
    virtual bool PresentRect(q5_HDC dc, const q5_URECT* rect) = 0;
    virtual Q5RESULT SetBkImage(TPicture* picture) = 0;
    virtual std::int32_t Unnamed28() = 0;
    virtual std::int32_t Unnamed29() = 0;
    virtual std::int32_t DrawText(std::int32_t x, std::int32_t y, const q5_WCHAR* text,
                                  std::uint32_t colour) = 0;
    virtual void MarkId(std::uint64_t id) = 0;
    virtual std::int32_t IsIdMarked(std::uint64_t id) = 0;
    virtual bool DrawXorLine(q5_HWND window, q5_FPOINT a, q5_FPOINT b) = 0;
    virtual std::int32_t DrawFrameBorder(std::int32_t ignored, std::int32_t thickness,
                                         std::uint32_t colour) = 0;
    virtual std::int32_t Unnamed35() = 0;
    virtual std::int32_t Unnamed36() = 0;
    virtual void DrawLine2D(q5_FPOINT a, q5_FPOINT b, std::uint32_t colour) = 0;

    // Slots 38-42, with default bodies.
    virtual bool Unnamed38();
    virtual void Unnamed39();
    virtual bool Unnamed40();
    virtual bool IsWithinLimit();
    virtual bool HasLimitOrCount();

    // Driver state shared by the chain (the renderer's own fields follow in IZB).
    std::uint64_t attachedId = 0;
    q5_VIEW* view = nullptr;
    TPicture* backgroundPicture = nullptr;
    q5_RENDERCONTEXT* renderContext = nullptr;
    q5_PROGRESS* progress = nullptr;
    std::int32_t width = 0, height = 0;
    std::int32_t reserved1 = 0, reserved2 = 0;
    float scale1 = 1.0f, scale2 = 1.0f;
    float transform[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::int32_t regionFlag = 0;
    std::uint64_t limit = 0;
    std::int32_t counter = 0;

protected:
    ~q5_DRIVER() = default;
};

class DRIVER3D : public q5_DRIVER {
public:
    // Slots 43-55.
    virtual void SetPair(std::uint32_t a, std::uint32_t b) = 0;
    virtual std::int32_t DrawPoint(const ScreenVertex* v) = 0;
    virtual std::int32_t DrawWideLine(const ScreenVertex* a, const ScreenVertex* b) = 0;
    virtual std::int32_t DrawBoldLine(const ScreenVertex* a, const ScreenVertex* b) = 0;
    virtual std::int32_t DrawScreenTriangle(const ScreenVertex* a, const ScreenVertex* b,
                                            const ScreenVertex* c) = 0;
    virtual std::int32_t DrawScreenLines(const ScreenVertex* vertices, std::int32_t count) = 0;
    virtual std::int32_t DrawFaceGroup(q5_MESH* mesh, q5_FACERUN* run, q5_RENDERSTATE* state) = 0;
    virtual std::int32_t DrawScreenPoints(const ScreenVertex* vertices, std::int32_t count) = 0;
    virtual std::int32_t TextureHook(TPicture* picture, std::int32_t create, std::int32_t a,
                                     std::int32_t b) = 0;
    virtual std::int32_t TextureUpdate(TPicture* picture, std::int32_t a, std::int32_t x,
                                       std::int32_t y, std::int32_t w, std::int32_t h,
                                       std::int32_t b) = 0;
    virtual std::int32_t Notify(std::int32_t kind) = 0;
    virtual std::int32_t SetCopyTarget(TPicture* picture) = 0;
    virtual std::int32_t DrawScreenQuad(const q5_SCREENQUAD* quad) = 0;

    Q5RESULT SetBkImage(TPicture* picture) override;

    // Queries the renderer makes of the host without knowing its objects.
    using MessageCallbackFn = std::int64_t (*)(DRIVER3D* self, const char* text);
    using IntQueryCallbackFn = std::int64_t (*)(DRIVER3D* self, std::int32_t kind);
    using BoolQueryCallbackFn = bool (*)(DRIVER3D* self, std::int32_t kind);
    MessageCallbackFn messageCallback;
    IntQueryCallbackFn intQueryCallback;
    BoolQueryCallbackFn boolQueryCallback;

protected:
    DRIVER3D();
    ~DRIVER3D() = default;
};

// Name under which the software Z-buffer driver registers and is created; the fallback of
// ChooseDriver.
inline constexpr const char* kZBufferDriverName = "Tessera K (Z Buffer)";

// How a host picks its render driver by name (falling back to the built-in one) and drops it.
bool ChooseDriver(DRIVER3D** holder, const char* name);
bool RemoveDriver(DRIVER3D*& holder, bool notify);
