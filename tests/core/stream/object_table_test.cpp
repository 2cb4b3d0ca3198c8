// Objects by reference: what stops or upsets Put and Get. The record forms are checked with the
// other stream forms.
#include <gtest/gtest.h>

#include "core/containers/collection.h"
#include "stream_testing.h"
#include "support/recording_host.h"

namespace {

class ObjectTable : public ::testing::Test {
protected:
    void TearDown() override {
        if (item_->References() > 0) item_->Release();
    }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
    WordItem* item_ = WordItem::Make(0xBEEF);
    StreamPtr stream_ = NewMemoryStream();
    ContextPtr context_{RecordingContext::Make()};
};

TEST_F(ObjectTable, StoppedContextWritesNothing) {
    context_->abortFlag = 1;
    EXPECT_EQ(stream_->Put(item_, context_.get(), 0), -1);
    EXPECT_EQ(stream_->Tell(), 0);
    EXPECT_EQ(stream_->GetObjectTable(), nullptr);
}

TEST_F(ObjectTable, UnbalancedSaveIsReportedToTheContext) {
    item_->leaveChunkOpen = true;
    stream_->Put(item_, context_.get(), 0x10);
    ASSERT_EQ(context_->errors.size(), 1u);
    EXPECT_EQ(context_->errors[0].text, u"NewChunk/CloseChunk - do not match in Item::Save");
}

TEST_F(ObjectTable, GetWithoutATableReadsNothing) {
    stream_->WriteLong(1);
    stream_->Seek(0, 0);
    EXPECT_EQ(stream_->Get(nullptr), nullptr);
    EXPECT_EQ(stream_->Tell(), 0);
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
    EXPECT_EQ(loaded, item_);
    EXPECT_EQ(host_.errorCodes, std::vector<Q5RESULT>{Q5_E_ALLOC});
    EXPECT_EQ(context_->aborts, std::vector<std::int32_t>{2});
    EXPECT_FALSE(context_->CanContinue());
    loaded->Release();
}

} // namespace
