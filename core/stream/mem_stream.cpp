// The memory stream and the stream factories.
#include "core/stream/mem_stream.h"

#include "core/platform/memory_block.h"
#include "core/platform/module.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "core/stream/file_stream.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

// Deliberately not a whole 64 KiB: the first block of a growable stream has this size.
constexpr std::uint32_t kFirstBlock = 65400;
constexpr std::int64_t kGrowStep = 65536;

} // namespace

q5_STREAM* q5_STREAM::CreateFromMemory(void* data, std::int64_t size) {
    if (data == nullptr || size == 0) return nullptr;
    return Q5_MEMSTREAM::OverArea(data, size);
}

q5_STREAM* q5_STREAM::CreateW(q5_HINSTANCE module, const q5_WCHAR* name, std::uint32_t flags) {
    q5_STREAM* stream = nullptr;
    switch (flags & 0xFF) {
    case Q5_STREAM_FILE:
        stream = Q5_FILESTREAM::Open(name, flags);
        break;
    case Q5_STREAM_RESOURCE:
        stream = Q5_MEMSTREAM::OverResource(module, name);
        break;
    case Q5_STREAM_MEMORY:
        if (name != nullptr)
            stream = Q5_MEMSTREAM::OverBlock(const_cast<q5_WCHAR*>(name));
        else if ((flags & Q5_MEMORY_GROWABLE) != 0)
            stream = Q5_MEMSTREAM::Growable((flags & Q5_MEMORY_OWNED) != 0);
        break;
    default:
        break;
    }
    if (stream != nullptr && stream->GetStatus() != Q5_STATUS_GOOD) {
        stream->Release();
        stream = nullptr;
    }
    return stream;
}

Q5_MEMSTREAM* Q5_MEMSTREAM::OverArea(void* data, std::int64_t size) {
    auto* stream = new (std::nothrow) Q5_MEMSTREAM;
    if (stream == nullptr) return nullptr;
    stream->base_ = static_cast<unsigned char*>(data);
    stream->size_ = static_cast<std::int32_t>(size);
    return stream;
}

Q5_MEMSTREAM* Q5_MEMSTREAM::OverResource(q5_HINSTANCE module, const q5_WCHAR* typeAndName) {
    if (typeAndName == nullptr) return nullptr;
    const std::size_t length = q5wcslen(typeAndName);
    std::size_t bar = 0;
    while (bar < length && typeAndName[bar] != u'|') ++bar;
    if (bar == length) return nullptr;
    auto* stream = new (std::nothrow) Q5_MEMSTREAM;
    if (stream == nullptr) return nullptr;
    // Resource names are short; anything that does not fit simply is not found.
    q5_WCHAR type[64] = {};
    char narrowType[256] = {};
    char narrowName[256] = {};
    if (bar < 64) q5wcsncpy(type, typeAndName, bar + 1);
    const bool named = bar < 64 && WtoAex(type, narrowType, sizeof narrowType) != 0 &&
                       WtoAex(typeAndName + bar + 1, narrowName, sizeof narrowName) != 0;
    const q5plat::ResourceView found =
        named ? q5plat::FindResource(module, narrowType, narrowName) : q5plat::ResourceView{};
    if (!found) {
        stream->status_ = Q5_STATUS_END;
        return stream;
    }
    stream->resource_ = found.data;
    stream->memory_ = const_cast<void*>(found.data);
    stream->base_ = static_cast<unsigned char*>(const_cast<void*>(found.data));
    stream->size_ = static_cast<std::int64_t>(found.size);
    return stream;
}

Q5_MEMSTREAM* Q5_MEMSTREAM::OverBlock(q5_HMEM block) {
    auto* stream = new (std::nothrow) Q5_MEMSTREAM;
    if (stream == nullptr) return nullptr;
    stream->flags_ = kCallerBlock;
    stream->memory_ = block;
    stream->base_ = static_cast<unsigned char*>(q5_MEM_Lock(block));
    if (stream->base_ == nullptr) {
        CoreErrorA("Invalid global memory HANDLE");
        stream->memory_ = nullptr;
        stream->status_ = Q5_STATUS_NO_ROOM;
        return stream;
    }
    stream->size_ = stream->capacity_ = q5_MEM_Size(block);
    return stream;
}

Q5_MEMSTREAM* Q5_MEMSTREAM::Growable(bool owned) {
    auto* stream = new (std::nothrow) Q5_MEMSTREAM;
    if (stream == nullptr) return nullptr;
    stream->flags_ = owned ? kOwned : 0;
    stream->memory_ = q5_MEM_Alloc(kFirstBlock, true);
    if (stream->memory_ == nullptr) {
        stream->status_ = Q5_STATUS_NO_ROOM;
        return stream;
    }
    stream->base_ = static_cast<unsigned char*>(q5_MEM_Lock(stream->memory_));
    if (stream->base_ == nullptr) {
        CoreErrorA("Invalid global memory HANDLE");
        stream->status_ = Q5_STATUS_NO_ROOM;
        return stream;
    }
    stream->capacity_ = q5_MEM_Size(stream->memory_);
    return stream;
}

