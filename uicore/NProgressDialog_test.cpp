#include "uicore/NProgressDialog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace {

struct Event {
  NProgressEvent event;
  std::u16string text;
  std::uint64_t done, total;
};

class NProgressDialogTest : public testing::Test {
 protected:
  void SetUp() override { NSetProgressObserver(&Observe, this); }
  void TearDown() override { NSetProgressObserver(nullptr, nullptr); }
  static void Observe(void* context, NProgressEvent event, const char16_t* text, std::uint64_t done,
                      std::uint64_t total) {
    auto& test = *static_cast<NProgressDialogTest*>(context);
    std::lock_guard<std::mutex> lock(test.m_mutex);
    test.m_events.push_back({event, text, done, total});
  }
  std::mutex m_mutex;
  std::vector<Event> m_events;
};

TEST_F(NProgressDialogTest, RunLastsUntilAWorkerPostsCloseAndTheHostSeesEveryStep) {
  NProgressDialog dialog(u"Skeldon is migrating.");
  std::atomic<bool> ran{false};
  std::thread worker([&] {
    // Run has not returned before the close is posted.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    for (std::uint64_t done = 0; done <= 3; ++done) dialog.SetProgress(done, 3);
    EXPECT_FALSE(ran.load());
    dialog.PostClose();
  });
  dialog.Run();
  ran = true;
  worker.join();
  EXPECT_EQ(dialog.Done(), 3u);
  EXPECT_EQ(dialog.Total(), 3u);
  EXPECT_EQ(dialog.Text(), u"Skeldon is migrating.");
  ASSERT_EQ(m_events.size(), 6u);
  EXPECT_EQ(m_events.front().event, NProgressEvent::kShown);
  EXPECT_EQ(m_events.front().text, u"Skeldon is migrating.");
  for (std::uint64_t i = 0; i <= 3; ++i) {
    EXPECT_EQ(m_events[1 + i].event, NProgressEvent::kChanged);
    EXPECT_EQ(m_events[1 + i].done, i);
    EXPECT_EQ(m_events[1 + i].total, 3u);
  }
  EXPECT_EQ(m_events.back().event, NProgressEvent::kClosed);
  EXPECT_EQ(m_events.back().done, 3u);
}

TEST_F(NProgressDialogTest, ACloseBeforeRunEndsRunAtOnce) {
  NProgressDialog dialog(u"text");
  std::thread([&] { dialog.PostClose(); }).join();
  dialog.Run();
  dialog.SetText(u"other");
  EXPECT_EQ(dialog.Text(), u"other");
  ASSERT_EQ(m_events.size(), 3u);
  EXPECT_EQ(m_events[1].event, NProgressEvent::kClosed);
  EXPECT_EQ(m_events[2].text, u"other");
}

TEST_F(NProgressDialogTest, ManyWorkersReportingAtOnceLeaveConsistentCounts) {
  NProgressDialog dialog(u"text");
  constexpr int kWorkers = 4;
  constexpr std::uint64_t kSteps = 500;
  std::atomic<int> finished{0};
  std::vector<std::thread> workers;
  for (int w = 0; w < kWorkers; ++w) {
    workers.emplace_back([&] {
      for (std::uint64_t i = 1; i <= kSteps; ++i) dialog.SetProgress(i, kSteps);
      if (++finished == kWorkers) dialog.PostClose();
    });
  }
  dialog.Run();
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(dialog.Done(), kSteps);
  // Each event shows a pair that was set together.
  for (const Event& event : m_events) {
    if (event.event == NProgressEvent::kChanged) {
      EXPECT_EQ(event.total, kSteps);
    }
    EXPECT_LE(event.done, kSteps);
  }
  EXPECT_EQ(m_events.size(), 2u + kWorkers * kSteps);
}

}  // namespace
