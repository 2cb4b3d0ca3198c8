// Presentation and overlays: the finished frame to the window, XOR lines, text.
// Unfinished: nothing reaches a window yet.
#include "zbuffer/izb.h"

bool IZB::PresentRect(q5_HDC, const q5_URECT*) {
    return true;
}
bool IZB::DrawXorLine(q5_HWND, q5_FPOINT, q5_FPOINT) {
    return true;
}
std::int32_t IZB::DrawText(std::int32_t, std::int32_t, const q5_WCHAR*, std::uint32_t) {
    return 0;
}
