// Files a program writes its results to: what a target name is, atomic replacement of regular
// files, and writing in place to everything else (devices, links, standard output).
// Paths are narrow text as in png_codec.h; on failure the functions return false with a
// one-line reason that does not repeat the path.
#pragma once

#include <cstddef>
#include <string>

namespace q5plat {

enum class OutputKind {
    Missing, // nothing of that name (its folder may be missing too)
    File,    // a regular file
    Folder,
    Link,   // a symbolic link or another reparse point, whatever it leads to
    Device, // a device, pipe or socket: /dev/null, NUL, CON
};

// The name itself is looked at, a link being a Link, unless `followLinks` asks for what the
// links lead to.
OutputKind QueryOutputKind(const char* path, bool followLinks = false);

// Whether a new file can be made in the folder of `path` and, when `path` is a file already,
// whether that file may be written: a probe file is created there and removed again.
bool CheckCanReplace(const char* path, std::string& error);
// Whether `path` opens for writing as it is; nothing is emptied or created.
bool CheckCanWriteInPlace(const char* path, std::string& error);

// Writes the bytes to a new file in the folder of `path` and renames it over `path`, keeping
// the permissions of a file it replaces. On failure the new file is gone and `path` is as it
// was.
bool ReplaceFileAtomically(const char* path, const void* bytes, std::size_t size,
                           std::string& error);
// Writes the bytes into `path` as it is: through a link, onto a device, or emptying a file
// first.
bool WriteInPlace(const char* path, const void* bytes, std::size_t size, std::string& error);
// Writes the bytes, unchanged, to the process's standard output.
bool WriteStandardOutput(const void* bytes, std::size_t size, std::string& error);

enum class StandardStream { Output, Error };
// True when the stream is a terminal (a console), where progress may be shown and pictures
// should not be.
bool IsTerminal(StandardStream stream);

} // namespace q5plat
