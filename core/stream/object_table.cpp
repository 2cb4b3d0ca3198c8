// Objects written once and referred to by number afterwards, through the stream's table.
#include "core/containers/collection.h"
#include "core/services/format16.h"
#include "core/services/host_link.h"
#include "core/stream/context.h"
#include "core/stream/ref_source.h"
#include "core/stream/stream.h"
#include "interface/gapi.h"

namespace {

constexpr std::int32_t kTableStep = 16;

} // namespace

q5_COLLECTION* q5_GAPI::CreateCollection() {
    return q5_COLLECTION::Create(kTableStep, kTableStep);
}

// Reference k > 0: the object at index k - 1 again; k < 0: the first occurrence of the object
// at index -k - 1, followed by its own data.
Q5RESULT q5_STREAM::Put(q5_REFSOURCE* object, q5_CONTEXT* context, std::uint16_t chunkId) {
    if (context != nullptr && !context->CanContinue()) return -1;
    if (object == nullptr) return Q5_NOTHING;
    if (objects_ == nullptr) {
        q5_GAPI* host = q5GetHostAPI();
        objects_ = host != nullptr ? host->CreateCollection()
                                   : q5_COLLECTION::Create(kTableStep, kTableStep);
        if (objects_ == nullptr) return Q5_E_ALLOC;
    }
    const std::int64_t found = objects_->IndexOf(object);
    const Chunk* before = chunks_;
    if (chunkId != 0) NewChunk(chunkId);
    Q5RESULT result = Q5_OK;
    if (found >= 0) {
        WriteLong(static_cast<std::uint32_t>(found + 1));
    } else {
        const std::int64_t index = objects_->Insert(object);
        if (index < 0) {
            result = Q5_E_ALLOC;
        } else {
            object->AddRef();
            WriteLong(static_cast<std::uint32_t>(-(index + 1)));
            result = object->Save(this, context);
        }
    }
    if (chunkId != 0) CloseChunk();
    if (chunks_ != before) {
        const q5_WCHAR* format = u"NewChunk/CloseChunk - do not match in %hs::Save";
        if (context != nullptr) {
            q5_WCHAR text[256];
            q5sprintf(text, 256, format, object->ClassName());
            context->Error(Q5_NOTHING, text);
        } else {
            CoreErrorW(format, object->ClassName());
        }
    }
    return result;
}

q5_REFSOURCE* q5_STREAM::Get(q5_CONTEXT* context) {
    if (objects_ == nullptr) return nullptr;
    const auto k = static_cast<std::int32_t>(ReadLong());
    const std::int64_t index =
        k >= 0 ? static_cast<std::int64_t>(k) - 1 : -static_cast<std::int64_t>(k) - 1;
    if (!objects_->IsIndexValid(index)) return nullptr;
    auto* object = static_cast<q5_REFSOURCE*>(objects_->At(index));
    if (object == nullptr) return nullptr;
    if (k < 0 && object->Load(this, context) == Q5_E_ALLOC) {
        if (q5_GAPI* host = q5GetHostAPI()) host->ReportError(Q5_E_ALLOC);
        if (context != nullptr) context->Abort(2);
    }
    object->AddRef();
    return object;
}

// Always false, by design: callers do not rely on the answer.
bool q5_STREAM::SetObjectTable(q5_COLLECTION* table) {
    if (table == objects_) return false;
    if (objects_ != nullptr) objects_->Release();
    if (table != nullptr) table->AddRef();
    objects_ = table;
    return false;
}

q5_COLLECTION* q5_STREAM::GetObjectTable() {
    return objects_;
}
