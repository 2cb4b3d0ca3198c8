// The file stream: opening modes, temporary files, name resolution and progress reports.
#include "core/stream/file_stream.h"

#include "core/services/file_helpers.h"
#include "core/services/host_link.h"
#include "core/services/wide_string.h"
#include "core/stream/context.h"
#include "interface/gapi.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

constexpr const q5_WCHAR* kDefaultTempPrefix = u"q5duuuu.$$$";
constexpr std::uintptr_t kProgressStep = 65536;

// Expands a leading "($CDROM)", "($PLUGINS)" or "($APP)"; false when there is none or its
// folder is unknown.
bool ExpandPathMacro(const q5_WCHAR* name, std::u16string& out) {
    q5_WCHAR folder[q5plat::kMaxPath] = {};
    const q5_WCHAR* rest = nullptr;
    q5_GAPI* host = q5GetHostAPI();
    if (q5wcsnicmp(name, u"($CDROM)", 8) == 0) {
        if (!q5plat::FindCdRomRoot(folder)) return false;
        rest = name + 8;
    } else if (q5wcsnicmp(name, u"($PLUGINS)", 10) == 0) {
        const q5_WCHAR* plugins = host != nullptr ? host->GetPluginFolder() : nullptr;
        if (plugins == nullptr) return false;
        q5wcsncpy(folder, plugins, q5plat::kMaxPath);
        rest = name + 10;
    } else if (q5wcsnicmp(name, u"($APP)", 6) == 0) {
        if (host == nullptr || !host->GetFolder(1, folder, q5plat::kMaxPath)) return false;
        folder[q5plat::kMaxPath - 1] = 0;
        rest = name + 6;
    } else {
        return false;
    }
    if (*rest == u'\\') ++rest;
    out = folder;
    if (out.empty() || out.back() != u'\\') out += u'\\';
    out += rest;
    return true;
}

} // namespace

Q5_FILESTREAM* Q5_FILESTREAM::Open(const q5_WCHAR* name, std::uint32_t flags) {
    auto* stream = new (std::nothrow) Q5_FILESTREAM(name, flags);
    if (stream != nullptr && stream->status_ != Q5_STATUS_GOOD) {
        stream->Release();
        stream = nullptr;
    }
    return stream;
}

Q5_FILESTREAM::Q5_FILESTREAM(const q5_WCHAR* name, std::uint32_t flags) : flags_(flags) {
    if (name == nullptr || name[0] == u'?') {
        q5_WCHAR folder[q5plat::kMaxPath] = {};
        q5_WCHAR temporary[q5plat::kMaxPath] = {};
        q5GetTempPath(q5plat::kMaxPath, folder);
        const q5_WCHAR* prefix = name != nullptr ? name + 1 : kDefaultTempPrefix;
        if (q5GetTempFileName(folder, prefix, 0, temporary) != 0) fileName_ = temporary;
        temporary_ = 1;
    } else {
        std::u16string final = name;
        if ((flags & Q5_FILE_MODE_MASK) != Q5_FILE_CREATE && (flags & Q5_FILE_NORESOLVE) == 0) {
            q5_WCHAR resolved[q5plat::kMaxPath] = {};
            q5_GAPI* host = q5GetHostAPI();
            if (host != nullptr &&
                host->ResolveFileName(name, resolved, q5plat::kMaxPath, &fileTime_)) {
                resolved[q5plat::kMaxPath - 1] = 0;
                final = resolved;
            } else {
                ExpandPathMacro(name, final);
            }
        }
        if (final != name) {
            fileName_ = name;
            resolvedName_ = final;
        } else {
            fileName_ = final;
        }
    }
    OpenFile();
}

Q5_FILESTREAM::~Q5_FILESTREAM() {
    if (file_ != nullptr) q5plat::CloseFile(file_);
    if (temporary_ != 0 && (flags_ & Q5_FILE_KEEP) == 0 && !fileName_.empty())
        q5DeleteFile(fileName_.c_str());
}

void Q5_FILESTREAM::DeleteThis() {
    delete this;
}

void Q5_FILESTREAM::OpenFile() {
    const q5_WCHAR* name = _GetFileName(Q5_FILENAME_RESOLVED);
    q5plat::FileOpen how;
    switch (flags_ & Q5_FILE_MODE_MASK) {
    case Q5_FILE_READ:
        how = q5plat::FileOpen::ReadExisting;
        break;
    case Q5_FILE_CREATE:
        how = q5plat::FileOpen::CreateReadWrite;
        break;
    case Q5_FILE_READWRITE:
        how = q5plat::FileOpen::ReadWriteExisting;
        break;
    default:
        status_ = Q5_STATUS_END;
        return;
    }
    status_ = Q5_STATUS_END;
    file_ = q5plat::OpenFile(name, how);
    if (file_ == nullptr) {
        if ((flags_ & Q5_FILE_QUIET) == 0) ReportError(" File open error");
        return;
    }
    status_ = Q5_STATUS_GOOD;
}

bool Q5_FILESTREAM::IsTypeOf(const char* type) {
    if (type != nullptr && q5strnicmp(type, "Q5_FILESTREAM", 256) == 0) return true;
    return q5_STREAM::IsTypeOf(type);
}

