#include "platform/NDetachedThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

// Threads started from several threads at once, each starting one more:
// every one of them runs its own work exactly once.
TEST(NDetachedThreadTest, ThreadsStartedFromManyThreadsAtOnceAllRun) {
  constexpr int kStarters = 4;
  constexpr int kPerStarter = 150;
  struct Count {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<int> runs = std::vector<int>(2 * kStarters * kPerStarter);
    int total = 0;
    void Ran(int index) {
      std::lock_guard lock(mutex);
      ++runs[index];
      ++total;
      changed.notify_all();
    }
  };
  const auto count = std::make_shared<Count>();
  std::vector<std::thread> starters;
  for (int s = 0; s < kStarters; ++s) {
    starters.emplace_back([count, s] {
      for (int i = 0; i < kPerStarter; ++i) {
        const int index = 2 * (s * kPerStarter + i);
        EXPECT_TRUE(NStartDetachedThread([count, index] {
          EXPECT_TRUE(NStartDetachedThread([count, index] { count->Ran(index + 1); }));
          count->Ran(index);
        }));
      }
    });
  }
  for (std::thread& starter : starters) starter.join();
  std::unique_lock lock(count->mutex);
  ASSERT_TRUE(count->changed.wait_for(lock, std::chrono::seconds(30),
                                      [&] { return count->total == 2 * kStarters * kPerStarter; }));
  for (std::size_t i = 0; i < count->runs.size(); ++i) EXPECT_EQ(count->runs[i], 1) << i;
}

}  // namespace
