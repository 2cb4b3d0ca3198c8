// Default bodies of the root class and of the plug-in object, which every library object shares.
#include "interface/extension.h"

#include "core/services/wide_string.h"

std::uint32_t q5_interface::AddRef() {
    return ++refCount_;
}

std::uint32_t q5_interface::Release() {
    if (--refCount_ == 0) {
        DeleteThis();
        return 0;
    }
    return refCount_;
}

std::int32_t q5_EXTENSION::GetInterfaceVersion() {
    return 0;
}

bool q5_EXTENSION::IsTypeOf(const char* type) {
    return type != nullptr && q5strnicmp(type, "q5_extension", 256) == 0;
}

std::uint64_t q5_EXTENSION::SetParam(std::int32_t, std::uint64_t, q5_VALUETYPE) {
    return 0;
}

std::uint64_t q5_EXTENSION::GetParam(std::int32_t, std::uint64_t, q5_VALUETYPE) {
    return 0;
}

Q5RESULT q5_EXTENSION::QueryInfo(q5_XMLNODE*, std::uint32_t) {
    return Q5_E_NOTIMPL;
}

Q5RESULT q5_EXTENSION::Invoke(std::int32_t, q5_PARAM*, q5_CONTEXT*) {
    return Q5_E_NOTIMPL;
}
