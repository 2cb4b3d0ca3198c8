// The file-type registry: registration, lookups, the type order and the handler calls.
#include "core/filetype/file_type.h"

#include "core/containers/collection.h"
#include "core/containers/name_match.h"
#include "core/services/host_link.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "interface/extension.h"
#include "interface/gapi.h"
#include "interface/plugin_record.h"

#include <cstring>
#include <new>

namespace {

constexpr std::int32_t kRegistryLimit = 64;
constexpr std::int32_t kRegistryDelta = 64;
// Kind 1 types without an icon of their own show this one.
constexpr std::uint32_t kDefaultIconKind = 1;
constexpr std::int32_t kDefaultKindIcon = 12;

// A new-array copy; an empty text is stored as null.
const q5_WCHAR* CopyText(const q5_WCHAR* text) {
    if (text == nullptr || *text == 0) return nullptr;
    const std::size_t n = q5wcslen(text) + 1;
    auto* copy = new (std::nothrow) q5_WCHAR[n];
    if (copy != nullptr) std::memcpy(copy, text, n * sizeof(q5_WCHAR));
    return copy;
}

// One block: count pointers, then the list's characters with every comma made a terminator.
bool SplitExtensions(FILETYPE& type, const q5_WCHAR* list) {
    if (list == nullptr) return true;
    const std::size_t length = q5wcslen(list);
    std::int32_t count = 1;
    for (std::size_t i = 0; i < length; ++i) count += list[i] == u',' ? 1 : 0;
    const std::size_t pointerBytes = sizeof(q5_WCHAR*) * static_cast<std::size_t>(count);
    auto* block = static_cast<unsigned char*>(
        ::operator new(pointerBytes + (length + 1) * sizeof(q5_WCHAR), std::nothrow));
    if (block == nullptr) return false;
    auto** entries = reinterpret_cast<q5_WCHAR**>(block);
    auto* chars = reinterpret_cast<q5_WCHAR*>(block + pointerBytes);
    std::int32_t entry = 0;
    entries[entry++] = chars;
    for (std::size_t i = 0; i <= length; ++i) {
        chars[i] = list[i] == u',' ? 0 : list[i];
        if (list[i] == u',') entries[entry++] = chars + i + 1;
    }
    type.splitExtensions = entries;
    type.extensionCount = count;
    return true;
}

void FreeFileType(void* item) {
    auto* type = static_cast<FILETYPE*>(item);
    if ((type->flags & kFileTypeCallerTexts) == 0) {
        delete[] type->extensions;
        delete[] type->name;
    }
    ::operator delete(type->splitExtensions);
    delete type;
}

q5_COLLECTION* Registry() {
    q5_GAPI* host = q5GetHostAPI();
    return host != nullptr ? host->GetFileTypes() : nullptr;
}

FILETYPE* TypeAt(q5_COLLECTION* types, std::int64_t i) {
    return static_cast<FILETYPE*>(types->At(i));
}

int CompareText(const q5_WCHAR* a, const q5_WCHAR* b) {
    return q5wcsicmp(a != nullptr ? a : u"", b != nullptr ? b : u"");
}

int SortCompare(void* item, void* key, std::uint64_t) {
    return CompareFileTypes(static_cast<const FILETYPE*>(item), static_cast<const FILETYPE*>(key));
}

// The 2-D and 3-D calls: operation 6 holds a reference on its object for the call.
std::uint64_t CallHolding(const FILETYPE& type, std::uint32_t operation, const void* stream,
                          const void* target, q5_interface* object) {
    if (!type.Load() || type.handler == nullptr) return 0;
    const bool hold = operation == kFileTypeOpHeld && object != nullptr;
    if (hold) object->AddRef();
    const std::uint64_t result = type.handler(operation, reinterpret_cast<std::uintptr_t>(stream),
                                              reinterpret_cast<std::uintptr_t>(target),
                                              reinterpret_cast<std::uintptr_t>(object));
    if (hold) object->Release();
    return result;
}

} // namespace

