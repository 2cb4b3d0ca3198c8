// tessera-view: a window that shows models or a built-in scene through the driver module and
// turns them with the mouse.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "host/app/host_api.h"
#include "host/app/ini_settings.h"
#include "host/app/plugin_module.h"
#include "host/app/scene_loading.h"
#include "host/scene/builtin_scenes.h"
#include "host/viewer/viewer.h"

namespace {

constexpr const char* kProgram = "tessera-view";
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

const char* const kUsage =
    "Usage: tessera-view [MODEL...] [options]\n"
    "Shows model files (several load into one scene), or a built-in scene, in a window drawn\n"
    "by the software Z-buffer driver. Press H in the window for the keys.\n"
    "\n"
    "  --scene NAME             built-in scene without models: demo (default), cube, clip, glass\n"
    "  --size WxH               window size in pixels (default 1280x720)\n"
    "  --two-sided              draw the back faces of every model object\n"
    "  --two-threads on|off     draw each frame with two drivers, a half each (default:\n"
    "                           the Render\\ZB\\Use2Thread setting, on)\n"
    "  --no-heads-up            start without the line of name, triangles and frame time\n"
    "  --settings FILE          INI file of driver settings; the options page saves to it\n"
    "  --script FILE            run the input steps of FILE as if a user made them\n"
    "  --list-formats           list the model formats this program reads\n"
    "  --benchmark-orbit N      draw N frames turning once around the scene, print the\n"
    "                           frames per second and end\n"
    "  -h, --help               show this text\n";

int Fail(const std::string& message, int code = kExitFailure) {
    std::fprintf(stderr, "%s: %s\n", kProgram, message.c_str());
    return code;
}

// "WxH" with both sides within 1..16384.
bool ParseSize(const std::string& text, std::int32_t& width, std::int32_t& height) {
    int w = 0, h = 0, used = 0;
    if (std::sscanf(text.c_str(), "%dx%d%n", &w, &h, &used) != 2 ||
        used != static_cast<int>(text.size()) || w < 1 || h < 1 || w > 16384 || h > 16384)
        return false;
    width = w;
    height = h;
    return true;
}

struct Arguments {
    ViewerOptions viewer;
    int twoThreads = -1; // -1: as the settings say
    std::string settings, script;
    int benchmarkFrames = 0;
    bool listFormats = false;
};

// False with `error` on a wrong argument; `help` when the user asked for the usage.
bool Parse(int argc, char** argv, Arguments& a, bool& help, std::string& error) {
    bool sceneGiven = false;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const auto value = [&](std::string& out) {
            if (i + 1 >= argc) {
                error = arg + " needs a value";
                return false;
            }
            out = argv[++i];
            return true;
        };
        std::string v;
        if (arg == "-h" || arg == "--help") {
            help = true;
            return true;
        } else if (arg == "--scene") {
            if (!value(v)) return false;
            a.viewer.scene = v;
            sceneGiven = true;
        } else if (arg == "--size") {
            if (!value(v)) return false;
            if (!ParseSize(v, a.viewer.width, a.viewer.height)) {
                error = "invalid --size '" + v + "': use WxH with sides from 1 to 16384";
                return false;
            }
        } else if (arg == "--two-sided") {
            a.viewer.twoSided = true;
        } else if (arg == "--two-threads") {
            if (!value(v)) return false;
            if (v != "on" && v != "off") {
                error = "invalid --two-threads '" + v + "': use on or off";
                return false;
            }
            a.twoThreads = v == "on" ? 1 : 0;
        } else if (arg == "--list-formats") {
            a.listFormats = true;
        } else if (arg == "--no-heads-up") {
            a.viewer.headsUp = false;
        } else if (arg == "--settings") {
            if (!value(a.settings)) return false;
        } else if (arg == "--script") {
            if (!value(a.script)) return false;
        } else if (arg == "--benchmark-orbit") {
            if (!value(v)) return false;
            char* end = nullptr;
            const long n = std::strtol(v.c_str(), &end, 10);
            if (v.empty() || *end != 0 || n < 1 || n > 100000) {
                error = "invalid --benchmark-orbit '" + v + "': use 1 to 100000 frames";
                return false;
            }
            a.benchmarkFrames = static_cast<int>(n);
        } else if (!arg.empty() && arg[0] == '-') {
            error = "unknown option " + arg;
            return false;
        } else {
            a.viewer.models.push_back(arg);
        }
    }
    if (sceneGiven && !a.viewer.models.empty()) {
        error = "--scene and model files both given: choose one";
        return false;
    }
    if (!sceneGiven && a.viewer.models.empty()) a.viewer.scene = BuiltInSceneNames().front();
    return true;
}

