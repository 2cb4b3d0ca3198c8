// The host application's API object as the plug-in and the core library use it.
#pragma once

#include "core/platform/types.h"

class DRIVER3D;
class q5_PROPERTYSHEET;

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

protected:
    ~q5_GAPI() = default;
};
