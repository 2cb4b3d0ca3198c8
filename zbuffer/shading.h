// Colour conversions and sphere-map texture coordinates for the face walk.
#pragma once

#include "zbuffer/raster/raster_context.h"

struct ScreenVertex;

// Each channel clamped to 0..1, then truncated to 0..255.
RgbBytes ColourToBytes(float red, float green, float blue);

// Each channel scaled by its factor (as c / 255 * f), then converted as above.
RgbBytes TintColour(RgbBytes colour, const float factors[3]);

// Reflection-map s, t for a unit view direction and a vertex normal; s lies in (0, 1].
void SphereMapCoordinates(const double viewDirection[3], const double normal[3], float& s,
                          float& t);

// The same, stored into the vertex's s and t (the texture matrix applies afterwards).
void SetSphereMapCoordinates(ScreenVertex& vertex, const double viewDirection[3],
                             const double normal[3]);
