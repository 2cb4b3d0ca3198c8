// Stream forms of POINT3D and MATRIX3D, byte for byte on every stream back end in both byte
// orders.
#include "core/stream/stream_testing.h"
#include "math_testing.h"

#include <limits>

namespace {

// IEEE bit patterns of the values used below.
constexpr std::uint32_t kF1 = 0x3F800000, kFMinus2 = 0xC0000000, kFHalf = 0x3F000000,
                        kF2 = 0x40000000;
constexpr std::uint64_t kD2 = 0x4000000000000000, kDHalf = 0x3FE0000000000000,
                        kDTenth = 0x3FB999999999999A, kDQuietNaN = 0x7FF8000000000000;

template <typename Backend> class StreamForm : public StreamTest<Backend> {};
TYPED_TEST_SUITE(StreamForm, StreamBackends);

// Identity except m[0][0] = 2 (mask bit 0) and m[3][1] = y (mask bit 13).
MATRIX3D TwoElements(double y) {
    MATRIX3D m;
    m.m[0][0] = 2;
    m.m[3][1] = y;
    return m;
}

TYPED_TEST(StreamForm, PointIsThreeFloatsOptionallyInItsOwnChunk) {
    const POINT3D p(1, -2, 0.5f);
    StreamPtr out = this->Writer();
    EXPECT_EQ(p.Save(out.get(), 0), Q5_OK);
    EXPECT_EQ(p.Save(out.get(), 0x0102), Q5_OK);
    const Bytes floats = this->L(kF1) + this->L(kFMinus2) + this->L(kFHalf);
    EXPECT_EQ(Contents(*out), floats + this->W(0x0102) + this->L(18) + floats);

    StreamPtr in = this->Reader(this->L(kFMinus2) + this->L(kF2) + this->L(kF1) + Bytes(8, 0));
    POINT3D back(0, 0, 0);
    EXPECT_EQ(back.Load(in.get()), Q5_OK);
    EXPECT_POINT_NEAR(back, -2, 2, 1, 0);
    EXPECT_EQ(back.Load(in.get()), Q5_E_NOTAVAIL); // eight bytes remain

    Bytes area(10, 0); // room for the chunk header and one float
    StreamPtr full(q5_STREAM::CreateFromMemory(area.data(), 10));
    EXPECT_EQ(POINT3D(1, 2, 3).Save(full.get(), 7), Q5_E_NOTAVAIL);
}

TYPED_TEST(StreamForm, IdentityCostsNothingUnlessForced) {
    const MATRIX3D identity;
    StreamPtr s = this->Writer();
    EXPECT_EQ(identity.Save(s.get(), 0x20, false), Q5_OK);
    EXPECT_EQ(s->Tell(), 0);
    EXPECT_EQ(identity.Save(s.get(), 0, true), Q5_OK);
    EXPECT_EQ(identity.Save(s.get(), 0x20, true), Q5_OK);
    EXPECT_EQ(Contents(*s), this->W(0) + this->W(0x20) + this->L(8) + this->W(0));
}

// A mask of the elements that differ from the identity, then those elements in index order:
// doubles without a chunk, floats in a chunk only when every element fits one. A NaN differs.
TYPED_TEST(StreamForm, MatrixIsAMaskAndItsDifferingElements) {
    MATRIX3D nan;
    nan.m[1][2] = std::numeric_limits<double>::quiet_NaN(); // index 6
    StreamPtr s = this->Writer();
    EXPECT_EQ(TwoElements(0.5).Save(s.get(), 0, false), Q5_OK);
    EXPECT_EQ(TwoElements(0.5).Save(s.get(), 0x0A0B, false), Q5_OK);
    EXPECT_EQ(TwoElements(0.1).Save(s.get(), 0x0A0B, false), Q5_OK); // 2 goes as a double too
    EXPECT_EQ(nan.Save(s.get(), 0x31, false), Q5_OK);
    EXPECT_EQ(Contents(*s), this->W(0x2001) + this->Q(kD2) + this->Q(kDHalf) + this->W(0x0A0B) +
                                this->L(16) + this->W(0x2001) + this->L(kF2) + this->L(kFHalf) +
                                this->W(0x0A0B) + this->L(24) + this->W(0x2001) + this->Q(kD2) +
                                this->Q(kDTenth) + this->W(0x31) + this->L(16) + this->W(0x0040) +
                                this->Q(kDQuietNaN));
}

TYPED_TEST(StreamForm, MatrixLoadTakesTheWidthFromTheChunkSize) {
    const struct {
        bool chunked;
        Bytes data;
        MATRIX3D expected;
    } cases[] = {
        {true, this->W(0x0A0B) + this->L(16) + this->W(0x2001) + this->L(kF2) + this->L(kFHalf),
         TwoElements(0.5)},
        {true, this->W(0x0A0B) + this->L(24) + this->W(0x2001) + this->Q(kD2) + this->Q(kDTenth),
         TwoElements(0.1)},
        {true, this->W(0x0A0B) + this->L(8) + this->W(0), MATRIX3D()},
        {false, this->W(0x0001) + this->Q(kD2), Scaled(2, 1, 1)}, // outside a chunk: doubles
    };
    for (const auto& c : cases) {
        StreamPtr s = this->Reader(c.data);
        if (c.chunked) s->OpenChunk();
        MATRIX3D m;
        for (int i = 0; i < 16; ++i) m.m[i / 4][i % 4] = 7; // Load starts from the identity
        EXPECT_EQ(m.Load(s.get()), Q5_OK);
        EXPECT_TRUE(MatrixNear(m, c.expected, 0));
        EXPECT_EQ(s->Tell(), static_cast<std::int64_t>(c.data.size()));
    }
}

} // namespace
