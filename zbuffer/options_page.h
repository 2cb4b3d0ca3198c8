// Dialog 106, the driver's options page: its resource id and control ids, which the module's
// resource script repeats in plugin/resources/resource.h.
#pragma once

#include <cstdint>

namespace options_page {

inline constexpr std::uint16_t kDialogId = 106;
inline constexpr std::int32_t kUse2ThreadBox = 2114;
inline constexpr std::int32_t kRefineBox = 2115;
inline constexpr std::int32_t kHighQualityBox = 2116;
inline constexpr std::int32_t kTrianglesEdit = 212;
inline constexpr std::int32_t kTrianglesSpin = 214;

} // namespace options_page
