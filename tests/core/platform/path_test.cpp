// Windows-style path arithmetic, and the file helpers over the operating system.
#include "core/platform/path.h"

#include <gtest/gtest.h>

#include <string>

#include "core/services/wide_string.h"
#include "support/recording_host.h"

namespace {

std::u16string Absolute(const q5_WCHAR* base, const q5_WCHAR* relative) {
    q5_WCHAR out[q5plat::kMaxPath] = {u'?'};
    const bool ok = q5GetAbsoluteName(base, relative, out);
    return ok ? std::u16string(out) : u"<false:" + std::u16string(out) + u">";
}

std::u16string Relative(const q5_WCHAR* base, const q5_WCHAR* full) {
    q5_WCHAR out[q5plat::kMaxPath] = {u'?'};
    const bool ok = q5GetRelativePath(base, full, out);
    return ok ? std::u16string(out) : u"<false:" + std::u16string(out) + u">";
}

TEST(Path, AbsoluteNameClimbsOutOfTheBase) {
    EXPECT_EQ(Absolute(u"C:\\a\\b", u"..\\x\\y.txt"), u"C:\\a\\x\\y.txt");
    EXPECT_EQ(Absolute(u"C:\\a\\b\\", u"../../z"), u"C:\\z");
    EXPECT_EQ(Absolute(u"C:\\a", u"f.txt"), u"C:\\a\\f.txt");
    EXPECT_EQ(Absolute(u"C:\\", u"..\\..\\f"), u"C:\\f"); // nothing above the root
    EXPECT_EQ(Absolute(u"C:\\a", u""), u"<false:>");
    EXPECT_EQ(Absolute(u"C:\\a", nullptr), u"<false:>");
}

TEST(Path, RelativePathNeedsASharedFolder) {
    EXPECT_EQ(Relative(u"C:\\a", u"C:\\a\\b\\c.txt"), u"b\\c.txt");
    EXPECT_EQ(Relative(u"C:\\a\\d", u"C:\\a\\b\\c.txt"), u"..\\b\\c.txt");
    EXPECT_EQ(Relative(u"C:\\a\\d\\e\\", u"C:\\a\\b"), u"..\\..\\b");
    EXPECT_EQ(Relative(u"D:\\x", u"C:\\a\\b\\c.txt"), u"C:\\a\\b\\c.txt");
    // The shared run must end at a separator: "C:\ab" is not inside "C:\a".
    EXPECT_EQ(Relative(u"C:\\ab", u"C:\\a\\x"), u"C:\\a\\x");
    EXPECT_EQ(Relative(u"", u"C:\\a"), u"<false:C:\\a>");
}

TEST(Path, AbsoluteTellsDriveRelativeAndRelativeApart) {
    EXPECT_EQ(q5IsAbsolutePath(u"C:\\x"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u"C:/x"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u"C:x"), 0);
    EXPECT_EQ(q5IsAbsolutePath(u"\\\\server\\share"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u"a\\b"), 2);
    EXPECT_EQ(q5IsAbsolutePath(u"ab"), 2);
    EXPECT_EQ(q5IsAbsolutePath(u"  C:\\x"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u""), 0);
    EXPECT_EQ(q5IsAbsolutePath(nullptr), 0);
}

TEST(Path, FolderOfAFileIsBeforeTheLastSeparator) {
    q5_WCHAR wide[q5plat::kMaxPath];
    EXPECT_TRUE(q5GetPathFromFile(u"C:\\dir\\f.txt", wide));
    EXPECT_EQ(std::u16string(wide), u"C:\\dir");
    EXPECT_FALSE(q5GetPathFromFile(u"f.txt", wide));
    EXPECT_EQ(wide[0], 0);
    EXPECT_FALSE(q5GetPathFromFile(u"\\f.txt", wide));
    char narrow[q5plat::kMaxPath];
    EXPECT_TRUE(q5GetPathFromFile("a\\b\\c", narrow));
    EXPECT_STREQ(narrow, "a\\b");
    EXPECT_FALSE(q5GetPathFromFile("c", narrow));
}

TEST(Path, LongResultsAreCutToAPathBuffer) {
    const std::u16string longName(400, u'n');
    q5_WCHAR out[q5plat::kMaxPath + 1];
    out[q5plat::kMaxPath] = u'#';
    EXPECT_TRUE(q5GetAbsoluteName(u"C:\\", longName.c_str(), out));
    EXPECT_EQ(std::u16string(out).size(), static_cast<std::size_t>(q5plat::kMaxPath - 1));
    EXPECT_EQ(out[q5plat::kMaxPath], u'#');
}

class FileHelpers : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_GT(q5GetTempPath(q5plat::kMaxPath, folder_), 0u);
        ASSERT_NE(q5GetTempFileName(folder_, u"pth", 0, file_), 0u);
    }
    void TearDown() override { q5DeleteFile(file_); }

    q5_WCHAR folder_[q5plat::kMaxPath] = {};
    q5_WCHAR file_[q5plat::kMaxPath] = {};
};

