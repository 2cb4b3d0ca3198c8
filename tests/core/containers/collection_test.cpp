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

class Collection : public ::testing::Test {
protected:
    void SetUp() override { g_freed.clear(); }
    void TearDown() override {
        for (q5_COLLECTION* c : made_) c->Release();
    }

    q5_COLLECTION* Make(std::int32_t limit, std::int32_t delta) {
        q5_COLLECTION* c = q5_COLLECTION::Create(limit, delta);
        if (c != nullptr) made_.push_back(c);
        return c;
    }
    // A collection filled with Item(0) .. Item(n - 1).
    q5_COLLECTION* Filled(std::int32_t limit, std::int32_t delta, std::int64_t n) {
        q5_COLLECTION* c = Make(limit, delta);
        for (std::int64_t i = 0; i < n; ++i) c->Insert(Item(i));
        return c;
    }
    std::vector<std::string> Reports() const {
        std::vector<std::string> texts;
        for (const auto& r : host.narrowReports) texts.push_back(r.text);
        return texts;
    }

    RecordingHost host;
    ScopedHostAPI current{&host};

private:
    std::vector<q5_COLLECTION*> made_;
};

using Strings = std::vector<std::string>;

TEST_F(Collection, WithoutSlotsOrStepTheFirstInsertIsRefused) {
    q5_COLLECTION* c = Make(0, 0);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->Insert(Item(0)), -1);
    EXPECT_EQ(c->Count(), 0);
    EXPECT_EQ(Reports(), Strings{"To many items[0] in collection"});
    EXPECT_EQ(host.narrowReports[0].level, 1);
}

TEST_F(Collection, WithoutStepTheItemPastTheLimitIsRefused) {
    q5_COLLECTION* c = Filled(4, 0, 4);
    EXPECT_TRUE(host.narrowReports.empty());
    EXPECT_EQ(c->Insert(Item(4)), -1);
    EXPECT_EQ(Reports(), Strings{"To many items[4] in collection"});
    EXPECT_EQ(c->Count(), 4);
    EXPECT_EQ(c->At(3), Item(3));
}

TEST_F(Collection, UpTo512SlotsGrowsByTheCallersStep) {
    q5_COLLECTION* c = Filled(512, 1, 513);
    EXPECT_EQ(c->Limit(), 513);
    EXPECT_EQ(c->Delta(), 1);
    q5_COLLECTION* d = Filled(3, 5, 4);
    EXPECT_EQ(d->Limit(), 8);
}

TEST_F(Collection, Past512SlotsTheStepIsRaisedAndKept) {
    q5_COLLECTION* c = Filled(513, 1, 514);
    EXPECT_EQ(c->Limit(), 769);
    EXPECT_EQ(c->Delta(), 256);
    for (std::int64_t i = 514; i <= 769; ++i) c->Insert(Item(i));
    EXPECT_EQ(c->Limit(), 1025);
    EXPECT_EQ(c->Delta(), 256);
    for (std::int64_t i = 0; i <= 769; ++i) ASSERT_EQ(c->At(i), Item(i)) << i;
}

TEST_F(Collection, StepFloorsRiseAt2049And16385Slots) {
    q5_COLLECTION* below = Filled(2048, 1, 2049);
    EXPECT_EQ(below->Limit(), 2048 + 256);
    q5_COLLECTION* mid = Filled(2049, 1, 2050);
    EXPECT_EQ(mid->Limit(), 2049 + 1024);
    EXPECT_EQ(mid->Delta(), 1024);
    q5_COLLECTION* big = Filled(16385, 1, 16386);
    EXPECT_EQ(big->Limit(), 16385 + 8192);
    EXPECT_EQ(big->Delta(), 8192);
    EXPECT_EQ(big->At(16385), Item(16385));
    q5_COLLECTION* wide = Filled(600, 300, 601);
    EXPECT_EQ(wide->Limit(), 900) << "a step above the floor is kept";
}

TEST_F(Collection, BadIndicesReportTheIndexCutTo32Bits) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    EXPECT_EQ(c->At(-1), nullptr);
    EXPECT_EQ(c->At(2), nullptr);
    EXPECT_EQ(c->At(0x100000005), nullptr);
    EXPECT_FALSE(c->AtDelete(2));
    EXPECT_FALSE(c->AtPut(-3, Item(9)));
    EXPECT_EQ(Reports(), (Strings{"Invalid index[-1] in access to collection",
                                  "Invalid index[2] in access to collection",
                                  "Invalid index[5] in access to collection",
                                  "Invalid index[2] in access to collection",
                                  "Invalid index[-3] in access to collection"}));
    EXPECT_EQ(c->Count(), 2);
}

TEST_F(Collection, AtInsertTakesCountButNothingBeyond) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    EXPECT_TRUE(c->AtInsert(2, Item(7)));
    EXPECT_FALSE(c->AtInsert(4, Item(8)));
    EXPECT_FALSE(c->AtInsert(-1, Item(8)));
    EXPECT_EQ(Reports(), (Strings{"Invalid index[4] in access to collection",
                                  "Invalid index[-1] in access to collection"}));
    EXPECT_EQ(c->Count(), 3);
    EXPECT_EQ(c->At(2), Item(7));
}

