// The stream base: primitives, byte order, lines and chunks over the raw operations.
#include "core/stream/stream.h"

#include "core/containers/collection.h"
#include "core/services/format16.h"
#include "core/services/text_convert.h"
#include "core/services/wide_string.h"
#include "core/stream/context.h"
#include "core/stream/ref_source.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace {

constexpr std::int64_t kCopyPiece = 24576;
constexpr std::int32_t kChunkHeader = 6;
// ReadLn keeps this many bytes of the caller's buffer unused besides the terminator.
constexpr std::int32_t kReadLnReserve = 6;

void Flip(void* element, std::int32_t size) {
    auto* b = static_cast<unsigned char*>(element);
    for (std::int32_t i = 0, j = size - 1; i < j; ++i, --j) {
        const unsigned char t = b[i];
        b[i] = b[j];
        b[j] = t;
    }
}

// count * size as a byte count, or -1 when it is negative or does not fit.
std::int64_t ByteCount(std::int64_t count, std::int32_t size) {
    if (count < 0 || size <= 0 || count > INT64_MAX / size) return -1;
    return count * size;
}

} // namespace

bool q5_FlipBytes(void* data, std::int64_t count, std::int32_t size) {
    if (data == nullptr) return false;
    auto* element = static_cast<unsigned char*>(data);
    for (std::int64_t i = 0; i < count && size > 1; ++i, element += size) Flip(element, size);
    return true;
}

q5_STREAM::~q5_STREAM() {
    if (context_ != nullptr) context_->Release();
    while (chunks_ != nullptr) {
        Chunk* enclosing = chunks_->enclosing;
        delete chunks_;
        chunks_ = enclosing;
    }
    if (objects_ != nullptr) {
        for (std::int64_t i = 0; i < objects_->Count(); ++i) {
            if (void* item = objects_->At(i)) static_cast<q5_REFSOURCE*>(item)->Release();
        }
        objects_->Release();
    }
}

const char* q5_STREAM::GetInterfaceName() {
    return "q5_stream";
}

bool q5_STREAM::IsTypeOf(const char* type) {
    if (type != nullptr && q5strnicmp(type, "q5_STREAM", 256) == 0) return true;
    return q5_EXTENSION::IsTypeOf(type);
}

void* q5_STREAM::GetHANDLE() {
    return nullptr;
}

void* q5_STREAM::GetMemoryBase() {
    return nullptr;
}

std::int32_t q5_STREAM::GetStatus() {
    return status_;
}

bool q5_STREAM::Reset() {
    status_ = Q5_STATUS_GOOD;
    return true;
}

bool q5_STREAM::IsEOF() {
    const std::int64_t size = GetSize();
    const std::int64_t position = Tell();
    return size == 0 || position >= size || size < 0 || position < 0;
}

// Reads at most size - 7 bytes. A run of one line-end character after the line is swallowed
// with it, so "a\n\nb" gives two lines, while "a\r\n\r\nb" keeps its empty line.
std::int32_t q5_STREAM::ReadLn(char* buffer, std::int32_t size) {
    const std::int32_t room = size - kReadLnReserve - 1;
    const std::int64_t start = Tell();
    const std::int64_t n = buffer != nullptr && room > 0 ? Read(buffer, room) : 0;
    if (n <= 0) {
        if (buffer != nullptr && size > 0) buffer[0] = 0;
        status_ = Q5_STATUS_END;
        return 0;
    }
    std::int64_t i = 0;
    while (i < n && buffer[i] != '\r' && buffer[i] != '\n') ++i;
    if (i == n) {
        buffer[n] = 0;
        return static_cast<std::int32_t>(n);
    }
    const char end = buffer[i];
    buffer[i] = 0;
    if (i == n - 1) return static_cast<std::int32_t>(i);
    std::int64_t next = i + 1;
    while (next < n && buffer[next] == end) ++next;
    const char other = end == '\r' ? '\n' : '\r';
    while (next < n && buffer[next] == other) ++next;
    Seek(start + next, 0);
    return static_cast<std::int32_t>(i);
}

bool q5_STREAM::WriteLnA(const char* text) {
    if (text != nullptr) Write(text, static_cast<std::int64_t>(std::strlen(text)));
    // One 16-bit word, so a reversed stream ends its lines with LF CR.
    WriteWord(0x0A0D);
    return true;
}

bool q5_STREAM::WriteWord(std::uint16_t value) {
    if (flip_ != 0) Flip(&value, 2);
    return Write(&value, 2) == 2;
}

std::uint16_t q5_STREAM::ReadWord() {
    std::uint16_t value = 0;
    Read(&value, 2);
    if (flip_ != 0) Flip(&value, 2);
    return value;
}

