// The stream over memory: its own growable block, a caller's block or area, or a resource.
#pragma once

#include "core/stream/stream.h"

// Status after a write that could not get room.
inline constexpr std::uint8_t Q5_STATUS_NO_ROOM = 255;

class Q5_MEMSTREAM final : public q5_STREAM {
public:
    // Made by q5_STREAM::CreateW (kinds 2 and 3) and q5_STREAM::CreateFromMemory.
    static Q5_MEMSTREAM* OverArea(void* data, std::int64_t size);
    static Q5_MEMSTREAM* OverResource(q5_HINSTANCE module, const q5_WCHAR* typeAndName);
    static Q5_MEMSTREAM* OverBlock(q5_HMEM block);
    static Q5_MEMSTREAM* Growable(bool owned);

    void DeleteThis() override;
    bool IsTypeOf(const char* type) override;

    std::int64_t Seek(std::int64_t position, std::int32_t origin) override;
    std::int64_t Tell() override;
    std::int64_t GetSize() override;
    bool Truncate() override;
    bool Flush() override;
    // Zero-fills the part of the caller's count that lies past the data.
    std::int64_t Read(void* buffer, std::int64_t count) override;
    // Writes past the size grow an own or caller's block in whole 64 KiB steps; a caller's
    // area or a resource cannot grow.
    std::int64_t Write(const void* buffer, std::int64_t count) override;
    void* GetHANDLE() override;
    void* GetMemoryBase() override;
    bool IsEOF() override;
    void ReportError(const char* format, ...) override;

    // Makes the end of data a zero first byte, for text kept in a caller's buffer.
    void SetZeroByteEnd(bool on);
    std::int64_t GetCapacity() const { return capacity_; }

private:
    Q5_MEMSTREAM() = default;
    ~Q5_MEMSTREAM();

    // Moves the position over count bytes if there is room; a read may shorten count.
    bool Room(std::int64_t& count, bool writing);
    // Resizes the block to `bytes` and locks it again.
    bool ResizeBlock(std::int64_t bytes);

    static constexpr std::uint8_t kOwned = 0x01;
    static constexpr std::uint8_t kCallerBlock = 0x02;
    static constexpr std::uint8_t kZeroByteEnd = 0x80;

    const void* resource_ = nullptr;
    void* memory_ = nullptr; // the block's handle, or the resource data
    std::uint8_t flags_ = 0;
    std::int64_t size_ = 0;
    std::int64_t position_ = 0;
    std::int64_t capacity_ = 0;
    unsigned char* base_ = nullptr;
};
