// A host view for tests: render settings a test controls, and a log of notifications.
#pragma once

#include <utility>
#include <vector>

#include "plugin/view.h"

class RecordingView final : public q5_VIEW {
public:
    q5_RENDERSETTINGS settings;
    bool hasSettings = true;
    std::int32_t queryValue = 0;
    std::vector<std::pair<std::int32_t, std::int32_t>> detached;
    int settingsChanged = 0;
    std::uint32_t secondBackground = 0;
    std::uint32_t fade = 0;
    double supersample = 1.0;

    q5_RENDERSETTINGS* RenderSettings() override { return hasSettings ? &settings : nullptr; }
    std::int32_t DriverQueryValue() override { return queryValue; }
    void OnDriverDetached(std::int32_t a, std::int32_t b) override { detached.emplace_back(a, b); }
    void OnDriverSettingsChanged() override { ++settingsChanged; }
    std::uint32_t SecondBackgroundColour() override { return secondBackground; }
    std::uint32_t FadeColour() override { return fade; }
    double SupersampleFactor() override { return supersample; }

    // Geometry is not exercised through this view: nothing survives clipping.
    bool ClipPolygon(ScreenVertex* const*, ScreenVertex*, int&) override { return false; }
    bool ClipTexturedPolygon(ScreenVertex* const*, ScreenVertex*, int&) override { return false; }
    void ProjectVertices(ScreenVertex*, int, int) override {}
    void ProjectVertexList(ScreenVertex* const*, int) override {}
    void ProjectPoint(const float*, ScreenVertex&) override {}
    void PrepareTextureCoordinates(q5_MESH*, const q5_MATERIAL*, int) override {}
};
