// Movable memory blocks: lock counting, sizes, resizing and the low-memory probe.
#include "core/platform/memory_block.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

// The allocation functions are replaced to see, refuse and check the probe's large request.
namespace {
void* gLargeBlock = nullptr;
std::size_t gLargeRequested = 0;
bool gRefuseLarge = false;

void* Allocate(std::size_t n) {
    if (n < (40u << 20)) return std::malloc(n != 0 ? n : 1);
    gLargeRequested = n;
    return gLargeBlock = gRefuseLarge ? nullptr : std::malloc(n);
}

void Release(void* p) {
    if (p == gLargeBlock) gLargeBlock = nullptr;
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

static unsigned char* LockBytes(q5_HMEM block) {
    return static_cast<unsigned char*>(q5_MEM_Lock(block));
}

TEST(MemoryBlock, UnlockAnswersWhetherAnEarlierLockStillHolds) {
    q5_HMEM block = q5_MEM_Alloc(64, false);
    ASSERT_NE(block, nullptr);
    void* first = q5_MEM_Lock(block);
    EXPECT_EQ(q5_MEM_Lock(block), first);
    EXPECT_TRUE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block)); // no lock left to give back
    EXPECT_TRUE(q5_MEM_Free(block));
}

TEST(MemoryBlock, ResizeKeepsTheHandleAndTheContentsButNotWhileLockedToNothing) {
    q5_HMEM block = q5_MEM_Alloc(1000, true);
    ASSERT_NE(block, nullptr);
    unsigned char* bytes = LockBytes(block);
    EXPECT_EQ(bytes[0] + bytes[9] + bytes[999], 0); // zero-filled when asked
    bytes[9] = 63;
    q5_MEM_Unlock(block);
    ASSERT_EQ(q5_MEM_Resize(block, 100000), block);
    EXPECT_GE(q5_MEM_Size(block), 100000u);
    ASSERT_EQ(q5_MEM_Resize(block, 10), block);
    EXPECT_EQ(LockBytes(block)[9], 63);
    // Locked, the block cannot shrink to nothing: it stays as it was and keeps its lock.
    EXPECT_EQ(q5_MEM_Resize(block, 0), nullptr);
    EXPECT_EQ(LockBytes(block)[9], 63);
    EXPECT_TRUE(q5_MEM_Unlock(block));
    EXPECT_FALSE(q5_MEM_Unlock(block));
    // Unlocked, it keeps its handle, loses its storage and has no address until it grows.
    ASSERT_EQ(q5_MEM_Resize(block, 0), block);
    EXPECT_EQ(q5_MEM_Size(block), 0u);
    EXPECT_EQ(q5_MEM_Lock(block), nullptr);
    ASSERT_EQ(q5_MEM_Resize(block, 100), block);
    EXPECT_NE(q5_MEM_Lock(block), nullptr);
    EXPECT_TRUE(q5_MEM_Free(block));
}

TEST(MemoryProbe, TriesTheAskedSizeReleasesItAndAnswersLowOnFailure) {
    EXPECT_FALSE(q5_MEM_IsMemoryLow(false));
    EXPECT_EQ(gLargeRequested, 41943040u);
    EXPECT_FALSE(q5_MEM_IsMemoryLow(true));
    EXPECT_EQ(gLargeRequested, 167772160u);
    EXPECT_EQ(gLargeBlock, nullptr);
    gRefuseLarge = true;
    EXPECT_TRUE(q5_MEM_IsMemoryLow(false));
    gRefuseLarge = false;
}
