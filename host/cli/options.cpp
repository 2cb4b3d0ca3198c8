// Parsing the command line of tessera-render.
#include "host/cli/options.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr std::int32_t kMaxSide = 16384;
constexpr int kMaxFrames = 100000;

struct NamedColour {
    const char* name;
    std::uint32_t colour;
};
constexpr NamedColour kNamedColours[] = {
    {"black", 0x000000}, {"white", 0xFFFFFF}, {"grey", 0x808080},   {"gray", 0x808080},
    {"red", 0x0000FF},   {"green", 0x00FF00}, {"blue", 0xFF0000},   {"yellow", 0x00FFFF},
    {"navy", 0x401808},  {"sky", 0xF0C890},   {"orange", 0x0080FF}, {"purple", 0x800080},
};

bool ParseNumber(const std::string& text, double& value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && *end == 0 && std::isfinite(value);
}

bool ParseInt(const std::string& text, long& value) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtol(text.c_str(), &end, 10);
    return errno == 0 && *end == 0;
}

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const auto cut = text.find(separator, start);
        parts.push_back(text.substr(start, cut - start));
        if (cut == std::string::npos) return parts;
        start = cut + 1;
    }
}

} // namespace

const char* HelpText() {
    return "Usage: tessera-render [MODEL] [options]\n"
           "Renders a model file, or a built-in scene, to a PNG picture with the software\n"
           "Z-buffer driver.\n"
           "\n"
           "  -o, --output FILE        picture to write (default: <scene or model name>.png); a\n"
           "                           new or regular FILE is replaced whole once complete, \"-\"\n"
           "                           (standard output), a device or a link is written as it is\n"
           "  --scene NAME             built-in scene: demo (default), cube, clip, glass\n"
           "  --size WxH               frame size in pixels, 1 to 16384 a side (default 1280x720)\n"
           "  --orbit YAW,PITCH        camera angles around the scene in degrees, pitch -90..90\n"
           "  --distance D             camera distance from the scene's centre (default: fit)\n"
           "  --fov DEGREES            vertical field of view (default 40)\n"
           "  --camera YAW,PITCH[,D[,FOV]]  the three above at once\n"
           "  --target X,Y,Z           the point the camera orbits and aims at (default: the\n"
           "                           scene's centre)\n"
           "  --background C|C1,C2     solid colour, or a gradient from top to bottom\n"
           "  --background-image FILE  a PNG, JPEG, TGA or BMP picture behind the scene\n"
           "  --background-mode M      how it fills the frame: stretch (default), centre, tile\n"
           "  --label TEXT             write TEXT at the picture's top-left corner\n"
           "  --supersample            render at twice the size and average down\n"
           "  --fade[=COLOUR]          fade distant surfaces toward the background (or COLOUR)\n"
           "  --edges                  outline the model edges of every object\n"
           "  --two-sided              draw the back faces of every model object (by default\n"
           "                           only of objects that are not closed)\n"
           "  --list-formats           list the model formats this program reads\n"
           "  --refine on|off          subdivide large textured triangles (default: setting)\n"
           "  --frames N               a turntable of N pictures, numbered FILE_000.png, ...; to\n"
           "                           \"-\" or a device they follow one another\n"
           "  --driver PATH            the driver module (default: the one beside this program)\n"
           "  --settings FILE          INI file of driver settings such as Render\\ZB\\Refine; it\n"
           "                           must exist (an empty file starts a new one)\n"
           "  --options[=apply|cancel] the driver's options page instead of a picture: its\n"
           "                           controls are printed, then it is applied (or cancelled)\n"
           "                           and the settings saved to --settings FILE; on Windows a\n"
           "                           plain --options without --set shows the page\n"
           "  --set KEY=VALUE          with --options, put VALUE in the control of setting KEY:\n"
           "                           Render\\ZB\\Use2Thread, Refine or HQ take 0 or 1,\n"
           "                           Render\\ZB\\HQtri a triangle count; repeatable\n"
           "  -q, --quiet              no warnings and no progress line, only errors\n"
           "  -v, --verbose            load and frame times and triangle counts\n"
           "  --version                show the version\n"
           "  -h, --help               show this text\n"
           "\n"
           "Colours are #rrggbb or one of: black white grey red green blue yellow navy sky\n"
           "orange purple.\n";
}