TEST_F(Collection, InsertAndDeleteShiftTheLaterItems) {
    q5_COLLECTION* c = Filled(8, 8, 3);
    EXPECT_TRUE(c->AtInsert(1, Item(9)));
    EXPECT_EQ(c->At(0), Item(0));
    EXPECT_EQ(c->At(1), Item(9));
    EXPECT_EQ(c->At(3), Item(2));
    EXPECT_TRUE(c->AtDelete(0));
    EXPECT_EQ(c->Count(), 3);
    EXPECT_EQ(c->At(0), Item(9));
    EXPECT_EQ(c->At(2), Item(2));
    EXPECT_TRUE(c->AtPut(2, Item(5)));
    EXPECT_EQ(c->At(2), Item(5));
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(Collection, DeleteAllKeepsTheSlotsAndFreesNothing) {
    q5_COLLECTION* c = Filled(4, 4, 3);
    c->freeItem = RecordFree;
    c->DeleteAll();
    EXPECT_EQ(c->Count(), 0);
    EXPECT_EQ(c->Limit(), 4);
    EXPECT_TRUE(g_freed.empty());
}

TEST_F(Collection, FreeingOperationsPassItemsToTheCallback) {
    q5_COLLECTION* c = Filled(8, 8, 5);
    c->freeItem = RecordFree;
    EXPECT_FALSE(c->AtFree(5));
    EXPECT_TRUE(host.narrowReports.empty()) << "AtFree fails silently";
    EXPECT_TRUE(c->AtFree(1));
    EXPECT_TRUE(c->FreeItem(Item(3)));
    EXPECT_FALSE(c->FreeItem(Item(3)));
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(1), Item(3)}));
    c->FreeAll();
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(1), Item(3), Item(0), Item(2), Item(4)}));
    EXPECT_EQ(c->Count(), 0);
}

TEST_F(Collection, LastReleaseFreesItemsOnlyThroughACallback) {
    q5_COLLECTION* plain = q5_COLLECTION::Create(4, 4);
    plain->Insert(Item(0));
    EXPECT_EQ(plain->Release(), 0u);
    q5_COLLECTION* owning = q5_COLLECTION::Create(4, 4);
    owning->freeItem = RecordFree;
    owning->Insert(Item(0));
    owning->Insert(Item(1));
    EXPECT_EQ(owning->AddRef(), 2u);
    EXPECT_EQ(owning->Release(), 1u);
    EXPECT_TRUE(g_freed.empty());
    EXPECT_EQ(owning->Release(), 0u);
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(0), Item(1)}));
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

TEST_F(Collection, NullProbeFindsANullSlotOnlyThroughTheCache) {
    q5_COLLECTION* c = Filled(8, 8, 1);
    c->Insert(nullptr);
    EXPECT_EQ(c->IndexOf(nullptr), -1);
    EXPECT_EQ(c->At(1), nullptr);
    EXPECT_EQ(c->IndexOf(nullptr), 1);
}

TEST_F(Collection, SwapLeavesTheCacheNamingThePreSwapItem) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    c->Swap(0, 1);
    EXPECT_EQ(c->At(1), Item(1));
    EXPECT_EQ(c->IndexOf(Item(1)), 1);
    EXPECT_EQ(c->At(0), Item(1));
    EXPECT_EQ(c->At(1), Item(0));
}

TEST_F(Collection, WritesEmptyTheCache) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    EXPECT_EQ(c->At(1), Item(1));
    c->AtPut(1, Item(5));
    EXPECT_EQ(c->At(1), Item(5));
    c->AtInsert(0, Item(6));
    EXPECT_EQ(c->At(1), Item(0));
    c->AtDelete(0);
    EXPECT_EQ(c->At(1), Item(5));
}

TEST_F(Collection, SwapWithABadIndexReportsIt) {
    q5_COLLECTION* c = Filled(8, 8, 2);
    c->Swap(0, 5);
    EXPECT_EQ(Reports(), Strings{"Invalid index[5] in access to collection"});
    EXPECT_EQ(c->Count(), 2);
}

class Named final : public q5_GENERIC {
public:
    Named(const char16_t* text, std::int32_t type) : type_(type) { name.Set(text); }
    std::int32_t GetType() override { return type_; }

private:
    std::int32_t type_;
};

TEST_F(Collection, GetByNameMatchesNameExactlyAndTypeUnlessAny) {
    Named mesh(u"Box", 3), light(u"Lamp", 7), other(u"Box", 7);
    q5_COLLECTION* c = Make(8, 8);
    c->Insert(nullptr);
    c->Insert(&mesh);
    c->Insert(&light);
    c->Insert(&other);
    EXPECT_EQ(c->GetByNameW(u"Box", 0), &mesh);
    EXPECT_EQ(c->GetByNameW(u"Box", -1), &mesh);
    EXPECT_EQ(c->GetByNameW(u"Box", 7), &other);
    EXPECT_EQ(c->GetByNameW(u"box", 0), nullptr);
    EXPECT_EQ(c->GetByNameW(u"Box", 5), nullptr);
    EXPECT_EQ(c->GetByNameW(nullptr, 0), nullptr);
    EXPECT_EQ(c->GetByNameA("Lamp", 7), &light);
    EXPECT_EQ(c->GetByNameA(nullptr, 0), nullptr);
}

