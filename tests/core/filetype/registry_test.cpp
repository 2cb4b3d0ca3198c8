// The file-type registry: registration, lookups by identifier, name and file name, the FTINFO
// filter and resumption, the type order and the calls that reach a handler.
#include "registry_fixture.h"

#include <array>

#include "interface/extension.h"
#include "support/fake_plugin_record.h"

namespace {

Texts Split(const FILETYPE* type) {
    return Texts(type->splitExtensions, type->splitExtensions + type->extensionCount);
}

TEST_F(RegistryTest, RegistrationSplitsTheExtensionListAndCopiesTheTexts) {
    EXPECT_EQ(Split(Register(u"a,b", u"AB", 1)), (Texts{u"a", u"b"}));
    EXPECT_EQ(Split(Register(u"jpg,,jpeg", u"J", 2)), (Texts{u"jpg", u"", u"jpeg"}));
    EXPECT_EQ(Split(Register(u"", u"Empty", 3)), Texts{u""});
    const FILETYPE* none = Register(nullptr, u"None", 4);
    EXPECT_EQ(none->splitExtensions, nullptr);
    EXPECT_FALSE(none->IsFileOfThisType(u"x.a", nullptr));
    // Texts are copied unless the caller keeps them.
    std::u16string extensions = u"abc";
    const FILETYPE* copied = Register(extensions.c_str(), u"Copied", 5);
    const FILETYPE* kept = Register(extensions.c_str(), u"Kept", 6, kFileTypeCallerTexts);
    extensions[0] = u'x';
    EXPECT_EQ(std::u16string(copied->extensions), u"abc");
    EXPECT_EQ(kept->extensions, extensions.c_str());
    EXPECT_EQ(Register(u"e", u"", 7)->name, nullptr); // an empty text is stored as null
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

TEST_F(RegistryTest, LookupsByNameSkipInternalAndDisabledTypesButNotByIdentifier) {
    FILETYPE* internal = Register(u"i", u"Shared", 1, 2 | kFileTypeInternal);
    FILETYPE* disabled = Register(u"d", u"Shared", 2);
    disabled->state = 0;
    FILETYPE* usable = Register(u"u", u"Shared", 3);
    EXPECT_EQ(GetTypeByName(u"sHaReD"), usable);
    usable->state = 0;
    EXPECT_EQ(GetTypeByName(u"Shared"), nullptr);
    EXPECT_EQ(GetFileINFO(Guid(1), 0), internal);
    EXPECT_EQ(GetFileINFO(Guid(2), 0), disabled);
    EXPECT_EQ(std::u16string(GetFileTypeName(Guid(3))), u"Shared");
    // With a mask, the first of that identifier sharing a flag with it.
    FILETYPE* second = Register(u"s", u"Second", 1, 0x402);
    EXPECT_EQ(GetFileINFO(Guid(1), 0x400), second);
    EXPECT_EQ(GetFileINFO(Guid(1), 0x800), nullptr);
}

TEST_F(RegistryTest, ASearchPassesTheFilterAndResumesAfterTheGivenRecord) {
    FILETYPE* plain = Register(u"x", u"Plain", 1, 2);
    Register(u"x", u"Off", 2, 2 | kFileTypeCap400)->state = 0;
    FILETYPE* with400 = Register(u"x", u"Cap400", 3, 2 | kFileTypeCap400);
    FILETYPE* with800 = Register(u"x", u"Cap800", 4, 3 | kFileTypeCap800);
    Register(u"y", u"Other", 5, 2 | kFileTypeCap400);
    FTINFO info; // a new request filters by capability
    EXPECT_EQ(info.options, 0x1Bu);
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), with400);
    info.startAfter = with400;
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), with800); // 0x800 passes without 0x400
    info.startAfter = with800;
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), nullptr);
    FILETYPE stranger{};
    info.startAfter = &stranger;
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), nullptr);
    info = FTINFO{};
    info.options = kFtCapFilter; // without bit 4 the capability filter lets all through
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), plain);
    info.kind = 3;
    EXPECT_EQ(GetFileTypeByExt(u"f.x", nullptr, &info), with800);
}

