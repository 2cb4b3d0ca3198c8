// The library's file helpers.
#include "core/services/file_helpers.h"

#include "core/platform/file.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "interface/gapi.h"

bool q5DeleteFile(const q5_WCHAR* name) {
    return name != nullptr && q5plat::DeleteFile(name);
}

bool q5GetFileTime(const q5_WCHAR* name, q5_FILETIME& time) {
    time = {};
    if (name == nullptr) return false;
    q5_WCHAR resolved[q5plat::kMaxPath];
    const q5_WCHAR* open = name;
    if (q5_GAPI* host = q5GetHostAPI()) {
        q5_FILETIME stamp = {};
        if (host->ResolveFileName(name, resolved, q5plat::kMaxPath, &stamp)) {
            if (stamp.dwLowDateTime != 0 || stamp.dwHighDateTime != 0) {
                time = stamp;
                return true;
            }
            open = resolved;
        }
    }
    q5plat::FileHandle file = q5plat::OpenFile(open, q5plat::FileOpen::ReadExistingShared);
    if (file == nullptr) return false;
    const bool ok = q5plat::FileLastWriteTime(file, time);
    q5plat::CloseFile(file);
    return ok;
}

std::uint32_t q5GetShortPathName(const q5_WCHAR* name, char* out, int) {
    q5_WCHAR wide[q5plat::kMaxPath] = {};
    const std::uint32_t result = q5plat::GetShortPathName(name, wide, q5plat::kMaxPath);
    WtoAex(wide, out, q5plat::kMaxPath);
    return result;
}

std::uint32_t q5GetTempFileName(const q5_WCHAR* folder, const q5_WCHAR* prefix,
                                std::uint32_t unique, q5_WCHAR* out) {
    return q5plat::GetTempFileName(folder, prefix, unique, out);
}

std::uint32_t q5GetTempPath(int size, q5_WCHAR* out) {
    return size < 0 ? 0 : q5plat::GetTempPath(static_cast<std::uint32_t>(size), out);
}

bool q5IsFileExist(const q5_WCHAR* name) {
    if (name == nullptr) return false;
    q5plat::FileHandle file = q5plat::OpenFile(name, q5plat::FileOpen::ReadExistingShared);
    if (file == nullptr) return false;
    q5plat::CloseFile(file);
    return true;
}

bool q5IsFolderExist(const q5_WCHAR* folder) {
    if (folder == nullptr) return false;
    const std::size_t length = q5wcslen(folder);
    if (length + 2 > static_cast<std::size_t>(q5plat::kMaxPath)) return false;
    q5_WCHAR withSeparator[q5plat::kMaxPath];
    q5wcscpy(withSeparator, folder);
    if (length == 0 || (folder[length - 1] != u'\\' && folder[length - 1] != u'/'))
        q5wcscat(withSeparator, u"\\");
    return q5plat::FolderHasEntries(withSeparator);
}