TEST_F(FileHelpers, TemporaryNameIsCreatedInTheFolder) {
    EXPECT_TRUE(q5IsFileExist(file_));
    const std::u16string name = file_;
    const std::u16string folder = folder_;
    EXPECT_EQ(name.compare(0, folder.size(), folder), 0);
    EXPECT_EQ(name.compare(folder.size(), 3, u"pth"), 0);
    // The system decides the case of the hex digits and the extension.
    EXPECT_EQ(q5wcsicmp(name.substr(name.size() - 4).c_str(), u".tmp"), 0);
    // A given number only makes the name.
    q5_WCHAR named[q5plat::kMaxPath];
    EXPECT_EQ(q5GetTempFileName(folder_, u"pthx", 0xAB, named), 0xABu);
    EXPECT_EQ(q5wcsicmp(named, (folder + u"pthAB.TMP").c_str()), 0);
    EXPECT_FALSE(q5IsFileExist(named));
}

TEST_F(FileHelpers, FoldersAreNotFilesAndFilesAreNotFolders) {
    EXPECT_TRUE(q5IsFolderExist(folder_));
    EXPECT_FALSE(q5IsFileExist(folder_));
    const std::u16string missing = std::u16string(folder_) + u"no such folder";
    EXPECT_FALSE(q5IsFolderExist(missing.c_str()));
    EXPECT_EQ(q5plat::QueryFileKind(folder_), q5plat::FileKind::Folder);
    EXPECT_EQ(q5plat::QueryFileKind(file_), q5plat::FileKind::File);
    EXPECT_EQ(q5plat::QueryFileKind(missing.c_str()), q5plat::FileKind::Missing);
}

TEST_F(FileHelpers, DeleteAndRenameAct) {
    const std::u16string moved = std::u16string(file_) + u"2";
    EXPECT_TRUE(q5plat::RenameFile(file_, moved.c_str()));
    EXPECT_FALSE(q5IsFileExist(file_));
    EXPECT_TRUE(q5plat::RenameFile(moved.c_str(), file_));
    EXPECT_TRUE(q5DeleteFile(file_));
    EXPECT_FALSE(q5DeleteFile(file_));
}

TEST_F(FileHelpers, FileTimeComesFromTheHostWhenItHasOne) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    q5_FILETIME time = {1, 1};
    EXPECT_FALSE(q5GetFileTime(u"no-such-file.bin", time));
    EXPECT_EQ(time.dwLowDateTime, 0u);
    host.resolvedNames[u"stamped"] = {u"ignored", q5_FILETIME{7, 8}};
    EXPECT_TRUE(q5GetFileTime(u"stamped", time));
    EXPECT_EQ(time.dwLowDateTime, 7u);
    EXPECT_EQ(time.dwHighDateTime, 8u);
    host.resolvedNames[u"alias"] = {file_, q5_FILETIME{}};
    EXPECT_TRUE(q5GetFileTime(u"alias", time));
    EXPECT_NE(time.dwHighDateTime, 0u);
}

} // namespace