bool q5_STREAM::WriteLong(std::uint32_t value) {
    if (flip_ != 0) Flip(&value, 4);
    return Write(&value, 4) == 4;
}

std::uint32_t q5_STREAM::ReadLong() {
    std::uint32_t value = 0;
    Read(&value, 4);
    if (flip_ != 0) Flip(&value, 4);
    return value;
}

bool q5_STREAM::SetBUFFER(std::int32_t) {
    return false;
}

void q5_STREAM::_CLOSEFILE() {}

// The result counts the bytes asked for, not those that actually moved.
std::int64_t q5_STREAM::CopyTo(q5_STREAM* destination, std::int64_t start, std::int64_t count) {
    if (destination == nullptr) return 0;
    const std::int64_t position = Tell();
    Seek(start, 0);
    if (count < 0) count = GetSize();
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[kCopyPiece]());
    std::int64_t total = 0;
    while (buffer != nullptr && count > 0) {
        if (status_ != Q5_STATUS_GOOD || destination->GetStatus() != Q5_STATUS_GOOD) break;
        const std::int64_t piece = count < kCopyPiece ? count : kCopyPiece;
        Read(buffer.get(), piece);
        destination->Write(buffer.get(), piece);
        total += piece;
        count -= piece;
    }
    Seek(position, 0);
    return total;
}

std::int32_t q5_STREAM::ReadLnW(q5_WCHAR*, std::int32_t) {
    return -1;
}

bool q5_STREAM::WriteLnW(const q5_WCHAR* text) {
    if (text != nullptr) Write(text, static_cast<std::int64_t>(q5wcslen(text) * 2));
    WriteWord(13);
    WriteWord(10);
    return true;
}

bool q5_STREAM::GetFileNameA(char* buffer, std::int32_t size, std::uint32_t flags) {
    const q5_WCHAR* name = _GetFileName(flags);
    if (name == nullptr || buffer == nullptr) return false;
    return WtoAex(name, buffer, size) != 0;
}

bool q5_STREAM::GetFileNameW(q5_WCHAR* buffer, std::int32_t size, std::uint32_t flags) {
    const q5_WCHAR* name = _GetFileName(flags);
    if (name == nullptr || buffer == nullptr || size < 1) return false;
    q5wcsncpy(buffer, name, static_cast<std::size_t>(size));
    return true;
}

std::int32_t q5_STREAM::PrintW(const q5_WCHAR* format, ...) {
    if (format == nullptr) return -1;
    q5_WCHAR text[1024];
    std::va_list args;
    va_start(args, format);
    const int result = q5vsprintf(text, 1024, format, args);
    va_end(args);
    Write(text, static_cast<std::int64_t>(q5wcslen(text) * 2));
    return result;
}

std::int32_t q5_STREAM::PrintA(const char* format, ...) {
    if (format == nullptr) return -1;
    char text[4096];
    std::va_list args;
    va_start(args, format);
    const int result = std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    const std::size_t length = result < 0 ? 0 : std::strlen(text);
    if (length != 0) Write(text, static_cast<std::int64_t>(length));
    return result;
}

void q5_STREAM::NewChunk() {
    Chunk* chunk = new (std::nothrow) Chunk{0, 0, static_cast<std::uint32_t>(Tell()), chunks_, 0};
    if (chunk != nullptr) chunks_ = chunk;
}

std::uint16_t q5_STREAM::OpenChunk(std::int64_t* payloadSize) {
    const Chunk* enclosing = chunks_;
    NewChunk();
    if (chunks_ == enclosing) { // no memory for the record
        if (payloadSize != nullptr) *payloadSize = 0;
        return 0;
    }
    std::uint16_t id = 0;
    std::uint32_t size = 0;
    const bool whole = Read(&id, 2) == 2 && Read(&size, 4) == 4;
    if (!whole) {
        id = 0;
        size = kChunkHeader;
    } else if (flip_ != 0) {
        Flip(&id, 2);
        Flip(&size, 4);
    }
    chunks_->id = id;
    chunks_->size = size;
    if (payloadSize != nullptr) *payloadSize = static_cast<std::int64_t>(size) - kChunkHeader;
    if (size < static_cast<std::uint32_t>(kChunkHeader) && context_ != nullptr)
        context_->Error(0, u"Invalid CHUNK");
    return id;
}

bool q5_STREAM::CanReadChunk() {
    if (chunks_ == nullptr || chunks_->writing != 0) return false;
    if (chunks_->start + chunks_->size <= static_cast<std::uint32_t>(Tell())) return false;
    if (status_ != Q5_STATUS_GOOD) return false;
    return context_ == nullptr || context_->CanContinue();
}

