// Presentation and overlays, through the platform's graphics device: the background picture
// into the colour surface, the finished frame to a window, XOR rubber bands and labels.
#include <cmath>
#include <cstring>
#include <limits>

#include "core/platform/font.h"
#include "core/platform/graphics.h"
#include "core/services/wide_string.h"
#include "interface/picture.h"
#include "interface/view.h"
#include "zbuffer/izb.h"

namespace {

constexpr int kBackgroundStretch = 0;
constexpr int kBackgroundCentre = 2;
constexpr unsigned kDrawDibNotKeyFrame = 1024;
constexpr int kPresentMinimumScreenDepth = 17;

std::int32_t ClampFloor(float v) {
    if (v < 1.0f) return 1;
    if (v > 58720256.0f) return 58720256;
    return static_cast<std::int32_t>(std::floor(v));
}

// Toward zero, kept inside the integer range.
std::int32_t Truncate(float v) {
    if (!(v > -2147483648.0f)) return std::numeric_limits<std::int32_t>::min();
    if (!(v < 2147483648.0f)) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(v);
}

q5_BITMAPINFOHEADER PresentHeader(std::int32_t w, std::int32_t h, std::uint32_t size) {
    q5_BITMAPINFOHEADER header{};
    header.biSize = 40;
    header.biWidth = w;
    header.biHeight = h; // positive: bottom-up
    header.biPlanes = 1;
    header.biBitCount = 32;
    header.biCompression = 0;
    header.biSizeImage = size;
    header.biXPelsPerMeter = 300;
    header.biYPelsPerMeter = 300;
    return header;
}

} // namespace

void IZB::DrawBackgroundPicture(std::uint32_t colour) {
    TPicture& picture = *backgroundPicture;
    const std::int32_t W = surface.W, H = surface.H;
    const std::int32_t pw = picture.width, ph = picture.height;
    q5_HDC memory = q5plat::CreateMemoryDC(nullptr);
    if (memory == nullptr) return;
    q5plat::SelectBitmap(memory, colourBitmap);
    auto stretch = [&](int x, int y, int w, int h, int sx, int sy, int sw, int sh) {
        q5plat::StretchDib(memory, x, y, w, h, sx, sy, sw, sh, picture.bits, picture.header,
                           q5plat::kSourceCopy);
    };

    std::int32_t mode = renderContext != nullptr ? renderContext->backgroundMode : -1;
    if (mode < 0) {
        q5_RENDERSETTINGS* settings = view != nullptr ? view->RenderSettings() : nullptr;
        mode = settings != nullptr ? settings->backgroundMode : kBackgroundStretch;
    }
    mode &= 0x7F;
    double scale = 1.0;
    const double factor = view != nullptr ? view->SupersampleFactor() : 1.0;
    if (factor > 1.0)
        scale = factor;
    else if (surface.supersampling)
        scale = 2.0;

    if (mode == kBackgroundStretch) {
        std::int32_t sx = 0, sy = 0, sw = pw, sh = ph;
        const q5_RENDERCONTEXT* rc = renderContext;
        if (regionFlag != 0 && rc != nullptr && rc->regionWidth != 0.0f &&
            rc->regionHeight != 0.0f) {
            sw = ClampFloor(static_cast<float>(W) / rc->regionWidth * static_cast<float>(pw));
            sh = ClampFloor(static_cast<float>(ph) * static_cast<float>(H) / rc->regionHeight);
            sx = ClampFloor(static_cast<float>(pw) / rc->regionWidth * rc->regionLeft);
            if (std::int64_t{sx} + sw > pw) sw = pw - sx;
            const std::int64_t y =
                std::int64_t{ph} -
                ClampFloor(static_cast<float>(ph) / rc->regionHeight * rc->regionTop) - sh;
            sy = y < 0 ? 0 : static_cast<std::int32_t>(y);
        }
        q5plat::SetStretchMode(memory, q5plat::kStretchColourOnColour);
        stretch(0, 0, W, H, sx, sy, sw, sh);
    } else {
        const auto tw = static_cast<std::int32_t>(pw * scale);
        const auto th = static_cast<std::int32_t>(ph * scale);
        if (mode == kBackgroundCentre) {
            if (tw < W || th < H) FillColour(colour);
            stretch((W - tw) / 2, (H - th) / 2, tw, th, 0, 0, pw, ph);
        } else if (tw > 0 && th > 0) {
            // The "one more" tests compare the unscaled picture size, as the driver always
            // has; at a scale above 1 the extra column or row lands outside the frame.
            std::int64_t nx = W / tw, ny = H / th;
            if (std::int64_t{pw} * nx < W) ++nx;
            if (std::int64_t{ph} * ny < H) ++ny;
            for (std::int64_t r = 0; r < ny; ++r)
                for (std::int64_t k = 0; k < nx; ++k)
                    stretch(static_cast<int>(k * tw), static_cast<int>(r * th), tw, th, 0, 0, pw,
                            ph);
        }
    }
    q5plat::DeleteMemoryDC(memory);
}

