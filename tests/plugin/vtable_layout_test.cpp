// The table order of IZB's operations: hosts call them by slot, so the order is a contract.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "zbuffer/izb.h"

namespace {

// Under the Itanium C++ ABI (g++ on Linux and MinGW) a pointer to a virtual member holds
// 1 + the byte offset of its slot in the table.
template <typename Member> int SlotOf(Member member) {
    struct {
        std::uintptr_t ptr;
        std::ptrdiff_t adjust;
    } raw;
    static_assert(sizeof member == sizeof raw);
    std::memcpy(&raw, &member, sizeof raw);
    return static_cast<int>((raw.ptr - 1) / sizeof(void*)) + 1;
}

TEST(IzbTable, OperationsStandInTheirSlots) {
    EXPECT_EQ(SlotOf(&IZB::DeleteThis), 1);
    EXPECT_EQ(SlotOf(&IZB::AddRef), 2);
    EXPECT_EQ(SlotOf(&IZB::Release), 3);
    EXPECT_EQ(SlotOf(&IZB::GetInterfaceName), 4);
    EXPECT_EQ(SlotOf(&IZB::GetInterfaceVersion), 5);
    EXPECT_EQ(SlotOf(&IZB::IsTypeOf), 6);
    EXPECT_EQ(SlotOf(&IZB::SetParam), 7);
    EXPECT_EQ(SlotOf(&IZB::GetParam), 8);
    EXPECT_EQ(SlotOf(&IZB::QueryInfo), 9);
    EXPECT_EQ(SlotOf(&IZB::Invoke), 10);
    EXPECT_EQ(SlotOf(&IZB::Attach), 11);
    EXPECT_EQ(SlotOf(&IZB::Unnamed12), 12);
    EXPECT_EQ(SlotOf(&IZB::GetValue), 13);
    EXPECT_EQ(SlotOf(&IZB::QueryCaps), 14);
    EXPECT_EQ(SlotOf(&IZB::GetDriverString), 15);
    EXPECT_EQ(SlotOf(&IZB::ShowOptions), 16);
    EXPECT_EQ(SlotOf(&IZB::Unnamed17), 17);
    EXPECT_EQ(SlotOf(&IZB::DrawFaceGroupPlaced), 18);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenPolygon), 19);
    EXPECT_EQ(SlotOf(&IZB::SetMatrix), 20);
    EXPECT_EQ(SlotOf(&IZB::DepthOffset), 21);
    EXPECT_EQ(SlotOf(&IZB::FrameStep), 22);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenLine), 23);
    EXPECT_EQ(SlotOf(&IZB::Resize), 24);
    EXPECT_EQ(SlotOf(&IZB::ClearFrame), 25);
    EXPECT_EQ(SlotOf(&IZB::PresentRect), 26);
    EXPECT_EQ(SlotOf(&IZB::SetBkImage), 27);
    EXPECT_EQ(SlotOf(&IZB::Unnamed28), 28);
    EXPECT_EQ(SlotOf(&IZB::Unnamed29), 29);
    EXPECT_EQ(SlotOf(&IZB::DrawText), 30);
    EXPECT_EQ(SlotOf(&IZB::MarkId), 31);
    EXPECT_EQ(SlotOf(&IZB::IsIdMarked), 32);
    EXPECT_EQ(SlotOf(&IZB::DrawXorLine), 33);
    EXPECT_EQ(SlotOf(&IZB::DrawFrameBorder), 34);
    EXPECT_EQ(SlotOf(&IZB::Unnamed35), 35);
    EXPECT_EQ(SlotOf(&IZB::Unnamed36), 36);
    EXPECT_EQ(SlotOf(&IZB::DrawLine2D), 37);
    EXPECT_EQ(SlotOf(&IZB::Unnamed38), 38);
    EXPECT_EQ(SlotOf(&IZB::Unnamed39), 39);
    EXPECT_EQ(SlotOf(&IZB::Unnamed40), 40);
    EXPECT_EQ(SlotOf(&IZB::IsWithinLimit), 41);
    EXPECT_EQ(SlotOf(&IZB::HasLimitOrCount), 42);
    EXPECT_EQ(SlotOf(&IZB::SetPair), 43);
    EXPECT_EQ(SlotOf(&IZB::DrawPoint), 44);
    EXPECT_EQ(SlotOf(&IZB::DrawWideLine), 45);
    EXPECT_EQ(SlotOf(&IZB::DrawBoldLine), 46);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenTriangle), 47);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenLines), 48);
    EXPECT_EQ(SlotOf(&IZB::DrawFaceGroup), 49);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenPoints), 50);
    EXPECT_EQ(SlotOf(&IZB::TextureHook), 51);
    EXPECT_EQ(SlotOf(&IZB::TextureUpdate), 52);
    EXPECT_EQ(SlotOf(&IZB::Notify), 53);
    EXPECT_EQ(SlotOf(&IZB::SetCopyTarget), 54);
    EXPECT_EQ(SlotOf(&IZB::DrawScreenQuad), 55);
    EXPECT_EQ(SlotOf(&IZB::Unnamed56), 56);
}

} // namespace
