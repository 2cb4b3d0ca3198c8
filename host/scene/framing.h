// The default camera of a scene: an orbit around what it shows, at a distance that fits it.
#pragma once

#include <cstdint>
#include <optional>

#include "host/scene/scene.h"
#include "host/view/camera.h"
#include "host/view/view_volume.h"

struct Shot {
    double yaw = 30.0, pitch = 20.0; // degrees
    double distance = 0.0;           // from the framed centre; 0 or less: fit the framed objects
    double fit = 1.0;                // scales the fitted distance
    double fovY = 40.0;              // degrees
    // The point the camera orbits and aims at; unset: the centre of the framed objects.
    std::optional<POINT3D> target;
};

struct Framing {
    Camera camera;
    ViewVolume volume;
    double distance = 0.0;
};

// Aims at the centre of `framed`; the near and far planes hug `all`, the whole scene.
Framing FrameScene(const Bounds& framed, const Bounds& all, const Shot& shot, std::int32_t width,
                   std::int32_t height);