void IZB::CopyFrameTo(TPicture& target) const {
    const SurfaceRecord& s = surface;
    if (target.width != s.W || target.height != s.H || s.colourBits == nullptr) return;
    for (std::int32_t i = 0; i < s.H; ++i) {
        std::uint8_t* row = target.Row(s.H - 1 - i);
        if (row == nullptr) return;
        std::memcpy(row, s.colourBits + static_cast<std::ptrdiff_t>(i) * s.colourStride,
                    static_cast<std::size_t>(s.W) * 4);
    }
}

bool IZB::PresentRect(q5_HDC dc, const q5_URECT* rect) {
    if (copyTarget != nullptr) {
        CopyFrameTo(*copyTarget);
        copyTarget = nullptr;
    }
    const SurfaceRecord& s = surface;
    if (module_.drawDib == nullptr && module_.screenDepth >= kPresentMinimumScreenDepth) {
        const q5_URECT whole{0, 0, static_cast<std::uint32_t>(s.W),
                             static_cast<std::uint32_t>(s.H)};
        const q5_URECT& r = rect != nullptr ? *rect : whole;
        q5_HDC memory = q5plat::CreateMemoryDC(dc);
        if (memory == nullptr) return true;
        q5plat::SelectBitmap(memory, colourBitmap);
        q5plat::BlockCopy(dc, static_cast<int>(r.left), static_cast<int>(r.top),
                          static_cast<int>(r.right - r.left), static_cast<int>(r.bottom - r.top),
                          memory, static_cast<int>(r.left), static_cast<int>(r.top),
                          q5plat::kSourceCopy);
        q5plat::DeleteMemoryDC(memory);
        return true;
    }
    // The rectangle is not used from here on: the whole frame goes to the top-left corner.
    q5_BITMAPINFOHEADER header = PresentHeader(s.W, s.H, colourSize);
    if (module_.drawDib != nullptr && module_.drawDibDraw != nullptr) {
        module_.drawDibDraw(module_.drawDib, dc, 0, 0, s.W, s.H, &header, s.colourBits, 0, 0, s.W,
                            s.H, kDrawDibNotKeyFrame);
    } else {
        q5plat::SetDibToDevice(dc, 0, 0, static_cast<std::uint32_t>(s.W),
                               static_cast<std::uint32_t>(s.H), 0, 0, 0,
                               static_cast<std::uint32_t>(s.H), s.colourBits, &header);
    }
    return true;
}

bool IZB::DrawXorLine(q5_HWND window, q5_FPOINT a, q5_FPOINT b) {
    const std::int32_t ax = Truncate(a.x), ay = Truncate(a.y);
    const std::int32_t bx = Truncate(b.x), by = Truncate(b.y);
    q5_HDC dc = q5plat::AcquireWindowDC(window);
    if (dc == nullptr) return true;
    q5plat::SelectWhitePen(dc);
    q5plat::SetMixMode(dc, q5plat::kMixXorPen);
    q5plat::MoveTo(dc, ax, ay);
    q5plat::LineTo(dc, bx, by);
    q5plat::ReleaseWindowDC(window, dc);
    return true;
}

std::int32_t IZB::DrawText(std::int32_t x, std::int32_t y, const q5_WCHAR* text,
                           std::uint32_t colour) {
    q5_HDC memory = q5plat::CreateMemoryDC(nullptr);
    if (memory == nullptr) return 0;
    q5plat::SelectBitmap(memory, colourBitmap);
    q5plat::q5_HFONT font = q5plat::MakeFont(13, 0, 700, u"Tahoma");
    q5plat::q5_HFONT previous = q5plat::SelectFont(memory, font);
    q5plat::SetTextColour(memory, colour);
    q5plat::SetBackgroundMode(memory, q5plat::kBackgroundTransparent);
    const std::size_t length = text != nullptr ? q5wcslen(text) : 0;
    q5plat::WriteText(memory, x, y, text, static_cast<int>(length));
    q5plat::SelectFont(memory, previous);
    q5plat::DeleteFont(font);
    return q5plat::DeleteMemoryDC(memory) ? 1 : 0;
}
