// The file-type registry: registration, lookups by identifier, name and file name, the FTINFO
// filter and resumption, the type order and the calls that reach a handler.
#include "registry_fixture.h"

#include "interface/extension.h"
#include "support/fake_plugin_record.h"

namespace {

std::vector<std::u16string> Split(const FILETYPE* type) {
    std::vector<std::u16string> parts;
    for (std::int32_t i = 0; i < type->extensionCount; ++i)
        parts.emplace_back(type->splitExtensions[i]);
    return parts;
}

TEST_F(RegistryTest, RegistrationSplitsTheExtensionListAtCommas) {
    EXPECT_EQ(Split(Register(u"a,b", u"AB", 1)), (std::vector<std::u16string>{u"a", u"b"}));
    EXPECT_EQ(Split(Register(u"jpg,,jpeg", u"J", 2)),
              (std::vector<std::u16string>{u"jpg", u"", u"jpeg"}));
    EXPECT_EQ(Split(Register(u"", u"Empty", 3)), std::vector<std::u16string>{u""});
    const FILETYPE* none = Register(nullptr, u"None", 4);
    EXPECT_EQ(none->splitExtensions, nullptr);
    EXPECT_FALSE(none->IsFileOfThisType(u"x.a", nullptr));
}

TEST_F(RegistryTest, TextsAreCopiedUnlessTheCallerKeepsThem) {
    std::u16string extensions = u"abc", name = u"Mine";
    const FILETYPE* copied = Register(extensions.c_str(), name.c_str(), 1);
    const FILETYPE* kept = Register(extensions.c_str(), name.c_str(), 2, kFileTypeCallerTexts);
    extensions[0] = u'x';
    EXPECT_EQ(std::u16string(copied->extensions), u"abc");
    EXPECT_EQ(kept->extensions, extensions.c_str());
    EXPECT_EQ(Register(u"e", u"", 3)->name, nullptr);            // an empty text is stored as null
    EXPECT_EQ(Split(kept), std::vector<std::u16string>{u"abc"}); // split from the call's text
}

TEST_F(RegistryTest, KindOneTypesWithoutAnIconShowIcon12) {
    EXPECT_EQ(host.RegisterType(u"a", u"A", 0, 1, Guid(1))->icon, 12);
    EXPECT_EQ(host.RegisterType(u"b", u"B", 5, 1, Guid(2))->icon, 5);
    EXPECT_EQ(host.RegisterType(u"c", u"C", 0, 2, Guid(3))->icon, 0);
    EXPECT_EQ(host.RegisterType(u"d", u"D", 0, 0x101, Guid(4))->icon, 12);
}

TEST_F(RegistryTest, ExtensionsMatchWithoutRegardToCaseAndPatternsThroughTheNameMatcher) {
    FILETYPE* tar = Register(u"tgz,*.tar.gz", u"Tar", 1);
    EXPECT_TRUE(tar->IsFileOfThisType(u"x.tar.gz", nullptr));
    EXPECT_TRUE(tar->IsFileOfThisType(u"X.TGZ", nullptr));
    EXPECT_FALSE(tar->IsFileOfThisType(u"x.gz", nullptr));
    EXPECT_FALSE(tar->IsFileOfThisType(u"README", nullptr)); // no extension at all
    EXPECT_TRUE(tar->IsFileOfThisType(nullptr, u"TGZ"));
    EXPECT_FALSE(tar->IsFileOfThisType(nullptr, u"tar.gz")); // a pattern needs the file name
    EXPECT_EQ(GetFileTypeByExt(u"a.tar.gz", nullptr, nullptr), tar);
    EXPECT_EQ(GetFileTypeByExt("b.tgz", nullptr, nullptr), tar);
}

TEST_F(RegistryTest, LookupsByNameSkipInternalAndDisabledTypes) {
    FILETYPE* internal = Register(u"i", u"Shared", 1, 2 | kFileTypeInternal);
    FILETYPE* disabled = Register(u"d", u"Shared", 2);
    disabled->state = 0;
    FILETYPE* usable = Register(u"u", u"Shared", 3);
    EXPECT_EQ(GetTypeByName(u"sHaReD"), usable);
    usable->state = 0;
    EXPECT_EQ(GetTypeByName(u"Shared"), nullptr);
    EXPECT_EQ(GetTypeByName(nullptr), nullptr);
    // By identifier every type is found, enabled or not, internal or not.
    EXPECT_EQ(GetFileINFO(Guid(1), 0), internal);
    EXPECT_EQ(GetFileINFO(Guid(2), 0), disabled);
    EXPECT_EQ(GetFileINFO(nullptr, 0), nullptr);
    EXPECT_EQ(std::u16string(GetFileTypeName(Guid(3))), u"Shared");
    EXPECT_EQ(GetFileTypeName(Guid(9)), nullptr);
}

TEST_F(RegistryTest, IdentifierLookupWithAMaskNeedsAFlagInCommon) {
    Register(u"a", u"First", 7, 0x0002);
    FILETYPE* second = Register(u"b", u"Second", 7, 0x0402);
    EXPECT_EQ(GetFileINFO(Guid(7), 0x400), second);
    EXPECT_EQ(GetFileINFO(Guid(7), 0x800), nullptr);
}

TEST_F(RegistryTest, ATypeOfAnUnusablePlugInIsNotEnabled) {
    FakePluginRecord plugin;
    FILETYPE* type = Register(u"p", u"P", 1);
    type->plugin = &plugin;
    EXPECT_EQ(GetFileTypeByExt(u"x.p", nullptr, nullptr), type);
    plugin.state = kPluginStateFailed;
    EXPECT_FALSE(type->IsEnabled());
    EXPECT_EQ(GetFileTypeByExt(u"x.p", nullptr, nullptr), nullptr);
    plugin.state = 0;
    plugin.SetEnabled(false);
    EXPECT_FALSE(type->IsEnabled());
    plugin.SetEnabled(true);
    type->state = 0;
    EXPECT_FALSE(type->IsEnabled());
}

TEST_F(RegistryTest, ASearchResumesAfterTheGivenRecord) {
    FILETYPE* a = Register(u"foo", u"A", 1);
    FILETYPE* off = Register(u"foo", u"Off", 2);
    off->state = 0;
    FILETYPE* c = Register(u"foo", u"C", 3);
    Register(u"bar", u"D", 4);
    FTINFO info;
    info.options = 0; // no capability filter
    EXPECT_EQ(GetFileTypeByExt(u"x.foo", nullptr, &info), a);
    info.startAfter = a;
    EXPECT_EQ(GetFileTypeByExt(u"x.foo", nullptr, &info), c);
    info.startAfter = c;
    EXPECT_EQ(GetFileTypeByExt(u"x.foo", nullptr, &info), nullptr);
    FILETYPE stranger{};
    info.startAfter = &stranger;
    EXPECT_EQ(GetFileTypeByExt(u"x.foo", nullptr, &info), nullptr);
}

TEST_F(RegistryTest, TheFilterTestsCapabilitiesAndKind) {
    FILETYPE* plain = Register(u"x", u"Plain", 1, 2);
    FILETYPE* with400 = Register(u"x", u"Cap400", 2, 2 | kFileTypeCap400);
    FILETYPE* with800 = Register(u"x", u"Cap800", 3, 3 | kFileTypeCap800);
    FTINFO info; // a new request filters by capability
    EXPECT_EQ(info.options, 0x1Bu);
    EXPECT_FALSE(info.Accepts(*plain));
    EXPECT_TRUE(info.Accepts(*with400));
    EXPECT_TRUE(info.Accepts(*with800));
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), with400);
    info.options = kFtCapFilter; // without bit 4 the capability filter lets all through
    EXPECT_TRUE(info.Accepts(*plain));
    info.kind = 3;
    EXPECT_FALSE(info.Accepts(*plain));
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), with800);
}

