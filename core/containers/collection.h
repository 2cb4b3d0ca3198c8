// The core library's growable, reference-counted array of untyped item pointers.
#pragma once

#include "interface/extension.h"

class q5_GENERIC;

// Called on an item by AtFree, FreeItem, FreeAll and destruction when installed.
using q5_ITEMFREEPROC = void (*)(void* item);

class q5_COLLECTION : public q5_interface {
public:
    // Null when the object or its slot array cannot be allocated.
    static q5_COLLECTION* Create(std::int32_t limit, std::int32_t delta);

    // Stands in the table slot of a virtual destructor. A C++ virtual destructor takes two
    // slots under the Itanium ABI and one under MSVC; this ordinary virtual takes one under
    // both, with the MSVC meaning: runs the destructor, frees the memory when bit 0 of flags is
    // set, returns the object's address. A class derived from q5_COLLECTION that adds members
    // overrides it with its own type.
    virtual void* DestroyObject(std::uint32_t flags);

    virtual void* At(std::int64_t index);
    virtual bool AtDelete(std::int64_t index);
    virtual bool AtFree(std::int64_t index);
    virtual bool AtInsert(std::int64_t index, void* item);
    virtual bool AtPut(std::int64_t index, void* item);
    virtual bool DeleteItem(void* item);
    virtual void DeleteAll();
    virtual std::int64_t IndexOf(void* item);
    virtual std::int64_t Insert(void* item);
    virtual void Swap(std::int64_t a, std::int64_t b);
    virtual bool IsIndexValid(std::int64_t index);
    virtual void FreeAll();
    virtual bool FreeItem(void* item);
    virtual q5_GENERIC* GetByNameA(const char* name, std::int32_t type);
    virtual q5_GENERIC* GetByNameW(const q5_WCHAR* name, std::int32_t type);

    std::int64_t Count() const { return count_; }
    std::int64_t Limit() const { return limit_; }
    std::int64_t Delta() const { return delta_; }

protected:
    q5_COLLECTION(std::int32_t limit, std::int32_t delta);
    ~q5_COLLECTION();

    void DeleteThis() override;

    void EmptyCache() {
        cachedIndex_ = -1;
        cachedItem_ = nullptr;
    }

    std::int32_t cachedIndex_ = -1;
    void* cachedItem_ = nullptr;

public:
    // Installed by the user of the collection; the collection never sets it.
    q5_ITEMFREEPROC freeItem = nullptr;

protected:
    std::int64_t delta_;
    std::int64_t limit_;
    void** items_ = nullptr;
    std::int64_t count_ = 0;

private:
    bool Grow();
};

// Orders stored items against a probe: negative, zero or positive.
using q5_ITEMCOMPAREPROC = int (*)(void* item, void* key, std::uint64_t userValue);

class q5_SORTEDCOLLECTION : public q5_COLLECTION {
public:
    // limit and delta are ignored: every sorted collection starts with 32 slots and grows by 16.
    static q5_SORTEDCOLLECTION* Create(q5_ITEMCOMPAREPROC compare, std::int32_t limit,
                                       std::int32_t delta);

    void* DestroyObject(std::uint32_t flags) override;
    std::int64_t IndexOf(void* item) override;
    std::int64_t Insert(void* item) override;

    // True when an equal item exists; index receives the insertion position either way.
    virtual bool Search(void* key, std::int64_t& index);
    // Returns the previous setting.
    virtual bool EnableDuplicates(bool enable);

protected:
    explicit q5_SORTEDCOLLECTION(q5_ITEMCOMPAREPROC compare);
    ~q5_SORTEDCOLLECTION() = default;

    q5_ITEMCOMPAREPROC compare_;
    std::int32_t duplicates_ = 0;

public:
    // Passed as the third argument of every compare call; the collection never sets it.
    std::uint64_t userValue = 0;
};
