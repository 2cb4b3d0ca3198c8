// Windows-style path arithmetic, and the file helpers over the operating system.
#include "core/platform/path.h"

#include <gtest/gtest.h>

#include <string>

#include "core/services/wide_string.h"
#include "support/recording_host.h"
#include "core/services/file_helpers.h"

namespace {

// The answer of a path function, with "<false:...>" round the output when it says false.
std::u16string Call(bool (*function)(const q5_WCHAR*, const q5_WCHAR*, q5_WCHAR*),
                    const q5_WCHAR* base, const q5_WCHAR* name) {
    q5_WCHAR out[q5plat::kMaxPath] = {u'?'};
    const bool ok = function(base, name, out);
    return ok ? std::u16string(out) : u"<false:" + std::u16string(out) + u">";
}

TEST(Path, AbsoluteNameClimbsOutOfTheBase) {
    EXPECT_EQ(Call(q5GetAbsoluteName, u"C:\\a\\b", u"..\\x\\y.txt"), u"C:\\a\\x\\y.txt");
    EXPECT_EQ(Call(q5GetAbsoluteName, u"C:\\a\\b\\", u"../../z"), u"C:\\z");
    EXPECT_EQ(Call(q5GetAbsoluteName, u"C:\\", u"..\\..\\f"), u"C:\\f"); // nothing above the root
    EXPECT_EQ(Call(q5GetAbsoluteName, u"C:\\a", u""), u"<false:>");
}

TEST(Path, RelativePathNeedsASharedFolder) {
    EXPECT_EQ(Call(q5GetRelativePath, u"C:\\a", u"C:\\a\\b\\c.txt"), u"b\\c.txt");
    EXPECT_EQ(Call(q5GetRelativePath, u"C:\\a\\d\\e\\", u"C:\\a\\b"), u"..\\..\\b");
    EXPECT_EQ(Call(q5GetRelativePath, u"D:\\x", u"C:\\a\\b\\c.txt"), u"C:\\a\\b\\c.txt");
    // The shared run must end at a separator: "C:\ab" is not inside "C:\a".
    EXPECT_EQ(Call(q5GetRelativePath, u"C:\\ab", u"C:\\a\\x"), u"C:\\a\\x");
    EXPECT_EQ(Call(q5GetRelativePath, u"", u"C:\\a"), u"<false:C:\\a>");
}

TEST(Path, AbsoluteTellsDriveRelativeAndRelativeApart) {
    EXPECT_EQ(q5IsAbsolutePath(u"  C:/x"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u"C:x"), 0);
    EXPECT_EQ(q5IsAbsolutePath(u"\\\\server\\share"), 1);
    EXPECT_EQ(q5IsAbsolutePath(u"a\\b"), 2);
    EXPECT_EQ(q5IsAbsolutePath(u"ab"), 2);
}

TEST(Path, FolderOfAFileIsBeforeTheLastSeparator) {
    q5_WCHAR wide[q5plat::kMaxPath];
    EXPECT_TRUE(q5GetPathFromFile(u"C:\\dir\\f.txt", wide));
    EXPECT_EQ(std::u16string(wide), u"C:\\dir");
    EXPECT_FALSE(q5GetPathFromFile(u"f.txt", wide));
    EXPECT_EQ(wide[0], 0);
    EXPECT_FALSE(q5GetPathFromFile(u"\\f.txt", wide));
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

TEST_F(FileHelpers, TemporaryNameIsCreatedInTheFolderOnlyWithoutANumber) {
    EXPECT_TRUE(q5IsFileExist(file_));
    const std::u16string folder = folder_;
    EXPECT_EQ(std::u16string(file_).rfind(folder + u"pth", 0), 0u);
    // A given number only makes the name, from the first three letters of the prefix; the
    // system decides the case of the hex digits and the extension.
    q5_WCHAR named[q5plat::kMaxPath];
    EXPECT_EQ(q5GetTempFileName(folder_, u"pthx", 0xAB, named), 0xABu);
    EXPECT_EQ(q5wcsicmp(named, (folder + u"pthAB.TMP").c_str()), 0);
    EXPECT_FALSE(q5IsFileExist(named));
    EXPECT_TRUE(q5DeleteFile(file_));
    EXPECT_FALSE(q5DeleteFile(file_));
}

TEST_F(FileHelpers, FoldersAreNotFilesAndFilesAreNotFolders) {
    EXPECT_TRUE(q5IsFolderExist(folder_));
    EXPECT_FALSE(q5IsFileExist(folder_));
    EXPECT_FALSE(q5IsFolderExist((std::u16string(folder_) + u"no such folder").c_str()));
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
    host.resolvedNames[u"alias"] = {file_, q5_FILETIME{}};
    EXPECT_TRUE(q5GetFileTime(u"alias", time));
    EXPECT_NE(time.dwHighDateTime, 0u);
}

} // namespace
