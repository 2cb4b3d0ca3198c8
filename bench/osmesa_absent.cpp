// Stands in for the peer when OSMesa is not installed: the peer rows report an error.
#include "bench/osmesa_peer.h"

struct OsmesaPeer::State {};

std::unique_ptr<OsmesaPeer> OsmesaPeer::Create(int, int) {
    return nullptr;
}
OsmesaPeer::~OsmesaPeer() = default;
void OsmesaPeer::DrawRandomSet(const workload::RandomSet&, Variant) {}
void OsmesaPeer::DrawMesh(const workload::Mesh&, bool) {}
const char* OsmesaPeer::Renderer() const {
    return "";
}
double OsmesaPeer::WrittenPercent() const {
    return 0.0;
}
