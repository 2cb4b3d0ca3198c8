// ChooseDriver and RemoveDriver: selection, the prefix rule, fallbacks and their messages.
#include <gtest/gtest.h>

#include "plugin/driver_select.h"
#include "support/fake_driver.h"
#include "support/recording_host.h"
#include "support/recording_view.h"

namespace {

constexpr const char* kDefault = "Tessera K (Z Buffer)";

class DriverSelection : public ::testing::Test {
protected:
    RecordingHost host;
    ScopedHostAPI scope{&host};
    DRIVER3D* holder = nullptr;

    void TearDown() override {
        if (holder != nullptr) holder->Release();
    }
};

TEST_F(DriverSelection, EmptyNameSelectsTheBuiltInDriver) {
    auto* driver = new FakeDriver(kDefault, 145);
    host.driverToCreate = driver;
    EXPECT_TRUE(ChooseDriver(&holder, ""));
    EXPECT_EQ(holder, driver);
    ASSERT_EQ(host.driverRequests.size(), 1u);
    EXPECT_EQ(host.driverRequests[0], kDefault);
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(DriverSelection, CurrentDriverIsKeptWhenItsNameIsAPrefixOfTheRequest) {
    auto* current = new FakeDriver(kDefault, 145);
    holder = current;
    EXPECT_TRUE(ChooseDriver(&holder, "TESSERA K (Z BUFFER) and more"));
    EXPECT_EQ(holder, current);
    EXPECT_EQ(current->refCount(), 1u);
    EXPECT_TRUE(host.driverRequests.empty());
}

TEST_F(DriverSelection, ADifferentNameDropsTheCurrentDriverAndNotifiesItsView) {
    RecordingView view;
    auto* current = new FakeDriver("Other driver", 145);
    current->view = &view;
    holder = current;
    auto* next = new FakeDriver("Next", 145);
    host.driverToCreate = next;
    FakeDriver::destroyed = 0;

    EXPECT_TRUE(ChooseDriver(&holder, "Next"));
    EXPECT_EQ(holder, next);
    EXPECT_EQ(FakeDriver::destroyed, 1);
    ASSERT_EQ(view.detached.size(), 1u);
    EXPECT_EQ(view.detached[0], std::make_pair(0, 0));
}

TEST_F(DriverSelection, WrongVersionFallsBackAndTellsTheUser) {
    FakeDriver::destroyed = 0;
    auto* fallback = new FakeDriver(kDefault, 145);
    host.createDriver = [&](const std::string& name) -> DRIVER3D* {
        return name == "Old" ? new FakeDriver("Old", 144) : fallback;
    };
    EXPECT_TRUE(ChooseDriver(&holder, "Old"));
    EXPECT_EQ(holder, fallback);
    EXPECT_EQ(FakeDriver::destroyed, 1) << "the old driver is released";
    ASSERT_EQ(host.narrowReports.size(), 1u);
    EXPECT_EQ(host.narrowReports[0].level, 1);
    EXPECT_EQ(host.narrowReports[0].text, "Driver version not valid, please recompile driver;");
}

TEST_F(DriverSelection, WrongVersionOfTheBuiltInNameGivesUpQuietly) {
    host.createDriver = [](const std::string& name) -> DRIVER3D* {
        return new FakeDriver(name, 1);
    };
    EXPECT_FALSE(ChooseDriver(&holder, kDefault));
    EXPECT_EQ(holder, nullptr);
    EXPECT_EQ(host.driverRequests.size(), 1u);
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(DriverSelection, LayoutMismatchIsReportedButTheDriverIsKept) {
    auto* driver = new FakeDriver("Odd", 145, /*caps18=*/317);
    host.driverToCreate = driver;
    EXPECT_TRUE(ChooseDriver(&holder, "Odd"));
    EXPECT_EQ(holder, driver);
    ASSERT_EQ(host.narrowReports.size(), 1u);
    EXPECT_EQ(host.narrowReports[0].level, 1);
    EXPECT_EQ(host.narrowReports[0].text,
              "Driver (Odd) was not properly compiled.\nPlease recompile it, using correct "
              "compiler settings");
}

TEST_F(DriverSelection, MissingDriverFallsBackWithoutAMessage) {
    auto* fallback = new FakeDriver(kDefault, 145);
    host.createDriver = [&](const std::string& name) -> DRIVER3D* {
        return name == kDefault ? fallback : nullptr;
    };
    EXPECT_TRUE(ChooseDriver(&holder, "Missing"));
    EXPECT_EQ(holder, fallback);
    // "Driver not found;" exists but the selection never raises it.
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(DriverSelection, TwoFailedLevelsEndInTheFatalError) {
    EXPECT_FALSE(ChooseDriver(&holder, "Missing"));
    EXPECT_EQ(holder, nullptr);
    ASSERT_EQ(host.driverRequests.size(), 2u);
    EXPECT_EQ(host.driverRequests[1], kDefault);
    ASSERT_EQ(host.narrowReports.size(), 1u);
    EXPECT_EQ(host.narrowReports[0].text, "Software driver not found!");
}

TEST_F(DriverSelection, RemoveDriverOnAnEmptyHolderDoesNothing) {
    DRIVER3D* empty = nullptr;
    EXPECT_FALSE(RemoveDriver(empty, true));
    EXPECT_FALSE(ChooseDriver(nullptr, kDefault));
    EXPECT_TRUE(host.driverRequests.empty());
}

TEST_F(DriverSelection, RemoveDriverWithoutNotifyLeavesTheViewAlone) {
    RecordingView view;
    auto* driver = new FakeDriver("A", 145);
    driver->view = &view;
    DRIVER3D* slot = driver;
    FakeDriver::destroyed = 0;
    EXPECT_TRUE(RemoveDriver(slot, false));
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(FakeDriver::destroyed, 1);
    EXPECT_TRUE(view.detached.empty());
}

} // namespace
