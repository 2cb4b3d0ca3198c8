// The host's view object: the look of the current render, and clipping and projection of faces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/view/view_volume.h"
#include "interface/view.h"

class HostView final : public q5_VIEW {
public:
    HostView() = default;
    HostView(const HostView&) = delete;
    HostView& operator=(const HostView&) = delete;
    ~HostView() = default;

    void SetVolume(const ViewVolume& volume) {
        volume_ = volume;
        projected_.Forget();
    }
    const ViewVolume& Volume() const { return volume_; }
    // Colours carry red in the low byte.
    void SetSecondBackground(std::uint32_t colour) { secondBackground_ = colour; }
    // Turns the depth fade on (toward `colour`) or off.
    void SetFade(bool on, std::uint32_t colour);
    void SetSupersample(double factor) { supersample_ = factor; }
    // The render context the driver is attached with, filled from this view.
    q5_RENDERCONTEXT& Context() { return context_; }
    q5_RENDERSETTINGS& Settings() { return settings_; }
    int DetachCount() const { return detached_; }
    // How often the driver said its settings changed (its Use2Thread, for one).
    int SettingsChangeCount() const { return settingsChanged_; }

    q5_RENDERSETTINGS* RenderSettings() override { return &settings_; }
    std::int32_t DriverQueryValue() override { return 0; }
    void OnDriverDetached(std::int32_t, std::int32_t) override { ++detached_; }
    void OnDriverSettingsChanged() override { ++settingsChanged_; }
    std::uint32_t SecondBackgroundColour() override { return secondBackground_; }
    std::uint32_t FadeColour() override { return fade_; }
    double SupersampleFactor() override { return supersample_; }

    bool ClipPolygon(ScreenVertex* const corners[3], ScreenVertex* out, int& count) override;
    bool ClipTexturedPolygon(ScreenVertex* const corners[3], ScreenVertex* out,
                             int& count) override;
    void ProjectVertices(ScreenVertex* vertices, int count, int stride) override;
    void ProjectVertexList(ScreenVertex* const* vertices, int count) override;
    void ProjectPoint(const float point[3], ScreenVertex& out) override;
    // Host meshes carry one set of texture coordinates, set when the frame's mesh is built.
    void PrepareTextureCoordinates(q5_MESH*, const q5_MATERIAL*, int) override {}

private:
    // The driver projects each corner of every triangle, so a shared vertex comes back several
    // times in a row; remembering recent answers spares recomputing them.
    class RecentProjections {
    public:
        void Forget() { ++generation_; }
        const ScreenPosition* Find(std::int32_t x, std::int32_t y, std::int32_t z) const {
            const Entry& e = entries_[Slot(x, y, z)];
            return e.generation == generation_ && e.x == x && e.y == y && e.z == z ? &e.p : nullptr;
        }
        void Keep(std::int32_t x, std::int32_t y, std::int32_t z, const ScreenPosition& p) {
            entries_[Slot(x, y, z)] = {x, y, z, generation_, p};
        }

    private:
        static constexpr int kSlotBits = 12;
        struct Entry {
            std::int32_t x = 0, y = 0, z = 0;
            std::uint32_t generation = 0;
            ScreenPosition p;
        };
        static std::size_t Slot(std::int32_t x, std::int32_t y, std::int32_t z) {
            const std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1u ^
                                    static_cast<std::uint32_t>(y) * 0x85EBCA77u ^
                                    static_cast<std::uint32_t>(z) * 0xC2B2AE3Du;
            return h >> (32 - kSlotBits);
        }
        std::vector<Entry> entries_ = std::vector<Entry>(std::size_t{1} << kSlotBits);
        std::uint32_t generation_ = 1;
    };

    bool Clip(ScreenVertex* const corners[3], ScreenVertex* out, int& count, bool withTexture);
    void Project(ScreenVertex& v);

    ViewVolume volume_;
    RecentProjections projected_;
    q5_RENDERSETTINGS settings_;
    q5_RENDERCONTEXT context_;
    std::uint32_t secondBackground_ = 0;
    std::uint32_t fade_ = 0;
    double supersample_ = 1.0;
    int detached_ = 0;
    int settingsChanged_ = 0;
};
