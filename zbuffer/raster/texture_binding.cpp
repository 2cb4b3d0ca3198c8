// Texture binding: picks the picture (or its converted copy) and the fetch for its depth.
#include "zbuffer/raster/texture_binding.h"

#include "interface/material.h"
#include "interface/picture.h"
#include "zbuffer/raster/texel_fetch.h"

#include <cstddef>

namespace {

bool SampledAsIs(const TPicture& picture) {
    const std::uint16_t bits = picture.header->biBitCount;
    return bits == 8 || bits == 24 || (bits == 32 && picture.texels32Ready);
}

} // namespace

void BindMaterialTexture(RasterContext& rc, const q5_MATERIAL* material, int slot) {
    if (material == rc.boundMaterial) return;
    ClearTextureBinding(rc);
    rc.boundMaterial = material;
    TPicture* picture = material ? material->textures[slot] : nullptr;
    if (!picture || !picture->header) return;
    if (!SampledAsIs(*picture)) {
        picture = picture->ConvertedCopy();
        if (!picture || !picture->header || !picture->bits) return;
    }
    const q5_BITMAPINFOHEADER& header = *picture->header;
    // A picture without texels cannot be sampled (the fetch divides by its size).
    if (header.biWidth <= 0 || header.biHeight <= 0 || !picture->bits) return;

    const std::int32_t stride = q5DibRowStride(header.biBitCount, header.biWidth);
    const auto* bits = static_cast<const std::uint8_t*>(picture->bits);
    rc.texHeader = &header;
    // Fetches count rows from the top of the image and step up from the bottom row.
    if (picture->rowsTopDown) {
        rc.texRow0 = bits + static_cast<std::ptrdiff_t>(header.biHeight - 1) * stride;
        rc.texPitch = -stride;
    } else {
        rc.texRow0 = bits;
        rc.texPitch = stride;
    }
    rc.texWidth = header.biWidth;
    rc.texHeight = header.biHeight;
    rc.texMaxX = header.biWidth - 1;
    rc.texMaxY = header.biHeight - 1;
    rc.textureIs8Bit = header.biBitCount == 8;
    rc.textureIs32Bit = header.biBitCount == 32;
    if (header.biBitCount == 32) {
        rc.texelBytes = 4;
        rc.sampleTexel = &FetchTexel32;
    } else if (header.biBitCount == 24) {
        rc.texelBytes = 3;
        rc.sampleTexel = &FetchTexel24;
    } else {
        rc.texelBytes = 1;
        rc.sampleTexel = &FetchTexel8;
    }
}
