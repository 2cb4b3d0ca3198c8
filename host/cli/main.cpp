// tessera-render: renders a model or a built-in scene to PNG through the driver module.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "core/platform/output_file.h"
#include "core/services/text_convert.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/progress_line.h"
#include "host/app/render_session.h"
#include "host/app/scene_loading.h"
#include "host/cli/options.h"
#include "host/cli/options_command.h"
#include "host/formats/png_file.h"
#include "host/formats/texture_file.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/host_picture.h"
#include "host/scene/scene.h"
#include "interface/driver.h"

namespace {

constexpr const char* kProgram = "tessera-render";
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

int Fail(const std::string& message, int code = kExitFailure) {
    std::fprintf(stderr, "%s: %s\n", kProgram, message.c_str());
    return code;
}

double MillisecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

std::string DefaultOutput(const CliOptions& o) {
    if (o.model.empty()) return o.scene + ".png";
    return std::filesystem::path(o.model).stem().string() + ".png";
}

struct PictureRelease {
    void operator()(HostPicture* picture) const { picture->Release(); }
};

} // namespace

int Run(int argc, char** argv) {
    CliOptions options;
    std::string error;
    switch (ParseCommandLine(argc, argv, options, error)) {
    case ParseOutcome::Help:
        std::fputs(HelpText(), stdout);
        return 0;
    case ParseOutcome::Version:
        std::printf("%s %s\n", kProgram, TESSERA_VERSION);
        return 0;
    case ParseOutcome::Error:
        return Fail(error + " (see --help)", kExitUsage);
    case ParseOutcome::Run:
        break;
    }
    if (options.listFormats) {
        std::string list;
        if (!ModelFormatList(options.settings, list, error)) return Fail(error);
        std::fputs(list.c_str(), stdout);
        return 0;
    }
    if (options.optionsPage != CliOptions::OptionsPage::None)
        return RunOptionsPage(options, PluginModule::ProgramFolder(), kProgram);
    const std::string output = options.output.empty() ? DefaultOutput(options) : options.output;
    // Several pictures to one stream follow one another, as readers of image pipes expect.
    const bool stream = IsPngStream(output);
    const int count = options.frames > 0 ? options.frames : 1;
    const auto fileOf = [&](int i) {
        return options.frames > 0 && !stream ? SequenceFileName(output, i, count) : output;
    };
    if (!CheckPngOutput(fileOf(0), error)) return Fail(error);
    if (output == kStandardOutputName && q5plat::IsTerminal(q5plat::StandardStream::Output))
        return Fail("cannot write -: standard output is a terminal; redirect it", kExitUsage);

    IniSettings settings;
    if (!options.settings.empty()) {
        const SettingsFileOutcome read = LoadSettingsFile(options.settings, settings, error);
        if (read != SettingsFileOutcome::Loaded)
            return Fail(error, read == SettingsFileOutcome::Missing ? kExitUsage : kExitFailure);
    }
    const auto verbose = [&](const std::string& line) {
        if (options.verbose) std::fprintf(stderr, "%s: %s\n", kProgram, line.c_str());
    };
    char text[256];

    // Model formats are found through the host's file-type registry.
    HostAPI host(settings);
    // Errors wait for the outcome: a step that fails says why in its own one line.
    std::vector<std::string> pendingErrors;
    host.SetMessageSink([&](std::int32_t level, const std::string& message) {
        if (level == kReportError)
            pendingErrors.push_back(message);
        else if (!options.quiet)
            std::fprintf(stderr, "%s: %s: %s\n", kProgram,
                         level == kReportInfo ? "info" : "warning", message.c_str());
    });
    const auto flushErrors = [&] {
        for (const std::string& message : pendingErrors)
            std::fprintf(stderr, "%s: error: %s\n", kProgram, message.c_str());
        pendingErrors.clear();
    };
    Scene scene;
    const auto loadStart = std::chrono::steady_clock::now();
    if (!options.model.empty()) {
        if (!PrepareModelFormats(host, options.settings, error)) return Fail(error);
        std::vector<std::string> warnings;
        const bool loaded = LoadModels({options.model}, options.twoSided, scene, warnings, error);
        for (const std::string& warning : warnings)
            if (!options.quiet)
                std::fprintf(stderr, "%s: warning: %s\n", kProgram, warning.c_str());
        if (!loaded) return Fail(error);
    } else if (!BuildBuiltInScene(options.scene, scene)) {
        return Fail("unknown scene '" + options.scene + "' (see --help)", kExitUsage);
    }
    std::snprintf(text, sizeof text, "loaded %s in %.1f ms: %zu objects, %zu triangles",
                  options.model.empty() ? ("scene " + options.scene).c_str()
                                        : options.model.c_str(),
                  MillisecondsSince(loadStart), scene.Objects().size(), TriangleCount(scene));
    verbose(text);

    // The picture behind the scene and the label are checked before any rendering.
    std::unique_ptr<HostPicture, PictureRelease> backgroundPicture;
    if (!options.backgroundImage.empty()) {
        Image picture;
        if (!ReadImageFile(options.backgroundImage, picture, error))
            return Fail("cannot use background image " + options.backgroundImage + ": " + error);
        backgroundPicture.reset(HostPicture::FromPixels(picture.width, picture.height,
                                                        picture.channels, picture.pixels.data()));
        if (!backgroundPicture)
            return Fail("cannot use background image " + options.backgroundImage +
                        ": out of memory");
    }
    const std::u16string label = Utf8ToWide(options.label);
    if (label.empty() && !options.label.empty())
        return Fail("--label: the text is not UTF-8", kExitUsage);

    const std::string folder = PluginModule::ProgramFolder();
    host.SetProgramName(kProgram);
    host.SetProgramFolder(folder);
    host.LoadLanguage(folder);
    if (options.refine) host.OverrideSetting("Render\\ZB\\Refine", *options.refine ? 1 : 0);
    PluginModule module;
    const std::string modulePath =
        options.driver.empty() ? PluginModule::DefaultPath(folder) : options.driver;
    if (!module.Load(modulePath)) return Fail(module.Error());
    host.SetDriverModule(&module);
    if (!module.Init(&host)) {
        flushErrors();
        return Fail(module.Error());
    }
    flushErrors();
    verbose("driver module " + modulePath);

    ProgressLine progress;
    if (options.quiet) progress.SetVisible(false);
    int status = 0;
    {
        RenderSession session;
        if (!session.Attach(progress.Progress(), error)) return Fail(error);

        FrameRequest request;
        request.width = options.width;
        request.height = options.height;
        request.background[0] = options.background[0].value_or(scene.background[0]);
        request.background[1] = options.background[1].value_or(scene.background[1]);
        request.supersample = options.supersample;
        request.fade = options.fade;
        request.fadeColour = options.fadeColour.value_or(request.background[0]);
        request.edges = options.edges;
        request.refine = session.Driver()->QueryCaps(kCapsRefine) != 0;
        request.twoThreads = session.Driver()->QueryCaps(kCapsUseTwoThreads) != 0;
        request.backgroundPicture = backgroundPicture.get();
        request.backgroundMode = options.backgroundMode;
        request.label = label;

        Shot shot;
        shot.yaw = options.yaw.value_or(scene.yaw);
        shot.pitch = options.pitch.value_or(scene.pitch);
        shot.distance = options.distance.value_or(0.0);
        shot.fovY = options.fov.value_or(scene.fovY);
        shot.fit = scene.fit;
        shot.target = options.target;

        const double startYaw = shot.yaw;
        for (int i = 0; i < count && status == 0; ++i) {
            const std::string file = fileOf(i);
            if (options.frames > 0) progress.Frame(i + 1, count, file);
            const auto frameStart = std::chrono::steady_clock::now();
            shot.yaw = startYaw + 360.0 * i / count;
            const Framing framing = FrameScene(scene.FramedBounds(), scene.AllBounds(), shot,
                                               request.width, request.height);
            Image image;
            const bool rendered =
                session.Render(scene, framing.camera, framing.volume, request, image, error);
            const double renderMs = MillisecondsSince(frameStart);
            const auto writeStart = std::chrono::steady_clock::now();
            if (!rendered || !WritePng(file, image, error)) {
                progress.Done();
                pendingErrors.clear();
                status = Fail(error);
                break;
            }
            flushErrors();
            if (options.verbose) {
                progress.Done();
                std::snprintf(text, sizeof text,
                              "frame %d/%d %dx%d: rendered in %.1f ms, written in %.1f ms", i + 1,
                              count, request.width, request.height, renderMs,
                              MillisecondsSince(writeStart));
                verbose(text + (" to " + file));
            }
        }
        progress.Done();
    }
    if (status == 0) flushErrors(); // those of the driver's release
    if (host.ErrorCount() > 0 && status == 0) status = kExitFailure;
    if (!options.settings.empty() && host.SettingsWritten() && !settings.Save(options.settings))
        return Fail("cannot write settings file " + options.settings);
    return status;
}

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        // Anywhere in the host: a huge frame, model or picture.
        return Fail(
            "out of memory (a smaller --size, no --supersample or a smaller model may fit)");
    }
}
