// The driver's options page as the host scripts it: which control shows each setting key, and
// the page's state in text.
#pragma once

#include <string>

#include "core/platform/dialog_controls.h"

struct PageSetting {
    const char* key;
    std::int32_t control;
    q5plat::ControlKind kind; // a check box takes 0 or 1; the edit takes any text
};

// The setting shown by the driver page, keys compared without regard to ASCII case; null for a
// key the page does not show.
const PageSetting* FindPageSetting(const std::string& key);

// Null when `value` suits the setting's control, else what is wrong with it.
const char* CheckPageValue(const PageSetting& setting, const std::string& value);

enum class PageEdit { Done, Disabled, Missing };
// Puts a value CheckPageValue accepted into the page's control; a disabled control is left.
PageEdit SetPageControl(q5_HWND page, const PageSetting& setting, const std::string& value);

// One line per control in tab order: id, kind, text in double quotes, then "checked" or
// "unchecked" for check boxes, "enabled" or "disabled", and a spin control's pairs.
std::string DescribePage(q5_HWND page);