int Run(int argc, char** argv) {
    Arguments a;
    bool help = false;
    std::string error;
    if (!Parse(argc, argv, a, help, error)) return Fail(error + " (see --help)", kExitUsage);
    if (help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (a.listFormats) {
        std::string list;
        if (!ModelFormatList(a.settings, list, error)) return Fail(error);
        std::fputs(list.c_str(), stdout);
        return 0;
    }
    std::vector<ScriptStep> steps;
    if (!a.script.empty()) {
        std::ifstream file(a.script, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        if (!file) return Fail("cannot read script " + a.script, kExitUsage);
        if (!ParseViewerScript(text.str(), steps, error))
            return Fail(a.script + ": " + error, kExitUsage);
    }

    IniSettings settings;
    if (!a.settings.empty()) {
        const SettingsFileOutcome read = LoadSettingsFile(a.settings, settings, error);
        if (read != SettingsFileOutcome::Loaded)
            return Fail(error, read == SettingsFileOutcome::Missing ? kExitUsage : kExitFailure);
    }
    if (a.twoThreads >= 0) settings.SetInt("Render\\ZB\\Use2Thread", a.twoThreads);

    HostAPI host(settings);
    const std::string folder = PluginModule::ProgramFolder();
    host.SetProgramName(kProgram);
    host.SetProgramFolder(folder);
    host.LoadLanguage(folder);
    PluginModule module;
    if (!module.Load(PluginModule::DefaultPath(folder))) return Fail(module.Error());
    host.SetDriverModule(&module);
    if (!module.Init(&host)) return Fail(module.Error());
    if (!PrepareModelFormats(host, a.settings, error)) return Fail(error);

    std::unique_ptr<ViewerWindow> window =
        OpenViewerWindow(kProgram, a.viewer.width, a.viewer.height, error);
    if (!window) return Fail(error);
    int status = 0;
    {
        Viewer viewer(*window, host, settings, a.viewer);
        host.SetMessageSink(
            [&viewer](std::int32_t level, const std::string& text) { viewer.Report(level, text); });
        if (!viewer.Start(error)) return Fail(error);
        // A file that cannot be opened is shown in the window, which stays open.
        const bool opened = viewer.Open(a.viewer.models, a.viewer.scene);
        if (a.benchmarkFrames > 0) {
            double ms = 0.0;
            if (!opened || !viewer.BenchmarkOrbit(a.benchmarkFrames, ms, error))
                return Fail(opened ? error : "nothing to turn");
            std::printf("%s: orbit of %d frames at %dx%d%s: %.1f ms, %.1f frames per second\n",
                        kProgram, a.benchmarkFrames, a.viewer.width, a.viewer.height,
                        viewer.TwoThreads() ? " on two threads" : "", ms,
                        1000.0 * a.benchmarkFrames / ms);
        } else {
            viewer.SetScript(std::move(steps));
            status = viewer.Run();
        }
        host.SetMessageSink({});
    }
    if (!a.settings.empty() && host.SettingsWritten() && !settings.Save(a.settings))
        return Fail("cannot write settings file " + a.settings);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        return Fail("out of memory (a smaller window or model may fit)");
    }
}
