// Collections: growth, index checks and their reports, the fetch cache, sorting, table order.
#include "core/containers/collection.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "core/containers/generic.h"
#include "support/recording_host.h"

namespace {

// Items are never dereferenced by the collection, so distinct addresses do.
void* Item(std::int64_t i) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(i + 1) * 16);
}

std::vector<void*> g_freed;
void RecordFree(void* item) {
    g_freed.push_back(item);
}

using Strings = std::vector<std::string>;

class Collection : public ::testing::Test {
protected:
    void SetUp() override { g_freed.clear(); }
    void TearDown() override {
        for (q5_COLLECTION* c : made_) c->Release();
    }

    // A collection filled with Item(0) .. Item(n - 1).
    q5_COLLECTION* Filled(std::int32_t limit, std::int32_t delta, std::int64_t n) {
        q5_COLLECTION* c = made_.emplace_back(q5_COLLECTION::Create(limit, delta));
        for (std::int64_t i = 0; i < n; ++i) c->Insert(Item(i));
        return c;
    }
    Strings Reports() const {
        Strings texts;
        for (const auto& r : host.narrowReports) texts.push_back(r.text);
        return texts;
    }

    RecordingHost host;
    ScopedHostAPI current{&host};
    std::vector<q5_COLLECTION*> made_;
};

// Up to 512 slots the caller's step is used; past that it is raised to a floor of 256, 1024 from
// 2049 slots and 8192 from 16385, unless it is larger already. Without a step nothing grows.
TEST_F(Collection, GrowthStepDependsOnTheLimit) {
    const struct {
        std::int32_t limit, delta;
        std::int64_t grownLimit, grownDelta;
    } cases[] = {{512, 1, 513, 1},      {513, 1, 769, 256},      {2048, 1, 2304, 256},
                 {2049, 1, 3073, 1024}, {16385, 1, 24577, 8192}, {600, 300, 900, 300}};
    for (const auto& c : cases) {
        q5_COLLECTION* grown = Filled(c.limit, c.delta, c.limit + 1);
        EXPECT_EQ(grown->Limit(), c.grownLimit) << c.limit;
        EXPECT_EQ(grown->Delta(), c.grownDelta) << c.limit;
    }
    q5_COLLECTION* c = Filled(513, 1, 770); // the items survive each move
    for (std::int64_t i = 0; i < 770; ++i) ASSERT_EQ(c->At(i), Item(i)) << i;

    EXPECT_EQ(Filled(0, 0, 0)->Insert(Item(0)), -1);
    EXPECT_EQ(Filled(4, 0, 5)->Count(), 4);
    EXPECT_EQ(Reports(),
              (Strings{"To many items[0] in collection", "To many items[4] in collection"}));
}

TEST_F(Collection, BadIndicesReportTheIndexCutTo32Bits) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    EXPECT_EQ(c->At(-1), nullptr);
    EXPECT_EQ(c->At(0x100000005), nullptr);
    EXPECT_FALSE(c->AtDelete(2));
    EXPECT_FALSE(c->AtPut(-3, Item(9)));
    EXPECT_FALSE(c->AtInsert(3, Item(8))); // count is a valid place, count + 1 is not
    EXPECT_FALSE(c->AtFree(5));            // silently
    const std::string bad = "Invalid index[", tail = "] in access to collection";
    EXPECT_EQ(Reports(), (Strings{bad + "-1" + tail, bad + "5" + tail, bad + "2" + tail,
                                  bad + "-3" + tail, bad + "3" + tail}));
    EXPECT_TRUE(c->AtInsert(2, Item(7)));
    EXPECT_EQ(c->At(2), Item(7));
}

// An empty cache reads as index -1 holding null, so a null probe finds nothing until fetched.
TEST_F(Collection, WritesEmptyTheCacheButSwapDoesNot) {
    q5_COLLECTION* c = Filled(8, 8, 3);
    EXPECT_EQ(c->At(1), Item(1)); // each write below follows a fetch of index 1
    EXPECT_TRUE(c->AtInsert(1, Item(9)));
    EXPECT_EQ(c->At(3), Item(2));
    EXPECT_EQ(c->At(1), Item(9));
    EXPECT_TRUE(c->AtPut(1, nullptr));
    EXPECT_EQ(c->IndexOf(nullptr), -1);
    EXPECT_EQ(c->At(1), nullptr);
    EXPECT_EQ(c->IndexOf(nullptr), 1);
    c->Swap(1, 2); // the cache still names index 2 with the item from before the swap
    EXPECT_EQ(c->At(2), Item(1));
    EXPECT_EQ(c->At(1), Item(1));
    EXPECT_EQ(c->At(2), nullptr);
}

TEST_F(Collection, OnlyFreeingOperationsPassItemsToTheCallback) {
    q5_COLLECTION* c = Filled(8, 8, 5);
    c->freeItem = RecordFree;
    EXPECT_TRUE(c->AtFree(1));
    EXPECT_TRUE(c->FreeItem(Item(3)));
    EXPECT_FALSE(c->FreeItem(Item(3)));
    c->DeleteAll(); // frees nothing
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(1), Item(3)}));
    c->Insert(Item(0));
    c->Insert(Item(2));
    c->FreeAll();
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(1), Item(3), Item(0), Item(2)}));
    EXPECT_EQ(c->Count(), 0);
}

struct Named final : q5_GENERIC {
    Named(const char16_t* text, std::int32_t t) : type(t) { name.Set(text); }
    std::int32_t GetType() override { return type; }
    std::int32_t type;
};