std::int64_t Q5_FILESTREAM::Seek(std::int64_t position, std::int32_t origin) {
    // Positions are 32-bit here: only the low half of the offset counts.
    const auto low = static_cast<std::uint32_t>(position);
    const int from = origin == 1   ? q5plat::kSeekCurrent
                     : origin == 2 ? q5plat::kSeekEnd
                                   : q5plat::kSeekBegin;
    const std::int64_t result = q5plat::SeekFile(file_, static_cast<std::int32_t>(low), from);
    if (from != q5plat::kSeekBegin) return 1;
    if (result < 0 || result != low) {
        ReportError("Q5_FILESTREAM::Seek error");
        return -1;
    }
    status_ = Q5_STATUS_GOOD;
    return result;
}

std::int64_t Q5_FILESTREAM::Tell() {
    const std::int64_t position = q5plat::SeekFile(file_, 0, q5plat::kSeekCurrent);
    if (position < 0) {
        ReportError("File I/O error!");
        return 0;
    }
    return position;
}

std::int64_t Q5_FILESTREAM::GetSize() {
    if (file_ == nullptr) return 0;
    const std::int64_t size = q5plat::FileSize(file_);
    return size < 0 ? 0 : size;
}

bool Q5_FILESTREAM::Truncate() {
    if (file_ == nullptr || !q5plat::TruncateFile(file_)) {
        status_ = Q5_STATUS_TRUNCATE_FAILED;
        return false;
    }
    return true;
}

bool Q5_FILESTREAM::Flush() {
    return file_ != nullptr && q5plat::FlushFile(file_);
}

std::int64_t Q5_FILESTREAM::Read(void* buffer, std::int64_t count) {
    if (buffer == nullptr || count <= 0 || count > INT32_MAX) return 0;
    if (status_ != Q5_STATUS_GOOD) {
        std::memset(buffer, 0, static_cast<std::size_t>(count));
        return 0;
    }
    std::uint32_t got = 0;
    q5plat::ReadFile(file_, buffer, static_cast<std::uint32_t>(count), got);
    if (got < count) {
        status_ = Q5_STATUS_SHORT;
        if (got > 0)
            std::memset(static_cast<unsigned char*>(buffer) + got, 0,
                        static_cast<std::size_t>(count - got));
    }
    if (context_ != nullptr) {
        progressCount_ += got;
        if (progressCount_ >= kProgressStep) {
            progressCount_ %= kProgressStep;
            context_->Progress(Tell(), static_cast<std::int64_t>(progressTotal_), 1);
        }
    }
    return got;
}

std::int64_t Q5_FILESTREAM::Write(const void* buffer, std::int64_t count) {
    if (status_ != Q5_STATUS_GOOD || count < 0 || count > INT32_MAX) return 0;
    std::uint32_t done = 0;
    // A null buffer never reaches the operating system.
    const bool written =
        buffer != nullptr
            ? q5plat::WriteFile(file_, buffer, static_cast<std::uint32_t>(count), done)
            : count == 0;
    if (written) return done;
    if ((flags_ & Q5_FILE_MODE_MASK) == Q5_FILE_READ) {
        ReportError("Error while writing to disk! File");
        status_ = Q5_STATUS_READ_ONLY;
        return 0;
    }
    if (buffer == nullptr)
        CoreErrorW(u"write buffer is NULL");
    else
        CoreErrorA("Disk Overflow");
    status_ = Q5_STATUS_SHORT;
    return done;
}

void* Q5_FILESTREAM::GetHANDLE() {
    return file_;
}

void Q5_FILESTREAM::_CLOSEFILE() {
    if (file_ != nullptr) q5plat::CloseFile(file_);
    file_ = nullptr;
    closed_ = 1;
}

bool Q5_FILESTREAM::_REOPENFILE() {
    if (closed_ != 0 && file_ == nullptr) {
        closed_ = 0;
        OpenFile();
    }
    return file_ != nullptr;
}

Q5RESULT Q5_FILESTREAM::GetFileTime(q5_FILETIME& time) {
    if (fileTime_.dwLowDateTime != 0 || fileTime_.dwHighDateTime != 0) {
        time = fileTime_;
        return Q5_OK;
    }
    return q5plat::FileLastWriteTime(file_, time) ? Q5_OK : Q5_E_NOTAVAIL;
}

const q5_WCHAR* Q5_FILESTREAM::_GetFileName(std::uint32_t flags) {
    if ((flags & Q5_FILENAME_RESOLVED) != 0 && !resolvedName_.empty()) return resolvedName_.c_str();
    return fileName_.c_str();
}

void Q5_FILESTREAM::ReportError(const char* format, ...) {
    if (format == nullptr) return;
    char system[256];
    q5plat::LastErrorMessage(system, sizeof system); // before anything else can change it
    char info[256];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(info, sizeof info, format, args);
    va_end(args);
    CoreErrorW(u"FILE Stream error:\nInfo:\t%hs\nOS Info:\t%hs\nFile:\t%s", info, system,
               fileName_.c_str());
}
