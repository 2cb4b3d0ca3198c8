// The table order of IZB's operations: hosts call them by slot, so the order is a contract.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "interface/property_sheet.h"
#include "zbuffer/izb.h"

namespace {

// Expects the given operations in slots 1, 2, 3, ... in the order given. Under the Itanium C++
// ABI (g++ on Linux and MinGW) a pointer to a virtual member starts with 1 + its slot's offset.
template <typename... Members> void ExpectSlotsInOrder(Members... members) {
    int slot = 0;
    const auto expect = [&slot](auto member) {
        static_assert(sizeof member == 2 * sizeof(std::uintptr_t));
        std::uintptr_t offset;
        std::memcpy(&offset, &member, sizeof offset);
        ++slot;
        EXPECT_EQ(static_cast<int>((offset - 1) / sizeof(void*)) + 1, slot) << "operation " << slot;
    };
    (expect(members), ...);
}

TEST(IzbTable, OperationsStandInTheirSlots) {
    ExpectSlotsInOrder(
        &IZB::DeleteThis, &IZB::AddRef, &IZB::Release, &IZB::GetInterfaceName,
        &IZB::GetInterfaceVersion, &IZB::IsTypeOf, &IZB::SetParam, &IZB::GetParam, &IZB::QueryInfo,
        &IZB::Invoke, &IZB::Attach, &IZB::Unnamed12, &IZB::GetValue, &IZB::QueryCaps,
        &IZB::GetDriverString, &IZB::ShowOptions, &IZB::Unnamed17, &IZB::DrawFaceGroupPlaced,
        &IZB::DrawScreenPolygon, &IZB::SetMatrix, &IZB::DepthOffset, &IZB::FrameStep,
        &IZB::DrawScreenLine, &IZB::Resize, &IZB::ClearFrame, &IZB::PresentRect, &IZB::SetBkImage,
        &IZB::Unnamed28, &IZB::Unnamed29, &IZB::DrawText, &IZB::MarkId, &IZB::IsIdMarked,
        &IZB::DrawXorLine, &IZB::DrawFrameBorder, &IZB::Unnamed35, &IZB::Unnamed36,
        &IZB::DrawLine2D, &IZB::Unnamed38, &IZB::Unnamed39, &IZB::Unnamed40, &IZB::IsWithinLimit,
        &IZB::HasLimitOrCount, &IZB::SetPair, &IZB::DrawPoint, &IZB::DrawWideLine,
        &IZB::DrawBoldLine, &IZB::DrawScreenTriangle, &IZB::DrawScreenLines, &IZB::DrawFaceGroup,
        &IZB::DrawScreenPoints, &IZB::TextureHook, &IZB::TextureUpdate, &IZB::Notify,
        &IZB::SetCopyTarget, &IZB::DrawScreenQuad, &IZB::Unnamed56);
}

// The driver calls Release, AddPage and Run of the host's sheet by slot: 3rd, 9th and 10th.
TEST(PropertySheetTable, OperationsStandInTheirSlots) {
    ExpectSlotsInOrder(&q5_PROPERTYSHEET::DeleteThis, &q5_PROPERTYSHEET::AddRef,
                       &q5_PROPERTYSHEET::Release, &q5_PROPERTYSHEET::HostOperation4,
                       &q5_PROPERTYSHEET::HostOperation5, &q5_PROPERTYSHEET::HostOperation6,
                       &q5_PROPERTYSHEET::HostOperation7, &q5_PROPERTYSHEET::HostOperation8,
                       &q5_PROPERTYSHEET::AddPage, &q5_PROPERTYSHEET::Run);
}

} // namespace
