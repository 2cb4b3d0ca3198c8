// The driver chain's default bodies: type test, limits, host queries, SetBkImage.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "plugin/picture.h"
#include "support/fake_driver.h"
#include "support/recording_host.h"
#include "support/test_view.h"

namespace {

TEST(DriverChain, DefaultsOfTheBaseClasses) {
    auto* driver = new FakeDriver("A", 145);
    EXPECT_TRUE(driver->IsTypeOf("q5_extension"));
    EXPECT_FALSE(driver->IsTypeOf("q5_extension2"));
    EXPECT_EQ(driver->q5_EXTENSION::GetInterfaceVersion(), 0);
    EXPECT_EQ(driver->SetParam(1, 2, Q5_VALUE_INT), 0u);
    EXPECT_EQ(driver->QueryInfo(nullptr, 0), -4);
    EXPECT_EQ(driver->Invoke(0, nullptr, nullptr), -4);
    EXPECT_FALSE(driver->Unnamed38());
    EXPECT_FALSE(driver->Unnamed40());

    // Slots 41 and 42 read the limit and the counter.
    const struct {
        std::uint64_t limit;
        std::int32_t counter;
        bool within, either;
    } cases[] = {{0, 0, true, false}, {5, 0, false, true}, {5, 1, true, true}, {0, 1, true, true}};
    for (const auto& c : cases) {
        driver->limit = c.limit;
        driver->counter = c.counter;
        EXPECT_EQ(driver->IsWithinLimit(), c.within) << c.limit << " " << c.counter;
        EXPECT_EQ(driver->HasLimitOrCount(), c.either) << c.limit << " " << c.counter;
    }
    driver->Release();
}

TEST(DriverChain, CallbacksReadTheViewsSettingsOrAnswerDefaults) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    TestView view;
    view.settings.intKind1 = 7;
    view.settings.byteKind4 = 16;
    view.settings.flagKind2 = false;
    view.settings.flagKind8 = true;
    view.settings.flagKind9 = true;
    view.queryValue = 42;
    // Integer kinds, then flag kinds: the answer without a view, and from the view above.
    const struct {
        bool flag;
        std::int32_t kind;
        std::int64_t byDefault, fromView;
    } cases[] = {{false, 1, 4096, 7}, {false, 3, 0, 42}, {false, 4, 32, 16}, {false, 2, 0, 0},
                 {true, 2, 1, 0},     {true, 8, 0, 1},   {true, 9, 0, 1},    {true, 1, 0, 0}};
    auto* driver = new FakeDriver("A", 145);
    for (TestView* v : {static_cast<TestView*>(nullptr), &view}) {
        driver->view = v;
        for (const auto& c : cases) {
            const std::int64_t answer = c.flag ? driver->boolQueryCallback(driver, c.kind)
                                               : driver->intQueryCallback(driver, c.kind);
            EXPECT_EQ(answer, v ? c.fromView : c.byDefault)
                << (c.flag ? "flag" : "integer") << " kind " << c.kind;
        }
    }

    driver->messageCallback(driver, "hello");
    EXPECT_EQ(host.narrowReports, (std::vector<RecordingHost::Report<std::string>>{{0, "hello"}}));
    driver->Release();
}

class Picture final : public TPicture {
public:
    ~Picture() override = default;
    void DeleteThis() override { ++deleted; }
    int deleted = 0;
};

class BackgroundImage : public ::testing::Test {
protected:
    void SetUp() override { driver->view = &view; }
    void TearDown() override { driver->Release(); }
    // The texture hooks called so far, as (picture, create flag; -1 for an update).
    using HookList = std::vector<std::pair<TPicture*, std::int32_t>>;
    HookList Hooks() const {
        HookList out;
        for (const auto& call : driver->hookCalls) out.emplace_back(call.picture, call.create);
        return out;
    }
    TestView view;
    FakeDriver* driver = new FakeDriver("A", 145);
    Picture p, q;
};

TEST_F(BackgroundImage, WithoutSettingsNothingIsHeld) {
    view.hasSettings = false;
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(driver->backgroundPicture, nullptr);
    EXPECT_EQ(p.refCount, 1u);
    EXPECT_TRUE(driver->hookCalls.empty());
}

TEST_F(BackgroundImage, FirstHolderCreatesTheTextureWithFlagClearedThenRestored) {
    view.settings.flagKind2 = true;
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(driver->backgroundPicture, &p);
    EXPECT_EQ(p.refCount, 2u);
    EXPECT_EQ(p.useCount, 1);
    EXPECT_EQ(Hooks(), (HookList{{&p, 1}}));
    EXPECT_FALSE(driver->hookCalls[0].flag2);
    EXPECT_TRUE(view.settings.flagKind2);

    // A picture some other driver already textured is only counted; the last holder of p
    // releases its texture.
    q.useCount = 3;
    EXPECT_EQ(driver->SetBkImage(&q), 1);
    EXPECT_EQ(q.useCount, 4);
    EXPECT_EQ(p.useCount, 0);
    EXPECT_EQ(p.refCount, 1u);
    EXPECT_EQ(Hooks(), (HookList{{&p, 1}, {&p, 0}}));
    driver->SetBkImage(nullptr);
    EXPECT_EQ(q.refCount, 1u);
    EXPECT_EQ(q.useCount, 3);
}

TEST_F(BackgroundImage, SamePictureIsRefreshedWithPixelsAndHeldAnewWithout) {
    driver->SetBkImage(&p);
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(Hooks(), (HookList{{&p, 1}, {&p, 0}, {&p, 1}})) << "no pixels: held anew";
    EXPECT_EQ(p.refCount, 2u);
    EXPECT_EQ(p.useCount, 1);

    unsigned char pixel[4] = {};
    p.width = 1;
    p.height = 1;
    p.bits = pixel;
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(Hooks().back(), std::make_pair(static_cast<TPicture*>(&p), -1)) << "an update";
    EXPECT_EQ(p.refCount, 2u);
    EXPECT_EQ(p.useCount, 1);
    driver->SetBkImage(nullptr);
    EXPECT_EQ(p.refCount, 1u);
    EXPECT_EQ(p.deleted, 0);
}

} // namespace
