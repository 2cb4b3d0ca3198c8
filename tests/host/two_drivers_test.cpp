// Two drivers of one loaded module, each rendering on its own thread at the same time, give
// exactly the frames each gives alone: no driver reads or writes another's state.
#include <gtest/gtest.h>

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

// One driver with its own scene and a list of frames to draw with it.
class Renderer {
public:
    Renderer(const char* sceneName, std::vector<Take> shots, std::int32_t width,
             std::int32_t height)
        : shots_(std::move(shots)), width_(width), height_(height) {
        built_ = BuildBuiltInScene(sceneName, scene_);
    }
    bool Attach(std::string& error) { return built_ && session_.Attach(nullptr, error); }

    // Every frame in order; an empty picture stands for a frame that failed.
    std::vector<Image> RenderAll() {
        std::vector<Image> frames;
        for (const Take& s : shots_) {
            FrameRequest request;
            request.width = width_;
            request.height = height_;
            request.background[0] = scene_.background[0];
            request.background[1] = scene_.background[1];
            request.supersample = s.supersample;
            request.fade = s.fade;
            request.fadeColour = scene_.background[0];
            request.edges = s.edges;
            request.refine = true;
            Shot shot;
            shot.yaw = s.yaw;
            shot.pitch = scene_.pitch;
            shot.fovY = scene_.fovY;
            shot.fit = scene_.fit;
            const Framing f =
                FrameScene(scene_.FramedBounds(), scene_.AllBounds(), shot, width_, height_);
            Image image;
            std::string error;
            if (!session_.Render(scene_, f.camera, f.volume, request, image, error)) image = {};
            frames.push_back(std::move(image));
        }
        return frames;
    }

private:
    Scene scene_;
    RenderSession session_;
    std::vector<Take> shots_;
    std::int32_t width_, height_;
    bool built_ = false;
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
    Renderer a("demo",
               {{10.5, false, false, false},
                {47.25, true, false, false},
                {200.0, false, true, true},
                {300.75, true, true, false}},
               160, 96);
    Renderer b("glass",
               {{-20.0, true, false, false},
                {33.3, false, true, false},
                {95.5, false, false, true},
                {181.0, true, false, true}},
               120, 120);
    std::string error;
    ASSERT_TRUE(a.Attach(error)) << error;
    ASSERT_TRUE(b.Attach(error)) << error;

    const std::vector<Image> aloneA = a.RenderAll(), aloneB = b.RenderAll();
    for (const auto* frames : {&aloneA, &aloneB})
        for (const Image& image : *frames) ASSERT_FALSE(image.pixels.empty());

    for (int round = 0; round < 3; ++round) {
        std::vector<Image> togetherA, togetherB;
        std::thread first([&] { togetherA = a.RenderAll(); });
        std::thread second([&] { togetherB = b.RenderAll(); });
        first.join();
        second.join();
        ASSERT_EQ(togetherA.size(), aloneA.size());
        ASSERT_EQ(togetherB.size(), aloneB.size());
        for (std::size_t i = 0; i < aloneA.size(); ++i) {
            EXPECT_TRUE(togetherA[i].pixels == aloneA[i].pixels) << "round " << round << " A" << i;
            EXPECT_TRUE(togetherB[i].pixels == aloneB[i].pixels) << "round " << round << " B" << i;
        }
    }
}

} // namespace
