// OSMesa side of the comparison: fixed-function GL with per-vertex colours, depth test
// LEQUAL (the span rule of our filler), an orthographic map from pixels to the viewport.
#include "bench/osmesa_peer.h"

#include <GL/gl.h>
#include <GL/osmesa.h>

#include <vector>

struct OsmesaPeer::State {
    OSMesaContext context = nullptr;
    int width = 0, height = 0;
    std::vector<unsigned char> buffer;
    std::vector<float> positions; // x, y, z per vertex
    std::vector<unsigned char> colours;
    std::vector<float> texcoords; // u = x / 256, v = y / 256: one texel per pixel
    GLuint texture = 0;
};

namespace {

void ClearAndBindArrays(const float* positions, const unsigned char* colours) {
    glClearColor(0, 0, 0, 0);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glVertexPointer(3, GL_FLOAT, 0, positions);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colours);
}

} // namespace

std::unique_ptr<OsmesaPeer> OsmesaPeer::Create(int width, int height) {
    std::unique_ptr<OsmesaPeer> peer(new OsmesaPeer);
    peer->state_ = std::make_unique<State>();
    State& s = *peer->state_;
    s.context = OSMesaCreateContextExt(OSMESA_BGRA, 32, 0, 0, nullptr);
    if (s.context == nullptr) return nullptr;
    s.width = width;
    s.height = height;
    s.buffer.resize(static_cast<std::size_t>(width) * height * 4);
    if (!OSMesaMakeCurrent(s.context, s.buffer.data(), GL_UNSIGNED_BYTE, width, height))
        return nullptr;
    glViewport(0, 0, width, height);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    // Pixel x right, y down; depth z in [0, 1] with smaller nearer.
    glOrtho(0, width, height, 0, 0, -1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glShadeModel(GL_SMOOTH);
    glDisable(GL_DITHER);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_COLOR_ARRAY);
    return peer;
}

OsmesaPeer::~OsmesaPeer() {
    if (state_ && state_->context != nullptr) OSMesaDestroyContext(state_->context);
}

const char* OsmesaPeer::Renderer() const {
    return reinterpret_cast<const char*>(glGetString(GL_RENDERER));
}

void OsmesaPeer::DrawRandomSet(const workload::RandomSet& set, Variant variant) {
    State& s = *state_;
    if (s.positions.empty()) {
        for (const workload::Triangle& t : set.triangles)
            for (const workload::Vertex& v : t.v) {
                s.positions.insert(s.positions.end(),
                                   {v.x16 / 16.0f, v.y16 / 16.0f, v.z / 16777216.0f});
                s.colours.insert(s.colours.end(), {v.r, v.g, v.b, 255});
                s.texcoords.insert(s.texcoords.end(),
                                   {v.x16 / 16.0f / 256.0f, v.y16 / 16.0f / 256.0f});
            }
    }
    if (variant.textured && s.texture == 0) {
        // The benchmark texture: texel (s, t) = (R s, G t, B (s ^ t) / 2, A 255), stored BGRA.
        std::vector<unsigned char> texels(256 * 256 * 4);
        for (int t = 0; t < 256; ++t)
            for (int u = 0; u < 256; ++u) {
                unsigned char* p = &texels[static_cast<std::size_t>(t * 256 + u) * 4];
                p[0] = static_cast<unsigned char>((u ^ t) >> 1);
                p[1] = static_cast<unsigned char>(t);
                p[2] = static_cast<unsigned char>(u);
                p[3] = 255;
            }
        glGenTextures(1, &s.texture);
        glBindTexture(GL_TEXTURE_2D, s.texture);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 256, 256, 0, GL_BGRA, GL_UNSIGNED_BYTE,
                     texels.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    }
    glDisable(GL_CULL_FACE);
    glDepthFunc(variant.alwaysPasses ? GL_ALWAYS : GL_LEQUAL);
    if (variant.textured) {
        glEnable(GL_TEXTURE_2D);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
        glTexCoordPointer(2, GL_FLOAT, 0, s.texcoords.data());
    }
    ClearAndBindArrays(s.positions.data(), s.colours.data());
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(s.positions.size() / 3));
    glFinish();
    if (variant.textured) {
        glDisable(GL_TEXTURE_2D);
        glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    }
    glDepthFunc(GL_LEQUAL);
}

void OsmesaPeer::DrawMesh(const workload::Mesh& mesh, bool cullBackFaces) {
    State& s = *state_;
    if (s.positions.empty()) {
        for (const workload::MeshVertex& v : mesh.vertices) {
            s.positions.insert(s.positions.end(), {static_cast<float>(v.x), static_cast<float>(v.y),
                                                   static_cast<float>(v.z)});
            s.colours.insert(s.colours.end(), {v.r, v.g, v.b, 255});
        }
    }
    if (cullBackFaces) {
        glEnable(GL_CULL_FACE);
        // We keep polygons whose signed area sum is <= 0 in y-down pixels: counter-clockwise
        // once the projection turns y up.
        glFrontFace(GL_CCW);
        glCullFace(GL_BACK);
    } else {
        glDisable(GL_CULL_FACE);
    }
    ClearAndBindArrays(s.positions.data(), s.colours.data());
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(mesh.indices.size()), GL_UNSIGNED_INT,
                   mesh.indices.data());
    glFinish();
}

double OsmesaPeer::WrittenPercent() const {
    const State& s = *state_;
    std::size_t written = 0;
    for (std::size_t i = 0; i < s.buffer.size(); i += 4)
        written += (s.buffer[i] | s.buffer[i + 1] | s.buffer[i + 2]) != 0;
    return 100.0 * static_cast<double>(written) / (static_cast<double>(s.width) * s.height);
}
