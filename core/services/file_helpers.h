// The library's exported file helpers over the platform's files: host name resolution and
// narrow text on top of the operating-system calls.
#pragma once

#include "interface/types.h"

bool q5DeleteFile(const q5_WCHAR* name);
// The last-write time; a name the host resolves may come with its own time stamp.
bool q5GetFileTime(const q5_WCHAR* name, q5_FILETIME& time);
// Writes the short form converted to narrow text with room kMaxPath, whatever size says.
std::uint32_t q5GetShortPathName(const q5_WCHAR* name, char* out, int size);
std::uint32_t q5GetTempFileName(const q5_WCHAR* folder, const q5_WCHAR* prefix,
                                std::uint32_t unique, q5_WCHAR* out);
std::uint32_t q5GetTempPath(int size, q5_WCHAR* out);
// A file locked by another writer counts as absent.
bool q5IsFileExist(const q5_WCHAR* name);
bool q5IsFolderExist(const q5_WCHAR* folder);
