// The file-type configuration file: what is written, what reading restores, and what reading
// ignores.
#include "registry_fixture.h"

#include "support/fake_plugin_record.h"
#include "support/saved_config.h"

namespace {

class ConfigTest : public RegistryTest {
protected:
    // The saved text and whether any entry was written.
    std::pair<std::string, bool> Save() { return SaveFiletypeConfigText(host); }

    bool Load(std::string text) {
        q5_STREAM* stream =
            q5_STREAM::CreateFromMemory(text.data(), static_cast<std::int64_t>(text.size()));
        const bool result = host.LoadFiletypeConfig(stream);
        if (stream != nullptr) stream->Release();
        return result;
    }

    static std::string IdText(std::uint32_t n) {
        char text[40];
        return Guid(n).ToStr(text);
    }

    std::vector<bool> Enabled() {
        std::vector<bool> flags;
        q5_COLLECTION* types = host.GetFileTypes();
        for (std::int64_t i = 0; i < types->Count(); ++i)
            flags.push_back(static_cast<FILETYPE*>(types->At(i))->IsEnabled());
        return flags;
    }

    // A, B, C registered in type order.
    void RegisterSorted() {
        a = Register(u"a", u"A", 1);
        b = Register(u"b", u"B", 2);
        c = Register(u"c", u"C", 3);
    }

    FILETYPE* a = nullptr;
    FILETYPE* b = nullptr;
    FILETYPE* c = nullptr;
};

TEST_F(ConfigTest, DefaultsWriteThePlugInsAndAnEmptyFormatSection) {
    RegisterSorted();
    FakePluginRecord shown(u"Shown", u"shown.dll"), hidden(u"Hidden", u"hidden.dll");
    hidden.flags |= kPluginHidden;
    FakePluginRecord off(u"Off", u"off.dll");
    off.SetEnabled(false);
    host.pluginList = {&shown, &hidden, &off};
    const auto [text, wrote] = Save();
    EXPECT_EQ(text,
              "[plugins]\r\n{shown.dll}\r\nenable=1\r\n{off.dll}\r\nenable=0\r\n[formats]\r\n");
    EXPECT_TRUE(wrote);
}

TEST_F(ConfigTest, NothingToSayWritesOnlyTheHeaders) {
    RegisterSorted();
    const auto [text, wrote] = Save();
    EXPECT_EQ(text, "[plugins]\r\n[formats]\r\n");
    EXPECT_FALSE(wrote);
}

TEST_F(ConfigTest, ADisabledFormatWritesItsNameIdentifierAndEnableLine) {
    RegisterSorted();
    b->state = 0;
    const auto [text, wrote] = Save();
    EXPECT_EQ(text, "[plugins]\r\n[formats]\r\n;B\r\n" + IdText(2) + "\r\nenable=0\r\n");
    EXPECT_TRUE(wrote);
}

TEST_F(ConfigTest, AChangedOrderWritesEveryFormatAndMarksThoseOutOfPlace) {
    b = Register(u"b", u"B", 2);
    a = Register(u"a", u"A", 1);
    c = Register(u"c", u"C", 3);
    const auto [text, wrote] = Save();
    EXPECT_EQ(text, "[plugins]\r\n[formats]\r\n;B\r\n" + IdText(2) + "\r\norder=1\r\n;A\r\n" +
                        IdText(1) + "\r\norder=1\r\n;C\r\n" + IdText(3) + "\r\n");
    EXPECT_TRUE(wrote);
}

TEST_F(ConfigTest, WrittenAndReadBackRestoresEnableFlagsAndOrder) {
    FILETYPE* d = Register(u"d", u"D", 4);
    c = Register(u"c", u"C", 3);
    a = Register(u"a", u"A", 1);
    b = Register(u"b", u"B", 2);
    FakePluginRecord plugin(u"P", u"plug.so");
    host.pluginList = {&plugin};
    plugin.SetEnabled(false);
    c->state = 0;
    a->state = 0;
    const std::string text = Save().first;

    // Back to the defaults: sorted, everything enabled.
    host.SortFileTypes();
    for (FILETYPE* type : {a, b, c, d}) type->state = kFileTypeEnabled;
    plugin.SetEnabled(true);
    ASSERT_EQ(Names(), (std::vector<std::u16string>{u"A", u"B", u"C", u"D"}));

    EXPECT_TRUE(Load(text));
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"D", u"C", u"A", u"B"}));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, false, false, true}));
    EXPECT_FALSE(plugin.IsUsable());
    EXPECT_EQ(Save().first, text);
}

