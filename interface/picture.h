// The host's picture object: background images and textures.
#pragma once

#include "interface/bitmap_info.h"

// Reference counted by its holders; the host creates and fills it.
class TPicture {
public:
    std::uint32_t AddRef() { return ++refCount; }
    std::uint32_t Release() {
        if (--refCount == 0) {
            DeleteThis();
            return 0;
        }
        return refCount;
    }

    // Address of image row n counted from the top, whichever way the rows are stored.
    virtual std::uint8_t* Row(std::int32_t n) {
        if (!header || !bits) return nullptr;
        const std::int32_t stride = q5DibRowStride(header->biBitCount, header->biWidth);
        const std::int32_t stored = rowsTopDown ? n : header->biHeight - 1 - n;
        return static_cast<std::uint8_t*>(bits) + static_cast<std::ptrdiff_t>(stored) * stride;
    }

    // A copy in 8, 24 or 32 bits (32 with texels32Ready set) for bit counts the rasterizer
    // cannot sample; kept in `converted` once made. The host's picture class makes it; a
    // picture that cannot be converted answers null.
    virtual TPicture* ConvertedCopy() { return converted; }

    std::uint32_t refCount = 1;
    // Counts the drivers that hold a texture made from this picture.
    std::int32_t useCount = 0;
    // Rectangle of the picture in use: x, y, width, height.
    std::int32_t rectX = 0, rectY = 0, width = 0, height = 0;
    void* bits = nullptr;
    q5_BITMAPINFOHEADER* header = nullptr; // null: the picture holds no image
    bool rowsTopDown = false;              // row 0 of bits is the top of the image
    bool texels32Ready = false;            // 32-bit texels carry usable alpha as they are
    TPicture* converted = nullptr;         // owned, one reference

protected:
    virtual void DeleteThis() { delete this; }
    virtual ~TPicture() {
        if (converted) converted->Release();
    }
};