q5_COLLECTION* q5_GAPI::GetFileTypes() {
    if (fileTypes_ == nullptr) {
        fileTypes_ = q5_COLLECTION::Create(kRegistryLimit, kRegistryDelta);
        if (fileTypes_ != nullptr) fileTypes_->freeItem = FreeFileType;
    }
    return fileTypes_;
}

q5_GAPI::~q5_GAPI() {
    if (fileTypes_ != nullptr) fileTypes_->Release();
    if (iconCache_ != nullptr) iconCache_->Release();
}

FILETYPE* q5_GAPI::RegisterType(const q5_WCHAR* extensions, const q5_WCHAR* name, std::int32_t icon,
                                std::uint32_t flags, const q5_GUID& id) {
    q5_COLLECTION* types = GetFileTypes();
    auto* type = new (std::nothrow) FILETYPE{};
    if (types == nullptr || type == nullptr) {
        delete type;
        return nullptr;
    }
    type->state = kFileTypeEnabled;
    type->flags = flags;
    if ((flags & kFileTypeCallerTexts) != 0) {
        type->extensions = extensions;
        type->name = name;
    } else {
        type->extensions = CopyText(extensions);
        type->name = CopyText(name);
    }
    type->icon = icon;
    type->id = id;
    if (!SplitExtensions(*type, extensions) || types->Insert(type) < 0) {
        FreeFileType(type);
        return nullptr;
    }
    if (icon == 0 && type->Kind() == kDefaultIconKind) type->icon = kDefaultKindIcon;
    return type;
}

bool q5_GAPI::SortFileTypes() {
    q5_COLLECTION* types = GetFileTypes();
    q5_SORTEDCOLLECTION* sorted = types != nullptr ? PreSortFileTypes(types) : nullptr;
    if (sorted == nullptr) return true;
    // Every record is in the sorted copy, so the registry may be refilled from it.
    if (sorted->Count() == types->Count()) {
        types->DeleteAll();
        for (std::int64_t i = 0; i < sorted->Count(); ++i) types->Insert(sorted->At(i));
    }
    sorted->Release();
    return true;
}

bool FILETYPE::IsEnabled() const {
    if (plugin != nullptr && !plugin->IsUsable()) return false;
    return (state & kFileTypeEnabled) != 0;
}

bool FILETYPE::IsFileOfThisType(const q5_WCHAR* fileName, const q5_WCHAR* extension) const {
    if (splitExtensions == nullptr) return false;
    if (extension == nullptr) {
        if (fileName == nullptr) return false;
        const q5_WCHAR* dot = nullptr;
        for (const q5_WCHAR* p = fileName; *p != 0; ++p)
            if (*p == u'.') dot = p;
        if (dot == nullptr) return false;
        extension = dot + 1;
    }
    for (std::int32_t i = 0; i < extensionCount; ++i) {
        const q5_WCHAR* entry = splitExtensions[i];
        if (entry[0] == u'*' || entry[0] == u'?') {
            if (fileName != nullptr && CmpNameExW(entry, fileName) != 0) return true;
        } else if (q5wcsicmp(entry, extension) == 0) {
            return true;
        }
    }
    return false;
}

bool FILETYPE::Load() const {
    if (!IsEnabled()) return false;
    return plugin == nullptr || plugin->Load();
}

std::uint64_t FILETYPE::Func2d(std::uint32_t operation, q5_STREAM* stream, q5_PICTURE* picture,
                               q5_interface* object) const {
    return CallHolding(*this, operation, stream, picture, object);
}

std::uint64_t FILETYPE::Func3d(std::uint32_t operation, q5_STREAM* stream, q5_SCENE* scene,
                               q5_interface* object) const {
    return CallHolding(*this, operation, stream, scene, object);
}

std::uint64_t FILETYPE::FuncArc(std::uint32_t operation, std::uintptr_t a, std::uintptr_t b) const {
    if (!Load() || handler == nullptr) return 0;
    return handler(operation, a, b, 0);
}

std::uint64_t FILETYPE::FuncV(std::uint32_t operation, q5_VIDEOINFO* video,
                              q5_interface* object) const {
    if (!Load() || handler == nullptr) return 0;
    return handler(operation, reinterpret_cast<std::uintptr_t>(video),
                   reinterpret_cast<std::uintptr_t>(object), 0);
}