TEST_F(RegistryTest, TypeOrderIsGroupNameExtensionsWeightThenIdentifier) {
    FILETYPE* low = Register(u"a", u"Alpha", 1);
    FILETYPE* high = Register(u"z", u"Zulu", 2);
    high->sortGroup = 1;
    Register(u"b", u"alpha", 3);
    FILETYPE* light = Register(u"b", u"ALPHA", 5);
    FILETYPE* heavy = Register(u"b", u"Alpha", 6);
    heavy->sortWeight = 3;
    FILETYPE* sameAsHeavy = Register(u"b", u"Alpha", 4);
    sameAsHeavy->sortWeight = 3;
    EXPECT_LT(CompareFileTypes(high, low), 0);
    EXPECT_LT(CompareFileTypes(low, light), 0);         // extensions "a" before "b"
    EXPECT_LT(CompareFileTypes(heavy, light), 0);       // higher weight first
    EXPECT_LT(CompareFileTypes(sameAsHeavy, heavy), 0); // identifier bytes 04 before 06
    EXPECT_EQ(CompareFileTypes(low, low), 0);
}

TEST_F(RegistryTest, PreSortingNumbersTheTypesAndSortingReordersTheRegistry) {
    FILETYPE* c = Register(u"c", u"C", 1);
    FILETYPE* a = Register(u"a", u"A", 2);
    FILETYPE* b = Register(u"b", u"B", 3);
    q5_SORTEDCOLLECTION* sorted = PreSortFileTypes(host.GetFileTypes());
    ASSERT_NE(sorted, nullptr);
    EXPECT_EQ(sorted->At(0), a);
    EXPECT_EQ((std::vector<std::int64_t>{c->orderIndex, a->orderIndex, b->orderIndex}),
              (std::vector<std::int64_t>{2, 0, 1}));
    sorted->Release();
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"C", u"A", u"B"}));
    EXPECT_TRUE(host.SortFileTypes());
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"A", u"B", u"C"}));
}

