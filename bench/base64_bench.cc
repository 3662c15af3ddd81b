// Base64 throughput on replay parameter blocks of typical and large size.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "base/base64.h"

static void BM_Base64Encode(benchmark::State& state) {
  CBase64 b;
  std::vector<char> in(static_cast<size_t>(state.range(0)), 'q');
  std::vector<char> out(static_cast<size_t>(b.GetOutSize(static_cast<int>(in.size()), true)) + 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(b.Encode(in.data(), out.data(), static_cast<int>(in.size())));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_Base64Encode)->Arg(536)->Arg(64 << 10);

static void BM_Base64Decode(benchmark::State& state) {
  CBase64 b;
  std::vector<char> plain(static_cast<size_t>(state.range(0)), 'q');
  std::string text(static_cast<size_t>(b.GetOutSize(static_cast<int>(plain.size()), true)) + 1, 0);
  int n = b.Encode(plain.data(), &text[0], static_cast<int>(plain.size()));
  std::vector<char> out(static_cast<size_t>(n) + 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(b.Decode(text.data(), out.data(), n));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * n);
}
BENCHMARK(BM_Base64Decode)->Arg(536)->Arg(64 << 10);

BENCHMARK_MAIN();