TEST_F(Collection, GetByNameMatchesNameExactlyAndTypeUnlessAny) {
    Named mesh(u"Box", 3), other(u"Box", 7), cached(u"Box", 7);
    q5_COLLECTION* c = Filled(8, 8, 0);
    for (Named* n : {static_cast<Named*>(nullptr), &mesh, &other, &cached}) c->Insert(n);
    EXPECT_EQ(c->GetByNameW(u"Box", -1), &mesh);
    EXPECT_EQ(c->GetByNameW(u"box", 0), nullptr);
    EXPECT_EQ(c->GetByNameA("Box", 7), &other);
    EXPECT_EQ(c->At(3), &cached); // the cached item is tried first
    EXPECT_EQ(c->GetByNameA("Box", 7), &cached);
}

// Sorted collections hold pointers to keyed records; equal keys with different tags show
// where an equal item went.
struct Keyed {
    int key;
    int tag;
};

std::uint64_t g_lastUserValue = 0;
int CompareKeys(void* item, void* key, std::uint64_t userValue) {
    g_lastUserValue = userValue;
    return static_cast<Keyed*>(item)->key - static_cast<Keyed*>(key)->key;
}

class Sorted : public ::testing::Test {
protected:
    void TearDown() override { c->Release(); }
    std::vector<int> Tags() {
        std::vector<int> tags;
        for (std::int64_t i = 0; i < c->Count(); ++i)
            tags.push_back(static_cast<Keyed*>(c->At(i))->tag);
        return tags;
    }

    q5_SORTEDCOLLECTION* c = q5_SORTEDCOLLECTION::Create(CompareKeys, 1000, 1000);
};

TEST_F(Sorted, IgnoresTheCallersGeometry) {
    Keyed items[33];
    for (int i = 0; i < 32; ++i) c->Insert(&(items[i] = {i, i}));
    EXPECT_EQ(c->Limit(), 32);
    EXPECT_EQ(c->Insert(&(items[32] = {32, 32})), 32);
    EXPECT_EQ(c->Limit(), 48);
}

TEST_F(Sorted, EqualItemsAreRefusedOrGoBeforeTheEqualRun) {
    Keyed items[] = {{1, 1}, {2, 2}, {3, 5}, {2, 3}, {2, 4}};
    EXPECT_EQ(c->Insert(&items[2]), 0);
    EXPECT_EQ(c->Insert(&items[0]), 0);
    EXPECT_EQ(c->Insert(&items[1]), 1);
    EXPECT_EQ(c->Insert(&items[3]), -1);
    EXPECT_EQ(Tags(), (std::vector<int>{1, 2, 5}));
    EXPECT_FALSE(c->EnableDuplicates(true));
    EXPECT_TRUE(c->EnableDuplicates(true));
    EXPECT_EQ(c->Insert(&items[3]), 1);
    EXPECT_EQ(c->Insert(&items[4]), 1);
    EXPECT_EQ(Tags(), (std::vector<int>{1, 4, 3, 2, 5}));
}

TEST_F(Sorted, SearchIndexOfAndDeleteItemGoByKey) {
    Keyed items[] = {{10, 1}, {20, 2}, {30, 3}};
    for (Keyed& k : items) c->Insert(&k);
    std::int64_t index = -7;
    Keyed probe{25, 9};
    EXPECT_FALSE(c->Search(&probe, index));
    EXPECT_EQ(index, 2);
    probe.key = 20;
    c->userValue = 0x1234567890;
    EXPECT_EQ(c->IndexOf(&probe), 1);
    EXPECT_EQ(g_lastUserValue, 0x1234567890u);
    EXPECT_TRUE(c->DeleteItem(&probe));
    EXPECT_EQ(Tags(), (std::vector<int>{1, 3}));
}

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

TEST(CollectionTable, OperationsStandInTheirSlots) {
    using C = q5_COLLECTION;
    using S = q5_SORTEDCOLLECTION;
    // Slot 1 is DeleteThis and slot 4 the destructor; the rest follow in declaration order.
    const int slots[] = {
        SlotOf(&C::AddRef),    SlotOf(&C::Release),         SlotOf(&C::DestroyObject),
        SlotOf(&C::At),        SlotOf(&C::AtDelete),        SlotOf(&C::AtFree),
        SlotOf(&C::AtInsert),  SlotOf(&C::AtPut),           SlotOf(&C::DeleteItem),
        SlotOf(&C::DeleteAll), SlotOf(&C::IndexOf),         SlotOf(&C::Insert),
        SlotOf(&C::Swap),      SlotOf(&C::IsIndexValid),    SlotOf(&C::FreeAll),
        SlotOf(&C::FreeItem),  SlotOf(&C::GetByNameA),      SlotOf(&C::GetByNameW),
        SlotOf(&S::Search),    SlotOf(&S::EnableDuplicates)};
    for (int i = 0; i < 20; ++i) EXPECT_EQ(slots[i], i + 2) << i;
    EXPECT_EQ(SlotOf(&S::IndexOf), 12);
    EXPECT_EQ(SlotOf(&S::Insert), 13);

    // Slot 1, called as a host built elsewhere does, destroys the object and frees its items.
    g_freed.clear();
    q5_COLLECTION* c = q5_COLLECTION::Create(4, 4);
    c->freeItem = RecordFree;
    c->Insert(Item(0));
    reinterpret_cast<void (*)(void*)>((*reinterpret_cast<void***>(c))[0])(c);
    EXPECT_EQ(g_freed, std::vector<void*>{Item(0)});
}

} // namespace