// Counts the references a call holds on it.
class Counted final : public q5_interface {
public:
    void DeleteThis() override {}
    std::uint32_t Count() const { return refCount_; }
};

struct Call {
    std::uint32_t operation;
    std::uintptr_t a, b, c;
    std::uint32_t heldDuringCall;
};
std::vector<Call> g_calls;
Counted* g_counted = nullptr;

std::uint64_t RecordingHandler(std::uint32_t operation, std::uintptr_t a, std::uintptr_t b,
                               std::uintptr_t c) {
    g_calls.push_back({operation, a, b, c, g_counted != nullptr ? g_counted->Count() : 0});
    return 100 + operation;
}

class HandlerCalls : public RegistryTest {
protected:
    void SetUp() override {
        g_calls.clear();
        g_counted = &counted;
        type = Register(u"h", u"Handled", 1);
        type->handler = RecordingHandler;
    }
    void TearDown() override { g_counted = nullptr; }
    Counted counted;
    FILETYPE* type = nullptr;
};

TEST_F(HandlerCalls, ArgumentsReachTheHandlerInOrder) {
    auto* stream = reinterpret_cast<q5_STREAM*>(0x10);
    auto* scene = reinterpret_cast<q5_SCENE*>(0x20);
    EXPECT_EQ(type->Func3d(2, stream, scene, &counted), 102u);
    EXPECT_EQ(type->FuncArc(3, 7, 8), 103u);
    EXPECT_EQ(type->FuncV(4, reinterpret_cast<q5_VIDEOINFO*>(0x30), &counted), 104u);
    ASSERT_EQ(g_calls.size(), 3u);
    EXPECT_EQ(
        (std::vector<std::uintptr_t>{g_calls[0].a, g_calls[0].b, g_calls[0].c}),
        (std::vector<std::uintptr_t>{0x10, 0x20, reinterpret_cast<std::uintptr_t>(&counted)}));
    EXPECT_EQ((std::vector<std::uintptr_t>{g_calls[1].a, g_calls[1].b, g_calls[1].c}),
              (std::vector<std::uintptr_t>{7, 8, 0}));
    EXPECT_EQ(g_calls[2].a, 0x30u);
}

TEST_F(HandlerCalls, OperationSixHoldsItsObjectForTheCall) {
    EXPECT_EQ(type->Func2d(6, nullptr, nullptr, &counted), 106u);
    EXPECT_EQ(type->Func3d(6, nullptr, nullptr, &counted), 106u);
    EXPECT_EQ(type->Func3d(5, nullptr, nullptr, &counted), 105u);
    ASSERT_EQ(g_calls.size(), 3u);
    EXPECT_EQ(g_calls[0].heldDuringCall, 2u);
    EXPECT_EQ(g_calls[1].heldDuringCall, 2u);
    EXPECT_EQ(g_calls[2].heldDuringCall, 1u);
    EXPECT_EQ(counted.Count(), 1u);
    EXPECT_EQ(type->Func3d(6, nullptr, nullptr, nullptr), 106u); // nothing to hold
}

TEST_F(HandlerCalls, NothingIsCalledWhenTheTypeCannotBeLoaded) {
    FakePluginRecord plugin;
    plugin.load = [] { return false; };
    type->plugin = &plugin;
    EXPECT_EQ(type->Func3d(1, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(plugin.loads, 1);
    plugin.load = [] { return true; };
    EXPECT_EQ(type->Func3d(1, nullptr, nullptr, nullptr), 101u);
    type->state = 0;
    EXPECT_EQ(type->FuncArc(1, 0, 0), 0u);
    EXPECT_EQ(plugin.loads, 2); // a disabled type does not ask its plug-in
    type->state = kFileTypeEnabled;
    type->handler = nullptr;
    EXPECT_EQ(type->FuncV(1, nullptr, nullptr), 0u);
    EXPECT_EQ(g_calls.size(), 1u);
}

} // namespace
