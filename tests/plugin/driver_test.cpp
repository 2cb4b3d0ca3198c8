// The driver chain's default bodies: reference counting, type test, host queries, SetBkImage.
#include <gtest/gtest.h>

#include "plugin/picture.h"
#include "support/fake_driver.h"
#include "support/recording_host.h"
#include "support/recording_view.h"

namespace {

TEST(DriverChain, ReferenceCountStartsAtOneAndReleaseDestroysAtZero) {
    FakeDriver::destroyed = 0;
    auto* driver = new FakeDriver("A", 145);
    EXPECT_EQ(driver->AddRef(), 2u);
    EXPECT_EQ(driver->Release(), 1u);
    EXPECT_EQ(FakeDriver::destroyed, 0);
    EXPECT_EQ(driver->Release(), 0u);
    EXPECT_EQ(FakeDriver::destroyed, 1);
}

TEST(DriverChain, DefaultsOfTheBaseClasses) {
    auto* driver = new FakeDriver("A", 145);
    EXPECT_TRUE(driver->IsTypeOf("q5_extension"));
    EXPECT_TRUE(driver->IsTypeOf("Q5_EXTENSION"));
    EXPECT_FALSE(driver->IsTypeOf("q5_extension2"));
    EXPECT_FALSE(driver->IsTypeOf(nullptr));
    EXPECT_EQ(driver->q5_EXTENSION::GetInterfaceVersion(), 0);
    EXPECT_EQ(driver->SetParam(1, 2, Q5_VALUE_INT), 0u);
    EXPECT_EQ(driver->QueryInfo(nullptr, 0), -4);
    EXPECT_EQ(driver->Invoke(0, nullptr, nullptr), -4);
    EXPECT_FALSE(driver->Unnamed38());
    EXPECT_FALSE(driver->Unnamed40());

    // Slots 41 and 42 read the limit and the counter.
    EXPECT_TRUE(driver->IsWithinLimit());
    EXPECT_FALSE(driver->HasLimitOrCount());
    driver->limit = 5;
    EXPECT_FALSE(driver->IsWithinLimit());
    EXPECT_TRUE(driver->HasLimitOrCount());
    driver->counter = 1;
    EXPECT_TRUE(driver->IsWithinLimit());
    driver->limit = 0;
    EXPECT_TRUE(driver->HasLimitOrCount());
    driver->Release();
}

TEST(DriverChain, CallbacksAnswerDefaultsWithoutSettings) {
    RecordingHost host;
    ScopedHostAPI scope(&host);
    auto* driver = new FakeDriver("A", 145);
    EXPECT_EQ(driver->intQueryCallback(driver, 1), 4096);
    EXPECT_EQ(driver->intQueryCallback(driver, 3), 0);
    EXPECT_EQ(driver->intQueryCallback(driver, 4), 32);
    EXPECT_EQ(driver->intQueryCallback(driver, 2), 0);
    EXPECT_TRUE(driver->boolQueryCallback(driver, 2));
    EXPECT_FALSE(driver->boolQueryCallback(driver, 8));
    EXPECT_FALSE(driver->boolQueryCallback(driver, 9));
    EXPECT_FALSE(driver->boolQueryCallback(driver, 1));

    driver->messageCallback(driver, "hello");
    ASSERT_EQ(host.narrowReports.size(), 1u);
    EXPECT_EQ(host.narrowReports[0].level, 0);
    EXPECT_EQ(host.narrowReports[0].text, "hello");
    driver->Release();
}

TEST(DriverChain, CallbacksReadTheViewsSettings) {
    RecordingView view;
    view.settings.intKind1 = 7;
    view.settings.byteKind4 = 16;
    view.settings.flagKind2 = false;
    view.settings.flagKind8 = true;
    view.settings.flagKind9 = true;
    view.queryValue = 42;
    auto* driver = new FakeDriver("A", 145);
    driver->view = &view;
    EXPECT_EQ(driver->intQueryCallback(driver, 1), 7);
    EXPECT_EQ(driver->intQueryCallback(driver, 3), 42);
    EXPECT_EQ(driver->intQueryCallback(driver, 4), 16);
    EXPECT_FALSE(driver->boolQueryCallback(driver, 2));
    EXPECT_TRUE(driver->boolQueryCallback(driver, 8));
    EXPECT_TRUE(driver->boolQueryCallback(driver, 9));
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
    RecordingView view;
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
    ASSERT_EQ(driver->hookCalls.size(), 1u);
    EXPECT_EQ(driver->hookCalls[0].picture, &p);
    EXPECT_EQ(driver->hookCalls[0].create, 1);
    EXPECT_FALSE(driver->hookCalls[0].flag2);
    EXPECT_TRUE(view.settings.flagKind2);

    // A picture some other driver already textured is only counted.
    q.useCount = 3;
    EXPECT_EQ(driver->SetBkImage(&q), 1);
    EXPECT_EQ(q.useCount, 4);
    EXPECT_EQ(p.useCount, 0);
    EXPECT_EQ(p.refCount, 1u);
    ASSERT_EQ(driver->hookCalls.size(), 2u);
    EXPECT_EQ(driver->hookCalls[1].picture, &p);
    EXPECT_EQ(driver->hookCalls[1].create, 0) << "the last holder releases p's texture";
    driver->SetBkImage(nullptr);
    EXPECT_EQ(q.refCount, 1u);
    EXPECT_EQ(q.useCount, 3);
}

TEST_F(BackgroundImage, SamePictureWithPixelsRefreshesTheTexture) {
    unsigned char pixel[4] = {};
    p.width = 1;
    p.height = 1;
    p.bits = pixel;
    driver->SetBkImage(&p);
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    ASSERT_EQ(driver->hookCalls.size(), 2u);
    EXPECT_EQ(driver->hookCalls[1].create, -1) << "an update, not a new texture";
    EXPECT_EQ(p.refCount, 2u);
    EXPECT_EQ(p.useCount, 1);
    driver->SetBkImage(nullptr);
    EXPECT_EQ(p.refCount, 1u);
    EXPECT_EQ(p.deleted, 0);
}

TEST_F(BackgroundImage, SamePictureWithoutPixelsIsHeldAnew) {
    driver->SetBkImage(&p);
    EXPECT_EQ(driver->SetBkImage(&p), 1);
    EXPECT_EQ(driver->backgroundPicture, &p);
    EXPECT_EQ(p.refCount, 2u);
    EXPECT_EQ(p.useCount, 1);
    ASSERT_EQ(driver->hookCalls.size(), 3u);
    EXPECT_EQ(driver->hookCalls[1].create, 0);
    EXPECT_EQ(driver->hookCalls[2].create, 1);
    driver->SetBkImage(nullptr);
}

} // namespace
