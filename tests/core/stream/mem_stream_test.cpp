// The memory stream's own rules: growth, caller's memory, resources and the factories.
#include <gtest/gtest.h>

#include <cstring>

#include "core/platform/memory_block.h"
#include "core/stream/mem_stream.h"
#include "stream_testing.h"
#include "support/module_loader.h"

namespace {

class MemStream : public ::testing::Test {
protected:
    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
    StreamPtr stream_ = NewMemoryStream();
};

// A write that fills the block exactly needs no more room; one write may take several new
// blocks, and what was written before stays through each move of the block.
TEST_F(MemStream, GrowsInWholeBlocksOf64KiB) {
    const auto capacity = static_cast<Q5_MEMSTREAM*>(stream_.get())->GetCapacity();
    EXPECT_GE(capacity, 65400);
    EXPECT_LT(capacity, 65536);
    Bytes data(200000);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i % 251);
    EXPECT_EQ(stream_->Write(data.data(), 65537), 65537);
    EXPECT_EQ(q5_MEM_Size(stream_->GetHANDLE()), 131072u);
    EXPECT_EQ(stream_->Write(data.data(), 131072 - 65537), 131072 - 65537);
    EXPECT_EQ(stream_->Write(data.data(), 1), 1); // one byte more takes one block more
    EXPECT_EQ(q5_MEM_Size(stream_->GetHANDLE()), 196608u);
    EXPECT_EQ(stream_->Write(data.data(), 200000), 200000);
    // 331073 bytes take 331073 / 65536 + 1 = 6 blocks of 64 KiB.
    EXPECT_EQ(q5_MEM_Size(stream_->GetHANDLE()), 393216u);
    EXPECT_EQ(stream_->GetSize(), 331073);
    EXPECT_EQ(stream_->Tell(), 331073);
    const auto start = [&data](int n) { return Bytes(data.begin(), data.begin() + n); };
    EXPECT_EQ(Contents(*stream_), start(65537) + start(65535) + start(1) + data);
}

TEST_F(MemStream, SeeksUpToTheSizeAndTruncatesTheBlockExactly) {
    stream_->Write("0123456789", 10);
    EXPECT_EQ(stream_->Seek(10, 0), 10);
    EXPECT_EQ(stream_->Seek(-1, 2), 9);
    EXPECT_EQ(stream_->Seek(11, 0), -1);
    EXPECT_EQ(stream_->Tell(), 9);

    stream_->Seek(5, 0);
    EXPECT_TRUE(stream_->Truncate());
    EXPECT_EQ(q5_MEM_Size(stream_->GetHANDLE()), 5u);
    stream_->Seek(0, 0);
    EXPECT_TRUE(stream_->Truncate()); // size 0 keeps the block
    EXPECT_EQ(q5_MEM_Size(stream_->GetHANDLE()), 5u);
}

TEST_F(MemStream, CallersAreaIsWrittenInPlaceButNeverGrows) {
    char area[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    StreamPtr stream(q5_STREAM::CreateFromMemory(area, sizeof area));
    stream->Seek(6, 0);
    EXPECT_EQ(stream->Write("XY", 2), 2);
    EXPECT_EQ(area[6], 'X');
    EXPECT_EQ(stream->Write("Z", 1), 0);
    EXPECT_EQ(stream->GetStatus(), Q5_STATUS_NO_ROOM);
    char c = '?';
    EXPECT_EQ(stream->Read(&c, 1), 0); // the status blocks reads until a seek
    stream->Seek(0, 0);
    EXPECT_EQ(stream->ReadWord(), 'a' | 'b' << 8);
}

TEST_F(MemStream, FactoriesRefuseWhatTheyCannotServe) {
    char byte = 0;
    EXPECT_EQ(q5_STREAM::CreateFromMemory(&byte, 0), nullptr);
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, u"LNGENG", Q5_STREAM_RESOURCE), nullptr);
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, nullptr, Q5_STREAM_MEMORY | Q5_MEMORY_OWNED), nullptr);
}

TEST_F(MemStream, CallersBlockIsWrappedGrownButNotFreed) {
    q5_HMEM block = q5_MEM_Alloc(16, true);
    StreamPtr stream(
        q5_STREAM::CreateW(nullptr, static_cast<const q5_WCHAR*>(block), Q5_STREAM_MEMORY));
    stream->Seek(16, 0);
    EXPECT_EQ(stream->Write("more", 4), 4);
    block = stream->GetHANDLE();
    stream.reset();
    EXPECT_EQ(q5_MEM_Size(block), 65536u);
    EXPECT_EQ(std::memcmp(static_cast<char*>(q5_MEM_Lock(block)) + 16, "more", 4), 0);
    q5_MEM_Unlock(block);
    EXPECT_TRUE(q5_MEM_Free(block));

    q5_HMEM empty = q5_MEM_Alloc(0, false); // a block without storage cannot be locked
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, static_cast<const q5_WCHAR*>(empty), Q5_STREAM_MEMORY),
              nullptr);
    ASSERT_EQ(host_.narrowReports.size(), 1u);
    EXPECT_EQ(host_.narrowReports[0].text, "Invalid global memory HANDLE");
    q5_MEM_Free(empty);
}

TEST_F(MemStream, ResourceOfTheModuleReadsButIsNotWritten) {
    StreamPtr stream(
        q5_STREAM::CreateW(LoadedModule::Get().handle, u"LNG|ENG", Q5_STREAM_RESOURCE));
    char start[16] = {};
    EXPECT_EQ(stream->Read(start, 15), 15);
    EXPECT_STREQ(start, "1=\"Software Z-B");
    EXPECT_EQ(stream->Write("x", 1), 0);
    EXPECT_EQ(stream->GetStatus(), Q5_STATUS_GOOD);
    // Across the end a write fails as on a caller's area, and reads stop until a seek.
    stream->Seek(-1, 2);
    EXPECT_EQ(stream->Write("xy", 2), 0);
    EXPECT_EQ(stream->GetStatus(), Q5_STATUS_NO_ROOM);
    EXPECT_EQ(stream->Read(start, 1), 0);
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, u"LNG|NOSUCH", Q5_STREAM_RESOURCE), nullptr);
}

TEST_F(MemStream, ErrorsCarryTheirOwnHeading) {
    stream_->ReportError("bad %d", 7);
    ASSERT_EQ(host_.wideReports.size(), 1u);
    EXPECT_EQ(host_.wideReports[0].text, u"MEMORY Stream error:\nCode\tbad 7");
}

} // namespace
