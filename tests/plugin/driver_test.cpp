// The driver chain's default bodies: the host query callbacks and SetBkImage.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

#include "interface/picture.h"
#include "support/fake_driver.h"
#include "support/recording_host.h"
#include "support/test_view.h"

namespace {

using Hooks = std::vector<std::tuple<TPicture*, std::int32_t, bool>>;

class Picture final : public TPicture {
public:
    ~Picture() override = default;
    void DeleteThis() override { ++deleted; }
    int deleted = 0;
};

class DriverChain : public ::testing::Test {
protected:
    void SetUp() override { driver->view = &view; }
    void TearDown() override { driver->Release(); }
    // A picture's references and texture users.
    static std::pair<std::uint32_t, std::int32_t> Counts(const TPicture& t) {
        return {t.refCount, t.useCount};
    }
    TestView view;
    FakeDriver* driver = new FakeDriver("A", 145);
    Picture p, q;
};

TEST_F(DriverChain, CallbacksReadTheViewsSettingsOrAnswerDefaults) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    view.settings.intKind1 = 7;
    view.settings.byteKind4 = 16;
    view.settings.flagKind2 = false;
    view.settings.flagKind8 = true;
    view.settings.flagKind9 = true;
    view.queryValue = 42;
    // Integer kinds, then flag kinds: the answer without a view, and from the view above.
    const std::tuple<bool, std::int32_t, std::int64_t, std::int64_t> cases[] = {
        {false, 1, 4096, 7}, {false, 3, 0, 42}, {false, 4, 32, 16}, {false, 2, 0, 0},
        {true, 2, 1, 0},     {true, 8, 0, 1},   {true, 9, 0, 1},    {true, 1, 0, 0}};
    for (TestView* v : {static_cast<TestView*>(nullptr), &view}) {
        driver->view = v;
        for (const auto& [flag, kind, byDefault, fromView] : cases) {
            const std::int64_t answer = flag ? driver->boolQueryCallback(driver, kind)
                                             : driver->intQueryCallback(driver, kind);
            EXPECT_EQ(answer, v ? fromView : byDefault) << flag << " kind " << kind;
        }
    }
    driver->messageCallback(driver, "hello");
    EXPECT_EQ(host.narrowReports, (std::vector<RecordingHost::Report<std::string>>{{0, "hello"}}));
}

TEST_F(DriverChain, BackgroundWithoutSettingsIsNotHeld) {
    view.hasSettings = false;
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(driver->backgroundPicture, nullptr);
    EXPECT_EQ(p.refCount, 1u);
}

TEST_F(DriverChain, FirstBackgroundHolderCreatesTheTextureWithTheFlagClearedThenRestored) {
    view.settings.flagKind2 = true;
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(driver->backgroundPicture, &p);
    EXPECT_EQ(Counts(p), std::pair(2u, 1));
    EXPECT_EQ(driver->hookCalls, (Hooks{{&p, 1, false}}));
    EXPECT_TRUE(view.settings.flagKind2);

    // A picture some other driver already textured is only counted; the last holder of p
    // releases its texture.
    q.useCount = 3;
    driver->SetBkImage(&q);
    EXPECT_EQ(Counts(q), std::pair(2u, 4));
    EXPECT_EQ(Counts(p), std::pair(1u, 0));
    EXPECT_EQ(driver->hookCalls, (Hooks{{&p, 1, false}, {&p, 0, false}}));
    driver->SetBkImage(nullptr);
    EXPECT_EQ(Counts(q), std::pair(1u, 3));
}

TEST_F(DriverChain, SameBackgroundIsRefreshedWithPixelsAndHeldAnewWithout) {
    driver->SetBkImage(&p);
    driver->SetBkImage(&p);
    EXPECT_EQ(driver->hookCalls, (Hooks{{&p, 1, false}, {&p, 0, false}, {&p, 1, false}}))
        << "no pixels: held anew";
    unsigned char pixel[4] = {};
    p.width = p.height = 1;
    p.bits = pixel;
    driver->SetBkImage(&p);
    EXPECT_EQ(driver->hookCalls.back(), Hooks::value_type(&p, -1, false)) << "an update";
    EXPECT_EQ(Counts(p), std::pair(2u, 1));
    driver->SetBkImage(nullptr);
    EXPECT_EQ(Counts(p), std::pair(1u, 0));
    EXPECT_EQ(p.deleted, 0);
}

} // namespace
