// Binding a material's texture into the rasterizer's context.
#pragma once

#include "zbuffer/raster/raster_context.h"

// Binds the picture of `slot` of `material` (null unbinds). Binding the material that is bound
// already does nothing, whatever the slot: each material is drawn with one slot only. A picture
// without an image, or one that needs a conversion it cannot get, leaves no texture bound.
void BindMaterialTexture(RasterContext& rc, const q5_MATERIAL* material, int slot);
