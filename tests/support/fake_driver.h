// A DRIVER3D whose identity and layout numbers a test chooses, to exercise driver selection.
#pragma once

#include <string>
#include <tuple>
#include <vector>

#include "interface/driver.h"
#include "interface/view.h"

class FakeDriver final : public DRIVER3D {
public:
    FakeDriver(std::string name, std::int32_t version, std::int64_t caps18 = kLayoutCheck18)
        : name_(std::move(name)), version_(version), caps18_(caps18) {}

    std::uint32_t refCount() const { return refCount_; }
    static inline int destroyed = 0;

    void DeleteThis() override {
        ++destroyed;
        delete this;
    }
    const char* GetInterfaceName() override { return name_.c_str(); }
    std::int32_t GetInterfaceVersion() override { return version_; }
    std::int64_t QueryCaps(std::int32_t id) override {
        switch (id) {
        case 18:
            return caps18_;
        case 19:
            return kLayoutCheck19;
        case 20:
            return kLayoutCheck20;
        default:
            return 0;
        }
    }

    std::int32_t Attach(std::uint64_t, q5_RENDERCONTEXT*) override { return 1; }
    std::int32_t Unnamed12() override { return 0; }
    std::int64_t GetValue(std::int32_t, std::int64_t) override { return 0; }
    bool GetDriverString(q5_WCHAR*, std::int32_t) override { return true; }
    bool ShowOptions(q5_HWND) override { return false; }
    bool Unnamed17() override { return true; }
    std::int32_t DrawFaceGroupPlaced(q5_MESH*, q5_FACERUN*, q5_RENDERSTATE*,
                                     const MATRIX3D*) override {
        return 0;
    }
    std::int32_t DrawScreenPolygon(const ScreenVertex*, std::int32_t) override { return 0; }
    std::int32_t SetMatrix(const float*) override { return 1; }
    void DepthOffset(std::uint32_t) override {}
    bool FrameStep(std::int32_t) override { return true; }
    std::int32_t DrawScreenLine(const ScreenVertex*, const ScreenVertex*) override { return 0; }
    void Resize(std::int32_t, std::int32_t) override {}
    void ClearFrame(std::uint32_t) override {}
    bool PresentRect(q5_HDC, const q5_URECT*) override { return true; }
    std::int32_t Unnamed28() override { return 0; }
    std::int32_t Unnamed29() override { return 0; }
    std::int32_t DrawText(std::int32_t, std::int32_t, const q5_WCHAR*, std::uint32_t) override {
        return 0;
    }
    void MarkId(std::uint64_t) override {}
    std::int32_t IsIdMarked(std::uint64_t) override { return 0; }
    bool DrawXorLine(q5_HWND, q5_FPOINT, q5_FPOINT) override { return true; }
    std::int32_t DrawFrameBorder(std::int32_t, std::int32_t, std::uint32_t) override { return 1; }
    std::int32_t Unnamed35() override { return Q5_E_NOTAVAIL; }
    std::int32_t Unnamed36() override { return 1; }
    void DrawLine2D(q5_FPOINT, q5_FPOINT, std::uint32_t) override {}
    void SetPair(std::uint32_t, std::uint32_t) override {}
    std::int32_t DrawPoint(const ScreenVertex*) override { return 0; }
    std::int32_t DrawWideLine(const ScreenVertex*, const ScreenVertex*) override { return 0; }
    std::int32_t DrawBoldLine(const ScreenVertex*, const ScreenVertex*) override { return 0; }
    std::int32_t DrawScreenTriangle(const ScreenVertex*, const ScreenVertex*,
                                    const ScreenVertex*) override {
        return 0;
    }
    std::int32_t DrawScreenLines(const ScreenVertex*, std::int32_t) override { return 0; }
    std::int32_t DrawFaceGroup(q5_MESH*, q5_FACERUN*, q5_RENDERSTATE*) override { return 0; }
    std::int32_t DrawScreenPoints(const ScreenVertex*, std::int32_t) override { return 0; }
    std::int32_t TextureHook(TPicture* picture, std::int32_t create, std::int32_t,
                             std::int32_t) override {
        hookCalls.push_back({picture, create, Flag2()});
        return 1;
    }
    std::int32_t TextureUpdate(TPicture* picture, std::int32_t, std::int32_t, std::int32_t,
                               std::int32_t, std::int32_t, std::int32_t) override {
        hookCalls.push_back({picture, -1, Flag2()});
        return 1;
    }
    std::int32_t Notify(std::int32_t) override { return 0; }
    std::int32_t SetCopyTarget(TPicture*) override { return 1; }
    std::int32_t DrawScreenQuad(const q5_SCREENQUAD*) override { return 1; }

    // TextureHook calls as (picture, create flag, the settings' kind-2 flag while the hook ran);
    // TextureUpdate records -1 as the create flag.
    std::vector<std::tuple<TPicture*, std::int32_t, bool>> hookCalls;

private:
    ~FakeDriver() = default;
    bool Flag2() { return view != nullptr && view->RenderSettings()->flagKind2; }
    std::string name_;
    std::int32_t version_;
    std::int64_t caps18_;
};
