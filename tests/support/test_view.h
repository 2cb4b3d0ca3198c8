// A host view for tests: settings and answers a test controls, a log of the driver's calls,
// projection of view-space x and y as whole pixels (depth = z), clipping against one plane.
#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "interface/screen_vertex.h"
#include "interface/view.h"

class TestView final : public q5_VIEW {
public:
    q5_RENDERSETTINGS settings;
    bool hasSettings = true;
    std::int32_t queryValue = 0;
    std::uint32_t secondBackground = 0;
    std::uint32_t fade = 0;
    double supersample = 1.0;
    float clipLeft = 0.0f; // the clipper keeps the part with view-space x >= clipLeft
    std::vector<std::pair<std::int32_t, std::int32_t>> detached;
    int settingsChanges = 0; // calls of OnDriverSettingsChanged
    std::vector<std::string> calls; // with the vertex counts: "clip 3", "project list 3", "point"
    std::vector<std::pair<const q5_MATERIAL*, int>> prepared; // texture coordinates, by slot

    q5_RENDERSETTINGS* RenderSettings() override { return hasSettings ? &settings : nullptr; }
    std::int32_t DriverQueryValue() override { return queryValue; }
    void OnDriverDetached(std::int32_t a, std::int32_t b) override { detached.emplace_back(a, b); }
    void OnDriverSettingsChanged() override { ++settingsChanges; }
    std::uint32_t SecondBackgroundColour() override { return secondBackground; }
    std::uint32_t FadeColour() override { return fade; }
    double SupersampleFactor() override { return supersample; }

    bool ClipPolygon(ScreenVertex* const in[3], ScreenVertex* out, int& count) override {
        return Clip("clip ", in, out, count);
    }
    bool ClipTexturedPolygon(ScreenVertex* const in[3], ScreenVertex* out, int& count) override {
        return Clip("clip textured ", in, out, count);
    }
    void ProjectVertices(ScreenVertex* vertices, int count, int stride) override {
        calls.push_back("project " + std::to_string(count));
        auto* bytes = reinterpret_cast<std::uint8_t*>(vertices);
        for (int i = 0; i < count; ++i)
            Project(*reinterpret_cast<ScreenVertex*>(bytes + i * stride));
    }
    void ProjectVertexList(ScreenVertex* const* vertices, int count) override {
        calls.push_back("project list " + std::to_string(count));
        for (int i = 0; i < count; ++i) Project(*vertices[i]);
    }
    void ProjectPoint(const float point[3], ScreenVertex& out) override {
        calls.push_back("point");
        out = Screen(point[0], point[1], point[2], out);
    }
    void PrepareTextureCoordinates(q5_MESH*, const q5_MATERIAL* material, int slot) override {
        prepared.emplace_back(material, slot);
    }

private:
    // By value: bit_cast takes a reference, which a packed field cannot bind.
    static float F(std::int32_t bits) { return std::bit_cast<float>(bits); }
    static ScreenVertex Screen(float x, float y, float z, ScreenVertex v) {
        v.x = static_cast<std::int32_t>(x * 256.0f);
        v.y = static_cast<std::int32_t>(y * 256.0f);
        v.z = static_cast<std::int32_t>(z);
        return v;
    }
    static void Project(ScreenVertex& v) { v = Screen(F(v.x), F(v.y), F(v.z), v); }
    // One pass against x >= clipLeft. A crossing takes the first end's texture coordinates
    // and colours: no test reads those of a clipped corner.
    bool Clip(const char* what, ScreenVertex* const corners[3], ScreenVertex* out, int& count) {
        calls.push_back(what + std::to_string(count));
        int n = 0;
        for (int i = 0; i < 3; ++i) {
            const ScreenVertex &a = *corners[(i + 2) % 3], &b = *corners[i];
            if ((F(b.x) >= clipLeft) != (F(a.x) >= clipLeft)) {
                const float t = (clipLeft - F(a.x)) / (F(b.x) - F(a.x));
                ScreenVertex& v = out[n++] = a;
                v.x = std::bit_cast<std::int32_t>(clipLeft);
                v.y = std::bit_cast<std::int32_t>(F(a.y) + (F(b.y) - F(a.y)) * t);
                v.z = std::bit_cast<std::int32_t>(F(a.z) + (F(b.z) - F(a.z)) * t);
            }
            if (F(b.x) >= clipLeft) out[n++] = b;
        }
        count = n;
        return n > 0;
    }
};
