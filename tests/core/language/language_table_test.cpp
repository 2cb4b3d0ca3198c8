// Language files: parsing, errors, encodings, substitution, loading and the lookups.
#include "core/language/language_table.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "core/stream/stream.h"
#include "support/fake_plugin_record.h"
#include "support/module_loader.h"
#include "support/recording_host.h"

namespace {

constexpr const q5_WCHAR* kDefault = u"(default)";

// A table parsed from the bytes of a file; the table keeps its own copy of the text.
std::unique_ptr<q5_LANGUAGETABLE> Parse(std::string bytes, q5_PLUGINRECORD* owner = nullptr) {
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    auto table = std::make_unique<q5_LANGUAGETABLE>(stream, owner);
    stream->Release();
    return table;
}

// The bytes of a 16-bit file with its byte-order mark.
std::string Utf16File(const std::u16string& text) {
    std::string bytes = "\xFF\xFE";
    for (char16_t c : text) bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    return bytes;
}

std::u16string At(const q5_LANGUAGETABLE& table, std::int32_t id) {
    return table.Lookup(id, kDefault);
}

class LanguageTable : public ::testing::Test {
protected:
    void TearDown() override { q5DoneLanguage(); }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
    const q5_HINSTANCE module_ = LoadedModule::Get().handle;
};

// Only digits 1 to 9 start an entry; comments and directives run to the line end; a later
// duplicate wins.
TEST_F(LanguageTable, EntriesUnescapeTheirTexts) {
    const auto table = Parse("1=\"A\\nB\"\r\n2 \t= \t\"t\\tq\\\"x\\\\y\\z\"\r\n0=\"zero\"\n"
                             "10=\"ten\"\n; 3=\"no\"\n$LANG 4=\"no\"\n\n"
                             "10=\"second\"\n");
    EXPECT_EQ(At(*table, 1), u"A\r\nB");
    EXPECT_EQ(At(*table, 2), u"t\tq\"x\\yz");
    EXPECT_EQ(At(*table, 10), u"second");
    for (int id : {0, 3, 4}) EXPECT_EQ(At(*table, id), kDefault) << id;
    EXPECT_FALSE(Parse("; 1=\"no\"\n$LANG 2=\"no\"\n\n")->IsLoaded()); // comments only
}

// Entries before the error stay; a text cut by a line end or by the end of the file is an
// error too.
TEST_F(LanguageTable, ErrorStopsTheParseAndNamesItsLine) {
    const auto table = Parse("1=\"a\"\n2=\"b\"\n3 \"c\"\n4=\"d\"\n");
    EXPECT_EQ(At(*table, 2), u"b");
    EXPECT_EQ(At(*table, 4), kDefault);
    for (const char* text : {"\n7= x\"\n", "1=\"ab\r\n\"\n"}) Parse(text);
    FakePluginRecord record(u"ZB");
    Parse("1 x", &record);
    ASSERT_EQ(host_.titledReports.size(), 4u);
    EXPECT_EQ(host_.titledReports[0].title, u"Main language file parse error");
    EXPECT_EQ(host_.titledReports[0].text, u"'=' - expected \n\nat line:3");
    EXPECT_EQ(host_.titledReports[1].text, u"'\"' - expected \n\nat line:2");
    EXPECT_EQ(host_.titledReports[2].text, u"unexpected end of line\n\nat line:1");
    EXPECT_EQ(host_.titledReports[3].title, u"Plugin ZB language parse error");
    for (const char* text : {"1=\"abc", "1=\"abc\\"}) EXPECT_FALSE(Parse(text)->IsLoaded());
    EXPECT_EQ(host_.titledReports.size(), 6u);
}

// The name may be longer than its tag, in either encoding. An odd byte count in a 16-bit file
// must not read past the data.
TEST_F(LanguageTable, ApplicationNameReplacesItsTagAndAByteOrderMarkSelects16BitText) {
    EXPECT_FALSE(q5InitLanguage(nullptr, u"no-such-folder/", u"XX", u"Long Viewer"));
    const auto table = Parse("1=\"$APP_NAME$ Help\"\n2=\"APP_NAME$ x\"\n3=\"$APP_NAME\"\n");
    EXPECT_EQ(At(*table, 1), u"Long Viewer Help");
    EXPECT_EQ(At(*table, 2), u"APP_NAME$ x");
    EXPECT_EQ(At(*table, 3), u"$APP_NAME");
    const auto wide = Parse(Utf16File(u"3=\"\u00e9t\u00e9\\n\"\r\n4=\"\u4e2d $APP_NAME$\"") + "7");
    EXPECT_EQ(At(*wide, 3), u"\u00e9t\u00e9\r\n");
    EXPECT_EQ(At(*wide, 4), u"\u4e2d Long Viewer");
}

TEST_F(LanguageTable, LoadPrefersTheFileAndFallsBackToTheModulesTable) {
    q5_STREAM* file = q5_STREAM::CreateW(nullptr, u"?lng", Q5_STREAM_FILE | Q5_FILE_CREATE);
    file->WriteLnA("8=\"from the file\"");
    q5_WCHAR path[260];
    file->GetFileNameW(path, 260, 0);
    std::unique_ptr<q5_LANGUAGETABLE> fromFile(q5_LANGUAGETABLE::Load(module_, path));
    EXPECT_EQ(At(*fromFile, 8), u"from the file");
    file->Release(); // deletes the temporary file
    std::unique_ptr<q5_LANGUAGETABLE> own(q5_LANGUAGETABLE::Load(module_, path));
    EXPECT_EQ(At(*own, 8), u"Corvane Systems, Inc");
    EXPECT_EQ(At(*own, 14), u"Use extra maps : opacity, emission & ambient occlusion.\r\n"
                            u"Note: may be very slow in high resolution and on large models.");
}

// The host's record of the module gets the module's table. Without a table of its own a
// plug-in reads the main table, where its default is ignored.
TEST_F(LanguageTable, HandlesSelectTheTableAndItsFallbacks) {
    ASSERT_TRUE(q5InitLanguage(module_, nullptr, u"ENG", u"Viewer"));
    EXPECT_EQ(std::u16string(q5LGetString(0, 8)), u"Corvane Systems, Inc");
    EXPECT_EQ(std::u16string(q5LGetStringEx(0, 99, kDefault)), kDefault);
    EXPECT_EQ(q5OpenStringTable(module_), 0u); // the host has no record yet
    // A record's address is its plug-in's table handle.
    FakePluginRecord own(u"ZB"), bare(u"bare");
    host_.pluginRecords[module_] = &own;
    EXPECT_EQ(q5OpenStringTable(module_), own.Handle());
    EXPECT_EQ(std::u16string(q5LGetString(own.Handle(), 9)), u"Software Z-Buffer");
    EXPECT_EQ(std::u16string(q5LGetStringEx(own.Handle(), 99, kDefault)), kDefault);
    EXPECT_EQ(std::u16string(q5LGetString(bare.Handle(), 8)), u"Corvane Systems, Inc");
    EXPECT_EQ(std::u16string(q5LGetStringEx(bare.Handle(), 99, kDefault)), u"$$$$$$");
}

} // namespace
