// Objects by reference: first occurrences with their data, later ones by number.
#include <gtest/gtest.h>

#include "core/containers/collection.h"
#include "core/stream/ref_source.h"
#include "stream_testing.h"
#include "support/recording_host.h"

namespace {

// Saves one word; counts its loads; may leave a chunk open or fail to load.
class Item final : public q5_REFSOURCE {
public:
    static Item* Make(std::uint16_t value) { return new Item(value); }

    void DeleteThis() override { delete this; }
    Q5RESULT Save(q5_STREAM* stream, q5_CONTEXT*) override {
        if (leaveChunkOpen) stream->NewChunk(std::uint16_t{0x77});
        stream->WriteWord(value);
        return Q5_OK;
    }
    Q5RESULT Load(q5_STREAM* stream, q5_CONTEXT*) override {
        ++loads;
        value = stream->ReadWord();
        return loadResult;
    }
    const char* ClassName() override { return "Item"; }
    std::uint32_t References() const { return refCount_; }

    std::uint16_t value;
    bool leaveChunkOpen = false;
    Q5RESULT loadResult = Q5_OK;
    int loads = 0;

private:
    explicit Item(std::uint16_t v) : value(v) {}
    ~Item() = default;
};

class ObjectTable : public ::testing::Test {
protected:
    void TearDown() override {
        if (item_->References() > 0) item_->Release();
    }

    RecordingHost host_;
    ScopedHostAPI scope_{&host_};
    Item* item_ = Item::Make(0xBEEF);
};

TEST_F(ObjectTable, SecondPutWritesOnlyTheNumber) {
    StreamPtr stream = NewMemoryStream();
    EXPECT_EQ(stream->Put(item_, nullptr, 0), Q5_OK);
    EXPECT_EQ(stream->Put(item_, nullptr, 0), Q5_OK);
    EXPECT_EQ(Contents(*stream),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xEF, 0xBE, 0x01, 0x00, 0x00, 0x00}));
    ASSERT_NE(stream->GetObjectTable(), nullptr);
    EXPECT_EQ(stream->GetObjectTable()->Count(), 1);
    EXPECT_EQ(item_->References(), 2u);
    stream.reset();
    EXPECT_EQ(item_->References(), 1u); // the table's reference went with the stream
}

TEST_F(ObjectTable, ChunkIdWrapsTheRecord) {
    StreamPtr stream = NewMemoryStream();
    stream->SetBinaryMode(Q5_STREAM_BINARY_REVERSED);
    EXPECT_EQ(stream->Put(item_, nullptr, 0x0042), Q5_OK);
    EXPECT_EQ(Contents(*stream),
              (Bytes{0x00, 0x42, 0x00, 0x00, 0x00, 0x0C, 0xFF, 0xFF, 0xFF, 0xFF, 0xBE, 0xEF}));
}

TEST_F(ObjectTable, StoppedContextWritesNothing) {
    StreamPtr stream = NewMemoryStream();
    ContextPtr context(RecordingContext::Make());
    context->abortFlag = 1;
    EXPECT_EQ(stream->Put(item_, context.get(), 0), -1);
    EXPECT_EQ(stream->Tell(), 0);
    EXPECT_EQ(stream->GetObjectTable(), nullptr);
}

TEST_F(ObjectTable, UnbalancedSaveIsReportedToTheContext) {
    StreamPtr stream = NewMemoryStream();
    ContextPtr context(RecordingContext::Make());
    item_->leaveChunkOpen = true;
    stream->Put(item_, context.get(), 0x10);
    ASSERT_EQ(context->errors.size(), 1u);
    EXPECT_EQ(context->errors[0].text, u"NewChunk/CloseChunk - do not match in Item::Save");
}

TEST_F(ObjectTable, GetWithoutATableReadsNothing) {
    StreamPtr stream = NewMemoryStream();
    stream->WriteLong(1);
    stream->Seek(0, 0);
    EXPECT_EQ(stream->Get(nullptr), nullptr);
    EXPECT_EQ(stream->Tell(), 0);
}

TEST_F(ObjectTable, GetLoadsFirstOccurrencesAndResolvesNumbers) {
    StreamPtr stream = NewMemoryStream();
    const Bytes data = {0xFF, 0xFF, 0xFF, 0xFF, 0x34, 0x12, 0x01, 0x00, 0x00,
                        0x00, 0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
    stream->Write(data.data(), static_cast<std::int64_t>(data.size()));
    stream->Seek(0, 0);
    q5_COLLECTION* table = q5_COLLECTION::Create(4, 4);
    item_->AddRef(); // the table's reference, given back by the stream
    table->Insert(item_);
    EXPECT_FALSE(stream->SetObjectTable(table));
    EXPECT_FALSE(stream->SetObjectTable(table));
    table->Release();

    q5_REFSOURCE* first = stream->Get(nullptr);
    EXPECT_EQ(first, item_);
    EXPECT_EQ(item_->value, 0x1234);
    q5_REFSOURCE* again = stream->Get(nullptr);
    EXPECT_EQ(again, item_);
    EXPECT_EQ(item_->loads, 1);
    EXPECT_EQ(stream->Get(nullptr), nullptr); // number 5: no such object
    EXPECT_EQ(stream->Get(nullptr), nullptr); // number 0: none either
    EXPECT_EQ(item_->References(), 4u);
    first->Release();
    again->Release();
}

TEST_F(ObjectTable, LoadOutOfMemoryStopsTheContext) {
    StreamPtr stream = NewMemoryStream();
    stream->WriteLong(0xFFFFFFFF);
    stream->WriteWord(1);
    stream->Seek(0, 0);
    q5_COLLECTION* table = q5_COLLECTION::Create(4, 4);
    item_->AddRef();
    table->Insert(item_);
    stream->SetObjectTable(table);
    table->Release();
    item_->loadResult = Q5_E_ALLOC;
    ContextPtr context(RecordingContext::Make());
    q5_REFSOURCE* loaded = stream->Get(context.get());
    EXPECT_EQ(loaded, item_);
    EXPECT_EQ(host_.errorCodes, std::vector<Q5RESULT>{Q5_E_ALLOC});
    EXPECT_EQ(context->aborts, std::vector<std::int32_t>{2});
    EXPECT_FALSE(context->CanContinue());
    loaded->Release();
}

} // namespace
