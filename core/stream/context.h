// The caller's side of a long stream operation: continue test, progress and error reports.
#pragma once

#include "interface/extension.h"

// Asked before each step; (context, user value, 0), and a zero answer stops the operation.
using q5_PROGRESSCALLBACK = std::int32_t (*)(q5_CONTEXT* context, void* userValue,
                                             std::int32_t zero);

class q5_CONTEXT : public q5_interface {
public:
    // An error met by the operation running under this context; the operation goes on.
    virtual void Error(Q5RESULT code, const q5_WCHAR* text);
    // Read progress: position out of total bytes; kind 1 is reading.
    virtual void Progress(std::int64_t position, std::int64_t total, std::int32_t kind);
    // Asks the operation to stop; reason 2 is a failed allocation.
    virtual void Abort(std::int32_t reason);

    // False once the callback answers zero or the abort flag is set.
    bool CanContinue();

    q5_PROGRESSCALLBACK progressCallback = nullptr;
    void* userValue = nullptr;
    std::int32_t abortFlag = 0;

protected:
    q5_CONTEXT() = default;
    ~q5_CONTEXT() = default;
};
