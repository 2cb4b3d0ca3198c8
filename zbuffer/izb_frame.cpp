// IZB surfaces and frame phases: sizing, clears, depth fade and the supersampled frame.
#include <cstring>

#include "core/platform/bitmap.h"
#include "core/platform/memory_block.h"
#include "core/services/host_link.h"
#include "interface/gapi.h"
#include "interface/view.h"
#include "zbuffer/izb.h"
#include "zbuffer/raster/fixed_point.h"

namespace {

constexpr std::int32_t kOutOfMemoryId = 10;

// Lines go two pixels wide whenever the frame is drawn at double resolution.
void SetDoubleResolution(RasterContext& rc, std::int32_t on) {
    rc.doubleResolution = on;
    rc.wideLines = on != 0 ? 1 : 0;
}

void ZeroRasterSurface(RasterContext& rc) {
    rc.colourBase = nullptr;
    rc.depthBase = nullptr;
    rc.colourPitch = rc.depthPitch = 0;
    rc.clipWidth = rc.clipHeight = rc.rowBias = 0;
    rc.clipMinX = rc.clipMinY = 0;
    rc.clipMaxX = rc.clipMaxY = -1;
    SetDoubleResolution(rc, 0);
}

std::uint8_t Red(std::uint32_t c) {
    return static_cast<std::uint8_t>(c);
}
std::uint8_t Green(std::uint32_t c) {
    return static_cast<std::uint8_t>(c >> 8);
}
std::uint8_t Blue(std::uint32_t c) {
    return static_cast<std::uint8_t>(c >> 16);
}

} // namespace

void IZB::MakeCurrent() {
    RasterContext& rc = raster_;
    rc.colourBase = surface.colourBits;
    rc.depthBase = surface.depth;
    rc.colourPitch = surface.colourStride;
    rc.depthPitch = surface.depthStride;
    rc.clipWidth = surface.W;
    rc.clipHeight = surface.H;
    rc.rowBias = surface.Hm1;
    rc.clipMinX = surface.x0;
    rc.clipMinY = surface.y0;
    rc.clipMaxX = surface.x1;
    rc.clipMaxY = surface.y1;
    SetDoubleResolution(rc, surface.supersampling);
}

void IZB::CreateSurfaces() {
    SurfaceRecord& s = surface;
    s.x0 = 0;
    s.y0 = 0;
    s.x1 = width - 1;
    s.y1 = height - 1;
    s.W = s.x1 - s.x0 + 1;
    s.H = s.y1 - s.y0 + 1;
    s.Hm1 = s.H - 1;
    s.colourStride = q5DibRowStride(32, s.W);
    colourSize = static_cast<std::uint32_t>(s.colourStride) * static_cast<std::uint32_t>(s.H);
    s.depthStride = s.W * 4;
    const std::uint32_t depthBytes =
        static_cast<std::uint32_t>(s.depthStride) * static_cast<std::uint32_t>(s.H);

    // The full-size surface set aside by a supersampled frame comes back when it ends.
    if (savedBitmap != nullptr && s.supersampling != 0) {
        colourBitmap = savedBitmap;
    } else {
        colourBitmap = q5plat::CreateDibSection32(s.W, s.H);
    }
    s.colourBits = static_cast<std::uint8_t*>(q5plat::DibSectionBits(colourBitmap));

    depthMemory = q5_MEM_Alloc(depthBytes, false);
    if (depthMemory == nullptr) {
        if (q5_GAPI* host = q5GetHostAPI())
            host->ReportMessage(kReportError, module_.String(kOutOfMemoryId));
        depthEntryCount = 0;
        s.depth = nullptr;
    } else {
        depthEntryCount = depthBytes / 4;
        s.depth = static_cast<std::int32_t*>(q5_MEM_Lock(depthMemory));
    }
    MakeCurrent();
    ResetRasterState(raster_);
}

void IZB::FreeSurfaces() {
    if (colourBitmap != nullptr) {
        q5plat::DeleteBitmap(colourBitmap);
        colourBitmap = nullptr;
    }
    surface.colourBits = nullptr;
    if (depthMemory != nullptr) {
        q5_MEM_Unlock(depthMemory);
        q5_MEM_Free(depthMemory);
        depthMemory = nullptr;
        reservedWord = 0;
    }
    surface.depth = nullptr;
    depthEntryCount = 0;
}

void IZB::Resize(std::int32_t newWidth, std::int32_t newHeight) {
    if (newWidth < 1 || newHeight < 1) return;
    if (newWidth == width && newHeight == height) return;
    width = newWidth;
    height = newHeight;
    FreeSurfaces();
    CreateSurfaces();
}

void IZB::FillColour(std::uint32_t colour) {
    const SurfaceRecord& s = surface;
    const std::uint32_t second = view != nullptr ? view->SecondBackgroundColour() : colour;
    if (second != colour && s.H >= 3) {
        for (std::int32_t r = 0; r < s.H; ++r) {
            const std::int32_t t = (256 * r) / (s.H - 1);
            auto mix = [t](std::uint8_t a, std::uint8_t b) {
                return static_cast<std::uint8_t>(((256 - t) * a + t * b) / 256);
            };
            const std::uint8_t pixel[4] = {mix(Blue(colour), Blue(second)),
                                           mix(Green(colour), Green(second)),
                                           mix(Red(colour), Red(second)), 0};
            std::uint8_t* row =
                s.colourBits + static_cast<std::ptrdiff_t>(s.Hm1 - r) * s.colourStride;
            for (std::int32_t x = 0; x < s.W; ++x) std::memcpy(row + 4 * x, pixel, 4);
        }
        return;
    }
    const std::uint8_t pixel[4] = {Blue(colour), Green(colour), Red(colour), 0};
    std::uint8_t* first = s.colourBits;
    for (std::int32_t x = 0; x < s.W; ++x) std::memcpy(first + 4 * x, pixel, 4);
    for (std::int32_t y = 1; y < s.H; ++y)
        std::memcpy(first + static_cast<std::ptrdiff_t>(y) * s.colourStride, first, s.colourStride);
}

