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
using Items = std::vector<void*>;

class Collection : public ::testing::Test {
protected:
    void SetUp() override { g_freed.clear(); }
    void TearDown() override {
        for (q5_COLLECTION* c : made_) c->Release();
    }

    // A collection filled with Item(0) .. Item(n - 1).
    q5_COLLECTION* Filled(std::int32_t limit, std::int32_t delta, std::int64_t n) {
        q5_COLLECTION* c = q5_COLLECTION::Create(limit, delta);
        if (c != nullptr) made_.push_back(c);
        for (std::int64_t i = 0; c != nullptr && i < n; ++i) c->Insert(Item(i));
        return c;
    }
    Strings Reports() const {
        Strings texts;
        for (const auto& r : host.narrowReports) texts.push_back(r.text);
        return texts;
    }

    RecordingHost host;
    ScopedHostAPI current{&host};

private:
    std::vector<q5_COLLECTION*> made_;
};

TEST_F(Collection, WithoutAStepTheItemPastTheLimitIsRefused) {
    q5_COLLECTION* none = Filled(0, 0, 0);
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->Insert(Item(0)), -1);
    EXPECT_EQ(none->Count(), 0);
    q5_COLLECTION* four = Filled(4, 0, 4);
    EXPECT_EQ(Reports(), Strings{"To many items[0] in collection"});
    EXPECT_EQ(host.narrowReports[0].level, 1);
    EXPECT_EQ(four->Insert(Item(4)), -1);
    EXPECT_EQ(four->Count(), 4);
    EXPECT_EQ(four->At(3), Item(3));
    EXPECT_EQ(Reports(),
              (Strings{"To many items[0] in collection", "To many items[4] in collection"}));
}

// Up to 512 slots the caller's step is used; past that it is raised to a floor of 256, 1024 from
// 2049 slots and 8192 from 16385, unless it is larger already.
TEST_F(Collection, GrowthStepDependsOnTheLimit) {
    const struct {
        std::int32_t limit, delta;
        std::int64_t grownLimit, grownDelta;
    } cases[] = {{512, 1, 513, 1},     {3, 5, 8, 5},          {513, 1, 769, 256},
                 {2048, 1, 2304, 256}, {2049, 1, 3073, 1024}, {16385, 1, 24577, 8192},
                 {600, 300, 900, 300}};
    for (const auto& c : cases) {
        q5_COLLECTION* grown = Filled(c.limit, c.delta, c.limit + 1);
        EXPECT_EQ(grown->Limit(), c.grownLimit) << c.limit;
        EXPECT_EQ(grown->Delta(), c.grownDelta) << c.limit;
        EXPECT_EQ(grown->At(c.limit), Item(c.limit)) << c.limit;
    }
    // The raised step is kept, and the items survive each move.
    q5_COLLECTION* c = Filled(513, 1, 770);
    EXPECT_EQ(c->Limit(), 1025);
    EXPECT_EQ(c->Delta(), 256);
    for (std::int64_t i = 0; i < 770; ++i) ASSERT_EQ(c->At(i), Item(i)) << i;
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(Collection, BadIndicesReportTheIndexCutTo32Bits) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    EXPECT_EQ(c->At(-1), nullptr);
    EXPECT_EQ(c->At(2), nullptr);
    EXPECT_EQ(c->At(0x100000005), nullptr);
    EXPECT_FALSE(c->AtDelete(2));
    EXPECT_FALSE(c->AtPut(-3, Item(9)));
    EXPECT_FALSE(c->AtInsert(3, Item(8))); // count is a valid place, count + 1 is not
    EXPECT_FALSE(c->AtInsert(-1, Item(8)));
    c->Swap(0, 5);
    EXPECT_FALSE(c->AtFree(5)); // silently
    const std::string bad = "Invalid index[";
    const std::string tail = "] in access to collection";
    EXPECT_EQ(Reports(),
              (Strings{bad + "-1" + tail, bad + "2" + tail, bad + "5" + tail, bad + "2" + tail,
                       bad + "-3" + tail, bad + "3" + tail, bad + "-1" + tail, bad + "5" + tail}));
    EXPECT_EQ(c->Count(), 2);
    EXPECT_TRUE(c->AtInsert(2, Item(7)));
    EXPECT_EQ(c->At(2), Item(7));
}

