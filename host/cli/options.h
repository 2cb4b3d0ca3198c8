// The command line of tessera-render.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/math/point.h"

struct CliOptions {
    std::string model;          // a model file; empty: a built-in scene
    std::string scene = "demo"; // the built-in scene
    bool sceneGiven = false;    // --scene was on the command line
    std::string output;         // empty: "<scene or model name>.png"
    std::int32_t width = 1280, height = 720;
    std::optional<double> yaw, pitch, distance, fov;
    std::optional<POINT3D> target; // the orbit centre; unset: the scene's framed centre
    std::optional<std::uint32_t> background[2]; // red in the low byte
    std::string backgroundImage;                // a picture file drawn by the clear
    std::int32_t backgroundMode = 0;            // 0 stretch, 1 tile, 2 centre
    bool backgroundModeGiven = false;
    std::string label;                          // UTF-8 text written over the picture
    bool supersample = false;
    bool fade = false;
    std::optional<std::uint32_t> fadeColour;
    bool edges = false;
    bool twoSided = false;    // draw back faces of every model object
    bool listFormats = false; // print the model formats instead of a picture
    std::optional<bool> refine;
    int frames = 0;       // 0: one picture named as given; N: a turntable of N numbered pictures
    std::string driver;   // empty: the module beside the program
    std::string settings; // an INI file to read (and write back when a setting changes)
    bool quiet = false;   // no warnings, no progress
    bool verbose = false; // load and frame times, triangle counts
    // --options: the driver's options page instead of a picture, shown to the user (Windows,
    // without --set) or scripted and then applied or cancelled.
    enum class OptionsPage { None, Show, Apply, Cancel };
    OptionsPage optionsPage = OptionsPage::None;
    std::vector<std::pair<std::string, std::string>> pageSettings; // --set KEY=VALUE, in order
};

enum class ParseOutcome { Run, Help, Version, Error };

// On Error, `error` holds one line that says what is wrong.
ParseOutcome ParseCommandLine(int argc, const char* const* argv, CliOptions& options,
                              std::string& error);
const char* HelpText();

// "#rrggbb", "rrggbb" or a colour name; red ends up in the low byte.
bool ParseColour(const std::string& text, std::uint32_t& colour);
// "WxH" with both sides within 1..16384.
bool ParseSize(const std::string& text, std::int32_t& width, std::int32_t& height);
// File `index` (0-based) of a sequence of `count`: "out.png" gives "out_000.png", "out_001.png",
// ... with at least three digits.
std::string SequenceFileName(const std::string& output, int index, int count);
