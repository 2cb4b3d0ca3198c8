// The least a collection needs of the host's named objects to look them up by name and type.
#pragma once

#include "core/containers/q5_string.h"

// The host's object model derives its named objects from this; the core library reads only
// the name and the numeric type.
class q5_GENERIC {
public:
    virtual std::int32_t GetType() = 0;

    q5_STRING name;

protected:
    q5_GENERIC() = default;
    ~q5_GENERIC() = default;
    q5_GENERIC(const q5_GENERIC&) = default;
    q5_GENERIC& operator=(const q5_GENERIC&) = default;
};