TEST_F(Collection, GetByNameTriesTheCachedItemFirst) {
    Named first(u"Box", 1), second(u"Box", 1);
    q5_COLLECTION* c = Make(8, 8);
    c->Insert(&first);
    c->Insert(&second);
    EXPECT_EQ(c->At(1), &second);
    EXPECT_EQ(c->GetByNameW(u"Box", 1), &second);
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
    std::vector<Keyed> items(33);
    for (int i = 0; i < 32; ++i) {
        items[i] = {i, i};
        c->Insert(&items[i]);
    }
    EXPECT_EQ(c->Limit(), 32);
    items[32] = {32, 32};
    EXPECT_EQ(c->Insert(&items[32]), 32);
    EXPECT_EQ(c->Limit(), 48);
}

TEST_F(Sorted, InsertKeepsKeyOrderAndReturnsThePosition) {
    Keyed a{5, 1}, b{1, 2}, d{3, 3};
    EXPECT_EQ(c->Insert(&a), 0);
    EXPECT_EQ(c->Insert(&b), 0);
    EXPECT_EQ(c->Insert(&d), 1);
    EXPECT_EQ(Tags(), (std::vector<int>{2, 3, 1}));
}

TEST_F(Sorted, WithoutDuplicatesAnEqualItemIsRefused) {
    Keyed a{1, 1}, b{2, 2}, again{2, 3};
    c->Insert(&a);
    c->Insert(&b);
    EXPECT_EQ(c->Insert(&again), -1);
    EXPECT_EQ(Tags(), (std::vector<int>{1, 2}));
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

TEST_F(Sorted, SearchGivesTheInsertionPositionWhenAbsent) {
    Keyed items[] = {{10, 1}, {20, 2}, {30, 3}};
    for (Keyed& k : items) c->Insert(&k);
    std::int64_t index = -7;
    Keyed probe{25, 0};
    EXPECT_FALSE(c->Search(&probe, index));
    EXPECT_EQ(index, 2);
    probe.key = 5;
    EXPECT_FALSE(c->Search(&probe, index));
    EXPECT_EQ(index, 0);
    probe.key = 35;
    EXPECT_FALSE(c->Search(&probe, index));
    EXPECT_EQ(index, 3);
    probe.key = 30;
    EXPECT_TRUE(c->Search(&probe, index));
    EXPECT_EQ(index, 2);
}

TEST_F(Sorted, IndexOfAndDeleteItemGoByKeyNotPointer) {
    Keyed items[] = {{10, 1}, {20, 2}, {30, 3}};
    for (Keyed& k : items) c->Insert(&k);
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
    EXPECT_EQ(SlotOf(&q5_COLLECTION::AddRef), 2);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::Release), 3);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::DestroyObject), 4);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::At), 5);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::AtDelete), 6);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::AtFree), 7);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::AtInsert), 8);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::AtPut), 9);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::DeleteItem), 10);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::DeleteAll), 11);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::IndexOf), 12);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::Insert), 13);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::Swap), 14);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::IsIndexValid), 15);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::FreeAll), 16);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::FreeItem), 17);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::GetByNameA), 18);
    EXPECT_EQ(SlotOf(&q5_COLLECTION::GetByNameW), 19);
    EXPECT_EQ(SlotOf(&q5_SORTEDCOLLECTION::IndexOf), 12);
    EXPECT_EQ(SlotOf(&q5_SORTEDCOLLECTION::Insert), 13);
    EXPECT_EQ(SlotOf(&q5_SORTEDCOLLECTION::Search), 20);
    EXPECT_EQ(SlotOf(&q5_SORTEDCOLLECTION::EnableDuplicates), 21);
}

// Calls slot n (1-based) the way a host built elsewhere does.
template <typename R, typename... A> R CallSlot(void* object, int n, A... args) {
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<R (*)(void*, A...)>(table[n - 1])(object, args...);
}

TEST(CollectionTable, FirstSlotAndDestructorSlotDestroyTheObject) {
    g_freed.clear();
    q5_COLLECTION* c = q5_COLLECTION::Create(4, 4);
    c->freeItem = RecordFree;
    c->Insert(Item(0));
    CallSlot<void>(c, 1);
    EXPECT_EQ(g_freed, std::vector<void*>{Item(0)});

    q5_SORTEDCOLLECTION* s = q5_SORTEDCOLLECTION::Create(CompareKeys, 0, 0);
    Keyed k{1, 1};
    s->freeItem = RecordFree;
    s->Insert(&k);
    EXPECT_EQ(CallSlot<void*>(s, 4, std::uint32_t{1}), static_cast<void*>(s));
    EXPECT_EQ(g_freed, (std::vector<void*>{Item(0), &k}));
}

} // namespace
