// Reading viewer scripts.
#include "host/viewer/viewer_script.h"

#include <charconv>
#include <sstream>

namespace {

using q5plat::WindowEvent;
using q5plat::WindowEventKind;

constexpr struct {
    const char* name;
    std::uint32_t key;
} kKeyNames[] = {
    {"escape", q5plat::kKeyEscape},
    {"enter", q5plat::kKeyEnter},
    {"tab", q5plat::kKeyTab},
    {"space", ' '},
    {"backspace", q5plat::kKeyBackspace},
    {"up", q5plat::kKeyUp},
    {"down", q5plat::kKeyDown},
    {"left", q5plat::kKeyLeft},
    {"right", q5plat::kKeyRight},
    {"f1", q5plat::kKeyF1},
};

bool Number(const std::string& word, double& value) {
    const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
    return ec == std::errc() && end == word.data() + word.size();
}

bool Integer(const std::string& word, std::int32_t& value) {
    const auto [end, ec] = std::from_chars(word.data(), word.data() + word.size(), value);
    return ec == std::errc() && end == word.data() + word.size();
}

// Buttons and modifiers after the numbers; false on a word that is neither.
bool Flags(const std::vector<std::string>& words, std::size_t from, std::uint32_t& buttons,
           std::uint32_t& modifiers) {
    for (std::size_t i = from; i < words.size(); ++i) {
        const std::string& w = words[i];
        if (w == "left")
            buttons |= q5plat::kButtonLeft;
        else if (w == "right")
            buttons |= q5plat::kButtonRight;
        else if (w == "middle")
            buttons |= q5plat::kButtonMiddle;
        else if (w == "shift")
            modifiers |= q5plat::kModifierShift;
        else if (w == "ctrl")
            modifiers |= q5plat::kModifierControl;
        else if (w == "alt")
            modifiers |= q5plat::kModifierAlt;
        else
            return false;
    }
    return true;
}

// One line's steps; an empty string when it reads, else what is wrong.
std::string ParseLine(const std::vector<std::string>& w, std::vector<ScriptStep>& out) {
    const std::string& verb = w[0];
    ScriptStep step;
    WindowEvent& e = step.event;
    const auto numbers = [&](std::size_t count, std::int32_t* values) {
        if (w.size() < count + 1) return false;
        for (std::size_t i = 0; i < count; ++i)
            if (!Integer(w[i + 1], values[i])) return false;
        return true;
    };
    std::int32_t n[4] = {};
    std::uint32_t buttons = 0;
    if (verb == "down" || verb == "up" || verb == "dblclick") {
        if (!numbers(2, n) || !Flags(w, 3, buttons, e.modifiers))
            return "use " + verb + " X Y [button] [modifiers]";
        if (buttons & (buttons - 1)) return "one button at a time";
        e.kind = verb == "down" ? WindowEventKind::MouseDown
                 : verb == "up" ? WindowEventKind::MouseUp
                                : WindowEventKind::DoubleClick;
        e.button = buttons != 0 ? buttons : q5plat::kButtonLeft;
        e.buttons = e.kind == WindowEventKind::MouseUp ? 0 : e.button;
        e.x = n[0];
        e.y = n[1];
    } else if (verb == "move") {
        if (!numbers(2, n) || !Flags(w, 3, e.buttons, e.modifiers))
            return "use move X Y [buttons] [modifiers]";
        e.kind = WindowEventKind::MouseMove;
        e.x = n[0];
        e.y = n[1];
    } else if (verb == "drag") {
        if (!numbers(4, n) || !Flags(w, 5, buttons, e.modifiers))
            return "use drag X0 Y0 X1 Y1 [button] [modifiers]";
        if (buttons & (buttons - 1)) return "one button at a time";
        e.button = e.buttons = buttons != 0 ? buttons : q5plat::kButtonLeft;
        const WindowEventKind kinds[] = {WindowEventKind::MouseDown, WindowEventKind::MouseMove,
                                         WindowEventKind::MouseUp};
        for (WindowEventKind kind : kinds) {
            e.kind = kind;
            const bool end = kind != WindowEventKind::MouseDown;
            e.x = end ? n[2] : n[0];
            e.y = end ? n[3] : n[1];
            if (kind == WindowEventKind::MouseUp) e.buttons = 0;
            out.push_back(step);
        }
        return {};
    } else if (verb == "wheel") {
        if (w.size() < 4 || !Number(w[1], e.wheel) || !Integer(w[2], e.x) || !Integer(w[3], e.y) ||
            !Flags(w, 4, buttons, e.modifiers) || buttons != 0)
            return "use wheel NOTCHES X Y [modifiers]";
        e.kind = WindowEventKind::Wheel;
    } else if (verb == "key") {
        if (w.size() < 2 || !Flags(w, 2, buttons, e.modifiers) || buttons != 0)
            return "use key KEY [modifiers]";
        e.kind = WindowEventKind::Key;
        for (const auto& k : kKeyNames)
            if (w[1] == k.name) e.key = k.key;
        if (e.key == 0 && w[1].size() == 1 && w[1][0] > 0x20 && w[1][0] < 0x7F)
            e.key = static_cast<unsigned char>(
                w[1][0] >= 'A' && w[1][0] <= 'Z' ? w[1][0] - 'A' + 'a' : w[1][0]);
        if (e.key == 0) return "unknown key '" + w[1] + "'";
    } else if (verb == "size") {
        if (w.size() != 3 || !numbers(2, n) || n[0] < 1 || n[1] < 1) return "use size W H";
        e.kind = WindowEventKind::Resize;
        e.width = n[0];
        e.height = n[1];
    } else if (verb == "drop") {
        if (w.size() < 2) return "use drop FILE...";
        e.kind = WindowEventKind::DropFiles;
        e.files.assign(w.begin() + 1, w.end());
    } else if (verb == "capture") {
        if (w.size() != 2) return "use capture FILE.png";
        step.kind = ScriptStep::Kind::Capture;
        step.file = w[1];
    } else if ((verb == "minimise" || verb == "restore") && w.size() == 1) {
        e.kind = verb == "minimise" ? WindowEventKind::Minimise : WindowEventKind::Restore;
    } else if (verb == "camera" && w.size() == 1) {
        step.kind = ScriptStep::Kind::Camera;
    } else if (verb == "quit" && w.size() == 1) {
        e.kind = WindowEventKind::Quit;
    } else {
        return "unknown step '" + verb + "'";
    }
    out.push_back(step);
    return {};
}

} // namespace

bool ParseViewerScript(const std::string& text, std::vector<ScriptStep>& steps,
                       std::string& error) {
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const auto hash = line.find('#');
        std::istringstream words(line.substr(0, hash));
        std::vector<std::string> w;
        for (std::string word; words >> word;) w.push_back(word);
        if (w.empty()) continue;
        const std::size_t first = steps.size();
        const std::string wrong = ParseLine(w, steps);
        if (!wrong.empty()) {
            error = "line " + std::to_string(number) + ": " + wrong;
            return false;
        }
        for (std::size_t i = first; i < steps.size(); ++i) steps[i].line = number;
    }
    return true;
}
