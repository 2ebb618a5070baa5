#include "store/NNameFilter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

// The share of `absent` hashes the filter wrongly reports present.
double FalsePositives(const NNameFilter& filter, const std::vector<std::uint64_t>& absent) {
  std::size_t wrong = 0;
  for (const std::uint64_t hash : absent) wrong += filter.MayHold(hash) ? 1 : 0;
  return static_cast<double>(wrong) / static_cast<double>(absent.size());
}

TEST(NNameFilterTest, HoldsWhatWasAddedAndReportsRepeats) {
  std::mt19937_64 random(7);
  std::vector<std::uint64_t> added(3000);
  for (auto& hash : added) hash = random();
  std::vector<std::uint64_t> words(NNameFilter::WordsFor(added.size()));
  ASSERT_GE(words.size() * 2, added.size());
  NNameFilter filter;
  filter.Reset(words.data(), words.size());
  std::size_t repeats = 0;
  for (const std::uint64_t hash : added) repeats += filter.Add(hash) ? 1 : 0;
  EXPECT_LT(repeats, added.size() / 50);  // false alarms only, and few
  for (const std::uint64_t hash : added) {
    ASSERT_TRUE(filter.MayHold(hash));
    ASSERT_TRUE(filter.Add(hash));
  }
  std::vector<std::uint64_t> absent(20000);
  for (auto& hash : absent) hash = random();
  EXPECT_LT(FalsePositives(filter, absent), 0.02);
}

TEST(NNameFilterTest, HashesThatDifferInFewBitsStayApart) {
  // Names of one family ("Color 1", "Color 2", ...) have hashes that share
  // most of their bits; the filter must not pile them onto a few words.
  for (const std::uint64_t step : {std::uint64_t{1}, std::uint64_t{64}, std::uint64_t{1} << 32}) {
    std::vector<std::uint64_t> words(NNameFilter::WordsFor(300));
    NNameFilter filter;
    filter.Reset(words.data(), words.size());
    for (std::uint64_t i = 0; i < 300; ++i) filter.Add(0x1234'5678'9abc'def0 + i * step);
    std::vector<std::uint64_t> absent;
    for (std::uint64_t i = 300; i < 10300; ++i) absent.push_back(0x1234'5678'9abc'def0 + i * step);
    EXPECT_LT(FalsePositives(filter, absent), 0.02) << "step " << step;
  }
}

TEST(NNameFilterTest, ResetForgetsEverything) {
  std::vector<std::uint64_t> words(NNameFilter::WordsFor(10));
  NNameFilter filter;
  filter.Reset(words.data(), words.size());
  filter.Add(42);
  ASSERT_TRUE(filter.MayHold(42));
  filter.Reset(words.data(), words.size());
  EXPECT_FALSE(filter.MayHold(42));
  EXPECT_FALSE(filter.Add(42));
}

}  // namespace
