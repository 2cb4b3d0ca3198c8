// tessera-render: renders a model or a built-in scene to PNG through the driver module.
#include <cstdio>
#include <filesystem>
#include <string>

#include "core/platform/module.h"
#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/progress_line.h"
#include "host/app/render_session.h"
#include "host/cli/options.h"
#include "host/formats/model_file.h"
#include "host/formats/png_file.h"
#include "host/scene/builtin_scenes.h"
#include "host/scene/framing.h"
#include "host/scene/scene.h"
#include "interface/driver.h"

namespace {

constexpr const char* kProgram = "tessera-render";
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
// QueryCaps id of the driver's "Render\ZB\Refine" setting.
constexpr std::int32_t kCapsRefine = 16;

int Fail(const std::string& message, int code = kExitFailure) {
    std::fprintf(stderr, "%s: %s\n", kProgram, message.c_str());
    return code;
}

std::string ProgramFolder() {
    char path[4096];
    if (q5plat::GetProgramFileNameA(path, sizeof path) == 0) return ".";
    return std::filesystem::path(path).parent_path().string();
}

// The picture must be able to land where it was asked for, checked before any rendering.
bool CheckOutput(const std::string& output, std::string& error) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path path(output);
    if (!path.has_filename() || fs::is_directory(path, ec)) {
        error = "cannot write " + output + ": it names a folder";
        return false;
    }
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, ec)) {
        error = "cannot write " + output + ": folder " + folder.string() + " does not exist";
        return false;
    }
    return true;
}

std::string DefaultOutput(const CliOptions& o) {
    if (o.model.empty()) return o.scene + ".png";
    return std::filesystem::path(o.model).stem().string() + ".png";
}

} // namespace

int main(int argc, char** argv) {
    CliOptions options;
    std::string error;
    switch (ParseCommandLine(argc, argv, options, error)) {
    case ParseOutcome::Help:
        std::fputs(HelpText(), stdout);
        return 0;
    case ParseOutcome::Error:
        return Fail(error + " (see --help)", kExitUsage);
    case ParseOutcome::Run:
        break;
    }
    const std::string output = options.output.empty() ? DefaultOutput(options) : options.output;
    if (!CheckOutput(output, error)) return Fail(error);

    IniSettings settings;
    if (!options.settings.empty() && !settings.Load(options.settings))
        return Fail("cannot read settings file " + options.settings);

    Scene scene;
    if (!options.model.empty()) {
        if (!LoadModel(options.model, scene, error)) return Fail(error);
        if (!error.empty()) std::fprintf(stderr, "%s: warning: %s\n", kProgram, error.c_str());
    } else if (!BuildBuiltInScene(options.scene, scene)) {
        return Fail("unknown scene '" + options.scene + "' (see --help)", kExitUsage);
    }

    const std::string folder = ProgramFolder();
    HostAPI host(settings);
    host.SetProgramName(kProgram);
    host.SetProgramFolder(folder);
    host.LoadLanguage(folder);
    if (options.refine) host.OverrideSetting("Render\\ZB\\Refine", *options.refine ? 1 : 0);
    PluginModule module;
    const std::string modulePath =
        options.driver.empty() ? PluginModule::DefaultPath(folder) : options.driver;
    if (!module.Load(modulePath)) return Fail(module.Error());
    host.SetDriverModule(&module);
    if (!module.Init(&host)) return Fail(module.Error());

    ProgressLine progress;
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

        Shot shot;
        shot.yaw = options.yaw.value_or(scene.yaw);
        shot.pitch = options.pitch.value_or(scene.pitch);
        shot.distance = options.distance.value_or(0.0);
        shot.fovY = options.fov.value_or(scene.fovY);
        shot.fit = scene.fit;

        const int count = options.frames > 0 ? options.frames : 1;
        const double startYaw = shot.yaw;
        for (int i = 0; i < count && status == 0; ++i) {
            const std::string file =
                options.frames > 0 ? SequenceFileName(output, i, count) : output;
            if (options.frames > 0) progress.Frame(i + 1, count, file);
            shot.yaw = startYaw + 360.0 * i / count;
            const Framing framing = FrameScene(scene.FramedBounds(), scene.AllBounds(), shot,
                                               request.width, request.height);
            Image image;
            if (!session.Render(scene, framing.camera, framing.volume, request, image, error) ||
                !WritePng(file, image, error)) {
                progress.Done();
                status = Fail(error);
            }
        }
        progress.Done();
    }
    if (host.ErrorCount() > 0 && status == 0) status = kExitFailure;
    if (!options.settings.empty() && host.SettingsWritten() && !settings.Save(options.settings))
        return Fail("cannot write settings file " + options.settings);
    return status;
}
