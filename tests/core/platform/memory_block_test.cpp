// Movable memory blocks: lock counting, sizes, resizing and the low-memory probe.
#include "core/platform/memory_block.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

// The program's allocation functions are replaced so that the probe's single large request
// can be seen, refused and checked for release.
namespace {
constexpr std::size_t kLargeRequest = 40u << 20;
void* gLargeBlock = nullptr;
std::size_t gLargeRequested = 0;
bool gRefuseLarge = false;

void* Allocate(std::size_t n) {
    if (n < kLargeRequest) return std::malloc(n != 0 ? n : 1);
    gLargeRequested = n;
    return gLargeBlock = gRefuseLarge ? nullptr : std::malloc(n);
}

void Release(void* p) {
    if (p != nullptr && p == gLargeBlock) gLargeBlock = nullptr;
    std::free(p);
}
} // namespace

void* operator new(std::size_t n) {
    if (void* p = Allocate(n)) return p;
    throw std::bad_alloc();
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    return Allocate(n);
}
void operator delete(void* p) noexcept {
    Release(p);
}
void operator delete(void* p, std::size_t) noexcept {
    Release(p);
}

namespace {

unsigned char* LockBytes(q5_HMEM block) {
    return static_cast<unsigned char*>(q5_MEM_Lock(block));
}

TEST(MemoryBlock, UnlockAnswersWhetherAnEarlierLockStillHolds) {
    q5_HMEM block = q5_MEM_Alloc(64, false);
    ASSERT_NE(block, nullptr);
    void* first = q5_MEM_Lock(block);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(q5_MEM_Lock(block), first);
    EXPECT_TRUE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block)); // no lock left to give back
    EXPECT_TRUE(q5_MEM_Free(block));
}

TEST(MemoryBlock, ResizeKeepsTheHandleAndTheContents) {
    q5_HMEM block = q5_MEM_Alloc(1000, true);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(q5_MEM_Size(block), 1000u);
    unsigned char* bytes = LockBytes(block);
    int changed = 0;
    for (int i = 0; i < 1000; ++i) {
        changed += bytes[i] != 0; // zero-filled when asked
        bytes[i] = static_cast<unsigned char>(i * 7);
    }
    EXPECT_EQ(changed, 0);
    q5_MEM_Unlock(block);

    ASSERT_EQ(q5_MEM_Resize(block, 100000), block);
    EXPECT_GE(q5_MEM_Size(block), 100000u);
    bytes = LockBytes(block);
    for (int i = 0; i < 1000; ++i) changed += bytes[i] != static_cast<unsigned char>(i * 7);
    EXPECT_EQ(changed, 0);
    q5_MEM_Unlock(block);

    ASSERT_EQ(q5_MEM_Resize(block, 10), block);
    EXPECT_GE(q5_MEM_Size(block), 10u);
    EXPECT_LT(q5_MEM_Size(block), 1000u);
    EXPECT_EQ(LockBytes(block)[9], 63);
    // A locked block cannot be resized to nothing: the resize fails, the block stays as it was
    // and still holds its lock.
    const std::uint32_t size = q5_MEM_Size(block);
    EXPECT_EQ(q5_MEM_Resize(block, 0), nullptr);
    EXPECT_EQ(q5_MEM_Size(block), size);
    EXPECT_EQ(LockBytes(block)[9], 63);
    EXPECT_TRUE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block));
    EXPECT_TRUE(q5_MEM_Free(block));
}

TEST(MemoryBlock, EmptyBlocksHaveNoAddressUntilTheyGrow) {
    q5_HMEM empty = q5_MEM_Alloc(0, false);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(q5_MEM_Size(empty), 0u);
    EXPECT_EQ(q5_MEM_Lock(empty), nullptr);
    EXPECT_TRUE(q5_MEM_Free(empty));

    // An unlocked block resized to nothing keeps its handle and loses its storage.
    q5_HMEM block = q5_MEM_Alloc(64, false);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(q5_MEM_Resize(block, 0), block);
    EXPECT_EQ(q5_MEM_Size(block), 0u);
    EXPECT_EQ(q5_MEM_Lock(block), nullptr);
    ASSERT_EQ(q5_MEM_Resize(block, 100), block);
    EXPECT_GE(q5_MEM_Size(block), 100u);
    EXPECT_NE(q5_MEM_Lock(block), nullptr);
    EXPECT_FALSE(q5_MEM_Unlock(block));
    EXPECT_TRUE(q5_MEM_Free(block));
}

TEST(MemoryProbe, TriesTheAskedSizeReleasesItAndAnswersLowOnFailure) {
    EXPECT_FALSE(q5_MEM_IsMemoryLow(false));
    EXPECT_EQ(gLargeRequested, 41943040u);
    EXPECT_EQ(gLargeBlock, nullptr);
    EXPECT_FALSE(q5_MEM_IsMemoryLow(true));
    EXPECT_EQ(gLargeRequested, 167772160u);
    EXPECT_EQ(gLargeBlock, nullptr);

    gRefuseLarge = true;
    gLargeRequested = 0;
    const bool low = q5_MEM_IsMemoryLow(true);
    gRefuseLarge = false;
    EXPECT_TRUE(low);
    EXPECT_EQ(gLargeRequested, 167772160u);
}

} // namespace
