// Registered file formats: their records, the lookups by identifier, name and file name, the
// type order, and the calls that reach a format plug-in's handler.
#pragma once

#include "core/containers/guid.h"
#include "interface/types.h"

class q5_COLLECTION;
class q5_SORTEDCOLLECTION;
class q5_PLUGINRECORD;
class q5_STREAM;
class q5_interface;
class q5_PICTURE;
class q5_SCENE;
class q5_VIDEOINFO;

// Bits of FILETYPE::flags; the low byte is the kind of format.
inline constexpr std::uint32_t kFileTypeKindMask = 0xFF;
inline constexpr std::uint32_t kFileTypeInternal = 0x100; // never found by name
inline constexpr std::uint32_t kFileTypeCap400 = 0x400;   // capability bits of the FTINFO filter
inline constexpr std::uint32_t kFileTypeCap800 = 0x800;
inline constexpr std::uint32_t kFileTypeNameMustMatch = 0x4000; // content alone is not enough
inline constexpr std::uint32_t kFileTypeCallerTexts = 0x8000;   // texts not copied nor freed
// Bit of FILETYPE::state.
inline constexpr std::uint32_t kFileTypeEnabled = 1;
// The operation of Func2d / Func3d that holds a reference on its last argument during the call.
inline constexpr std::uint32_t kFileTypeOpHeld = 6;

// A format plug-in's entry: the operation and the call's pointer-sized arguments in order,
// unused ones 0.
using q5_FILETYPEPROC = std::uint64_t (*)(std::uint32_t operation, std::uintptr_t a,
                                          std::uintptr_t b, std::uintptr_t c);

// Zero-filled on creation; RegisterType fills it.
struct FILETYPE {
    std::uint32_t reserved;
    std::uint32_t flags;
    const q5_WCHAR* extensions; // comma-separated, as registered; may hold * and ? patterns
    const q5_WCHAR* name;
    const char* signature;   // content description (format_detect.h), the registrant's; may be null
    q5_FILETYPEPROC handler; // null until the plug-in is loaded
    q5_GUID id;
    std::int32_t icon;      // 0: none
    std::int8_t sortWeight; // second sort key, higher first
    std::int8_t sortGroup;  // first sort key, higher first
    std::uint32_t state;
    std::int32_t extensionCount;
    q5_WCHAR** splitExtensions; // one block: the pointers, then the characters
    q5_PLUGINRECORD* plugin;    // null for built-in types
    std::int64_t orderIndex;    // the place in type order; -1 when the registry differs

    std::uint32_t Kind() const { return flags & kFileTypeKindMask; }
    bool IsEnabled() const;
    // A null extension is taken from fileName after its last ".".
    bool IsFileOfThisType(const q5_WCHAR* fileName, const q5_WCHAR* extension) const;
    // True when the type can be used: enabled, and its plug-in (if any) loaded.
    bool Load() const;

    // 0 when the type cannot be loaded or has no handler; otherwise the handler's result.
    std::uint64_t Func2d(std::uint32_t operation, q5_STREAM* stream, q5_PICTURE* picture,
                         q5_interface* object) const;
    std::uint64_t Func3d(std::uint32_t operation, q5_STREAM* stream, q5_SCENE* scene,
                         q5_interface* object) const;
    std::uint64_t FuncArc(std::uint32_t operation, std::uintptr_t a, std::uintptr_t b) const;
    std::uint64_t FuncV(std::uint32_t operation, q5_VIDEOINFO* video, q5_interface* object) const;
};

// Bits of FTINFO::options.
inline constexpr std::uint32_t kFtContent = 0x01;   // detection: types with a signature by content
inline constexpr std::uint32_t kFtExtension = 0x02; // detection: types without one by file name
inline constexpr std::uint32_t kFtTrustName = 0x04; // detection: a signed type by name alone too
inline constexpr std::uint32_t kFtCapFilter = 0x08; // filter: types lacking 0x800 ...
inline constexpr std::uint32_t kFtCap400 = 0x10;    // ... must have 0x400

// A lookup or detection request and its result.
struct FTINFO {
    std::uint32_t kind = 0;               // 0: any kind
    const FILETYPE* startAfter = nullptr; // resume after this record
    FILETYPE* result = nullptr;
    std::uint32_t options = kFtContent | kFtExtension | kFtCapFilter | kFtCap400;

    // Whether the request's kind and capability filter let the type through.
    bool Accepts(const FILETYPE& type) const;
};
static_assert(sizeof(FTINFO) == 32);

// Lookups over the current host's registry, in registry order.
// The first type with that identifier and, for a non-zero mask, a flag bit in common with it.
FILETYPE* GetFileINFO(const q5_GUID* id, std::uint32_t mask);
FILETYPE* GetFileINFO(const q5_GUID& id, std::uint32_t mask);
const q5_WCHAR* GetFileTypeName(const q5_GUID& id);
// Enabled, not internal, name equal without regard to case.
FILETYPE* GetTypeByName(const q5_WCHAR* name);
// The first enabled type after info->startAfter that passes info's filter and fits the name or
// extension; null when startAfter is not in the registry.
FILETYPE* GetFileTypeByExt(const q5_WCHAR* fileName, const q5_WCHAR* extension, FTINFO* info);
FILETYPE* GetFileTypeByExt(const char* fileName, const char* extension, FTINFO* info);

// The type order: higher group, name, extensions (both without regard to case), higher
// weight, identifier bytes.
int CompareFileTypes(const FILETYPE* a, const FILETYPE* b);
// The same records in type order, each told its place as orderIndex; the caller releases it.
q5_SORTEDCOLLECTION* PreSortFileTypes(q5_COLLECTION* types);
