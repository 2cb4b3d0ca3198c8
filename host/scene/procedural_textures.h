// Pictures the built-in scenes paint themselves, so they need no files.
#pragma once

#include <cstdint>

#include "host/scene/host_picture.h"

// size x size checkerboard of `cells` x `cells` squares in two colours (red in the low byte),
// with a thin darker seam around each square.
HostPicture* MakeCheckerPicture(std::int32_t size, int cells, std::uint32_t light,
                                std::uint32_t dark);

// A sphere map for chrome. The renderer's sphere mapping reads s around the line of sight and
// t from straight away from the eye (0) to straight back at it (1); this picture changes with t
// only, because a triangle whose reflections straddle the s = 0 / 1 seam sweeps every column.
HostPicture* MakeEnvironmentPicture(std::int32_t size);
