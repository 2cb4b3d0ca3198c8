// The stream over an operating-system file, with temporary files and host-resolved names.
#pragma once

#include "core/platform/file.h"
#include "core/stream/stream.h"

#include <string>

// Status values of the file stream besides good (0) and end or failed open (1).
inline constexpr std::uint8_t Q5_STATUS_TRUNCATE_FAILED = 3;
inline constexpr std::uint8_t Q5_STATUS_READ_ONLY = 254;
inline constexpr std::uint8_t Q5_STATUS_SHORT = 255; // short read or failed write

// GetFileName flag: the name actually opened rather than the one given.
inline constexpr std::uint32_t Q5_FILENAME_RESOLVED = 2;

class Q5_FILESTREAM final : public q5_STREAM {
public:
    // A null name, or "?prefix", makes a temporary file. Other names go through the host's
    // name resolution and the path macros "($CDROM)", "($PLUGINS)" and "($APP)" unless the
    // mode creates the file or Q5_FILE_NORESOLVE is set. Null when the file did not open.
    static Q5_FILESTREAM* Open(const q5_WCHAR* name, std::uint32_t flags);

    void DeleteThis() override;
    bool IsTypeOf(const char* type) override;

    // Only the low 32 bits of the position move the file. Origins 1 and 2 answer 1, not the
    // new position.
    std::int64_t Seek(std::int64_t position, std::int32_t origin) override;
    std::int64_t Tell() override;
    std::int64_t GetSize() override;
    bool Truncate() override;
    bool Flush() override;
    std::int64_t Read(void* buffer, std::int64_t count) override;
    std::int64_t Write(const void* buffer, std::int64_t count) override;
    void* GetHANDLE() override;
    void _CLOSEFILE() override;
    void ReportError(const char* format, ...) override;
    Q5RESULT GetFileTime(q5_FILETIME& time) override;
    // Opens the file again after _CLOSEFILE; true when the stream has a file.
    virtual bool _REOPENFILE();

protected:
    const q5_WCHAR* _GetFileName(std::uint32_t flags) override;

private:
    Q5_FILESTREAM(const q5_WCHAR* name, std::uint32_t flags);
    ~Q5_FILESTREAM();

    void OpenFile();

    q5plat::FileHandle file_ = nullptr;
    std::uint8_t temporary_ = 0;
    std::uint32_t flags_ = 0;
    std::int32_t closed_ = 0;
    q5_FILETIME fileTime_ = {};
    std::u16string fileName_;
    std::u16string resolvedName_; // kept only when it differs from fileName_
};
