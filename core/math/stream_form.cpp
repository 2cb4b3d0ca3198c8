// Stream forms of the point and the matrix: plain floats for a point, a masked form for a matrix.
#include "core/math/matrix3d.h"
#include "core/math/point.h"
#include "core/stream/stream.h"

#include <cmath>
#include <cstdint>
#include <limits>

Q5RESULT POINT3D::Load(q5_STREAM* stream) {
    return stream->_ReadData(&x, 3, 4) ? Q5_OK : Q5_E_NOTAVAIL;
}

Q5RESULT POINT3D::Save(q5_STREAM* stream, unsigned short chunkId) const {
    if (chunkId != 0) stream->NewChunk(chunkId);
    const bool written = stream->_WriteData(&x, 3, 4);
    if (chunkId != 0) stream->CloseChunk();
    return written ? Q5_OK : Q5_E_NOTAVAIL;
}

namespace {

// Row-by-row index i lies on the diagonal when i is 0, 5, 10 or 15.
double IdentityElement(int i) {
    return i % 5 == 0 ? 1.0 : 0.0;
}

// Whether the value comes back unchanged from a float. Values beyond the float range are
// rejected before the conversion, which C++ leaves undefined for them; NaN never comes back
// equal.
bool FitsFloat(double v) {
    if (std::isfinite(v) && std::fabs(v) > std::numeric_limits<float>::max()) return false;
    return static_cast<double>(static_cast<float>(v)) == v;
}

} // namespace

Q5RESULT MATRIX3D::Save(q5_STREAM* stream, unsigned short chunkId, bool force) const {
    const double* e = &m[0][0];
    std::uint16_t mask = 0;
    bool floats = chunkId != 0;
    for (int i = 0; i < 16; ++i) {
        if (e[i] == IdentityElement(i)) continue;
        mask = static_cast<std::uint16_t>(mask | (1u << i));
        if (!FitsFloat(e[i])) floats = false;
    }
    if (mask == 0 && !force) return Q5_OK;

    if (chunkId != 0) stream->NewChunk(chunkId);
    stream->WriteWord(mask);
    for (int i = 0; i < 16; ++i) {
        if ((mask & (1u << i)) == 0) continue;
        if (floats) {
            stream->WriteFloat(static_cast<float>(e[i]));
        } else {
            stream->_WriteData(&e[i], 1, 8);
        }
    }
    if (chunkId != 0) stream->CloseChunk();
    return Q5_OK;
}

Q5RESULT MATRIX3D::Load(q5_STREAM* stream) {
    const std::uint16_t mask = stream->ReadWord();
    IdentityMatrix();
    int n = 0;
    for (int i = 0; i < 16; ++i) n += (mask >> i) & 1;
    // The writer's chunk is the only record of the element width.
    const bool floats = stream->GetCurrentChunkSize() == 2 + 4 * n;
    double* e = &m[0][0];
    for (int i = 0; i < 16; ++i) {
        if ((mask & (1u << i)) == 0) continue;
        if (floats) {
            e[i] = stream->ReadFloat();
        } else {
            stream->_ReadData(&e[i], 1, 8);
        }
    }
    return Q5_OK;
}