bool FTINFO::Accepts(const FILETYPE& type) const {
    if ((options & kFtCapFilter) != 0 && (type.flags & kFileTypeCap800) == 0 &&
        (options & kFtCap400) != 0 && (type.flags & kFileTypeCap400) == 0)
        return false;
    return kind == 0 || kind == type.Kind();
}

FILETYPE* GetFileINFO(const q5_GUID* id, std::uint32_t mask) {
    q5_COLLECTION* types = Registry();
    if (id == nullptr || types == nullptr) return nullptr;
    for (std::int64_t i = 0; i < types->Count(); ++i) {
        FILETYPE* type = TypeAt(types, i);
        if (type->id.Compare(*id) && (mask == 0 || (type->flags & mask) != 0)) return type;
    }
    return nullptr;
}

FILETYPE* GetFileINFO(const q5_GUID& id, std::uint32_t mask) {
    return GetFileINFO(&id, mask);
}

const q5_WCHAR* GetFileTypeName(const q5_GUID& id) {
    const FILETYPE* type = GetFileINFO(id, 0);
    return type != nullptr ? type->name : nullptr;
}

FILETYPE* GetTypeByName(const q5_WCHAR* name) {
    q5_COLLECTION* types = Registry();
    if (name == nullptr || types == nullptr) return nullptr;
    for (std::int64_t i = 0; i < types->Count(); ++i) {
        FILETYPE* type = TypeAt(types, i);
        if ((type->flags & kFileTypeInternal) == 0 && type->IsEnabled() &&
            CompareText(type->name, name) == 0)
            return type;
    }
    return nullptr;
}

FILETYPE* GetFileTypeByExt(const q5_WCHAR* fileName, const q5_WCHAR* extension, FTINFO* info) {
    q5_COLLECTION* types = Registry();
    if (types == nullptr) return nullptr;
    std::int64_t first = 0;
    if (info != nullptr && info->startAfter != nullptr) {
        first = types->IndexOf(const_cast<FILETYPE*>(info->startAfter));
        if (first < 0) return nullptr;
        ++first;
    }
    for (std::int64_t i = first; i < types->Count(); ++i) {
        FILETYPE* type = TypeAt(types, i);
        if (!type->IsEnabled() || (info != nullptr && !info->Accepts(*type))) continue;
        if (type->IsFileOfThisType(fileName, extension)) return type;
    }
    return nullptr;
}

FILETYPE* GetFileTypeByExt(const char* fileName, const char* extension, FTINFO* info) {
    auto widen = [](const char* text, q5_WCHAR* out) -> const q5_WCHAR* {
        if (text == nullptr) return nullptr;
        return AtoWex(text, out, 260) > 0 ? out : nullptr;
    };
    q5_WCHAR name[260], ext[260];
    return GetFileTypeByExt(widen(fileName, name), widen(extension, ext), info);
}

int CompareFileTypes(const FILETYPE* a, const FILETYPE* b) {
    if (a->sortGroup != b->sortGroup) return a->sortGroup > b->sortGroup ? -1 : 1;
    if (const int byName = CompareText(a->name, b->name); byName != 0) return byName;
    if (const int byList = CompareText(a->extensions, b->extensions); byList != 0) return byList;
    if (a->sortWeight != b->sortWeight) return a->sortWeight > b->sortWeight ? -1 : 1;
    return std::memcmp(&a->id, &b->id, sizeof(q5_GUID));
}

q5_SORTEDCOLLECTION* PreSortFileTypes(q5_COLLECTION* types) {
    if (types == nullptr) return nullptr;
    q5_SORTEDCOLLECTION* sorted = q5_SORTEDCOLLECTION::Create(SortCompare, 0, 0);
    if (sorted == nullptr) return nullptr;
    sorted->EnableDuplicates(true);
    for (std::int64_t i = 0; i < types->Count(); ++i) sorted->Insert(types->At(i));
    for (std::int64_t i = 0; i < sorted->Count(); ++i)
        static_cast<FILETYPE*>(sorted->At(i))->orderIndex = i;
    return sorted;
}
