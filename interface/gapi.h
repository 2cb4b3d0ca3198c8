// The host application's API object as the plug-in and the core library use it.
#pragma once

#include "interface/types.h"

class DRIVER3D;
class q5_PROPERTYSHEET;
class q5_COLLECTION;
class q5_PLUGINRECORD;
class q5_STREAM;
struct q5_GUID;
struct FILETYPE;

// Host levels of ReportMessage / ReportMessageA.
inline constexpr std::int32_t kReportInfo = 0;
inline constexpr std::int32_t kReportError = 1;

// The host implements the pure operations; their order is the table order a host built
// against this header relies on. Operations the core library implements itself get bodies
// here as they arrive.
class q5_GAPI {
public:
    virtual std::uint64_t OpenStringTable(q5_HINSTANCE module) = 0;
    // Text owned by the host; "$$$$$$" for a missing id.
    virtual const q5_WCHAR* LGetString(std::uint64_t table, std::int32_t id) = 0;
    virtual void RegisterDriver(q5_HINSTANCE module, const char* name, std::uint32_t flags,
                                const q5_WCHAR* displayName) = 0;
    virtual DRIVER3D* CreateDriverByName(const char* name) = 0;
    virtual void ReportMessageA(std::int32_t level, const char* text) = 0;
    virtual void ReportMessage(std::int32_t level, const q5_WCHAR* text) = 0;
    virtual std::int32_t GetSettingInt(std::int32_t scope, const char* key,
                                       std::int32_t defaultValue) = 0;
    virtual void SetSettingInt(std::int32_t scope, const char* key, std::int32_t value) = 0;
    virtual void ShowHelp(const char* topic, std::int32_t zero, void* messageArgument) = 0;
    virtual void LocalizeDialog(std::uint64_t table, q5_HWND dialog,
                                std::intptr_t initArgument) = 0;
    virtual q5_PROPERTYSHEET* CreatePropertySheet(q5_HWND parent, std::int32_t zero) = 0;

    // Host services the core library's file names, string tables and object tables use.
    // Maps a host-relative name to the file to open (at most outSize units into out); time
    // receives the data's own time stamp when the host has one. False leaves the name alone.
    virtual bool ResolveFileName(const q5_WCHAR* name, q5_WCHAR* out, std::int32_t outSize,
                                 q5_FILETIME* time) = 0;
    // Folder of the given kind (1: the application's folder); false when there is none.
    virtual bool GetFolder(std::int32_t kind, q5_WCHAR* out, std::int32_t size) = 0;
    // The folder plug-ins are loaded from; null when unknown.
    virtual const q5_WCHAR* GetPluginFolder() = 0;
    // The host's record of the plug-in loaded as `module`; null for any other module.
    virtual q5_PLUGINRECORD* FindPluginRecord(q5_HINSTANCE module) = 0;
    // A message with a title, at the levels of ReportMessage.
    virtual void ReportTitledMessage(std::int32_t level, const q5_WCHAR* title,
                                     const q5_WCHAR* text) = 0;
    // Tells the user that an operation failed with `code`.
    virtual void ReportError(Q5RESULT code) = 0;
    // The module whose resources stand for `module`'s (kind 1: its icons); module itself when
    // it has no other.
    virtual q5_HINSTANCE GetResourceModule(q5_HINSTANCE module, std::int32_t kind) = 0;
    // Keeps copies of both icons at `index` of the host's icon list, or appends them when index
    // is -1; the index used, or -1 when they could not be kept.
    virtual std::int32_t SetIcons(q5_HICON small, q5_HICON large, std::int32_t index) = 0;
    // The host's plug-in records in list order; null past the last.
    virtual q5_PLUGINRECORD* GetPluginRecord(std::int64_t index) = 0;
    // The host's collection of the types a configuration file places, emptied; the host keeps
    // it, so it tells afterwards which types the file listed.
    virtual q5_COLLECTION* GetPlacementCollection() = 0;

    // Implemented by the core library; a host may override them.
    // A new empty collection owned by the caller, or null.
    virtual q5_COLLECTION* CreateCollection();
    // Loads the main string table from folder + "language.ln", falling back to the "LNG"
    // resources of module (null: the plug-in's own module).
    virtual bool InitLanguage(q5_HINSTANCE module, const q5_WCHAR* folder, const q5_WCHAR* language,
                              const q5_WCHAR* appName);
    // As LGetString, with defaultText for a missing id.
    virtual const q5_WCHAR* LGetStringEx(std::uint64_t table, std::int32_t id,
                                         const q5_WCHAR* defaultText);
    // A new enabled type appended to the registry; null without memory. The texts are copied
    // unless flags has 0x8000.
    virtual FILETYPE* RegisterType(const q5_WCHAR* extensions, const q5_WCHAR* name,
                                   std::int32_t icon, std::uint32_t flags, const q5_GUID& id);
    // Puts the registry in type order; true.
    virtual bool SortFileTypes();
    // Writes the enable choices and a changed type order; true when any entry was written.
    virtual bool SaveFiletypeConfig(q5_STREAM* stream);
    // Applies what a written configuration says and ignores what it does not understand;
    // false for a null stream or one without a "[plugins]" or "[formats]" section.
    virtual bool LoadFiletypeConfig(q5_STREAM* stream);
    // The index of the plug-in's icon (a name, or an integer id in the low 16 bits of the
    // pointer) in the host's icon list, one index per format identifier; -1 for a null id.
    virtual std::int32_t RegisterICON(q5_HINSTANCE module, const q5_WCHAR* resource,
                                      const q5_GUID* id);

    // The registry of file types, made on first use; null only without memory.
    q5_COLLECTION* GetFileTypes();
    // Entries of RegisterICON's cache, null before the first; the first index it was given.
    q5_COLLECTION* GetIconCache() const { return iconCache_; }
    std::int32_t GetFirstIconIndex() const { return firstIconIndex_; }

protected:
    // Frees the registry and the icon cache.
    ~q5_GAPI();

private:
    q5_COLLECTION* fileTypes_ = nullptr;
    q5_COLLECTION* iconCache_ = nullptr;
    std::int32_t firstIconIndex_ = -1;
};
