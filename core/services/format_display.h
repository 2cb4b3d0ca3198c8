// File times and byte sizes rendered for display.
#pragma once

#include "interface/types.h"

// The local short date, one space and the local time without seconds; out holds 64 units.
void q5FormatTime(const q5_FILETIME& time, q5_WCHAR* out);
// Kilobytes rounded up, digits grouped by threes with spaces, then the host's size unit
// (string 2241); out holds 64 units.
void q5FormatSize(int bytes, q5_WCHAR* out);
