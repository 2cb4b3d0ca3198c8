// Two drivers of one loaded module, each rendering on its own thread at the same time, give
// exactly the frames each gives alone: no driver reads or writes another's state.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "core/platform/system_info.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/render_session.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/host_picture.h"
#include "host/scene/scene.h"
#include "support/module_loader.h"

namespace {

struct Take {
    double yaw;
    bool supersample, fade, edges;
    bool twoThreads = false;
    TPicture* backdrop = nullptr;
    std::int32_t backdropMode = 0;
    const char16_t* label = u"";
};
using Frames = std::vector<std::vector<std::uint8_t>>;

// One driver with its own scene, drawing its takes in turn; a failed frame comes out empty.
class Renderer {
public:
    Renderer(const char* sceneName, std::int32_t width, std::int32_t height,
             std::vector<Take> takes)
        : width_(width), height_(height), takes_(std::move(takes)) {
        EXPECT_TRUE(BuildBuiltInScene(sceneName, scene_)) << sceneName;
        std::string error;
        EXPECT_TRUE(session_.Attach(nullptr, error)) << error;
    }
    Frames RenderAll() {
        Frames frames;
        for (const Take& t : takes_) {
            FrameRequest request;
            request.width = width_;
            request.height = height_;
            request.background[0] = scene_.background[0];
            request.background[1] = scene_.background[1];
            request.supersample = t.supersample;
            request.fade = t.fade;
            request.fadeColour = scene_.background[0];
            request.edges = t.edges;
            request.refine = true;
            request.twoThreads = t.twoThreads;
            request.backgroundPicture = t.backdrop;
            request.backgroundMode = t.backdropMode;
            request.label = t.label;
            Shot shot;
            shot.yaw = t.yaw;
            shot.pitch = scene_.pitch;
            shot.fit = scene_.fit;
            shot.fovY = scene_.fovY;
            const Framing f =
                FrameScene(scene_.FramedBounds(), scene_.AllBounds(), shot, width_, height_);
            Image image;
            std::string error;
            if (!session_.Render(scene_, f.camera, f.volume, request, image, error)) image = {};
            EXPECT_EQ(session_.DrewInHalves(),
                      t.twoThreads && height_ >= 64 && q5plat::ProcessorCount() >= 2)
                << t.yaw;
            frames.push_back(std::move(image.pixels));
        }
        return frames;
    }

private:
    std::int32_t width_, height_;
    std::vector<Take> takes_;
    Scene scene_;
    RenderSession session_;
};

class TwoDrivers : public ::testing::Test {
protected:
    void SetUp() override {
        host_.SetProgramName("two_drivers_test");
        ASSERT_TRUE(module_.Load(kModuleFileName)) << module_.Error();
        host_.SetDriverModule(&module_);
        ASSERT_TRUE(module_.Init(&host_)) << module_.Error();
    }

