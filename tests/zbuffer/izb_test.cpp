// IZB's small operations: parameters, values, capabilities, marks and the matrix.
#include <gtest/gtest.h>

#include <cstring>

#include "support/recording_host.h"
#include "support/recording_view.h"
#include "zbuffer/izb.h"
#include "zbuffer/raster_context.h"

namespace {

class Izb : public ::testing::Test {
protected:
    void TearDown() override { driver->Release(); }
    IZB* driver = new IZB();
};

TEST_F(Izb, Param1001IsStoredInvertedAndRead) {
    EXPECT_EQ(driver->SetParam(1001, 0, Q5_VALUE_INT), 1u);
    EXPECT_EQ(driver->GetParam(1001, 0, Q5_VALUE_INT), 0u);
    EXPECT_EQ(driver->SetParam(1001, 5, Q5_VALUE_INT), 1u);
    EXPECT_EQ(driver->GetParam(1001, 0, Q5_VALUE_INT), 1u);
}

TEST_F(Izb, Param1002LivesInTheContextsRenderSettings) {
    RecordingView view;
    q5_RENDERCONTEXT context{&view};
    driver->Attach(9, &context);
    EXPECT_EQ(driver->SetParam(1002, 3, Q5_VALUE_INT), 1u);
    EXPECT_EQ(view.settings.flag1002, 1);
    EXPECT_EQ(driver->GetParam(1002, 0, Q5_VALUE_INT), 1u);
    EXPECT_EQ(driver->SetParam(1002, 0, Q5_VALUE_INT), 1u);
    EXPECT_EQ(driver->GetParam(1002, 0, Q5_VALUE_INT), 0u);
}

TEST_F(Izb, Param1003ClampsIntegersAndEchoesTheArgumentOnIntegerRead) {
    float out = -1.0f;
    const auto outArg = reinterpret_cast<std::uint64_t>(&out);
    EXPECT_EQ(driver->SetParam(1003, 70000, Q5_VALUE_INT), 1u);
    EXPECT_EQ(driver->GetParam(1003, outArg, Q5_VALUE_FLOATPTR), 1u);
    EXPECT_EQ(out, 65535.0f);
    EXPECT_EQ(driver->SetParam(1003, static_cast<std::uint64_t>(-5), Q5_VALUE_INT), 1u);
    driver->GetParam(1003, outArg, Q5_VALUE_FLOATPTR);
    EXPECT_EQ(out, 0.0f);

    float in = 2.5f;
    EXPECT_EQ(driver->SetParam(1003, reinterpret_cast<std::uint64_t>(&in), Q5_VALUE_FLOATPTR), 1u);
    driver->GetParam(1003, outArg, Q5_VALUE_FLOATPTR);
    EXPECT_EQ(out, 2.5f);
    EXPECT_EQ(driver->GetParam(1003, 1234, Q5_VALUE_INT), 1234u);
    EXPECT_EQ(driver->SetParam(1003, 1, Q5_VALUE_BOOL), 0u);
    EXPECT_EQ(driver->GetParam(1003, 1, Q5_VALUE_BOOL), 0u);
    EXPECT_EQ(driver->SetParam(1003, 0, Q5_VALUE_FLOATPTR), 0u) << "null pointer";
    EXPECT_EQ(driver->SetParam(999, 1, Q5_VALUE_INT), 0u);
    EXPECT_EQ(driver->GetParam(999, 1, Q5_VALUE_INT), 0u);
}

TEST_F(Izb, Value108SetsFlagsThat109Reads) {
    EXPECT_EQ(driver->GetValue(108, 1), 1);
    EXPECT_EQ(driver->GetValue(109, 0), 1);
    EXPECT_EQ(driver->flags & IZB::kFlagQueried108, IZB::kFlagQueried108);
    EXPECT_EQ(driver->GetValue(108, 0), 1);
    EXPECT_EQ(driver->GetValue(109, 0), 0);
    EXPECT_EQ(driver->flags & IZB::kFlagQueried108, IZB::kFlagQueried108);
    EXPECT_EQ(driver->GetValue(110, 0), 0);
}

TEST_F(Izb, CapabilitiesWithoutSurfaces) {
    EXPECT_EQ(driver->QueryCaps(11), 0);
    driver->colourSize = 12;
    EXPECT_EQ(driver->QueryCaps(11), 1);
    driver->colourSize = 0;
    driver->depthEntryCount = 3;
    EXPECT_EQ(driver->QueryCaps(11), 1);
    for (int id : {13, 17, 23, 25}) EXPECT_EQ(driver->QueryCaps(id), 1) << id;
    for (int id : {10, 12, 14, 21, 26}) EXPECT_EQ(driver->QueryCaps(id), 0) << id;
}

TEST_F(Izb, MarksAreSharedByIdAcrossDrivers) {
    IZB* other = new IZB();
    EXPECT_EQ(driver->IsIdMarked(0xABCDEF0012345ull), 0);
    driver->MarkId(0xABCDEF0012345ull);
    EXPECT_EQ(other->IsIdMarked(0xABCDEF0012345ull), 1);
    EXPECT_EQ(other->IsIdMarked(0xABCDEF0012346ull), 0);
    // A clear unmarks the attached id.
    other->Attach(0xABCDEF0012345ull, nullptr);
    other->ClearFrame(0);
    EXPECT_EQ(driver->IsIdMarked(0xABCDEF0012345ull), 1) << "no surface yet: nothing cleared";
    other->Resize(1, 1);
    other->ClearFrame(0);
    EXPECT_EQ(driver->IsIdMarked(0xABCDEF0012345ull), 0);
    driver->MarkId(0xABCDEF0012345ull);
    EXPECT_EQ(driver->IsIdMarked(0xABCDEF0012345ull), 1);
    other->Release();
}

TEST_F(Izb, SetMatrixCopiesAndNullRestoresIdentity) {
    float m[16];
    for (int i = 0; i < 16; ++i) m[i] = static_cast<float>(i + 1);
    EXPECT_EQ(driver->SetMatrix(m), 1);
    EXPECT_EQ(std::memcmp(driver->transform, m, sizeof m), 0);
    EXPECT_EQ(driver->SetMatrix(nullptr), 1);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(driver->transform[i], i % 5 == 0 ? 1.0f : 0.0f) << i;
}

TEST_F(Izb, AttachTakesTheViewFromTheContext) {
    RecordingView view;
    q5_RENDERCONTEXT context{&view};
    EXPECT_EQ(driver->Attach(123, &context), 1);
    EXPECT_EQ(driver->attachedId, 123u);
    EXPECT_EQ(driver->view, &view);
    EXPECT_EQ(driver->Attach(5, nullptr), 1);
    EXPECT_EQ(driver->view, nullptr);
    EXPECT_EQ(driver->renderContext, nullptr);
}

TEST_F(Izb, DepthOffsetLowersTheSharedDepthBias) {
    const std::int32_t before = ModuleRasterContext().depthBias;
    driver->DepthOffset(3);
    EXPECT_EQ(ModuleRasterContext().depthBias, before - 3072);
    ModuleRasterContext().depthBias = before;
}

TEST_F(Izb, WithoutAHostSettingsKeepTheirDefaults) {
    EXPECT_EQ(driver->QueryCaps(15), 1);
    EXPECT_EQ(driver->QueryCaps(16), 1);
    q5_WCHAR buffer[8] = {u'x'};
    EXPECT_TRUE(driver->GetDriverString(buffer, 1));
    EXPECT_EQ(buffer[0], 0) << "no host, no table: empty text";
    EXPECT_FALSE(driver->GetDriverString(nullptr, 1));
}

} // namespace
