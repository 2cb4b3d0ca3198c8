// Stream forms of POINT3D and MATRIX3D, byte for byte in both byte orders.
#include "core/stream/stream_testing.h"
#include "math_testing.h"

#include <limits>

namespace {

// IEEE bit patterns of the values used below.
constexpr std::uint32_t kF1 = 0x3F800000, kFMinus2 = 0xC0000000, kFHalf = 0x3F000000,
                        kF2 = 0x40000000;
constexpr std::uint64_t kD2 = 0x4000000000000000, kDHalf = 0x3FE0000000000000,
                        kDTenth = 0x3FB999999999999A, kDQuietNaN = 0x7FF8000000000000;

class StreamForm : public ::testing::TestWithParam<Q5_STREAM_BINARY_MODE> {
protected:
    StreamPtr Writer() {
        StreamPtr s = NewMemoryStream();
        s->SetBinaryMode(GetParam());
        return s;
    }
    StreamPtr Reader(const Bytes& data) {
        StreamPtr s = NewMemoryStream();
        s->Write(data.data(), static_cast<std::int64_t>(data.size()));
        s->Seek(0, 0);
        s->SetBinaryMode(GetParam());
        return s;
    }
    // An unsigned value of `size` bytes in the stream's byte order.
    Bytes Value(std::uint64_t v, int size) const {
        Bytes b;
        for (int i = 0; i < size; ++i) b.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
        return GetParam() == Q5_STREAM_BINARY_REVERSED ? Bytes(b.rbegin(), b.rend()) : b;
    }
    Bytes W(std::uint64_t v) const { return Value(v, 2); }
    Bytes L(std::uint64_t v) const { return Value(v, 4); }
    Bytes Q(std::uint64_t v) const { return Value(v, 8); }
};

// Identity except m[0][0] = 2 (mask bit 0) and m[3][1] = y (mask bit 13).
MATRIX3D TwoElements(double y) {
    MATRIX3D m;
    m.m[0][0] = 2;
    m.m[3][1] = y;
    return m;
}

TEST_P(StreamForm, PointIsThreeFloatsOptionallyInItsOwnChunk) {
    const POINT3D p(1, -2, 0.5f);
    StreamPtr bare = Writer();
    EXPECT_EQ(p.Save(bare.get(), 0), Q5_OK);
    EXPECT_EQ(Contents(*bare), L(kF1) + L(kFMinus2) + L(kFHalf));
    EXPECT_EQ(bare->CurrentChunk(), nullptr);

    StreamPtr chunked = Writer();
    EXPECT_EQ(p.Save(chunked.get(), 0x0102), Q5_OK);
    EXPECT_EQ(Contents(*chunked), W(0x0102) + L(18) + L(kF1) + L(kFMinus2) + L(kFHalf));
}

TEST_P(StreamForm, PointLoadsFloatsAndReportsShortData) {
    StreamPtr s = Reader(L(kFMinus2) + L(kF2) + L(kF1) + L(kFHalf) + L(kF1));
    POINT3D p(0, 0, 0);
    EXPECT_EQ(p.Load(s.get()), Q5_OK);
    EXPECT_EQ(p.x, -2.0f);
    EXPECT_EQ(p.y, 2.0f);
    EXPECT_EQ(p.z, 1.0f);
    EXPECT_EQ(s->Tell(), 12);
    EXPECT_EQ(p.Load(s.get()), Q5_E_NOTAVAIL); // eight bytes remain
}

TEST_P(StreamForm, PointSaveReportsAFullStreamDespiteTheChunk) {
    Bytes area(10, 0); // room for the chunk header and one float
    StreamPtr s(q5_STREAM::CreateFromMemory(area.data(), 10));
    s->SetBinaryMode(GetParam());
    EXPECT_EQ(POINT3D(1, 2, 3).Save(s.get(), 7), Q5_E_NOTAVAIL);
}

TEST_P(StreamForm, IdentityCostsNothingUnlessForced) {
    const MATRIX3D identity;
    StreamPtr s = Writer();
    EXPECT_EQ(identity.Save(s.get(), 0x20, false), Q5_OK);
    EXPECT_EQ(s->Tell(), 0);
    EXPECT_EQ(identity.Save(s.get(), 0, true), Q5_OK);
    EXPECT_EQ(identity.Save(s.get(), 0x20, true), Q5_OK);
    EXPECT_EQ(Contents(*s), W(0) + W(0x20) + L(8) + W(0));
}

TEST_P(StreamForm, MatrixWithoutChunkIsMaskAndDoublesInIndexOrder) {
    StreamPtr s = Writer();
    EXPECT_EQ(TwoElements(0.5).Save(s.get(), 0, false), Q5_OK);
    EXPECT_EQ(Contents(*s), W(0x2001) + Q(kD2) + Q(kDHalf));
}

TEST_P(StreamForm, MatrixChunkHoldsFloatsOnlyWhenEveryElementFits) {
    StreamPtr fits = Writer();
    TwoElements(0.5).Save(fits.get(), 0x0A0B, false);
    EXPECT_EQ(Contents(*fits), W(0x0A0B) + L(16) + W(0x2001) + L(kF2) + L(kFHalf));

    StreamPtr tenth = Writer(); // 0.1 is no float, so 2 goes as a double too
    TwoElements(0.1).Save(tenth.get(), 0x0A0B, false);
    EXPECT_EQ(Contents(*tenth), W(0x0A0B) + L(24) + W(0x2001) + Q(kD2) + Q(kDTenth));
}

TEST_P(StreamForm, NaNElementDiffersAndGoesAsDouble) {
    MATRIX3D m;
    m.m[1][2] = std::numeric_limits<double>::quiet_NaN(); // index 6
    StreamPtr s = Writer();
    m.Save(s.get(), 0x31, false);
    EXPECT_EQ(Contents(*s), W(0x31) + L(16) + W(0x0040) + Q(kDQuietNaN));
}

TEST_P(StreamForm, MatrixLoadTakesTheWidthFromTheChunkSize) {
    const struct {
        Bytes data;
        MATRIX3D expected;
    } cases[] = {
        {W(0x0A0B) + L(16) + W(0x2001) + L(kF2) + L(kFHalf), TwoElements(0.5)},
        {W(0x0A0B) + L(24) + W(0x2001) + Q(kD2) + Q(kDTenth), TwoElements(0.1)},
        {W(0x0A0B) + L(8) + W(0), MATRIX3D()},
    };
    for (const auto& c : cases) {
        StreamPtr s = Reader(c.data);
        s->OpenChunk();
        MATRIX3D m;
        for (int i = 0; i < 16; ++i) m.m[i / 4][i % 4] = 7; // Load starts from the identity
        EXPECT_EQ(m.Load(s.get()), Q5_OK);
        EXPECT_TRUE(MatrixNear(m, c.expected, 0));
        EXPECT_EQ(s->Tell(), static_cast<std::int64_t>(c.data.size()));
    }
}

TEST_P(StreamForm, MatrixLoadOutsideAChunkReadsDoubles) {
    StreamPtr s = Reader(W(0x0001) + Q(kD2));
    MATRIX3D m;
    m.Load(s.get());
    EXPECT_TRUE(MatrixNear(m, Scaled(2, 1, 1), 0));
    EXPECT_EQ(s->Tell(), 10);
}

TEST_P(StreamForm, MatrixRoundTripsThroughItsChunkExactly) {
    TestRandom random(11);
    for (const MATRIX3D& original : {random.General(), Scaled(0.25f, 4, -1), MATRIX3D()}) {
        StreamPtr s = Writer();
        original.Save(s.get(), 0x44, true);
        s->Seek(0, 0);
        ASSERT_EQ(s->OpenChunk(), 0x44);
        MATRIX3D loaded;
        loaded.Load(s.get());
        EXPECT_TRUE(s->CloseChunk());
        EXPECT_TRUE(MatrixNear(loaded, original, 0));
    }
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, StreamForm,
                         ::testing::Values(Q5_STREAM_BINARY_DEFAULT, Q5_STREAM_BINARY_REVERSED),
                         [](const auto& info) {
                             return info.param == Q5_STREAM_BINARY_REVERSED ? "Reversed"
                                                                            : "LittleEndian";
                         });

} // namespace
