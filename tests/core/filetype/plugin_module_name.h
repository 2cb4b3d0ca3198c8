// The test plug-in module as the build places it beside the test programs.
#pragma once

#include <string>

#if defined(_WIN32)
inline const std::string kPluginSuffix = ".dll";
inline const std::string kPluginFile = "test_format_plugin.dll";
inline constexpr const char16_t* kPluginPath = u"test_format_plugin.dll";
#else
inline const std::string kPluginSuffix = ".so";
inline const std::string kPluginFile = "./test_format_plugin.so";
inline constexpr const char16_t* kPluginPath = u"./test_format_plugin.so";
#endif