bool q5_STREAM::NewChunk(std::uint16_t id) {
    const Chunk* enclosing = chunks_;
    NewChunk();
    if (chunks_ == enclosing) return false;
    chunks_->writing = 1;
    chunks_->id = id;
    WriteWord(id);
    WriteLong(0); // the size, written by CloseChunk
    return true;
}

bool q5_STREAM::CloseChunk() {
    if (context_ != nullptr && !context_->CanContinue()) return false;
    Chunk* chunk = chunks_;
    if (chunk == nullptr) return false;
    if (chunk->writing != 0) {
        const std::int64_t end = Tell();
        Seek(static_cast<std::int64_t>(chunk->start) + 2, 0);
        WriteLong(static_cast<std::uint32_t>(end - chunk->start));
        Seek(end, 0);
    } else {
        // Summed without wrapping, so that a damaged size never sends the reader backwards
        // past the chunk's own header. An end beyond 32-bit positions is not sought at all:
        // a file stream would take it modulo 2^32.
        const std::int64_t end = static_cast<std::int64_t>(chunk->start) + chunk->size;
        const std::int64_t position = Tell();
        if (position != end) {
            if (position > end)
                CoreErrorW(u"Invalid chunk usage. ID: 0x%x, size:%d",
                           static_cast<unsigned>(chunk->id), static_cast<int>(chunk->size));
            if (end <= UINT32_MAX) Seek(end, 0);
        }
    }
    chunks_ = chunk->enclosing;
    delete chunk;
    return true;
}

std::int64_t q5_STREAM::GetCurrentChunkSize() {
    return chunks_ != nullptr ? static_cast<std::int64_t>(chunks_->size) - kChunkHeader : -1;
}

std::uint16_t q5_STREAM::GetCurrentChunkID() {
    return chunks_ != nullptr ? chunks_->id : 0;
}

bool q5_STREAM::SetBinaryMode(Q5_STREAM_BINARY_MODE mode) {
    binaryMode_ = mode;
    flip_ = mode == Q5_STREAM_BINARY_REVERSED ? 1 : 0;
    return true;
}

Q5_STREAM_BINARY_MODE q5_STREAM::GetBinaryMode() {
    return binaryMode_;
}

bool q5_STREAM::_ReadData(void* buffer, std::int64_t count, std::int32_t size) {
    const std::int64_t bytes = ByteCount(count, size);
    if (buffer == nullptr || bytes < 0) return false;
    const std::int64_t got = Read(buffer, bytes);
    if (flip_ != 0) q5_FlipBytes(buffer, count, size);
    return got == bytes;
}

bool q5_STREAM::_WriteData(const void* buffer, std::int64_t count, std::int32_t size) {
    const std::int64_t bytes = ByteCount(count, size);
    if (buffer == nullptr || bytes < 0) return false;
    if (flip_ == 0) return Write(buffer, bytes) == bytes;
    std::vector<unsigned char> scratch(static_cast<std::size_t>(size));
    const auto* element = static_cast<const unsigned char*>(buffer);
    std::int64_t written = 0;
    for (std::int64_t i = 0; i < count; ++i, element += size) {
        std::memcpy(scratch.data(), element, scratch.size());
        Flip(scratch.data(), size);
        written += Write(scratch.data(), size);
    }
    return written == bytes;
}

bool q5_STREAM::SetVersion(std::uint32_t version) {
    version_ = version;
    return true;
}

std::uint32_t q5_STREAM::GetVersion() {
    return version_;
}

bool q5_STREAM::SetContext(q5_CONTEXT* context) {
    if (context != nullptr) context->AddRef();
    if (context_ != nullptr) context_->Release();
    context_ = context;
    const std::int64_t size = GetSize();
    progressTotal_ = size > 0 ? static_cast<std::uintptr_t>(size) : 0;
    return true;
}

bool q5_STREAM::WriteFloat(float value) {
    return _WriteData(&value, 1, 4);
}

float q5_STREAM::ReadFloat() {
    float value = 0.0f;
    _ReadData(&value, 1, 4);
    return value;
}

const q5_WCHAR* q5_STREAM::_GetFileName(std::uint32_t) {
    return nullptr;
}

void q5_STREAM::ReportError(const char* format, ...) {
    if (format == nullptr) return;
    char text[512];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    CoreErrorA("%s", text);
}

Q5RESULT q5_STREAM::GetFileTime(q5_FILETIME&) {
    return Q5_E_NOTIMPL;
}

void q5_CONTEXT::Error(Q5RESULT, const q5_WCHAR*) {}

void q5_CONTEXT::Progress(std::int64_t, std::int64_t, std::int32_t) {}

void q5_CONTEXT::Abort(std::int32_t reason) {
    abortFlag = reason;
}

bool q5_CONTEXT::CanContinue() {
    if (progressCallback != nullptr && progressCallback(this, userValue, 0) == 0) return false;
    return abortFlag == 0;
}
