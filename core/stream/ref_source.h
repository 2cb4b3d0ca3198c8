// An object that a stream writes once and refers to by number afterwards.
#pragma once

#include "interface/extension.h"

class q5_STREAM;

class q5_REFSOURCE : public q5_interface {
public:
    virtual Q5RESULT Save(q5_STREAM* stream, q5_CONTEXT* context) = 0;
    virtual Q5RESULT Load(q5_STREAM* stream, q5_CONTEXT* context) = 0;
    // Used in messages about the object.
    virtual const char* ClassName() = 0;

protected:
    q5_REFSOURCE() = default;
    ~q5_REFSOURCE() = default;
};
