// The module seen through Q5DLLFunc only, with a recording host API object.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/module_loader.h"
#include "support/recording_host.h"

namespace {

constexpr const char* kName = "Tessera K (Z Buffer)";

std::uint64_t Send(std::uint64_t message, const void* a = nullptr, std::uint64_t b = 0,
                   std::uint64_t c = 0) {
    return LoadedModule::Get().entry(message, reinterpret_cast<std::int64_t>(a), b, c);
}

// Calls slot `n` (1-based) of a module object's table, the way a host built elsewhere does.
template <typename R, typename... A> R CallSlot(void* object, int n, A... args) {
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<R (*)(void*, A...)>(table[n - 1])(object, args...);
}

// Must stay the first test of the program: under Wine every test shares one process.
TEST(ModuleBeforeInit, AnswersVersionsButNotDescriptionOrCreation) {
    ASSERT_NE(LoadedModule::Get().entry, nullptr) << "Q5DLLFunc is not exported unmangled";
    EXPECT_EQ(Send(PLUGIN_MSG_INTERFACE_VERSION), 145u);
    q5_WCHAR buffer[16] = {};
    EXPECT_EQ(Send(PLUGIN_MSG_VERSION, buffer), 1u);
    EXPECT_EQ(std::u16string(buffer), u"9.0.0");
    EXPECT_EQ(Send(PLUGIN_MSG_DESCRIPTION, buffer, 0, 16), 0u);
    EXPECT_EQ(Send(PLUGIN_MSG_CREATE, kName), 0u);
}

class Module : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(LoadedModule::Get().entry, nullptr);
        host.strings = {{1, u"Software Z-Buffer video driver"}, {9, u"Software Z-Buffer"}};
        host.stringTableHandle = 77;
        ASSERT_EQ(Send(PLUGIN_MSG_INIT, &host, reinterpret_cast<std::uint64_t>(module)), 5u);
    }
    void TearDown() override { Send(PLUGIN_MSG_SHUTDOWN); }
    void* Create(const char* name) {
        return reinterpret_cast<void*>(Send(PLUGIN_MSG_CREATE, name));
    }

    const q5_HINSTANCE module = LoadedModule::Get().handle;
    RecordingHost host;
};

TEST_F(Module, InitOpensTableAndRegistersDriver) {
    EXPECT_EQ(host.openedTables, std::vector<q5_HINSTANCE>{module});
    EXPECT_EQ(host.stringRequests, (std::vector<RecordingHost::StringRequest>{{77, 9}}));
    EXPECT_EQ(host.registrations, (std::vector<RecordingHost::DriverRegistration>{
                                      {module, kName, 272, u"Software Z-Buffer"}}));
}

TEST_F(Module, VersionAndDescriptionFollowTheCopyRule) {
    q5_WCHAR buffer[40];
    std::memset(buffer, 0x7f, sizeof buffer);
    EXPECT_EQ(Send(PLUGIN_MSG_VERSION, buffer, 0, 3), 1u);
    EXPECT_EQ(std::u16string(buffer, 4), (std::u16string{u'9', u'.', 0, 0x7f7f}))
        << "nothing written past the capacity";
    EXPECT_EQ(Send(PLUGIN_MSG_DESCRIPTION, buffer), 1u);
    EXPECT_EQ(std::u16string(buffer), u"Software Z-Buffer video driver");
    EXPECT_EQ(host.stringRequests.back(), (RecordingHost::StringRequest{77, 1}));
    EXPECT_EQ(Send(PLUGIN_MSG_DESCRIPTION, buffer, 0, 9), 1u);
    EXPECT_EQ(std::u16string(buffer), u"Software");
}

TEST_F(Module, NullBuffersAndUnknownMessagesAnswerZero) {
    EXPECT_EQ(Send(PLUGIN_MSG_VERSION, nullptr, 0, 10), 0u);
    EXPECT_EQ(Send(PLUGIN_MSG_DESCRIPTION), 0u);
    EXPECT_EQ(Send(PLUGIN_MSG_CREATE), 0u);
    q5_WCHAR buffer[4] = {};
    for (std::uint64_t message : {std::uint64_t{0}, std::uint64_t{0x1003}, ~std::uint64_t{0}})
        EXPECT_EQ(Send(message, buffer, ~std::uint64_t{0}, 3), 0u) << message;
}

TEST_F(Module, CreatesOnlyForItsOwnNameInAnyCase) {
    for (const char* name : {"tessera k (z buffer)", "TESSERA K (Z BUFFER)"}) {
        void* driver = Create(name);
        ASSERT_NE(driver, nullptr) << name;
        EXPECT_EQ(CallSlot<std::uint32_t>(driver, 3), 0u) << "a new driver holds one reference";
    }
    for (const char* name : {"Tessera K (Z Buffer) ", "Tessera K (Z Buffe", ""})
        EXPECT_EQ(Create(name), nullptr) << '"' << name << '"';
}

TEST_F(Module, DriverAnswersIdentityStringsAndCountsReferencesThroughItsTable) {
    host.strings[8] = u"Corvane Systems, Inc";
    void* driver = Create(kName);
    ASSERT_NE(driver, nullptr);
    EXPECT_STREQ(CallSlot<const char*>(driver, 4), kName);
    EXPECT_EQ(CallSlot<std::int32_t>(driver, 5), 145);
    EXPECT_TRUE(CallSlot<bool>(driver, 6, "Q5_EXTENSION"));
    EXPECT_FALSE(CallSlot<bool>(driver, 6, static_cast<const char*>(nullptr)));
    EXPECT_FALSE(CallSlot<bool>(driver, 6, "q5_driver"));
    for (auto [id, layout] : {std::pair{18, 316}, std::pair{19, 1200}, std::pair{20, 576}})
        EXPECT_EQ(CallSlot<std::int64_t>(driver, 14, id), layout) << id;
    q5_WCHAR buffer[64] = {u'x'};
    EXPECT_TRUE(CallSlot<bool>(driver, 15, buffer, 2));
    EXPECT_EQ(std::u16string(buffer), u"Corvane Systems, Inc");
    EXPECT_EQ(host.stringRequests.back(), (RecordingHost::StringRequest{77, 8}));
    CallSlot<bool>(driver, 15, buffer, 3);
    EXPECT_EQ(std::u16string(buffer), u"") << "other kinds leave the buffer empty";
    EXPECT_EQ(CallSlot<std::uint32_t>(driver, 2), 2u);
    EXPECT_EQ(CallSlot<std::uint32_t>(driver, 3), 1u);
    EXPECT_EQ(CallSlot<std::uint32_t>(driver, 3), 0u);
}

TEST_F(Module, DriverReadsItsSettingsAtCreation) {
    host.settings[{0, "Render\\ZB\\Use2Thread"}] = 0;
    void* first = Create(kName);
    host.settings = {{{0, "Render\\ZB\\Refine"}, 0}};
    void* second = Create(kName);
    EXPECT_EQ(CallSlot<std::int64_t>(first, 14, 15), 0) << "use two threads";
    EXPECT_EQ(CallSlot<std::int64_t>(first, 14, 16), 1) << "refine by default";
    EXPECT_EQ(CallSlot<std::int64_t>(second, 14, 15), 1) << "two threads by default";
    EXPECT_EQ(CallSlot<std::int64_t>(second, 14, 16), 0) << "refine";
    for (void* driver : {first, second}) CallSlot<std::uint32_t>(driver, 3);
}

} // namespace
