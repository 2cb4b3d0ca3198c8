// The file-type configuration file: what is written, what reading restores, and what reading
// ignores.
#include "registry_fixture.h"

#include "support/fake_plugin_record.h"
#include "support/saved_config.h"

namespace {

using Saved = std::pair<std::string, bool>;

class ConfigTest : public RegistryTest {
protected:
    bool Load(std::string text) {
        q5_STREAM* stream = q5_STREAM::CreateFromMemory(text.data(), std::ssize(text));
        const bool result = host.LoadFiletypeConfig(stream);
        stream->Release();
        return result;
    }

    static std::string Id(std::uint32_t n) {
        char text[40];
        return Guid(n).ToStr(text);
    }

    // Types named A, B, C, D with identifiers 1 to 4, registered in the order given.
    void RegisterTypes(const std::u16string& order) {
        for (const char16_t letter : order) {
            const char16_t text[] = {letter, 0};
            types[letter - u'A'] = Register(text, text, static_cast<std::uint32_t>(letter - u'@'));
        }
    }

    FILETYPE* types[4] = {};
};

TEST_F(ConfigTest, OnlyWhatDiffersFromTheDefaultsIsWritten) {
    RegisterTypes(u"ABC");
    EXPECT_EQ(SaveFiletypeConfigText(host), Saved("[plugins]\r\n[formats]\r\n", false));
    FakePluginRecord shown(u"Shown", u"shown.dll"), hidden(u"Hidden", u"hidden.dll");
    hidden.flags |= kPluginHidden;
    host.pluginList = {&hidden, &shown};
    EXPECT_EQ(SaveFiletypeConfigText(host),
              Saved("[plugins]\r\n{shown.dll}\r\nenable=1\r\n[formats]\r\n", true));
    host.pluginList.clear();
    types[1]->state = 0;
    EXPECT_EQ(SaveFiletypeConfigText(host),
              Saved("[plugins]\r\n[formats]\r\n;B\r\n" + Id(2) + "\r\nenable=0\r\n", true));
}

TEST_F(ConfigTest, WrittenAndReadBackRestoresEnableFlagsAndOrder) {
    RegisterTypes(u"CBAD");
    FakePluginRecord plugin(u"P", u"plug.so");
    host.pluginList = {&plugin};
    plugin.SetEnabled(false);
    types[0]->state = types[3]->state = 0;
    // Every format is listed; C and A are out of their sorted places.
    const std::string text = "[plugins]\r\n{plug.so}\r\nenable=0\r\n[formats]\r\n;C\r\n" + Id(3) +
                             "\r\norder=1\r\n;B\r\n" + Id(2) + "\r\n;A\r\n" + Id(1) +
                             "\r\nenable=0\r\norder=1\r\n;D\r\n" + Id(4) + "\r\nenable=0\r\n";
    EXPECT_EQ(SaveFiletypeConfigText(host), Saved(text, true));
    // Back to the defaults: sorted, everything enabled.
    host.SortFileTypes();
    for (FILETYPE* type : types) type->state = kFileTypeEnabled;
    plugin.SetEnabled(true);
    ASSERT_EQ(Names(), (Texts{u"A", u"B", u"C", u"D"}));
    EXPECT_TRUE(Load(text));
    EXPECT_EQ(Names(), (Texts{u"C", u"B", u"A-", u"D-"}));
    EXPECT_FALSE(plugin.IsUsable());
}

TEST_F(ConfigTest, ListedOrderIsKeptAndUnlistedTypesMergeByTypeOrder) {
    RegisterTypes(u"ABCD");
    EXPECT_TRUE(Load("[formats]\r\n" + Id(4) + "\r\norder=1\r\n" + Id(2) + "\r\n"));
    // D before B as listed; A and C each go before D, the first listed type that sorts after
    // them.
    EXPECT_EQ(Names(), (Texts{u"A", u"C", u"D", u"B"}));
}

TEST_F(ConfigTest, ADamagedFileLoadsWhatItCanAndChangesNothingElse) {
    RegisterTypes(u"ABC");
    types[1]->state = 0;
    FakePluginRecord one(u"One", u"One.DLL"), two(u"Two", u"two");
    host.pluginList = {&one, &two};
    // Nothing names a type or section before "[formats]"; after B, entries without a type must
    // not act on B; an overlong line's tail would read as an entry; "[other]" ends {two}.
    const std::string text =
        "; leading comment\r\nenable=0\r\n[junk]\r\n[formats] \r\n" + Id(1) +
        "\r\nenable=0\r\n[formats];comment\r\n;" + std::string(300, 'x') + "\r\n" + Id(2) +
        "\r\n{not-a-guid}\r\nenable=1\r\n" + Id(77) + "\r\nenable=1\r\norder=1\r\n" + Id(1) +
        "\r\n" + std::string(260, ' ') +
        "enable=0\r\nenable=yes\r\nenable\r\nmystery=1\r\n\x01\xFE\x80=\r\n"
        "[PlUgInS]\r\n{nobody}\r\nenable=0\r\n{one.dll}\r\nenable=0\r\n{two}\r\n[other]\r\n"
        "enable=0\r\n[formats]\r\n" +
        Id(3) + " ; C\r\n\t enable = 0 ; the last line, without its end";
    EXPECT_TRUE(Load(text));
    EXPECT_EQ(Names(), (Texts{u"A", u"B-", u"C-"}));
    EXPECT_FALSE(one.IsUsable());
    EXPECT_TRUE(two.IsUsable());
}

TEST_F(ConfigTest, AStreamWithoutAWholeSectionHeaderIsNotAConfiguration) {
    EXPECT_FALSE(Load("just some text\r\n[formats] \r\n[plugin]\r\nenable=0\r\n"));
    EXPECT_FALSE(host.LoadFiletypeConfig(nullptr));
    EXPECT_FALSE(host.SaveFiletypeConfig(nullptr));
}

} // namespace
