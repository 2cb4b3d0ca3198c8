// Bulk point transformation: MATRIX3D and matrix3d against the same work done with GLM, on a
// million float points moved from one array to another.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

#include "core/math/matrix3d.h"

namespace {

constexpr int kPoints = 1'000'000;

struct Workload {
    MATRIX3D matrix;
    std::vector<POINT3D> points;
    std::vector<glm::vec3> glmPoints; // the same values
    std::vector<POINT3D> reference;   // the points through MATRIX3D, to check the peer against

    Workload() : points(kPoints), glmPoints(kPoints), reference(kPoints) {
        matrix.SetScale(POINT3D(1.5f, 0.8f, 2.0f));
        MATRIX3D rotation;
        rotation.SetRotate(_point3d(0.3, -0.7, 1.1));
        matrix.Transform(rotation);
        matrix.Offset(POINT3D(10, -20, 5));

        std::mt19937 gen(2024);
        std::uniform_real_distribution<float> coordinate(-100.0f, 100.0f);
        for (int i = 0; i < kPoints; ++i) {
            points[i] = POINT3D(coordinate(gen), coordinate(gen), coordinate(gen));
            glmPoints[i] = glm::vec3(points[i].x, points[i].y, points[i].z);
        }
        matrix.TransformPoints(points.data(), reference.data(), kPoints);
    }
};

const Workload& Work() {
    static const Workload work;
    return work;
}

void CountPoints(benchmark::State& state) {
    state.counters["points/s"] =
        benchmark::Counter(kPoints, benchmark::Counter::kIsIterationInvariantRate);
}

// A wrong transcription of the matrix for GLM would make the comparison meaningless.
template <typename Point> void CheckAgainstReference(benchmark::State& state, const Point* out) {
    const std::vector<POINT3D>& ref = Work().reference;
    for (int i = 0; i < kPoints; i += 997) {
        for (int c = 0; c < 3; ++c) {
            if (!(std::fabs(out[i][c] - ref[i][c]) <= 1e-3f * (1.0f + std::fabs(ref[i][c])))) {
                state.SkipWithError("result differs from MATRIX3D::TransformPoints");
                return;
            }
        }
    }
}

void BM_MATRIX3D_TransformPoints(benchmark::State& state) {
    const Workload& work = Work();
    std::vector<POINT3D> out(kPoints);
    for (auto _ : state) {
        work.matrix.TransformPoints(work.points.data(), out.data(), kPoints);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    CountPoints(state);
}

void BM_matrix3d_TransformPoints(benchmark::State& state) {
    const Workload& work = Work();
    const matrix3d single(work.matrix);
    std::vector<POINT3D> out(kPoints);
    for (auto _ : state) {
        single.TransformPoints(work.points.data(), out.data(), kPoints);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    CountPoints(state);
    CheckAgainstReference(state, out.data());
}

// GLM multiplies column vectors, so our row-by-row storage read column by column is the
// transpose that gives the same transformation.
void BM_GLM_dmat4(benchmark::State& state) {
    const Workload& work = Work();
    const glm::dmat4 g = glm::make_mat4(&work.matrix.m[0][0]);
    std::vector<glm::vec3> out(kPoints);
    for (auto _ : state) {
        for (int i = 0; i < kPoints; ++i)
            out[i] = glm::vec3(g * glm::dvec4(glm::dvec3(work.glmPoints[i]), 1.0));
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    CountPoints(state);
    CheckAgainstReference(state, out.data());
}

void BM_GLM_mat4(benchmark::State& state) {
    const Workload& work = Work();
    const glm::mat4 g = glm::mat4(glm::make_mat4(&work.matrix.m[0][0]));
    std::vector<glm::vec3> out(kPoints);
    for (auto _ : state) {
        for (int i = 0; i < kPoints; ++i)
            out[i] = glm::vec3(g * glm::vec4(work.glmPoints[i], 1.0f));
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    CountPoints(state);
    CheckAgainstReference(state, out.data());
}

} // namespace

// Double precision first (MATRIX3D and its GLM peer), then single precision.
BENCHMARK(BM_MATRIX3D_TransformPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GLM_dmat4)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_matrix3d_TransformPoints)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GLM_mat4)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
