// Dialog controls as a page procedure sees them: real dialog items on Windows; on POSIX an
// in-memory control set made from the module's dialog resource, which a host can show or
// script.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "interface/types.h"

namespace q5plat {

// The spin control's messages, each with a pointer to a pair of doubles.
inline constexpr std::uint32_t kSpinMessage1144 = 1144;
inline constexpr std::uint32_t kSpinMessage1145 = 1145;
// Class name of the host's spin control in dialog resources.
inline constexpr const char* kSpinClassName = "Q5_UPDOWN";

enum class ControlKind { CheckBox, Edit, Spin, Other };

struct ControlState {
    std::int32_t id = 0;
    ControlKind kind = ControlKind::Other;
    std::u16string text; // a check box's caption or an edit's contents
    bool checked = false;
    bool enabled = true;
    // The pairs a spin control was last sent with 1144 and 1145; NaN until then.
    static constexpr double kUnset = std::numeric_limits<double>::quiet_NaN();
    double spin1144[2] = {kUnset, kUnset};
    double spin1145[2] = {kUnset, kUnset};
};

bool IsDlgButtonChecked(q5_HWND dialog, std::int32_t id);
void CheckDlgButton(q5_HWND dialog, std::int32_t id, bool checked);
bool IsDlgItemEnabled(q5_HWND dialog, std::int32_t id);
void EnableDlgItem(q5_HWND dialog, std::int32_t id, bool enabled);
// Empty for a missing control.
std::u16string GetDlgItemText(q5_HWND dialog, std::int32_t id);
bool SetDlgItemText(q5_HWND dialog, std::int32_t id, const q5_WCHAR* text);
std::intptr_t SendDlgItemMessage(q5_HWND dialog, std::int32_t id, std::uint32_t message,
                                 std::uintptr_t w, std::intptr_t l);

// The dialog's controls in tab order.
std::vector<ControlState> ListDialogControls(q5_HWND dialog);

// "check", "edit", "spin" or "other": the words of the compact dialog description.
const char* ControlKindName(ControlKind kind);

// Parses the compact description of a dialog that POSIX modules carry as resource
// ("#5", "#<id>"): one control a line, `<id> <kind> "<text>"`; lines starting with '#' are
// notes. False when a line does not read.
bool ParseCompactDialog(const std::string& text, std::vector<ControlState>& controls);

// POSIX: a control set made from dialog `dialogId` of module, null when the module has none.
// Windows makes dialogs itself and answers null.
q5_HWND CreateControlSet(q5_HINSTANCE module, std::int32_t dialogId);
void DestroyControlSet(q5_HWND controls);

// Windows: registers the host's spin control class for dialogs of every module, once per
// process; it keeps what 1144 and 1145 carry. POSIX: control sets know the class; true.
bool RegisterSpinControlClass();

} // namespace q5plat