TEST_F(RegistryTest, TypeOrderIsGroupNameExtensionsWeightThenIdentifier) {
    FILETYPE* low = Register(u"a", u"Alpha", 1);
    FILETYPE* high = Register(u"z", u"Zulu", 2);
    high->sortGroup = 1;
    FILETYPE* light = Register(u"b", u"ALPHA", 5);
    FILETYPE* heavy = Register(u"b", u"Alpha", 6);
    FILETYPE* sameAsHeavy = Register(u"b", u"alpha", 4);
    heavy->sortWeight = sameAsHeavy->sortWeight = 3;
    EXPECT_LT(CompareFileTypes(high, low), 0);
    EXPECT_LT(CompareFileTypes(low, light), 0);         // extensions "a" before "b"
    EXPECT_LT(CompareFileTypes(heavy, light), 0);       // higher weight first
    EXPECT_LT(CompareFileTypes(sameAsHeavy, heavy), 0); // identifier bytes 04 before 06
    EXPECT_EQ(CompareFileTypes(low, low), 0);
}

// Counts the references held on it.
class Counted final : public q5_interface {
public:
    void DeleteThis() override {}
    std::uint32_t Count() const { return refCount_; }
} g_object;

// Operation, the three arguments, and the references held on g_object during the call.
std::vector<std::array<std::uintptr_t, 5>> g_calls;

std::uint64_t RecordingHandler(std::uint32_t operation, std::uintptr_t a, std::uintptr_t b,
                               std::uintptr_t c) {
    g_calls.push_back({operation, a, b, c, g_object.Count()});
    return 100 + operation;
}

TEST_F(RegistryTest, HandlersGetTheArgumentsInOrderAndOperationSixHoldsItsObject) {
    FILETYPE* type = Register(u"h", u"Handled", 1);
    type->handler = RecordingHandler;
    const auto object = reinterpret_cast<std::uintptr_t>(&g_object);
    EXPECT_EQ(type->Func3d(2, reinterpret_cast<q5_STREAM*>(0x10), reinterpret_cast<q5_SCENE*>(0x20),
                           &g_object),
              102u);
    EXPECT_EQ(type->FuncArc(3, 7, 8), 103u);
    EXPECT_EQ(type->FuncV(4, reinterpret_cast<q5_VIDEOINFO*>(0x30), &g_object), 104u);
    EXPECT_EQ(type->Func2d(6, nullptr, reinterpret_cast<q5_PICTURE*>(0x40), &g_object), 106u);
    EXPECT_EQ(type->Func3d(6, nullptr, nullptr, &g_object), 106u);
    EXPECT_EQ(type->Func3d(6, nullptr, nullptr, nullptr), 106u); // nothing to hold
    // Nothing is called for a type that cannot be loaded or has no handler.
    FakePluginRecord plugin;
    plugin.loadable = false;
    type->plugin = &plugin;
    EXPECT_EQ(type->FuncArc(1, 0, 0), 0u);
    plugin.state = kPluginStateFailed; // an unusable plug-in disables its types
    EXPECT_FALSE(type->IsEnabled());
    EXPECT_EQ(type->Func3d(1, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(plugin.loads, 1); // and is not asked again
    type->plugin = nullptr;
    type->handler = nullptr;
    EXPECT_EQ(type->FuncV(1, nullptr, nullptr), 0u);
    EXPECT_EQ(g_calls, (std::vector<std::array<std::uintptr_t, 5>>{{2, 0x10, 0x20, object, 1},
                                                                   {3, 7, 8, 0, 1},
                                                                   {4, 0x30, object, 0, 1},
                                                                   {6, 0, 0x40, object, 2},
                                                                   {6, 0, 0, object, 2},
                                                                   {6, 0, 0, 0, 1}}));
    EXPECT_EQ(g_object.Count(), 1u);
}

} // namespace