    IniSettings settings_;
    HostAPI host_{settings_};
    PluginModule module_;
};

TEST_F(TwoDrivers, RenderOnTwoThreadsExactlyAsAlone) {
    // Different sizes, scenes and frame phases, so a shared surface or context would show.
    Renderer a("demo", 160, 96,
               {{10.5, false, false, false},
                {47.25, true, false, false},
                {200.0, false, true, true},
                {300.75, true, true, false}});
    Renderer b("glass", 120, 120,
               {{-20.0, true, false, false},
                {33.3, false, true, false},
                {95.5, false, false, true},
                {181.0, true, false, true}});
    const Frames aloneA = a.RenderAll(), aloneB = b.RenderAll();
    for (const Frames* frames : {&aloneA, &aloneB})
        for (const auto& pixels : *frames) ASSERT_FALSE(pixels.empty());

    for (int round = 0; round < 3; ++round) {
        Frames togetherA, togetherB;
        std::thread first([&] { togetherA = a.RenderAll(); });
        std::thread second([&] { togetherB = b.RenderAll(); });
        first.join();
        second.join();
        EXPECT_TRUE(togetherA == aloneA) << "round " << round << ", driver A";
        EXPECT_TRUE(togetherB == aloneB) << "round " << round << ", driver B";
    }
}

// A frame drawn in two halves, each by its own driver on its own thread, is the frame one
// driver draws: whatever the clear (gradient, picture), the phases and the row where it splits.
TEST_F(TwoDrivers, HalvesJoinIntoTheWholeFrame) {
    q5plat::OverrideProcessorCount(2);
    HostPicture* backdrop = HostPicture::Create(37, 23, 24);
    ASSERT_NE(backdrop, nullptr);
    for (std::int32_t y = 0; y < 23; ++y)
        for (std::int32_t x = 0; x < 37; ++x)
            backdrop->SetPixel(x, y, static_cast<std::uint8_t>(7 * x),
                               static_cast<std::uint8_t>(11 * y), static_cast<std::uint8_t>(x ^ y));
    std::vector<Take> takes = {
        {10.5, false, false, false},
        {47.25, true, false, false},
        {200.0, false, true, true},
        {300.75, true, true, true},
        {120.0, false, false, false, false, backdrop, 0, u"Halves"},
        {77.0, true, false, false, false, backdrop, 1},
    };
    std::vector<Take> split = takes;
    for (Take& t : split) t.twoThreads = true;
    // Odd heights put the split off the middle of the supersampled rows too.
    for (const auto& [scene, width, height] :
         {std::tuple{"demo", 160, 97}, std::tuple{"clip", 131, 64}, std::tuple{"glass", 96, 150}}) {
        Renderer whole(scene, width, height, takes), halves(scene, width, height, split);
        const Frames expected = whole.RenderAll(), actual = halves.RenderAll();
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_FALSE(expected[i].empty()) << scene << " take " << i;
            EXPECT_TRUE(actual[i] == expected[i]) << scene << " take " << i;
        }
    }
    // One processor, or a frame too low to split: the first driver draws it alone.
    q5plat::OverrideProcessorCount(1);
    Renderer alone("cube", 64, 100, {split[0]}), aloneWhole("cube", 64, 100, {takes[0]});
    EXPECT_TRUE(alone.RenderAll() == aloneWhole.RenderAll());
    q5plat::OverrideProcessorCount(2);
    Renderer low("cube", 64, 40, {split[0]}), lowWhole("cube", 64, 40, {takes[0]});
    EXPECT_TRUE(low.RenderAll() == lowWhole.RenderAll());
    q5plat::OverrideProcessorCount(0);
    backdrop->Release();
}

// The split moves toward the slower half's rows, by half the way to where the times would
// meet, and keeps each half at least an eighth of the frame.
std::int32_t SplitAfter(std::int32_t split, std::int32_t rows, double topMs, double bottomMs) {
    SplitBalancer balancer;
    balancer.Observe(split, rows, topMs, bottomMs);
    return balancer.Split(rows);
}

TEST(TwoDriversSplit, MovesHalfWayTowardEqualTimes) {
    EXPECT_EQ(SplitBalancer().Split(1000), 500);
    EXPECT_EQ(SplitAfter(500, 1000, 10.0, 10.0), 500);
    // The top's rows cost three times the bottom's: they meet at row 250.
    EXPECT_EQ(SplitAfter(500, 1000, 30.0, 10.0), 375);
    EXPECT_EQ(SplitAfter(500, 1000, 10.0, 30.0), 625);
    EXPECT_EQ(SplitAfter(500, 1000, 1000.0, 1.0), 250);
    EXPECT_EQ(SplitAfter(200, 1000, 1000.0, 1.0), 125);
    EXPECT_EQ(SplitAfter(900, 1000, 1.0, 1000.0), 875);
    EXPECT_EQ(SplitAfter(333, 1000, 0.0, 0.0), 333);
}

TEST(TwoDriversSplit, SettlesBetweenSplitsWhoseTimesCrossed) {
    // The work of the frame lies in a band of rows, so the first step overshoots it.
    SplitBalancer balancer;
    balancer.Observe(299, 720, 26.0, 184.0);
    ASSERT_EQ(balancer.Split(720), 450);
    balancer.Observe(450, 720, 178.0, 30.0);
    // Between 299 (top 158 ms faster) and 450 (148 ms slower).
    EXPECT_EQ(balancer.Split(720), 377);
    // Times still on the same side move by the estimate again.
    balancer.Observe(377, 720, 110.0, 100.0);
    EXPECT_LT(balancer.Split(720), 377);
    EXPECT_GT(balancer.Split(720), 299);
}

} // namespace
