// The core library's growable array of item pointers and its sorted variant.
#include "core/containers/collection.h"

#include "core/containers/generic.h"
#include "core/services/error_report.h"

#include <new>

namespace {

constexpr std::int64_t kMaxSlots = 0xFFFFFFFFFF; // 2^40 - 1

void ReportInvalidIndex(std::int64_t index) {
    CoreErrorA("Invalid index[%d] in access to collection", static_cast<std::int32_t>(index));
}

// Large collections grow by at least a step that keeps up with their size.
std::int64_t GrowthFloor(std::int64_t limit) {
    if (limit >= 16385) return 8192;
    if (limit >= 2049) return 1024;
    return 256;
}

} // namespace

q5_COLLECTION* q5_COLLECTION::Create(std::int32_t limit, std::int32_t delta) {
    auto* collection = new (std::nothrow) q5_COLLECTION(limit, delta);
    if (collection != nullptr && limit != 0 && collection->items_ == nullptr) {
        collection->Release();
        return nullptr;
    }
    return collection;
}

q5_COLLECTION::q5_COLLECTION(std::int32_t limit, std::int32_t delta)
    : delta_(delta), limit_(limit) {
    if (limit > 0) items_ = new (std::nothrow) void*[static_cast<std::size_t>(limit)]();
    if (items_ == nullptr) limit_ = 0;
}

q5_COLLECTION::~q5_COLLECTION() {
    if (freeItem != nullptr) FreeAll();
    delete[] items_;
    items_ = nullptr;
    EmptyCache();
}

void* q5_COLLECTION::DestroyObject(std::uint32_t flags) {
    this->q5_COLLECTION::~q5_COLLECTION();
    if ((flags & 1) != 0) ::operator delete(this);
    return this;
}

void q5_COLLECTION::DeleteThis() {
    DestroyObject(1);
}

void* q5_COLLECTION::At(std::int64_t index) {
    if (!IsIndexValid(index)) {
        ReportInvalidIndex(index);
        return nullptr;
    }
    if (index != cachedIndex_) {
        cachedIndex_ = static_cast<std::int32_t>(index);
        cachedItem_ = items_[index];
    }
    return cachedItem_;
}

bool q5_COLLECTION::AtDelete(std::int64_t index) {
    if (!IsIndexValid(index)) {
        ReportInvalidIndex(index);
        return false;
    }
    EmptyCache();
    for (std::int64_t i = index; i + 1 < count_; ++i) items_[i] = items_[i + 1];
    --count_;
    return true;
}

bool q5_COLLECTION::AtFree(std::int64_t index) {
    if (!IsIndexValid(index)) return false;
    EmptyCache();
    if (freeItem != nullptr) freeItem(At(index));
    AtDelete(index);
    return true;
}

bool q5_COLLECTION::AtInsert(std::int64_t index, void* item) {
    if (index < 0 || index > count_) {
        ReportInvalidIndex(index);
        return false;
    }
    EmptyCache();
    if (count_ == limit_ && !Grow()) return false;
    for (std::int64_t i = count_; i > index; --i) items_[i] = items_[i - 1];
    items_[index] = item;
    ++count_;
    return true;
}

bool q5_COLLECTION::Grow() {
    if (limit_ > 512 && delta_ < GrowthFloor(limit_)) delta_ = GrowthFloor(limit_);
    std::int64_t newLimit = limit_ + delta_;
    if (newLimit > kMaxSlots) newLimit = kMaxSlots;
    // A negative step counts as no room: shrinking here would lose items.
    if (newLimit <= limit_) {
        CoreErrorA("To many items[%d] in collection", static_cast<std::int32_t>(newLimit));
        return false;
    }
    void** grown = new (std::nothrow) void*[static_cast<std::size_t>(newLimit)];
    if (grown == nullptr) return false;
    for (std::int64_t i = 0; i < count_; ++i) grown[i] = items_[i];
    delete[] items_;
    items_ = grown;
    limit_ = newLimit;
    return true;
}

bool q5_COLLECTION::AtPut(std::int64_t index, void* item) {
    if (!IsIndexValid(index)) {
        ReportInvalidIndex(index);
        return false;
    }
    items_[index] = item;
    EmptyCache();
    return true;
}

bool q5_COLLECTION::DeleteItem(void* item) {
    const std::int64_t index = IndexOf(item);
    if (static_cast<std::int32_t>(index) < 0) return false;
    EmptyCache();
    return AtDelete(index);
}

