#include <benchmark/benchmark.h>

#include <vector>

#include "location/NMessageFormatter.h"
#include "location/NReportMessageParams.h"

namespace {

void BM_FormatPlainInsertions(benchmark::State& state) {
  const std::u16string_view pattern = u"The change to the %1 will take effect the next time you start %2.\r\n";
  const std::vector<NFormatArgument> args = {NFormatArgument(u"Personal Data Folder"), NFormatArgument(u"Skeldon")};
  std::u16string out;
  for (auto _ : state) {
    out.clear();
    NMessageFormatter::Format(pattern, args, &out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_FormatPlainInsertions);

void BM_FormatTypedInsertions(benchmark::State& state) {
  const std::u16string_view pattern = u"%1!ls! %2!08x! %3!I64u! %4!-10s!|%5!+d! %6!hu!%n";
  const std::vector<NFormatArgument> args = {
      NFormatArgument(u"2026-11-21"), NFormatArgument::Unsigned(0xE1380009), NFormatArgument::Unsigned(1ull << 40),
      NFormatArgument(u"left"),       NFormatArgument::Signed(-42),          NFormatArgument::Unsigned(8080)};
  std::u16string out;
  for (auto _ : state) {
    out.clear();
    NMessageFormatter::Format(pattern, args, &out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_FormatTypedInsertions);

void BM_ResolveLibraryMessage(benchmark::State& state) {
  for (auto _ : state) {
    NReportMessageParams params(0x61380023);
    params.AddArgument(u"Skeldon");
    benchmark::DoNotOptimize(params.GetText().data());
  }
}
BENCHMARK(BM_ResolveLibraryMessage);

}  // namespace
