// The reference-counted root class and the named, versioned plug-in object.
#pragma once

#include "interface/types.h"

class q5_XMLNODE;
class q5_PARAM;
class q5_CONTEXT;

// Type tag of the untyped value of SetParam / GetParam.
enum q5_VALUETYPE : std::int32_t {
    Q5_VALUE_NONE = 0,
    Q5_VALUE_BOOL = 1,
    Q5_VALUE_INT = 2,
    Q5_VALUE_FLOATPTR = 3,
};

// DeleteThis is an ordinary virtual, not a destructor, so that the table order is the
// declaration order under every compiler ABI; hosts rely on the slot positions.
class q5_interface {
public:
    virtual void DeleteThis() = 0;
    virtual std::uint32_t AddRef();
    virtual std::uint32_t Release();

protected:
    q5_interface() = default;
    ~q5_interface() = default;
    q5_interface(const q5_interface&) = delete;
    q5_interface& operator=(const q5_interface&) = delete;

    void* reserved_ = nullptr;
    std::uint32_t refCount_ = 1; // the creator owns the first reference
};

class q5_EXTENSION : public q5_interface {
public:
    virtual const char* GetInterfaceName() = 0;
    virtual std::int32_t GetInterfaceVersion();
    virtual bool IsTypeOf(const char* type);
    virtual std::uint64_t SetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type);
    virtual std::uint64_t GetParam(std::int32_t id, std::uint64_t value, q5_VALUETYPE type);
    virtual Q5RESULT QueryInfo(q5_XMLNODE* node, std::uint32_t flags);
    virtual Q5RESULT Invoke(std::int32_t id, q5_PARAM* param, q5_CONTEXT* context);

protected:
    ~q5_EXTENSION() = default;
};