void q5_COLLECTION::DeleteAll() {
    EmptyCache();
    count_ = 0;
}

std::int64_t q5_COLLECTION::IndexOf(void* item) {
    if (item == cachedItem_) return cachedIndex_;
    for (std::int64_t i = 0; i < count_; ++i)
        if (items_[i] == item) return i;
    return -1;
}

std::int64_t q5_COLLECTION::Insert(void* item) {
    if (!AtInsert(count_, item)) return -1;
    EmptyCache();
    return count_ - 1;
}

// The cache is deliberately left alone: it goes on naming b's pre-swap item.
void q5_COLLECTION::Swap(std::int64_t a, std::int64_t b) {
    void* x = At(a);
    void* y = At(b);
    // At has reported a bad index; only slots that exist are written.
    if (IsIndexValid(a)) items_[a] = y;
    if (IsIndexValid(b)) items_[b] = x;
}

bool q5_COLLECTION::IsIndexValid(std::int64_t index) {
    return index >= 0 && index < count_;
}

void q5_COLLECTION::FreeAll() {
    EmptyCache();
    if (freeItem != nullptr)
        for (std::int64_t i = 0; i < count_; ++i) freeItem(items_[i]);
    count_ = 0;
}

bool q5_COLLECTION::FreeItem(void* item) {
    if (!DeleteItem(item)) return false;
    EmptyCache();
    if (freeItem != nullptr) freeItem(item);
    return true;
}

q5_GENERIC* q5_COLLECTION::GetByNameA(const char* name, std::int32_t type) {
    q5_STRING wide;
    wide.Set(name);
    return GetByNameW(wide.GetBuffer(), type);
}

q5_GENERIC* q5_COLLECTION::GetByNameW(const q5_WCHAR* name, std::int32_t type) {
    if (name == nullptr) return nullptr;
    const bool anyType = type == 0 || type == -1;
    auto matches = [&](void* item) {
        auto* object = static_cast<q5_GENERIC*>(item);
        return object != nullptr && object->name.Compare(name) == 0 &&
               (anyType || object->GetType() == type);
    };
    if (matches(cachedItem_)) return static_cast<q5_GENERIC*>(cachedItem_);
    for (std::int64_t i = 0; i < count_; ++i)
        if (matches(items_[i])) return static_cast<q5_GENERIC*>(items_[i]);
    return nullptr;
}

q5_SORTEDCOLLECTION* q5_SORTEDCOLLECTION::Create(q5_ITEMCOMPAREPROC compare, std::int32_t,
                                                 std::int32_t) {
    return new (std::nothrow) q5_SORTEDCOLLECTION(compare);
}

q5_SORTEDCOLLECTION::q5_SORTEDCOLLECTION(q5_ITEMCOMPAREPROC compare)
    : q5_COLLECTION(32, 16), compare_(compare) {}

void* q5_SORTEDCOLLECTION::DestroyObject(std::uint32_t flags) {
    this->q5_SORTEDCOLLECTION::~q5_SORTEDCOLLECTION();
    if ((flags & 1) != 0) ::operator delete(this);
    return this;
}

// Binary search. With duplicates off it stops at the first equal item met; with them on it
// runs on to the leftmost item not less than the key, so Insert goes before an equal run.
bool q5_SORTEDCOLLECTION::Search(void* key, std::int64_t& index) {
    std::int64_t lo = 0;
    std::int64_t hi = count_ - 1;
    bool found = false;
    while (lo <= hi) {
        const std::int64_t mid = (lo + hi) >> 1;
        const std::int32_t r = compare_(items_[mid], key, userValue);
        if (r < 0) {
            lo = mid + 1;
        } else {
            hi = mid - 1;
            if (r == 0) {
                found = true;
                if (duplicates_ == 0) lo = mid;
            }
        }
    }
    index = lo;
    return found;
}

// The result of AtInsert is deliberately not checked: pos is returned even when it failed.
std::int64_t q5_SORTEDCOLLECTION::Insert(void* item) {
    std::int64_t pos = 0;
    if (Search(item, pos) && duplicates_ == 0) return -1;
    AtInsert(pos, item);
    return pos;
}

std::int64_t q5_SORTEDCOLLECTION::IndexOf(void* item) {
    std::int64_t pos = 0;
    return Search(item, pos) ? pos : -1;
}

bool q5_SORTEDCOLLECTION::EnableDuplicates(bool enable) {
    const bool before = duplicates_ != 0;
    duplicates_ = enable ? 1 : 0;
    return before;
}
