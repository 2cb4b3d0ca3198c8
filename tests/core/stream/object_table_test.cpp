// Objects by reference: what stops or upsets Put and Get. The record forms are checked with the
// other stream forms.
#include <gtest/gtest.h>

#include "core/containers/collection.h"
#include "stream_testing.h"

namespace {

class ObjectTable : public ::testing::Test {
protected:
    void TearDown() override { item_->Release(); }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
    WordItem* item_ = new WordItem(0xBEEF);
    StreamPtr stream_ = NewMemoryStream();
    ContextPtr context_{new RecordingContext};
};

TEST_F(ObjectTable, StoppedContextOrMissingTableMovesNothing) {
    context_->abortFlag = 1;
    EXPECT_EQ(stream_->Put(item_, context_.get(), 0), -1);
    EXPECT_EQ(stream_->Tell(), 0);
    stream_->WriteLong(1);
    stream_->Seek(0, 0);
    EXPECT_EQ(stream_->Get(nullptr), nullptr); // still no table: nothing is read
    EXPECT_EQ(stream_->Tell(), 0);
}

TEST_F(ObjectTable, UnbalancedSaveIsReportedToTheContext) {
    item_->leaveChunkOpen = true;
    stream_->Put(item_, context_.get(), 0x10);
    ASSERT_EQ(context_->errors.size(), 1u);
    EXPECT_EQ(context_->errors[0].second, u"NewChunk/CloseChunk - do not match in Item::Save");
}

TEST_F(ObjectTable, LoadOutOfMemoryStopsTheContext) {
    stream_->WriteLong(0xFFFFFFFF);
    stream_->WriteWord(1);
    stream_->Seek(0, 0);
    q5_COLLECTION* table = q5_COLLECTION::Create(4, 4);
    item_->AddRef();
    table->Insert(item_);
    stream_->SetObjectTable(table);
    table->Release();
    item_->loadResult = Q5_E_ALLOC;
    q5_REFSOURCE* loaded = stream_->Get(context_.get());
    EXPECT_EQ(host_.errorCodes, std::vector<Q5RESULT>{Q5_E_ALLOC});
    EXPECT_EQ(context_->abortFlag, 2); // told to stop
    loaded->Release();
}

} // namespace
