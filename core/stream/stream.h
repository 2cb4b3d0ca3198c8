// The core library's byte stream: typed primitives, byte order, text lines and nested chunks.
#pragma once

#include "core/services/error_report.h"
#include "interface/extension.h"

class q5_COLLECTION;
class q5_REFSOURCE;

// Byte order of the multi-byte primitives.
enum Q5_STREAM_BINARY_MODE : std::int32_t {
    Q5_STREAM_BINARY_DEFAULT = 0,  // little-endian
    Q5_STREAM_BINARY_REVERSED = 2, // every multi-byte value is written and read reversed
};

// CreateW flags. The low byte selects the kind of stream.
inline constexpr std::uint32_t Q5_STREAM_FILE = 1;
inline constexpr std::uint32_t Q5_STREAM_RESOURCE = 2; // name "TYPE|NAME" of a module
inline constexpr std::uint32_t Q5_STREAM_MEMORY = 3;
// File modes (mask 0x700) and file options.
inline constexpr std::uint32_t Q5_FILE_MODE_MASK = 0x700;
inline constexpr std::uint32_t Q5_FILE_READ = 0x100;       // an existing file, read only
inline constexpr std::uint32_t Q5_FILE_CREATE = 0x200;     // created or emptied, read and write
inline constexpr std::uint32_t Q5_FILE_READWRITE = 0x300;  // an existing file, read and write
inline constexpr std::uint32_t Q5_FILE_QUIET = 0x800;      // no report when opening fails
inline constexpr std::uint32_t Q5_FILE_KEEP = 0x1000;      // a temporary file outlives the stream
inline constexpr std::uint32_t Q5_FILE_NORESOLVE = 0x2000; // open the name as given
// Memory options: with a null name, a growable block, owned by the stream when OWNED is set.
inline constexpr std::uint32_t Q5_MEMORY_OWNED = 0x100;
inline constexpr std::uint32_t Q5_MEMORY_GROWABLE = 0x200;

// Status values.
inline constexpr std::uint8_t Q5_STATUS_GOOD = 0;
inline constexpr std::uint8_t Q5_STATUS_END = 1; // end of data, or a file that did not open

// Reverses the bytes of each of count elements of size bytes, in place; false for null data.
bool q5_FlipBytes(void* data, std::int64_t count, std::int32_t size);

class q5_STREAM : public q5_EXTENSION {
public:
    // A stream over the caller's memory, which is neither copied nor freed; null for null data
    // or size 0.
    static q5_STREAM* CreateFromMemory(void* data, std::int64_t size);
    // A file, module resource or memory stream as the low byte of flags says; null on failure.
    static q5_STREAM* CreateW(q5_HINSTANCE module, const q5_WCHAR* name, std::uint32_t flags);

    const char* GetInterfaceName() override;
    bool IsTypeOf(const char* type) override;

    // origin 0: from the start, 1: from the current position, 2: from the end.
    virtual std::int64_t Seek(std::int64_t position, std::int32_t origin) = 0;
    virtual std::int64_t Tell() = 0;
    virtual std::int64_t GetSize() = 0;
    // Cuts the data at the current position.
    virtual bool Truncate() = 0;
    virtual bool Flush() = 0;
    virtual std::int64_t Read(void* buffer, std::int64_t count) = 0;
    virtual std::int64_t Write(const void* buffer, std::int64_t count) = 0;
    virtual void* GetHANDLE();
    virtual void* GetMemoryBase();
    virtual std::int32_t GetStatus();
    virtual bool Reset();
    virtual bool IsEOF();
    // One line of 8-bit text without its line end; see stream.cpp for the size it reserves.
    virtual std::int32_t ReadLn(char* buffer, std::int32_t size);
    virtual bool WriteLnA(const char* text);
    virtual bool WriteWord(std::uint16_t value);
    virtual std::uint16_t ReadWord();
    virtual bool WriteLong(std::uint32_t value);
    virtual std::uint32_t ReadLong();
    virtual bool SetBUFFER(std::int32_t size);
    virtual void _CLOSEFILE();
    // Copies count bytes from start (negative: GetSize bytes) and comes back to where it was.
    virtual std::int64_t CopyTo(q5_STREAM* destination, std::int64_t start, std::int64_t count);
    virtual std::int32_t ReadLnW(q5_WCHAR* buffer, std::int32_t size);
    virtual bool WriteLnW(const q5_WCHAR* text);
    virtual bool GetFileNameA(char* buffer, std::int32_t size, std::uint32_t flags);
    virtual bool GetFileNameW(q5_WCHAR* buffer, std::int32_t size, std::uint32_t flags);
    virtual std::int32_t PrintW(const q5_WCHAR* format, ...);
    virtual std::int32_t PrintA(const char* format, ...) Q5_PRINTF_LIKE(2, 3);
    // The id of the chunk that starts here, 0 when none could be read; payloadSize receives the
    // chunk's size less its 6-byte header.
    virtual std::uint16_t OpenChunk(std::int64_t* payloadSize = nullptr);
    virtual bool CanReadChunk();

protected:
    // Pushes a chunk record at the current position.
    virtual void NewChunk();

public:
    // Starts writing a chunk; CloseChunk writes its size.
    virtual bool NewChunk(std::uint16_t id);
    virtual bool CloseChunk();
    virtual std::int64_t GetCurrentChunkSize();
    virtual std::uint16_t GetCurrentChunkID();
    virtual bool SetBinaryMode(Q5_STREAM_BINARY_MODE mode);
    virtual Q5_STREAM_BINARY_MODE GetBinaryMode();
    virtual bool _ReadData(void* buffer, std::int64_t count, std::int32_t size);
    virtual bool _WriteData(const void* buffer, std::int64_t count, std::int32_t size);
    virtual bool SetVersion(std::uint32_t version);
    virtual std::uint32_t GetVersion();
    virtual bool SetContext(q5_CONTEXT* context);
    // Objects by reference through the object table.
    virtual Q5RESULT Put(q5_REFSOURCE* object, q5_CONTEXT* context, std::uint16_t chunkId);
    virtual q5_REFSOURCE* Get(q5_CONTEXT* context);
    // Always false; the table is replaced unless it is the same one.
    virtual bool SetObjectTable(q5_COLLECTION* table);
    virtual q5_COLLECTION* GetObjectTable();
    virtual bool WriteFloat(float value);
    virtual float ReadFloat();

protected:
    virtual const q5_WCHAR* _GetFileName(std::uint32_t flags);

public:
    virtual void ReportError(const char* format, ...) Q5_PRINTF_LIKE(2, 3);
    virtual Q5RESULT GetFileTime(q5_FILETIME& time);

    struct Chunk {
        std::uint16_t id;
        std::uint32_t size; // header included
        std::uint32_t start;
        Chunk* enclosing;
        std::uint8_t writing;
    };
    // The innermost open chunk, or null.
    const Chunk* CurrentChunk() const { return chunks_; }

protected:
    q5_STREAM() = default;
    ~q5_STREAM();

    Chunk* chunks_ = nullptr;
    q5_COLLECTION* objects_ = nullptr;
    q5_CONTEXT* context_ = nullptr;
    std::uintptr_t progressCount_ = 0;
    std::uintptr_t progressTotal_ = 0;
    std::uint32_t version_ = 0;
    Q5_STREAM_BINARY_MODE binaryMode_ = Q5_STREAM_BINARY_DEFAULT;
    std::uint8_t flip_ = 0;
    std::uint8_t status_ = Q5_STATUS_GOOD;
};
