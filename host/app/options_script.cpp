// The driver's options page as the host scripts it.
#include "host/app/options_script.h"

#include <charconv>
#include <cmath>

#include "host/app/host_api.h"

namespace {

using q5plat::ControlKind;

constexpr PageSetting kPageSettings[] = {
    {"Render\\ZB\\Use2Thread", 2114, ControlKind::CheckBox},
    {"Render\\ZB\\Refine", 2115, ControlKind::CheckBox},
    {"Render\\ZB\\HQ", 2116, ControlKind::CheckBox},
    {"Render\\ZB\\HQtri", 212, ControlKind::Edit},
};

bool SameNoCase(const std::string& a, const char* b) {
    std::size_t i = 0;
    for (; i < a.size() && b[i] != 0; ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return i == a.size() && b[i] == 0;
}

std::u16string Wide(const std::string& text) {
    std::u16string out;
    for (unsigned char c : text) out.push_back(c); // values are ASCII: checked by the caller
    return out;
}

// Shortest round-trip digits, the same on every platform's C library.
std::string Number(double value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

std::string Pair(const double pair[2]) {
    if (std::isnan(pair[0])) return "none";
    return "(" + Number(pair[0]) + ", " + Number(pair[1]) + ")";
}

} // namespace

const PageSetting* FindPageSetting(const std::string& key) {
    for (const PageSetting& s : kPageSettings)
        if (SameNoCase(key, s.key)) return &s;
    return nullptr;
}

const char* CheckPageValue(const PageSetting& setting, const std::string& value) {
    if (setting.kind == ControlKind::CheckBox)
        return value == "0" || value == "1" ? nullptr : "a check box takes 0 or 1";
    for (unsigned char c : value)
        if (c < 0x20 || c > 0x7E) return "the text must be printable ASCII";
    return nullptr;
}

PageEdit SetPageControl(q5_HWND page, const PageSetting& setting, const std::string& value) {
    bool found = false;
    for (const q5plat::ControlState& c : q5plat::ListDialogControls(page))
        found = found || c.id == setting.control;
    if (!found) return PageEdit::Missing;
    if (!q5plat::IsDlgItemEnabled(page, setting.control)) return PageEdit::Disabled;
    if (setting.kind == ControlKind::CheckBox)
        q5plat::CheckDlgButton(page, setting.control, value == "1");
    else
        q5plat::SetDlgItemText(page, setting.control, Wide(value).c_str());
    return PageEdit::Done;
}

std::string DescribePage(q5_HWND page) {
    std::string out;
    for (const q5plat::ControlState& c : q5plat::ListDialogControls(page)) {
        out += std::to_string(c.id) + " " + q5plat::ControlKindName(c.kind) + " \"" +
               HostAPI::Utf8(c.text.c_str()) + "\"";
        if (c.kind == ControlKind::CheckBox) out += c.checked ? " checked" : " unchecked";
        out += c.enabled ? " enabled" : " disabled";
        if (c.kind == ControlKind::Spin)
            out += " 1144 " + Pair(c.spin1144) + " 1145 " + Pair(c.spin1145);
        out += "\n";
    }
    return out;
}
