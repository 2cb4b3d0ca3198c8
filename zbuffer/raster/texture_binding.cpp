// Texture binding: picks the picture (or its converted copy) and the fetch for its depth.
#include "zbuffer/raster/texture_binding.h"

#include "interface/material.h"
#include "interface/picture.h"
#include "zbuffer/raster/texel_fetch.h"

#include <cstddef>
#include <cstring>

namespace {

bool SampledAsIs(const TPicture& picture) {
    const std::uint16_t bits = picture.header->biBitCount;
    return bits == 8 || bits == 24 || (bits == 32 && picture.texels32Ready);
}

// 8- and 24-bit texels widened once here, so that the fillers fetch one 32-bit word per pixel
// whatever the picture's depth. 24-bit texels get alpha 0, 8-bit ones their palette entry.
void WidenTexels(RasterContext& rc, const q5_BITMAPINFOHEADER& header) {
    const std::int32_t w = header.biWidth, h = header.biHeight;
    rc.texelCopy.resize(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
    const auto* palette = reinterpret_cast<const std::uint8_t*>(&header) + 40;
    for (std::int32_t y = 0; y < h; ++y) {
        // Row y from the top of the image.
        const std::uint8_t* in = rc.texRow0 + static_cast<std::ptrdiff_t>(h - 1 - y) * rc.texPitch;
        std::uint32_t* out = rc.texelCopy.data() + static_cast<std::ptrdiff_t>(y) * w;
        if (header.biBitCount == 24) {
            for (std::int32_t x = 0; x < w; ++x, in += 3)
                out[x] = in[0] | static_cast<std::uint32_t>(in[1]) << 8 |
                         static_cast<std::uint32_t>(in[2]) << 16;
        } else {
            for (std::int32_t x = 0; x < w; ++x)
                std::memcpy(&out[x], palette + static_cast<std::size_t>(in[x]) * 4, 4);
        }
    }
    rc.texels.top = rc.texelCopy.data();
    rc.texels.pitch = w;
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
    rc.texelBytes = static_cast<std::uint8_t>(header.biBitCount / 8);
    rc.texels.width = rc.texWidth;
    rc.texels.height = rc.texHeight;
    rc.texels.inverseWidth = 1.0f / static_cast<float>(rc.texWidth);
    rc.texels.inverseHeight = 1.0f / static_cast<float>(rc.texHeight);
    rc.texels.widthMask = (rc.texWidth & (rc.texWidth - 1)) == 0 ? rc.texWidth - 1 : -1;
    rc.texels.heightMask = (rc.texHeight & (rc.texHeight - 1)) == 0 ? rc.texHeight - 1 : -1;
    if (header.biBitCount == 32) {
        const std::uint8_t* top =
            rc.texRow0 + static_cast<std::ptrdiff_t>(rc.texMaxY) * rc.texPitch;
        rc.texels.top = reinterpret_cast<const std::uint32_t*>(top);
        rc.texels.pitch = -rc.texPitch / 4;
    } else {
        WidenTexels(rc, header);
    }
    rc.sampleTexel = &FetchBoundTexel;
}
