// ChooseDriver and RemoveDriver: selection, the prefix rule, fallbacks and their messages.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "interface/driver.h"
#include "support/fake_driver.h"
#include "support/recording_host.h"
#include "support/test_view.h"

namespace {

constexpr const char* kDefault = "Tessera K (Z Buffer)";
using Names = std::vector<std::string>;
using Reports = std::vector<RecordingHost::Report<std::string>>;

class DriverSelection : public ::testing::Test {
protected:
    void SetUp() override { FakeDriver::destroyed = 0; }
    void TearDown() override {
        if (holder != nullptr) holder->Release();
    }
    RecordingHost host;
    ScopedHostAPI scope{&host};
    DRIVER3D* holder = nullptr;
};

TEST_F(DriverSelection, EmptyNameSelectsTheBuiltInDriver) {
    host.driverToCreate = new FakeDriver(kDefault, 145);
    EXPECT_TRUE(ChooseDriver(&holder, ""));
    EXPECT_EQ(holder, host.driverToCreate);
    EXPECT_EQ(host.driverRequests, Names{kDefault});
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
    TestView view;
    auto* current = new FakeDriver("Other driver", 145);
    current->view = &view;
    holder = current;
    host.driverToCreate = new FakeDriver("Next", 145);
    EXPECT_TRUE(ChooseDriver(&holder, "Next"));
    EXPECT_EQ(holder, host.driverToCreate);
    EXPECT_EQ(FakeDriver::destroyed, 1);
    EXPECT_EQ(view.detached, (std::vector<std::pair<std::int32_t, std::int32_t>>{{0, 0}}));
}

TEST_F(DriverSelection, WrongVersionFallsBackAndTellsTheUser) {
    auto* fallback = new FakeDriver(kDefault, 145);
    host.createDriver = [&](const std::string& name) -> DRIVER3D* {
        return name == "Old" ? new FakeDriver("Old", 144) : fallback;
    };
    EXPECT_TRUE(ChooseDriver(&holder, "Old"));
    EXPECT_EQ(holder, fallback);
    EXPECT_EQ(FakeDriver::destroyed, 1) << "the old driver is released";
    EXPECT_EQ(host.narrowReports,
              (Reports{{1, "Driver version not valid, please recompile driver;"}}));
}

TEST_F(DriverSelection, WrongVersionOfTheBuiltInNameGivesUpQuietly) {
    host.createDriver = [](const std::string& name) { return new FakeDriver(name, 1); };
    EXPECT_FALSE(ChooseDriver(&holder, kDefault));
    EXPECT_EQ(host.driverRequests, Names{kDefault});
    EXPECT_TRUE(host.narrowReports.empty());
}

TEST_F(DriverSelection, LayoutMismatchIsReportedButTheDriverIsKept) {
    host.driverToCreate = new FakeDriver("Odd", 145, /*caps18=*/317);
    EXPECT_TRUE(ChooseDriver(&holder, "Odd"));
    EXPECT_EQ(holder, host.driverToCreate);
    EXPECT_EQ(host.narrowReports, (Reports{{1, "Driver (Odd) was not properly compiled.\nPlease "
                                               "recompile it, using correct compiler settings"}}));
}

TEST_F(DriverSelection, MissingDriverFallsBackWithoutAMessage) {
    auto* fallback = new FakeDriver(kDefault, 145);
    host.createDriver = [&](const std::string& name) -> DRIVER3D* {
        return name == kDefault ? fallback : nullptr;
    };
    EXPECT_TRUE(ChooseDriver(&holder, "Missing"));
    EXPECT_EQ(holder, fallback);
    EXPECT_TRUE(host.narrowReports.empty()) << "the selection never says \"Driver not found;\"";
}

TEST_F(DriverSelection, TwoFailedLevelsEndInTheFatalError) {
    EXPECT_FALSE(ChooseDriver(&holder, "Missing"));
    EXPECT_EQ(holder, nullptr);
    EXPECT_EQ(host.driverRequests, (Names{"Missing", kDefault}));
    EXPECT_EQ(host.narrowReports, (Reports{{1, "Software driver not found!"}}));
}

TEST_F(DriverSelection, RemoveDriverNotifiesTheViewOnlyWhenAskedAndIgnoresAnEmptyHolder) {
    EXPECT_FALSE(RemoveDriver(holder, true));

    TestView view;
    auto* driver = new FakeDriver("A", 145);
    driver->view = &view;
    DRIVER3D* slot = driver;
    EXPECT_TRUE(RemoveDriver(slot, false));
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(FakeDriver::destroyed, 1);
    EXPECT_TRUE(view.detached.empty());
}

} // namespace
