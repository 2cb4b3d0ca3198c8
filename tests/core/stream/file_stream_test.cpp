// The file stream's own rules: modes, temporary files, names, status values and messages.
#include <gtest/gtest.h>

#include <string>

#include "core/platform/file.h"
#include "core/stream/file_stream.h"
#include "stream_testing.h"
#include "core/services/file_helpers.h"

namespace {

constexpr std::uint32_t kCreate = Q5_STREAM_FILE | Q5_FILE_CREATE;
constexpr std::uint32_t kRead = Q5_STREAM_FILE | Q5_FILE_READ;

std::u16string NameOf(q5_STREAM& stream, std::uint32_t flags) {
    q5_WCHAR name[q5plat::kMaxPath] = {};
    stream.GetFileNameW(name, q5plat::kMaxPath, flags);
    return name;
}

std::u16string TempFolder() {
    q5_WCHAR folder[q5plat::kMaxPath] = {};
    q5GetTempPath(q5plat::kMaxPath, folder);
    return folder;
}

// A file holding "0123456789" that lives as long as the fixture.
class FileStreamTest : public ::testing::Test {
protected:
    void SetUp() override {
        StreamPtr keeper(q5_STREAM::CreateW(nullptr, u"?tst", kCreate | Q5_FILE_KEEP));
        ASSERT_TRUE(keeper);
        keeper->Write("0123456789", 10);
        path_ = NameOf(*keeper, 0);
    }
    void TearDown() override { q5DeleteFile(path_.c_str()); }

    StreamPtr Open(std::uint32_t flags = kRead) {
        return StreamPtr(q5_STREAM::CreateW(nullptr, path_.c_str(), flags));
    }
    // The single report so far begins with `prefix`.
    void ExpectOneReportStartingWith(const std::u16string& prefix) {
        ASSERT_EQ(host_.wideReports.size(), 1u);
        EXPECT_EQ(host_.wideReports[0].text.substr(0, prefix.size()), prefix);
    }

    std::u16string path_;
    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
};

TEST_F(FileStreamTest, TemporaryFileTakesThePrefixAndGoesWithTheStream) {
    StreamPtr stream(q5_STREAM::CreateW(nullptr, u"?abc", kCreate));
    const std::u16string name = NameOf(*stream, 0), folder = TempFolder();
    EXPECT_EQ(name.substr(0, folder.size() + 3), folder + u"abc");
    // Not q5IsFileExist: a file open for writing counts as absent on Windows.
    EXPECT_EQ(q5plat::QueryFileKind(name.c_str()), q5plat::FileKind::File);
    stream.reset();
    EXPECT_FALSE(q5IsFileExist(name.c_str()));
    EXPECT_TRUE(q5IsFileExist(path_.c_str())); // made with the keep flag
    stream.reset(q5_STREAM::CreateW(nullptr, nullptr, kCreate));
    EXPECT_EQ(NameOf(*stream, 0).substr(0, folder.size() + 3), folder + u"q5d");
}

TEST_F(FileStreamTest, SeekFromCurrentOrEndAnswersOne) {
    StreamPtr stream = Open();
    EXPECT_EQ(stream->Seek(4, 1), 1);
    EXPECT_EQ(stream->Seek(-3, 2), 1);
    EXPECT_EQ(stream->Tell(), 7);
    EXPECT_EQ(stream->Seek(2, 0), 2);
    // From the start only the low 32 bits of the offset count: 2^32 + 6 is 6.
    EXPECT_EQ(stream->Seek((std::int64_t{1} << 32) + 6, 0), 6);
    EXPECT_EQ(stream->ReadWord(), '6' | '7' << 8);
    EXPECT_EQ(stream->Seek(-1, 0), -1);
    ExpectOneReportStartingWith(
        u"FILE Stream error:\nInfo:\tQ5_FILESTREAM::Seek error\nOS Info:\t");
}

TEST_F(FileStreamTest, ReadingPastTheEndSets255AndWritingReadOnlySets254) {
    StreamPtr stream = Open();
    stream->Seek(10, 0);
    Bytes buffer(4, 0xCC);
    EXPECT_EQ(stream->Read(buffer.data(), 4), 0);
    EXPECT_EQ(stream->GetStatus(), Q5_STATUS_SHORT);
    EXPECT_EQ(buffer, Bytes(4, 0xCC));
    stream->Seek(0, 0); // clears the status
    EXPECT_EQ(stream->Write("x", 1), 0);
    EXPECT_EQ(stream->GetStatus(), Q5_STATUS_READ_ONLY);
    ExpectOneReportStartingWith(u"FILE Stream error:\nInfo:\tError while writing to disk! File\n");
}

TEST_F(FileStreamTest, MissingFileIsReportedUnlessQuiet) {
    const std::u16string missing = path_ + u".none";
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, missing.c_str(), kRead | Q5_FILE_QUIET), nullptr);
    EXPECT_TRUE(host_.wideReports.empty());
    EXPECT_EQ(q5_STREAM::CreateW(nullptr, missing.c_str(), Q5_STREAM_FILE | Q5_FILE_READWRITE),
              nullptr);
    ExpectOneReportStartingWith(u"FILE Stream error:\nInfo:\t File open error\n");
}