bool ParseColour(const std::string& text, std::uint32_t& colour) {
    for (const NamedColour& c : kNamedColours) {
        if (text == c.name) {
            colour = c.colour;
            return true;
        }
    }
    const std::string hex = !text.empty() && text[0] == '#' ? text.substr(1) : text;
    if (hex.size() != 6 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    const auto rgb = static_cast<std::uint32_t>(std::strtoul(hex.c_str(), nullptr, 16));
    colour = ((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16);
    return true;
}

bool ParseSize(const std::string& text, std::int32_t& width, std::int32_t& height) {
    const auto parts = Split(text, 'x');
    long w = 0, h = 0;
    if (parts.size() != 2 || !ParseInt(parts[0], w) || !ParseInt(parts[1], h)) return false;
    if (w < 1 || h < 1 || w > kMaxSide || h > kMaxSide) return false;
    width = static_cast<std::int32_t>(w);
    height = static_cast<std::int32_t>(h);
    return true;
}

std::string SequenceFileName(const std::string& output, int index, int count) {
    int digits = 3;
    for (int n = count - 1; n >= 1000; n /= 10) ++digits;
    char number[16];
    std::snprintf(number, sizeof number, "_%0*d", digits, index);
    const auto slash = output.find_last_of("/\\");
    const auto dot = output.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return output + number;
    return output.substr(0, dot) + number + output.substr(dot);
}

ParseOutcome ParseCommandLine(int argc, const char* const* argv, CliOptions& o,
                              std::string& error) {
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        std::string value;
        bool hasValue = false;
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0) {
            const auto eq = arg.find('=');
            if (eq != std::string::npos) {
                value = arg.substr(eq + 1);
                arg.resize(eq);
                hasValue = true;
            }
        }
        // Takes the option's value from "--name=value" or from the next argument.
        const auto need = [&](std::string& out) {
            if (hasValue) {
                out = value;
                return true;
            }
            if (i + 1 >= argc) {
                error = arg + " needs a value";
                return false;
            }
            out = argv[++i];
            return true;
        };
        const auto bad = [&](const std::string& what) {
            error = "invalid " + arg + " value '" + what + "'";
            return ParseOutcome::Error;
        };
        std::string v;

        if (arg == "-h" || arg == "--help") return ParseOutcome::Help;
        if (arg == "--version" && !hasValue) return ParseOutcome::Version;
        if (arg == "-o" || arg == "--output") {
            if (!need(v)) return ParseOutcome::Error;
            if (v.empty()) return bad(v);
            o.output = v;
        } else if (arg == "--scene") {
            if (!need(v)) return ParseOutcome::Error;
            o.scene = v;
            o.sceneGiven = true;
        } else if (arg == "--size") {
            if (!need(v)) return ParseOutcome::Error;
            if (!ParseSize(v, o.width, o.height)) {
                error = "invalid --size '" + v + "': use WxH with sides from 1 to 16384";
                return ParseOutcome::Error;
            }
        } else if (arg == "--orbit" || arg == "--camera") {
            if (!need(v)) return ParseOutcome::Error;
            const auto parts = Split(v, ',');
            const std::size_t most = arg == "--orbit" ? 2 : 4;
            double n[4] = {};
            if (parts.size() < 2 || parts.size() > most) return bad(v);
            for (std::size_t k = 0; k < parts.size(); ++k)
                if (!ParseNumber(parts[k], n[k])) return bad(v);
            if ((parts.size() > 2 && n[2] <= 0) || (parts.size() > 3 && (n[3] <= 0 || n[3] >= 180)))
                return bad(v);
            // Beyond straight up or down the camera would turn over.
            if (std::fabs(n[1]) > 90) {
                error = "invalid " + arg + " pitch '" + parts[1] + "': use -90 to 90 degrees";
                return ParseOutcome::Error;
            }
            o.yaw = n[0];
            o.pitch = n[1];
            if (parts.size() > 2) o.distance = n[2];
            if (parts.size() > 3) o.fov = n[3];
        } else if (arg == "--target") {
            if (!need(v)) return ParseOutcome::Error;
            const auto parts = Split(v, ',');
            double n[3] = {};
            if (parts.size() != 3) return bad(v);
            for (std::size_t k = 0; k < 3; ++k)
                if (!ParseNumber(parts[k], n[k])) return bad(v);
            o.target = POINT3D(static_cast<float>(n[0]), static_cast<float>(n[1]),
                               static_cast<float>(n[2]));
        } else if (arg == "--distance") {
            double d = 0;
            if (!need(v)) return ParseOutcome::Error;
            if (!ParseNumber(v, d) || d <= 0) return bad(v);
            o.distance = d;
        } else if (arg == "--fov") {
            double f = 0;
            if (!need(v)) return ParseOutcome::Error;
            if (!ParseNumber(v, f) || f <= 0 || f >= 180) return bad(v);
            o.fov = f;
        } else if (arg == "--background") {
            if (!need(v)) return ParseOutcome::Error;
            const auto parts = Split(v, ',');
            std::uint32_t c[2] = {};
            if (parts.size() > 2 || !ParseColour(parts[0], c[0])) return bad(v);
            c[1] = c[0];
            if (parts.size() == 2 && !ParseColour(parts[1], c[1])) return bad(v);
            o.background[0] = c[0];
            o.background[1] = c[1];
        } else if (arg == "--background-image") {
            if (!need(v)) return ParseOutcome::Error;
            if (v.empty()) return bad(v);
            o.backgroundImage = v;
        } else if (arg == "--background-mode") {
            if (!need(v)) return ParseOutcome::Error;
            if (v == "stretch")
                o.backgroundMode = 0;
            else if (v == "tile")
                o.backgroundMode = 1;
            else if (v == "centre" || v == "center")
                o.backgroundMode = 2;
            else
                return bad(v);
            o.backgroundModeGiven = true;
        } else if (arg == "--label") {
            if (!need(v)) return ParseOutcome::Error;
            o.label = v;
        } else if (arg == "--supersample" && !hasValue) {
            o.supersample = true;
        } else if (arg == "--fade") {
            o.fade = true;
            if (hasValue) {
                std::uint32_t c = 0;
                if (!ParseColour(value, c)) return bad(value);
                o.fadeColour = c;
            }
        } else if (arg == "--edges" && !hasValue) {
            o.edges = true;
        } else if (arg == "--two-sided" && !hasValue) {
            o.twoSided = true;
        } else if (arg == "--list-formats" && !hasValue) {
            o.listFormats = true;
        } else if (arg == "--refine") {
            if (!need(v)) return ParseOutcome::Error;
            if (v != "on" && v != "off") return bad(v);
            o.refine = v == "on";
        } else if (arg == "--frames") {
            long n = 0;
            if (!need(v)) return ParseOutcome::Error;
            if (!ParseInt(v, n) || n < 1 || n > kMaxFrames) return bad(v);
            o.frames = static_cast<int>(n);
        } else if (arg == "--driver") {
            if (!need(v)) return ParseOutcome::Error;
            if (v.empty()) return bad(v);
            o.driver = v;
        } else if (arg == "--settings") {
            if (!need(v)) return ParseOutcome::Error;
            if (v.empty()) return bad(v);
            o.settings = v;
        } else if (arg == "--options") {
            if (hasValue && value != "apply" && value != "cancel") return bad(value);
            o.optionsPage = !hasValue          ? CliOptions::OptionsPage::Show
                            : value == "apply" ? CliOptions::OptionsPage::Apply
                                               : CliOptions::OptionsPage::Cancel;
        } else if (arg == "--set") {
            if (!need(v)) return ParseOutcome::Error;
            const auto eq = v.find('=');
            if (eq == std::string::npos || eq == 0) {
                error = "invalid --set '" + v + "': use KEY=VALUE";
                return ParseOutcome::Error;
            }
            o.pageSettings.emplace_back(v.substr(0, eq), v.substr(eq + 1));
        } else if ((arg == "-q" || arg == "--quiet") && !hasValue) {
            o.quiet = true;
        } else if ((arg == "-v" || arg == "--verbose") && !hasValue) {
            o.verbose = true;
        } else if (arg == "--supersample" || arg == "--edges" || arg == "--two-sided" ||
                   arg == "--list-formats" || arg == "--quiet" || arg == "--verbose" ||
                   arg == "--version") {
            error = arg + " takes no value";
            return ParseOutcome::Error;
        } else if (!arg.empty() && arg[0] == '-' && arg != "-") {
            error = "unknown option " + arg;
            return ParseOutcome::Error;
        } else if (o.model.empty()) {
            o.model = arg;
        } else {
            error = "more than one model given: '" + o.model + "' and '" + arg + "'";
            return ParseOutcome::Error;
        }
    }
    if (o.sceneGiven && !o.model.empty()) {
        error = "--scene " + o.scene + " and the model " + o.model + " both given: choose one";
        return ParseOutcome::Error;
    }
    if (!o.pageSettings.empty() && o.optionsPage == CliOptions::OptionsPage::None) {
        error = "--set changes the options page: give --options too";
        return ParseOutcome::Error;
    }
    if (o.backgroundModeGiven && o.backgroundImage.empty()) {
        error = "--background-mode places a picture: give --background-image too";
        return ParseOutcome::Error;
    }
    if (o.quiet && o.verbose) {
        error = "--quiet and --verbose both given: choose one";
        return ParseOutcome::Error;
    }
    return ParseOutcome::Run;
}