TEST_F(Collection, WritesShiftTheLaterItemsAndEmptyTheCache) {
    q5_COLLECTION* c = Filled(8, 8, 3);
    EXPECT_EQ(c->At(1), Item(1)); // each write below follows a fetch of index 1
    EXPECT_TRUE(c->AtInsert(1, Item(9)));
    EXPECT_EQ(c->At(1), Item(9));
    EXPECT_EQ(c->At(0), Item(0));
    EXPECT_EQ(c->At(3), Item(2));
    EXPECT_EQ(c->At(1), Item(9));
    EXPECT_TRUE(c->AtDelete(0));
    EXPECT_EQ(c->Count(), 3);
    EXPECT_EQ(c->At(1), Item(1));
    EXPECT_TRUE(c->AtPut(1, Item(5)));
    EXPECT_EQ(c->At(1), Item(5));
    EXPECT_EQ(c->At(0), Item(9));
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(Collection, OnlyFreeingOperationsPassItemsToTheCallback) {
    q5_COLLECTION* c = Filled(8, 8, 5);
    c->freeItem = RecordFree;
    EXPECT_TRUE(c->AtFree(1));
    EXPECT_TRUE(c->FreeItem(Item(3)));
    EXPECT_FALSE(c->FreeItem(Item(3)));
    EXPECT_EQ(g_freed, (Items{Item(1), Item(3)}));
    c->FreeAll();
    EXPECT_EQ(g_freed, (Items{Item(1), Item(3), Item(0), Item(2), Item(4)}));
    EXPECT_EQ(c->Count(), 0);

    q5_COLLECTION* kept = Filled(4, 4, 3);
    kept->freeItem = RecordFree;
    kept->DeleteAll();
    EXPECT_EQ(kept->Count(), 0);
    EXPECT_EQ(kept->Limit(), 4);
    EXPECT_EQ(g_freed.size(), 5u);
}

TEST_F(Collection, DeleteItemRemovesTheFirstSlotHoldingThePointer) {
    q5_COLLECTION* c = Filled(8, 8, 3);
    c->Insert(Item(1));
    EXPECT_EQ(c->IndexOf(Item(1)), 1);
    EXPECT_TRUE(c->DeleteItem(Item(1)));
    EXPECT_EQ(c->IndexOf(Item(1)), 2);
    EXPECT_FALSE(c->DeleteItem(Item(7)));
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(Collection, CacheFindsNullSlotsAndSurvivesSwap) {
    q5_COLLECTION* c = Filled(8, 8, 1);
    c->Insert(nullptr);
    EXPECT_EQ(c->IndexOf(nullptr), -1);
    EXPECT_EQ(c->At(1), nullptr);
    EXPECT_EQ(c->IndexOf(nullptr), 1);

    q5_COLLECTION* s = Filled(8, 8, 2);
    s->Swap(0, 1); // the cache still names index 1 with the item from before the swap
    EXPECT_EQ(s->At(1), Item(1));
    EXPECT_EQ(s->IndexOf(Item(1)), 1);
    EXPECT_EQ(s->At(0), Item(1));
    EXPECT_EQ(s->At(1), Item(0));
}

class Named final : public q5_GENERIC {
public:
    Named(const char16_t* text, std::int32_t type) : type_(type) { name.Set(text); }
    std::int32_t GetType() override { return type_; }

private:
    std::int32_t type_;
};

TEST_F(Collection, GetByNameMatchesNameExactlyAndTypeUnlessAny) {
    Named mesh(u"Box", 3), light(u"Lamp", 7), other(u"Box", 7), cached(u"Lamp", 7);
    q5_COLLECTION* c = Filled(8, 8, 0);
    for (Named* n : {static_cast<Named*>(nullptr), &mesh, &light, &other}) c->Insert(n);
    EXPECT_EQ(c->GetByNameW(u"Box", 0), &mesh);
    EXPECT_EQ(c->GetByNameW(u"Box", -1), &mesh);
    EXPECT_EQ(c->GetByNameW(u"Box", 7), &other);
    EXPECT_EQ(c->GetByNameW(u"box", 0), nullptr);
    EXPECT_EQ(c->GetByNameW(u"Box", 5), nullptr);
    EXPECT_EQ(c->GetByNameW(nullptr, 0), nullptr);
    EXPECT_EQ(c->GetByNameA("Lamp", 7), &light);
    EXPECT_EQ(c->GetByNameA(nullptr, 0), nullptr);
    // The cached item is tried first.
    c->Insert(&cached);
    EXPECT_EQ(c->At(4), &cached);
    EXPECT_EQ(c->GetByNameA("Lamp", 7), &cached);
}

// Sorted collections hold pointers to keyed records; equal keys with different tags show
// where an equal item went.
struct Keyed {
    int key;
    int tag;
};

std::vector<std::uint64_t> g_userValues;
int CompareKeys(void* item, void* key, std::uint64_t userValue) {
    g_userValues.push_back(userValue);
    return static_cast<Keyed*>(item)->key - static_cast<Keyed*>(key)->key;
}

class Sorted : public ::testing::Test {
protected:
    void SetUp() override {
        g_userValues.clear();
        c = q5_SORTEDCOLLECTION::Create(CompareKeys, 1000, 1000);
        ASSERT_NE(c, nullptr);
    }
    void TearDown() override { c->Release(); }
    std::vector<int> Tags() {
        std::vector<int> tags;
        for (std::int64_t i = 0; i < c->Count(); ++i)
            tags.push_back(static_cast<Keyed*>(c->At(i))->tag);
        return tags;
    }

    q5_SORTEDCOLLECTION* c = nullptr;
};

TEST_F(Sorted, IgnoresTheCallersGeometry) {
    EXPECT_EQ(c->Limit(), 32);
    EXPECT_EQ(c->Delta(), 16);
    Keyed items[33];
    for (int i = 0; i < 32; ++i) c->Insert(&(items[i] = {i, i}));
    EXPECT_EQ(c->Limit(), 32);
    EXPECT_EQ(c->Insert(&(items[32] = {32, 32})), 32);
    EXPECT_EQ(c->Limit(), 48);
}

TEST_F(Sorted, InsertKeepsKeyOrderAndRefusesEqualItems) {
    Keyed a{5, 1}, b{1, 2}, d{3, 3}, again{3, 4};
    EXPECT_EQ(c->Insert(&a), 0);
    EXPECT_EQ(c->Insert(&b), 0);
    EXPECT_EQ(c->Insert(&d), 1);
    EXPECT_EQ(c->Insert(&again), -1);
    EXPECT_EQ(Tags(), (std::vector<int>{2, 3, 1}));
}

TEST_F(Sorted, WithDuplicatesAnEqualItemGoesBeforeTheEqualRun) {
    EXPECT_FALSE(c->EnableDuplicates(true));
    EXPECT_TRUE(c->EnableDuplicates(true));
    Keyed items[] = {{1, 1}, {2, 2}, {2, 3}, {2, 4}, {3, 5}};
    for (Keyed& k : items) c->Insert(&k);
    EXPECT_EQ(Tags(), (std::vector<int>{1, 4, 3, 2, 5}));
    Keyed late{2, 6};
    EXPECT_EQ(c->Insert(&late), 1);
    EXPECT_EQ(Tags(), (std::vector<int>{1, 6, 4, 3, 2, 5}));
    EXPECT_TRUE(c->EnableDuplicates(false));
}

TEST_F(Sorted, SearchIndexOfAndDeleteItemGoByKey) {
    Keyed items[] = {{10, 1}, {20, 2}, {30, 3}};
    for (Keyed& k : items) c->Insert(&k);
    const struct {
        int key;
        bool found;
        std::int64_t index;
    } probes[] = {{25, false, 2}, {5, false, 0}, {35, false, 3}, {30, true, 2}};
    for (const auto& p : probes) {
        std::int64_t index = -7;
        Keyed probe{p.key, 0};
        EXPECT_EQ(c->Search(&probe, index), p.found) << p.key;
        EXPECT_EQ(index, p.index) << p.key;
    }
    Keyed probe{20, 9};
    EXPECT_EQ(c->IndexOf(&probe), 1);
    EXPECT_TRUE(c->DeleteItem(&probe));
    EXPECT_EQ(Tags(), (std::vector<int>{1, 3}));
    EXPECT_EQ(c->IndexOf(&probe), -1);
}

TEST_F(Sorted, CompareReceivesTheUserValue) {
    Keyed a{1, 1}, b{2, 2};
    c->Insert(&a);
    c->userValue = 0x1234567890;
    c->Insert(&b);
    ASSERT_EQ(g_userValues.size(), 1u);
    EXPECT_EQ(g_userValues[0], 0x1234567890u);
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
    // Slot 1 is DeleteThis; the rest follow in declaration order.
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
}

// Calls slot n (1-based) the way a host built elsewhere does.
template <typename R, typename... A> R CallSlot(void* object, int n, A... args) {
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<R (*)(void*, A...)>(table[n - 1])(object, args...);
}

// The last Release, slot 1 and the destructor slot destroy the object, and free its items only
// through a callback.
TEST(CollectionTable, FirstSlotAndDestructorSlotDestroyTheObject) {
    g_freed.clear();
    q5_COLLECTION* plain = q5_COLLECTION::Create(4, 4);
    plain->Insert(Item(0));
    EXPECT_EQ(plain->AddRef(), 2u);
    EXPECT_EQ(plain->Release(), 1u);
    EXPECT_EQ(plain->Release(), 0u);
    q5_COLLECTION* c = q5_COLLECTION::Create(4, 4);
    c->freeItem = RecordFree;
    c->Insert(Item(0));
    c->Insert(Item(1));
    CallSlot<void>(c, 1);
    EXPECT_EQ(g_freed, (Items{Item(0), Item(1)}));

    q5_SORTEDCOLLECTION* s = q5_SORTEDCOLLECTION::Create(CompareKeys, 0, 0);
    Keyed k{1, 1};
    s->freeItem = RecordFree;
    s->Insert(&k);
    EXPECT_EQ(CallSlot<void*>(s, 4, std::uint32_t{1}), static_cast<void*>(s));
    EXPECT_EQ(g_freed, (Items{Item(0), Item(1), &k}));
}

} // namespace
