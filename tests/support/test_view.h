// A host view for tests: render settings and answers a test controls, and a log of the
// driver's calls. It projects by a plain rule (x and y in whole pixels of view space,
// depth = z) and clips against one vertical plane.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

#include "plugin/view.h"
#include "zbuffer/screen_vertex.h"

class TestView final : public q5_VIEW {
public:
    enum class Call {
        ClipPolygon,
        ClipTexturedPolygon,
        ProjectVertices,
        ProjectVertexList,
        ProjectPoint,
        PrepareTextureCoordinates
    };
    struct Record {
        Call call;
        int count = 0;                         // vertices handed over, or the texture slot
        const q5_MATERIAL* material = nullptr; // PrepareTextureCoordinates
        float point[3] = {0, 0, 0};            // ProjectPoint
    };

    q5_RENDERSETTINGS settings;
    bool hasSettings = true;
    std::int32_t queryValue = 0;
    std::uint32_t secondBackground = 0;
    std::uint32_t fade = 0;
    double supersample = 1.0;
    std::vector<std::pair<std::int32_t, std::int32_t>> detached;
    std::vector<Record> calls; // clipping, projection and texture preparation
    float clipLeft = 0.0f;     // the clipper keeps the part with view-space x >= clipLeft

    int Count(Call c) const {
        return static_cast<int>(std::count_if(calls.begin(), calls.end(),
                                              [c](const Record& r) { return r.call == c; }));
    }
    std::vector<Call> Sequence() const {
        std::vector<Call> out;
        for (const Record& r : calls) out.push_back(r.call);
        return out;
    }

    q5_RENDERSETTINGS* RenderSettings() override { return hasSettings ? &settings : nullptr; }
    std::int32_t DriverQueryValue() override { return queryValue; }
    void OnDriverDetached(std::int32_t a, std::int32_t b) override { detached.emplace_back(a, b); }
    void OnDriverSettingsChanged() override {}
    std::uint32_t SecondBackgroundColour() override { return secondBackground; }
    std::uint32_t FadeColour() override { return fade; }
    double SupersampleFactor() override { return supersample; }

    bool ClipPolygon(ScreenVertex* const corners[3], ScreenVertex* out, int& count) override {
        calls.push_back({Call::ClipPolygon, count});
        return Clip(corners, out, count);
    }
    bool ClipTexturedPolygon(ScreenVertex* const corners[3], ScreenVertex* out,
                             int& count) override {
        calls.push_back({Call::ClipTexturedPolygon, count});
        return Clip(corners, out, count);
    }
    void ProjectVertices(ScreenVertex* vertices, int count, int stride) override {
        calls.push_back({Call::ProjectVertices, count});
        auto* bytes = reinterpret_cast<std::uint8_t*>(vertices);
        for (int i = 0; i < count; ++i)
            Project(*reinterpret_cast<ScreenVertex*>(bytes + i * stride));
    }
    void ProjectVertexList(ScreenVertex* const* vertices, int count) override {
        calls.push_back({Call::ProjectVertexList, count});
        for (int i = 0; i < count; ++i) Project(*vertices[i]);
    }
    void ProjectPoint(const float point[3], ScreenVertex& out) override {
        Record r{Call::ProjectPoint, 1};
        std::copy(point, point + 3, r.point);
        calls.push_back(r);
        SetScreen(out, point[0], point[1], point[2]);
    }
    void PrepareTextureCoordinates(q5_MESH*, const q5_MATERIAL* material, int slot) override {
        calls.push_back({Call::PrepareTextureCoordinates, slot, material});
    }

private:
    // By value: bit_cast takes a reference, which a packed field cannot bind.
    static float F(std::int32_t bits) { return std::bit_cast<float>(bits); }
    static float X(const ScreenVertex& v) { return F(v.x); }
    static void SetScreen(ScreenVertex& v, float x, float y, float z) {
        v.x = static_cast<std::int32_t>(x * 256.0f);
        v.y = static_cast<std::int32_t>(y * 256.0f);
        v.z = static_cast<std::int32_t>(z);
    }
    static void Project(ScreenVertex& v) { SetScreen(v, F(v.x), F(v.y), F(v.z)); }
    // Interpolates the position only, the rest is the first end's: no test reads the texture
    // coordinates or colours of a clipped corner.
    ScreenVertex Crossing(const ScreenVertex& a, const ScreenVertex& b) const {
        const float t = (clipLeft - X(a)) / (X(b) - X(a));
        ScreenVertex v = a;
        v.x = std::bit_cast<std::int32_t>(clipLeft);
        v.y = std::bit_cast<std::int32_t>(F(a.y) + (F(b.y) - F(a.y)) * t);
        v.z = std::bit_cast<std::int32_t>(F(a.z) + (F(b.z) - F(a.z)) * t);
        return v;
    }
    // One pass of polygon clipping against x >= clipLeft.
    bool Clip(ScreenVertex* const corners[3], ScreenVertex* out, int& count) const {
        int n = 0;
        for (int i = 0; i < 3; ++i) {
            const ScreenVertex& prev = *corners[(i + 2) % 3];
            const ScreenVertex& cur = *corners[i];
            const bool prevIn = X(prev) >= clipLeft, curIn = X(cur) >= clipLeft;
            if (curIn != prevIn) out[n++] = Crossing(prev, cur);
            if (curIn) out[n++] = cur;
        }
        count = n;
        return n > 0;
    }
};