TEST_F(ConfigTest, AnEnableLineUnderAnUnknownIdentifierChangesNothing) {
    RegisterSorted();
    b->state = 0;
    EXPECT_TRUE(Load("[formats]\r\n" + IdText(99) + "\r\nenable=1\r\n"));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, false, true}));
    EXPECT_TRUE(Load("[formats]\r\n" + IdText(2) + "\r\nenable=1\r\n"));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true}));
}

TEST_F(ConfigTest, ListedOrderIsKeptAndUnlistedTypesMergeByTypeOrder) {
    RegisterSorted();
    FILETYPE* d = Register(u"d", u"D", 4);
    (void)d;
    EXPECT_TRUE(Load("[formats]\r\n" + IdText(4) + "\r\norder=1\r\n" + IdText(2) + "\r\n"));
    // D before B as listed; A and C each go before D, the first listed type that sorts after
    // them.
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"A", u"C", u"D", u"B"}));
    ASSERT_NE(host.Placement(), nullptr);
    EXPECT_EQ(host.Placement()->Count(), 4);
}

TEST_F(ConfigTest, WithoutAnOrderLineListedFormatsKeepTheirPlaces) {
    RegisterSorted();
    EXPECT_TRUE(Load("[formats]\r\n" + IdText(3) + "\r\nenable=0\r\n" + IdText(1) + "\r\n"));
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"A", u"B", u"C"}));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, false}));
}

TEST_F(ConfigTest, KeyAndValueMayBeSurroundedByBlanksAndFollowedByAComment) {
    RegisterSorted();
    EXPECT_TRUE(Load("[formats]\r\n" + IdText(2) + "\r\n\t enable = 0 ; off for now\r\n"));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, false, true}));
}

TEST_F(ConfigTest, PlugInsAreFoundByTheirIdentifyingTextWithoutRegardToCase) {
    FakePluginRecord one(u"One", u"One.DLL"), two(u"Two", u"two.dll");
    host.pluginList = {&one, &two};
    EXPECT_TRUE(Load("[PlUgInS]\n{one.dll}\nenable=0\n{three.dll}\nenable=0\n"));
    EXPECT_FALSE(one.IsUsable());
    EXPECT_TRUE(two.IsUsable());
}

TEST_F(ConfigTest, SectionHeadersMustBeExact) {
    RegisterSorted();
    FakePluginRecord one(u"One", u"one");
    host.pluginList = {&one};
    // A trailing blank keeps the previous section; an unknown header clears the entry.
    EXPECT_FALSE(Load("[formats] \r\n" + IdText(1) + "\r\nenable=0\r\n"));
    EXPECT_TRUE(Load("[plugins]\r\n{one}\r\n[other]\r\nenable=0\r\n[plugins]\r\nenable=0\r\n"));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true}));
    EXPECT_TRUE(one.IsUsable());
}

TEST_F(ConfigTest, ADamagedFileLoadsWhatItCanAndChangesNothingElse) {
    RegisterSorted();
    FakePluginRecord one(u"One", u"one");
    host.pluginList = {&one};
    const std::string longComment = ";" + std::string(300, 'x') + "\r\n";
    // An overlong line whose tail would read as an entry.
    const std::string longEntry = std::string(260, ' ') + "enable=0\r\n";
    const std::string text = "; leading comment\r\n"
                             "enable=0\r\n" // outside every section
                             "[junk]\r\n" +
                             IdText(1) +
                             "\r\nenable=0\r\n"
                             "[formats];comment\r\n" +
                             longComment + "{not-a-guid}\r\nenable=0\r\n" + IdText(77) +
                             "\r\nenable=0\r\norder=1\r\n" + IdText(1) + "\r\n" + longEntry +
                             "enable=yes\r\nenable\r\nmystery=1\r\n\x01\xFE\x80=\r\n" +
                             "[plugins]\r\n{nobody}\r\nenable=0\r\n{one}\r\n"
                             "[formats]\r\n" +
                             IdText(3) + " ; C\r\n  enable=0";
    EXPECT_TRUE(Load(text));
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"A", u"B", u"C"}));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, false})); // only the last line applied
    EXPECT_TRUE(one.IsUsable());
}

TEST_F(ConfigTest, AStreamWithoutSectionsIsNotAConfiguration) {
    RegisterSorted();
    EXPECT_FALSE(Load("just some text\r\nenable=0\r\n"));
    EXPECT_FALSE(host.LoadFiletypeConfig(nullptr));
    EXPECT_FALSE(host.SaveFiletypeConfig(nullptr));
    EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true}));
}

} // namespace