Q5_MEMSTREAM::~Q5_MEMSTREAM() {
    if (resource_ == nullptr && memory_ != nullptr) {
        if (base_ != nullptr) q5_MEM_Unlock(memory_);
        if ((flags_ & kOwned) != 0) q5_MEM_Free(memory_);
        flags_ = 0;
        base_ = nullptr;
    }
}

void Q5_MEMSTREAM::DeleteThis() {
    delete this;
}

bool Q5_MEMSTREAM::IsTypeOf(const char* type) {
    if (type != nullptr && q5strnicmp(type, "Q5_MEMSTREAM", 256) == 0) return true;
    return q5_STREAM::IsTypeOf(type);
}

std::int64_t Q5_MEMSTREAM::Seek(std::int64_t position, std::int32_t origin) {
    if (origin == 1)
        position += position_;
    else if (origin == 2)
        position += size_;
    if (position < 0 || position > size_) return -1;
    position_ = position;
    status_ = Q5_STATUS_GOOD;
    return position;
}

std::int64_t Q5_MEMSTREAM::Tell() {
    return position_;
}

std::int64_t Q5_MEMSTREAM::GetSize() {
    return size_;
}

bool Q5_MEMSTREAM::Truncate() {
    if (status_ != Q5_STATUS_GOOD) return false;
    size_ = position_;
    if (size_ == 0) return true;
    return ResizeBlock(size_);
}

bool Q5_MEMSTREAM::Flush() {
    return true;
}

bool Q5_MEMSTREAM::ResizeBlock(std::int64_t bytes) {
    if (resource_ != nullptr || memory_ == nullptr) return false;
    q5_MEM_Unlock(memory_);
    q5_HMEM resized = q5_MEM_Resize(memory_, static_cast<std::uint32_t>(bytes));
    if (resized != nullptr) memory_ = resized;
    base_ = static_cast<unsigned char*>(q5_MEM_Lock(memory_));
    if (base_ == nullptr) {
        // The block is gone; nothing may be read from it any more.
        size_ = position_ = capacity_ = 0;
        return false;
    }
    capacity_ = q5_MEM_Size(memory_);
    return resized != nullptr;
}

// Positions and counts are 32-bit quantities of this stream.
bool Q5_MEMSTREAM::Room(std::int64_t& count, bool writing) {
    if (status_ != Q5_STATUS_GOOD) return false;
    const std::int64_t end = position_ + count;
    if (end <= size_) {
        position_ = end;
        return true;
    }
    if (!writing) {
        count = size_ - position_;
        position_ = size_;
        return count >= 1;
    }
    // The size grows only once the room is there, so a failed write never leaves a size that
    // runs past the memory.
    if (end > INT32_MAX || (end > capacity_ && !ResizeBlock((end / kGrowStep + 1) * kGrowStep))) {
        status_ = Q5_STATUS_NO_ROOM;
        return false;
    }
    size_ = end;
    position_ = end;
    return true;
}

std::int64_t Q5_MEMSTREAM::Read(void* buffer, std::int64_t count) {
    if (buffer == nullptr || count <= 0 || count > INT32_MAX) return 0;
    const std::int64_t from = position_;
    std::int64_t got = count;
    if (!Room(got, false)) {
        std::memset(buffer, 0, static_cast<std::size_t>(count));
        return 0;
    }
    std::memcpy(buffer, base_ + from, static_cast<std::size_t>(got));
    std::memset(static_cast<unsigned char*>(buffer) + got, 0,
                static_cast<std::size_t>(count - got));
    return got;
}

std::int64_t Q5_MEMSTREAM::Write(const void* buffer, std::int64_t count) {
    if (buffer == nullptr || count <= 0 || count > INT32_MAX) return 0;
    // Resource data is read-only memory of the module; past its end a write fails as on any
    // stream that cannot grow.
    if (resource_ != nullptr) {
        if (status_ == Q5_STATUS_GOOD && position_ + count > size_) status_ = Q5_STATUS_NO_ROOM;
        return 0;
    }
    const std::int64_t from = position_;
    std::int64_t put = count;
    if (!Room(put, true)) return 0;
    std::memcpy(base_ + from, buffer, static_cast<std::size_t>(put));
    return put;
}

void* Q5_MEMSTREAM::GetHANDLE() {
    return memory_;
}

void* Q5_MEMSTREAM::GetMemoryBase() {
    return base_;
}

bool Q5_MEMSTREAM::IsEOF() {
    if ((flags_ & kZeroByteEnd) != 0) return base_ == nullptr || base_[0] == 0;
    return q5_STREAM::IsEOF();
}

void Q5_MEMSTREAM::ReportError(const char* format, ...) {
    if (format == nullptr) return;
    char code[256];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(code, sizeof code, format, args);
    va_end(args);
    CoreErrorW(u"MEMORY Stream error:\nCode\t%hs", code);
}

void Q5_MEMSTREAM::SetZeroByteEnd(bool on) {
    flags_ = on ? (flags_ | kZeroByteEnd) : (flags_ & ~kZeroByteEnd);
}
