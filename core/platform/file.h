// Operating-system files: handles, reads and writes, names, times and folders.
#pragma once

#include "interface/types.h"

namespace q5plat {

// Null when no file is open.
using FileHandle = void*;

// Longest path the library's fixed buffers hold, terminator included.
inline constexpr int kMaxPath = 260;

enum class FileOpen {
    ReadExisting,       // read only, others may read and write
    ReadExistingShared, // read only, others may only read: a file open for writing fails
    CreateReadWrite,    // created or emptied, others may read
    ReadWriteExisting,  // others may read
};

// Origins of SeekFile.
inline constexpr int kSeekBegin = 0;
inline constexpr int kSeekCurrent = 1;
inline constexpr int kSeekEnd = 2;

// Names use the library's separators: on POSIX a "\" is read as "/".
FileHandle OpenFile(const q5_WCHAR* name, FileOpen how);
bool CloseFile(FileHandle file);
// False on an operating-system failure; `done` receives the bytes moved either way.
bool ReadFile(FileHandle file, void* buffer, std::uint32_t count, std::uint32_t& done);
bool WriteFile(FileHandle file, const void* buffer, std::uint32_t count, std::uint32_t& done);
// Moves by a signed 32-bit distance; the new position, or -1 on failure.
std::int64_t SeekFile(FileHandle file, std::int32_t distance, int origin);
// The low 32 bits of the size, or -1 on failure.
std::int64_t FileSize(FileHandle file);
// Ends the file at the current position.
bool TruncateFile(FileHandle file);
bool FlushFile(FileHandle file);
bool FileLastWriteTime(FileHandle file, q5_FILETIME& time);

bool DeleteFile(const q5_WCHAR* name);
bool RenameFile(const q5_WCHAR* from, const q5_WCHAR* to);

enum class FileKind { Missing, File, Folder };
FileKind QueryFileKind(const q5_WCHAR* name);
// True when the folder can be listed and the listing is not empty.
bool FolderHasEntries(const q5_WCHAR* folder);

// The temporary folder with a trailing separator; its length, or the room needed when it
// does not fit (nothing is written then), or 0 on failure.
std::uint32_t GetTempPath(std::uint32_t size, q5_WCHAR* out);
// folder + separator + the first three units of prefix + a hex number + ".TMP" into out
// (kMaxPath units). With unique 0 a number is chosen whose file does not exist and the file is
// created; otherwise the name is only made. The number used, or 0 on failure.
std::uint32_t GetTempFileName(const q5_WCHAR* folder, const q5_WCHAR* prefix, std::uint32_t unique,
                              q5_WCHAR* out);
// The short (8.3) form of an existing name; POSIX has none, so the name itself. Result as
// GetTempPath.
std::uint32_t GetShortPathName(const q5_WCHAR* name, q5_WCHAR* out, std::uint32_t size);

// The root ("D:\") of the first CD-ROM drive into out (kMaxPath units); false when there is
// none.
bool FindCdRomRoot(q5_WCHAR* out);

// The system's message for the calling thread's last error, in the narrow code page.
void LastErrorMessage(char* out, std::size_t size);

} // namespace q5plat