void IZB::ClearDepth() {
    if (surface.depth == nullptr) return;
    ClearDepthEntries(surface.depth, depthEntryCount);
}

void IZB::ClearFrame(std::uint32_t colour) {
    if (raster_.colourBase == nullptr) return;
    if (backgroundPicture != nullptr)
        DrawBackgroundPicture(colour);
    else
        FillColour(colour);
    ClearDepth();
    marks_.Unmark(attachedId);
}

void IZB::ApplyDepthFade() {
    q5_RENDERSETTINGS* settings = view != nullptr ? view->RenderSettings() : nullptr;
    if (settings == nullptr || (settings->flags & q5_RENDERSETTINGS::kFlagDepthFade) == 0) return;
    if (flags & kFlagFadeApplied) return;
    if (renderContext == nullptr || surface.colourBits == nullptr || surface.depth == nullptr)
        return;
    const double a = renderContext->depthScale;
    const double b = renderContext->depthOffset;
    const auto far = static_cast<std::int32_t>(0.8 * a + b);
    const auto near = static_cast<std::int32_t>(0.4 * a + b);
    const std::int32_t step = (far - near) >> 8;
    if (step == 0) return;
    const std::uint32_t fade = view->FadeColour();
    const std::int32_t fadeBgr[3] = {Blue(fade), Green(fade), Red(fade)};
    const SurfaceRecord& s = surface;
    for (std::int32_t y = 0; y < s.H; ++y) {
        std::uint8_t* row = s.colourBits + static_cast<std::ptrdiff_t>(s.Hm1 - y) * s.colourStride;
        const std::int32_t* depthRow = s.depth + static_cast<std::ptrdiff_t>(y) * s.W;
        for (std::int32_t x = 0; x < s.W; ++x) {
            const std::int32_t d = depthRow[x];
            if (d == kDepthEmpty || d <= near) continue;
            const std::int32_t t = d < far ? (d - near) / step : 256;
            for (int k = 0; k < 3; ++k) {
                std::uint8_t& channel = row[4 * x + k];
                channel = static_cast<std::uint8_t>((channel * (256 - t) + t * fadeBgr[k]) >> 8);
            }
        }
    }
    flags |= kFlagFadeApplied;
}

void IZB::BeginSupersampled() {
    savedBitmap = colourBitmap;
    colourBitmap = nullptr;
    Resize(2 * width, 2 * height);
    surface.supersampling = 1;
    SetDoubleResolution(raster_, 1);
    supersampleRequest_ = true;
}

void IZB::EndSupersampled() {
    ApplyDepthFade();
    q5_HBITMAP large = colourBitmap;
    const std::uint8_t* source = surface.colourBits;
    const std::int32_t sourceStride = surface.colourStride;
    colourBitmap = nullptr;
    Resize(width / 2, height / 2);

    const SurfaceRecord& s = surface;
    if (source != nullptr && s.colourBits != nullptr && !q5_PROGRESS::Cancelled(progress)) {
        for (std::int32_t y = 0; y < s.H; ++y) {
            if (q5_PROGRESS::Cancelled(progress)) break;
            const std::uint8_t* top = source + static_cast<std::ptrdiff_t>(2 * y) * sourceStride;
            const std::uint8_t* bottom = top + sourceStride;
            std::uint8_t* out = s.colourBits + static_cast<std::ptrdiff_t>(y) * s.colourStride;
            for (std::int32_t x = 0; x < s.W; ++x)
                for (int k = 0; k < 4; ++k) {
                    const int sum = top[8 * x + k] + top[8 * x + 4 + k] + bottom[8 * x + k] +
                                    bottom[8 * x + 4 + k];
                    out[4 * x + k] = static_cast<std::uint8_t>(sum >> 2);
                }
        }
    }
    q5plat::DeleteBitmap(large);
    savedBitmap = nullptr;
    surface.supersampling = 0;
    SetDoubleResolution(raster_, 0);
}

bool IZB::FrameStep(std::int32_t phase) {
    switch (phase) {
    case 0:
        MakeCurrent();
        ResetRasterState(raster_);
        flags &= ~kFlagFadeApplied;
        break;
    case 1:
        ZeroRasterSurface(raster_);
        break;
    case 2:
        if (view != nullptr && view->SupersampleFactor() > 1.0) supersampleRequest_ = true;
        break;
    case 3:
        ApplyDepthFade();
        break;
    case 4:
        BeginSupersampled();
        break;
    case 5:
        EndSupersampled();
        break;
    case 6:
        supersampleRequest_ = false;
        surface.supersampling = 0;
        SetDoubleResolution(raster_, 0);
        break;
    default:
        break;
    }
    return true;
}

void IZB::DestroySurfacesOnRelease() {
    FreeSurfaces();
    ZeroRasterSurface(raster_);
}
