// Locale services: code-page conversion of text and the locale's date and time formats.
#pragma once

#include "interface/types.h"

namespace q5plat {

// The process's narrow code page (on POSIX: UTF-8) and UTF-8 itself.
inline constexpr std::uint32_t kCodePageAnsi = 0;
inline constexpr std::uint32_t kCodePageUtf8 = 65001;
// Narrow-to-wide flag: prefer precomposed characters.
inline constexpr std::uint32_t kMbPrecomposed = 1;

// Both conversions follow the Windows rules on every platform. srcLen -1 converts through
// the terminator and counts it; capacity 0 asks for the size only. The result is the count of
// units (bytes) written or needed, or 0 when the input or arguments are invalid or the output
// does not fit (as much as fits is written then). Invalid input is replaced by U+FFFD.
int MultiByteToWide(std::uint32_t codePage, std::uint32_t flags, const char* src, int srcLen,
                    q5_WCHAR* dst, int capacity);
int WideToMultiByte(std::uint32_t codePage, std::uint32_t flags, const q5_WCHAR* src, int srcLen,
                    char* dst, int capacity);

// A calendar time, fields as their names say (month 1-12, dayOfWeek 0 = Sunday).
struct CalendarTime {
    std::uint16_t year;
    std::uint16_t month;
    std::uint16_t dayOfWeek;
    std::uint16_t day;
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t milliseconds;
};

// Converts a UTC file time to the local calendar time; false when it cannot be represented.
bool FileTimeToLocalCalendar(const q5_FILETIME& utc, CalendarTime& local);

// The system locale's short date and its hour-and-minute time (no seconds). The result is the
// count written including the terminator, or 0 on failure.
int FormatShortDateA(const CalendarTime& time, char* out, int capacity);
int FormatShortDateW(const CalendarTime& time, q5_WCHAR* out, int capacity);
int FormatTimeNoSecondsA(const CalendarTime& time, char* out, int capacity);
int FormatTimeNoSecondsW(const CalendarTime& time, q5_WCHAR* out, int capacity);

} // namespace q5plat
