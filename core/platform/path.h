// Arithmetic on Windows-style paths ("\" separators, drive letters), the same on every
// platform. Outputs are path buffers of kMaxPath units; longer results are cut.
#pragma once

#include "core/platform/file.h"

// base joined with a relative name whose leading "..\" steps climb out of base; "/" reads as
// "\". False, with an empty output, for an empty relative name.
bool q5GetAbsoluteName(const q5_WCHAR* base, const q5_WCHAR* relative, q5_WCHAR* out);
// fullName relative to base when they share a leading run that ends in a separator;
// otherwise fullName itself. False only for an empty base.
bool q5GetRelativePath(const q5_WCHAR* base, const q5_WCHAR* fullName, q5_WCHAR* out);
// 1: absolute ("C:\x", "\\server\share"); 0: drive-relative ("C:x"); 2: relative or too
// short to tell; 0 also for an empty name.
int q5IsAbsolutePath(const q5_WCHAR* name);
// The folder part of a file name, without its last "\"; false and empty when no "\" follows
// the first character.
bool q5GetPathFromFile(const char* fileName, char* out);
bool q5GetPathFromFile(const q5_WCHAR* fileName, q5_WCHAR* out);
