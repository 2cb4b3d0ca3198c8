// IZB surfaces and frame phases.
// Unfinished: surfaces, clears and frame phases arrive with the rasterizer's context.
#include "zbuffer/izb.h"

#include "zbuffer/mark_list.h"

void IZB::Resize(std::int32_t, std::int32_t) {}

void IZB::ClearFrame(std::uint32_t) {
    MarkListUnmark(attachedId);
}

bool IZB::FrameStep(std::int32_t) {
    return true;
}
