// Pictures the built-in scenes paint themselves, so they need no files.
#pragma once

#include <cstdint>

#include "host/scene/host_picture.h"

// size x size checkerboard of `cells` x `cells` squares in two colours (red in the low byte),
// with a thin darker seam around each square.
HostPicture* MakeCheckerPicture(std::int32_t size, int cells, std::uint32_t light,
                                std::uint32_t dark);

// A sphere map of an outdoor scene: sky above the horizon, ground below it and a bright sun,
// laid out the way the renderer's sphere mapping reads reflections (s around the line of sight,
// t from straight away from the eye at 0 to straight back at it at 1).
HostPicture* MakeEnvironmentPicture(std::int32_t size);
