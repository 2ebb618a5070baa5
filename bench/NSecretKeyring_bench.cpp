#include <benchmark/benchmark.h>

#include "config/NSecretKeyring.h"

namespace {

// Opening a passphrase's verifier at the work factor a new passphrase gets
// on this machine: what a user waits for when giving the passphrase. The
// factor is aimed at 0.3 s.
void BM_UnlockAtMeasuredWorkFactor(benchmark::State& state) {
  const std::uint32_t iterations = NSecretKeyring::MeasureIterations(0.3);
  NUnicodeString verifier;
  NSecretKey key;
  NReportMessageParams params;
  if (!NSecretKeyring::MakeVerifier(u"correct horse", iterations, &verifier, &key, params)) {
    state.SkipWithError("no verifier");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(NSecretKeyring::OpenVerifier(u"correct horse", verifier, &key, params));
  }
  state.counters["iterations"] = iterations;
}
BENCHMARK(BM_UnlockAtMeasuredWorkFactor)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
