// A host view for face-group tests: it projects by a plain rule (x and y in whole pixels of
// view space, depth = z), clips against one vertical plane, and records every call.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "plugin/view.h"
#include "zbuffer/screen_vertex.h"

class ScriptedView final : public q5_VIEW {
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

    std::vector<Record> calls;
    float clipLeft = 0.0f; // the clipper keeps the part with view-space x >= clipLeft
    q5_RENDERSETTINGS settings;

    int Count(Call c) const {
        return static_cast<int>(std::count_if(calls.begin(), calls.end(),
                                              [c](const Record& r) { return r.call == c; }));
    }
    std::vector<Call> Sequence() const {
        std::vector<Call> out;
        for (const Record& r : calls) out.push_back(r.call);
        return out;
    }

    q5_RENDERSETTINGS* RenderSettings() override { return &settings; }
    std::int32_t DriverQueryValue() override { return 0; }
    void OnDriverDetached(std::int32_t, std::int32_t) override {}
    void OnDriverSettingsChanged() override {}
    std::uint32_t SecondBackgroundColour() override { return 0; }
    std::uint32_t FadeColour() override { return 0; }
    double SupersampleFactor() override { return 1.0; }

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
    static float Lerp(float a, float b, float t) { return a + (b - a) * t; }
    static std::uint8_t Lerp(std::uint8_t a, std::uint8_t b, float t) {
        return static_cast<std::uint8_t>(a + (b - a) * t);
    }
    ScreenVertex Crossing(const ScreenVertex& a, const ScreenVertex& b) const {
        const float t = (clipLeft - X(a)) / (X(b) - X(a));
        ScreenVertex v{};
        v.x = std::bit_cast<std::int32_t>(clipLeft);
        v.y = std::bit_cast<std::int32_t>(Lerp(F(a.y), F(b.y), t));
        v.z = std::bit_cast<std::int32_t>(Lerp(F(a.z), F(b.z), t));
        v.s = Lerp(a.s, b.s, t);
        v.t = Lerp(a.t, b.t, t);
        v.red = Lerp(a.red, b.red, t);
        v.green = Lerp(a.green, b.green, t);
        v.blue = Lerp(a.blue, b.blue, t);
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
