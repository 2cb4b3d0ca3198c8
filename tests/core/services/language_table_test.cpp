// Language files: parsing, errors, encodings, substitution, loading and the lookups.
#include "core/services/language_table.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/stream/stream.h"
#include "support/module_loader.h"
#include "support/recording_host.h"

namespace {

constexpr const q5_WCHAR* kDefault = u"(default)";

class Record final : public q5_PLUGINRECORD {
public:
    explicit Record(const q5_WCHAR* name) : name_(name) {}
    ~Record() { delete table_; }
    q5_LANGUAGETABLE* GetLanguageTable() override { return table_; }
    void SetLanguageTable(q5_LANGUAGETABLE* table) override {
        delete table_;
        table_ = table;
    }
    const q5_WCHAR* GetName() override { return name_; }
    std::uint64_t Handle() { return reinterpret_cast<std::uint64_t>(this); }

private:
    const q5_WCHAR* name_;
    q5_LANGUAGETABLE* table_ = nullptr;
};

// A table parsed from the bytes of a file.
std::unique_ptr<q5_LANGUAGETABLE> Parse(const std::string& bytes,
                                        q5_PLUGINRECORD* owner = nullptr) {
    std::vector<char> copy(bytes.begin(), bytes.end());
    q5_STREAM* stream =
        q5_STREAM::CreateFromMemory(copy.data(), static_cast<std::int64_t>(copy.size()));
    auto table = std::make_unique<q5_LANGUAGETABLE>(stream, owner);
    if (stream != nullptr) stream->Release();
    return table;
}

// The bytes of a 16-bit file with its byte-order mark.
std::string Utf16File(const std::u16string& text) {
    std::string bytes = "\xFF\xFE";
    for (char16_t c : text) {
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
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
};

// Only digits 1 to 9 start an entry; comments and directives run to the line end; a later
// duplicate wins.
TEST_F(LanguageTable, EntriesUnescapeTheirTexts) {
    const auto table = Parse("1=\"A\\nB\"\r\n2 \t= \t\"t\\tq\\\"x\\\\y\\z\"\r\n0=\"zero\"\n"
                             "x5=\"five\"\n10=\"ten\"\n; 3=\"no\"\n$LANG 4=\"no\"\n\n"
                             "10=\"second\"\n");
    ASSERT_TRUE(table->IsLoaded());
    EXPECT_EQ(At(*table, 1), u"A\r\nB");
    EXPECT_EQ(At(*table, 2), u"t\tq\"x\\yz");
    EXPECT_EQ(At(*table, 5), u"five");
    EXPECT_EQ(At(*table, 10), u"second");
    for (int id : {0, 3, 4, 7}) EXPECT_EQ(At(*table, id), kDefault) << id;
    EXPECT_TRUE(host_.titledReports.empty());
    EXPECT_FALSE(Parse("; 1=\"no\"\n$LANG 2=\"no\"\n\n")->IsLoaded()); // comments only
}

TEST_F(LanguageTable, ErrorStopsTheParseAndNamesItsLine) {
    const auto table = Parse("1=\"a\"\n2=\"b\"\n3 \"c\"\n4=\"d\"\n");
    ASSERT_TRUE(table->IsLoaded());
    EXPECT_EQ(At(*table, 2), u"b");
    EXPECT_EQ(At(*table, 4), kDefault);
    Parse("\n7= x\"\n");
    Parse("1=\"ab\r\n\"\n");
    Record record(u"ZB");
    Parse("1 x", &record);
    ASSERT_EQ(host_.titledReports.size(), 4u);
    EXPECT_EQ(host_.titledReports[0].level, kReportError);
    EXPECT_EQ(host_.titledReports[0].title, u"Main language file parse error");
    EXPECT_EQ(host_.titledReports[0].text, u"'=' - expected \n\nat line:3");
    EXPECT_EQ(host_.titledReports[1].text, u"'\"' - expected \n\nat line:2");
    EXPECT_EQ(host_.titledReports[2].text, u"unexpected end of line\n\nat line:1");
    EXPECT_EQ(host_.titledReports[3].title, u"Plugin ZB language parse error");
}

TEST_F(LanguageTable, UnclosedTextAtTheEndIsAnError) {
    for (const char* text : {"1=\"abc", "1=\"abc\\", "1=", "12345"}) {
        host_.titledReports.clear();
        EXPECT_FALSE(Parse(text)->IsLoaded()) << text;
        EXPECT_EQ(host_.titledReports.size(), 1u) << text;
    }
}

TEST_F(LanguageTable, ByteOrderMarkSelects16BitText) {
    const std::string bytes = Utf16File(u"3=\"\u00e9t\u00e9\\n\"\r\n4=\"\u4e2d\"");
    const auto table = Parse(bytes);
    EXPECT_EQ(At(*table, 3), u"\u00e9t\u00e9\r\n");
    EXPECT_EQ(At(*table, 4), u"\u4e2d");
    // An odd byte count must not read past the data.
    const auto odd = Parse(bytes + "7");
    EXPECT_EQ(At(*odd, 4), u"\u4e2d");
}

TEST_F(LanguageTable, ApplicationNameReplacesItsTag) {
    EXPECT_FALSE(q5InitLanguage(nullptr, u"no-such-folder/", u"XX", u"Viewer"));
    const auto table = Parse("1=\"$APP_NAME$ Help\"\n2=\"APP_NAME$ x\"\n3=\"$APP_NAME\"\n");
    EXPECT_EQ(At(*table, 1), u"Viewer Help");
    EXPECT_EQ(At(*table, 2), u"APP_NAME$ x");
    EXPECT_EQ(At(*table, 3), u"$APP_NAME");
    // The name may be longer than the tag, in either encoding.
    q5InitLanguage(nullptr, nullptr, u"XX", u"A much longer name");
    const auto longer = Parse(Utf16File(u"1=\"$APP_NAME$\""));
    EXPECT_EQ(At(*longer, 1), u"A much longer name");
}

TEST_F(LanguageTable, LoadPrefersTheFileAndFallsBackToTheModulesTable) {
    const LoadedModule& module = LoadedModule::Get();
    ASSERT_NE(module.handle, nullptr);
    std::unique_ptr<q5_LANGUAGETABLE> own(q5_LANGUAGETABLE::Load(module.handle, nullptr));
    ASSERT_TRUE(own);
    EXPECT_EQ(At(*own, 1), u"Software Z-Buffer video driver");
    EXPECT_EQ(At(*own, 8), u"Corvane Systems, Inc");
    EXPECT_EQ(At(*own, 14), u"Use extra maps : opacity, emission & ambient occlusion.\r\n"
                            u"Note: may be very slow in high resolution and on large models.");
    EXPECT_EQ(At(*own, 15), kDefault);
    EXPECT_TRUE(host_.titledReports.empty());

    q5_STREAM* file = q5_STREAM::CreateW(nullptr, u"?lng", Q5_STREAM_FILE | Q5_FILE_CREATE);
    ASSERT_NE(file, nullptr);
    file->WriteLnA("8=\"from the file\"");
    q5_WCHAR path[260];
    file->GetFileNameW(path, 260, 0);
    std::unique_ptr<q5_LANGUAGETABLE> fromFile(q5_LANGUAGETABLE::Load(module.handle, path));
    ASSERT_TRUE(fromFile);
    EXPECT_EQ(At(*fromFile, 8), u"from the file");
    file->Release(); // deletes the temporary file
    std::unique_ptr<q5_LANGUAGETABLE> fallback(q5_LANGUAGETABLE::Load(module.handle, path));
    ASSERT_TRUE(fallback);
    EXPECT_EQ(At(*fallback, 8), u"Corvane Systems, Inc");
    EXPECT_EQ(q5_LANGUAGETABLE::Load(nullptr, path), nullptr); // the program has no table
}

TEST_F(LanguageTable, HandlesSelectTheTableAndItsFallbacks) {
    const LoadedModule& module = LoadedModule::Get();
    ASSERT_TRUE(q5InitLanguage(module.handle, nullptr, u"ENG", u"Viewer"));
    EXPECT_EQ(std::u16string(q5LGetString(0, 8)), u"Corvane Systems, Inc");
    EXPECT_EQ(std::u16string(q5LGetString(0, 99)), u"$$$$$$");
    EXPECT_EQ(std::u16string(q5LGetStringEx(0, 99, kDefault)), kDefault);

    Record own(u"own");
    own.SetLanguageTable(Parse("8=\"own eight\"").release());
    EXPECT_EQ(std::u16string(q5LGetString(own.Handle(), 8)), u"own eight");
    EXPECT_EQ(std::u16string(q5LGetStringEx(own.Handle(), 1, kDefault)), kDefault);

    // Without a table of its own a plug-in reads the main table, and its default is ignored.
    Record bare(u"bare");
    EXPECT_EQ(std::u16string(q5LGetString(bare.Handle(), 1)), u"Software Z-Buffer video driver");
    EXPECT_EQ(std::u16string(q5LGetStringEx(bare.Handle(), 99, kDefault)), u"$$$$$$");

    q5DoneLanguage();
    EXPECT_EQ(std::u16string(q5LGetStringEx(0, 8, kDefault)), kDefault);
}

TEST_F(LanguageTable, OpenStringTableGivesTheHostsRecordItsTable) {
    const LoadedModule& module = LoadedModule::Get();
    EXPECT_EQ(q5OpenStringTable(module.handle), 0u); // the host has no record yet
    Record record(u"ZB");
    host_.pluginRecords[module.handle] = &record;
    EXPECT_EQ(q5OpenStringTable(module.handle), record.Handle());
    ASSERT_NE(record.GetLanguageTable(), nullptr);
    EXPECT_EQ(std::u16string(q5LGetString(record.Handle(), 9)), u"Software Z-Buffer");
    q5_GAPI& api = host_;
    EXPECT_EQ(std::u16string(api.LGetStringEx(record.Handle(), 500, kDefault)), kDefault);
}

} // namespace
