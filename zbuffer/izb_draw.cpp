// IZB drawing operations: they hand screen primitives and face groups to the rasterizer.
// Unfinished: every operation here still draws nothing.
#include "zbuffer/izb.h"

std::int32_t IZB::DrawFaceGroupPlaced(q5_MESH*, q5_FACERUN*, q5_RENDERSTATE*) {
    return 0;
}
std::int32_t IZB::DrawFaceGroup(q5_MESH*, q5_FACERUN*, q5_RENDERSTATE*) {
    return 0;
}
std::int32_t IZB::DrawScreenPolygon(const ScreenVertex*, std::int32_t) {
    return 0;
}
std::int32_t IZB::DrawScreenLine(const ScreenVertex*, const ScreenVertex*) {
    return 0;
}
std::int32_t IZB::DrawPoint(const ScreenVertex*) {
    return 0;
}
std::int32_t IZB::DrawWideLine(const ScreenVertex*, const ScreenVertex*) {
    return 0;
}
std::int32_t IZB::DrawBoldLine(const ScreenVertex*, const ScreenVertex*) {
    return 0;
}
std::int32_t IZB::DrawScreenTriangle(const ScreenVertex*, const ScreenVertex*,
                                     const ScreenVertex*) {
    return 0;
}
std::int32_t IZB::DrawScreenLines(const ScreenVertex*, std::int32_t) {
    return 0;
}
std::int32_t IZB::DrawScreenPoints(const ScreenVertex*, std::int32_t) {
    return 0;
}
std::int32_t IZB::DrawFrameBorder(std::int32_t, std::int32_t, std::uint32_t) {
    return 1;
}
void IZB::DrawLine2D(q5_FPOINT, q5_FPOINT, std::uint32_t) {}
std::int32_t IZB::DrawScreenQuad(const q5_SCREENQUAD*) {
    return 1;
}
