// Two drivers of one loaded module, each rendering on its own thread at the same time, give
// exactly the frames each gives alone: no driver reads or writes another's state.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/render_session.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/scene.h"
#include "support/module_loader.h"

namespace {

struct Take {
    double yaw;
    bool supersample, fade, edges;
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
            const Shot shot{
                .yaw = t.yaw, .pitch = scene_.pitch, .fit = scene_.fit, .fovY = scene_.fovY};
            const Framing f =
                FrameScene(scene_.FramedBounds(), scene_.AllBounds(), shot, width_, height_);
            Image image;
            std::string error;
            if (!session_.Render(scene_, f.camera, f.volume, request, image, error)) image = {};
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

TEST(TwoDrivers, RenderOnTwoThreadsExactlyAsAlone) {
    IniSettings settings;
    HostAPI host(settings);
    host.SetProgramName("two_drivers_test");
    PluginModule module;
    ASSERT_TRUE(module.Load(kModuleFileName)) << module.Error();
    host.SetDriverModule(&module);
    ASSERT_TRUE(module.Init(&host)) << module.Error();

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

} // namespace
