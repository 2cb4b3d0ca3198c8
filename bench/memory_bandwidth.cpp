// The machine's own limits, for comparison with the fillers: bytes per second read, written,
// and read then written back (as a depth test that passes does) over blocks that fit each
// cache level or none. Plain loops the compiler vectorises (built with -O3 for this processor);
// nothing of Tessera is involved. Rates are per second of processor time.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

std::vector<std::uint32_t> Block(const benchmark::State& state) {
    return std::vector<std::uint32_t>(static_cast<std::size_t>(state.range(0)) / 4, 1u);
}

void Read(benchmark::State& state) {
    const std::vector<std::uint32_t> block = Block(state);
    for (auto _ : state) {
        std::uint32_t sum = 0;
        for (const std::uint32_t v : block) sum += v;
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void Write(benchmark::State& state) {
    std::vector<std::uint32_t> block = Block(state);
    std::uint32_t value = 0;
    for (auto _ : state) {
        for (std::uint32_t& v : block) v = value;
        benchmark::ClobberMemory();
        ++value;
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

// Each word read and written back: two bytes moved per byte of the block.
void ReadWrite(benchmark::State& state) {
    std::vector<std::uint32_t> block = Block(state);
    for (auto _ : state) {
        for (std::uint32_t& v : block) v += 1;
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(2 * static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

// Half of each level of this machine (32 KiB, 1 MiB per core, 32 MiB shared), then memory. The
// 1024 x 768 colour and depth buffers take 6 MiB, the 1920 x 1080 ones 16 MiB.
#define BLOCK_SIZES Arg(16 << 10)->Arg(512 << 10)->Arg(16 << 20)->Arg(256 << 20)
BENCHMARK(Read)->BLOCK_SIZES;
BENCHMARK(Write)->BLOCK_SIZES;
BENCHMARK(ReadWrite)->BLOCK_SIZES;

} // namespace

BENCHMARK_MAIN();
