// Dialog controls: the compact dialog description, then each platform's controls.
#include "core/platform/dialog_controls.h"

#include <algorithm>
#include <sstream>

namespace q5plat {

const char* ControlKindName(ControlKind kind) {
    switch (kind) {
    case ControlKind::CheckBox:
        return "check";
    case ControlKind::Edit:
        return "edit";
    case ControlKind::Spin:
        return "spin";
    default:
        return "other";
    }
}

bool ParseCompactDialog(const std::string& text, std::vector<ControlState>& controls) {
    controls.clear();
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        ControlState c;
        std::string kind, rest;
        if (!(fields >> c.id >> kind)) return false;
        std::getline(fields >> std::ws, rest);
        if (rest.size() < 2 || rest.front() != '"' || rest.back() != '"') return false;
        c.kind = ControlKind::Other;
        for (ControlKind k : {ControlKind::CheckBox, ControlKind::Edit, ControlKind::Spin})
            if (kind == ControlKindName(k)) c.kind = k;
        if (c.kind == ControlKind::Other) return false;
        // Texts are ASCII: "#<id>" placeholders or empty.
        for (std::size_t i = 1; i + 1 < rest.size(); ++i)
            c.text.push_back(static_cast<q5_WCHAR>(static_cast<unsigned char>(rest[i])));
        controls.push_back(std::move(c));
    }
    return !controls.empty();
}

} // namespace q5plat

#if defined(_WIN32)
#include "core/platform/win32/dialog_controls.inc"
#elif defined(__unix__) || defined(__APPLE__)
#include "core/platform/posix/dialog_controls.inc"
#else
#error "dialog controls: unknown platform"
#endif