TEST_F(FileStreamTest, ReadWriteModeKeepsTheDataAndCreateModeEmptiesIt) {
    StreamPtr stream = Open(Q5_STREAM_FILE | Q5_FILE_READWRITE);
    stream->Seek(10, 0);
    stream->Write("ab", 2);
    EXPECT_EQ(stream->GetSize(), 12);
    stream.reset(); // a writer shares its file with readers only
    EXPECT_EQ(Open(kCreate)->GetSize(), 0);
}

TEST_F(FileStreamTest, AppMacroOpensUnderTheApplicationFolder) {
    std::u16string folder = TempFolder();
    folder.pop_back(); // the macro adds the separator itself
    host_.folders[1] = folder;
    const std::u16string file = path_.substr(folder.size() + 1);
    const std::u16string name = u"($app)\\" + file;
    StreamPtr stream(q5_STREAM::CreateW(nullptr, name.c_str(), kRead));
    ASSERT_TRUE(stream);
    EXPECT_EQ(NameOf(*stream, 0), name);
    EXPECT_EQ(NameOf(*stream, Q5_FILENAME_RESOLVED), folder + u"\\" + file);
}

TEST_F(FileStreamTest, HostResolvesNamesFirstAndMayGiveTheFileTime) {
    host_.resolvedNames[u"doc:ten"] = {path_, q5_FILETIME{5, 6}};
    StreamPtr stream(q5_STREAM::CreateW(nullptr, u"doc:ten", kRead));
    ASSERT_TRUE(stream);
    q5_FILETIME time = {};
    EXPECT_EQ(stream->GetFileTime(time), Q5_OK);
    EXPECT_EQ(time.dwLowDateTime, 5u);
    EXPECT_EQ(time.dwHighDateTime, 6u);
}

TEST_F(FileStreamTest, ReadsReportProgressEvery64KiB) {
    StreamPtr stream = Open(kCreate | Q5_FILE_KEEP);
    Bytes block(10000, 7);
    for (int i = 0; i < 14; ++i) stream->Write(block.data(), 10000);
    stream->Seek(0, 0);
    ContextPtr context(new RecordingContext);
    stream->SetContext(context.get());
    for (int i = 0; i < 14; ++i) stream->Read(block.data(), 10000);
    // 70000 bytes pass 65535: a report, 4464 carried over; seven more reads make 74464.
    using Call = std::array<std::int64_t, 3>;
    EXPECT_EQ(context->progress, (std::vector<Call>{{70000, 140000, 1}, {140000, 140000, 1}}));
}

} // namespace
