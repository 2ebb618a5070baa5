#include "config/NSessionTree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFolder.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";

struct Seen {
  std::string path;
  bool isSession;
  bool hadKey;
  friend bool operator==(const Seen&, const Seen&) = default;
};

void PrintTo(const Seen& seen, std::ostream* out) {
  *out << seen.path << (seen.isSession ? " session" : " folder") << (seen.hadKey ? " (key)" : "");
}

class NSessionTreeTest : public NTestFolderTest {
 protected:
  void Session(const std::string& path) {
    WriteText(path + ".ini",
              std::string(kBom) + "S:\"Hostname\"=h\r\nD:\"Is Session\"=00000001\r\nS:\"Username\"=u\r\n");
  }
  void Values(const std::string& path, const std::string& records) {
    WriteText(path + ".ini", std::string(kBom) + records);
  }

  // Sessions at every depth to six, folder data keys at several levels,
  // folders with files of their own, and subtrees the walk must not enter.
  void MakeTree() {
    Values("Sessions/__FolderData__", "D:\"Is Expanded\"=00000001\r\n");
    Session("Sessions/alpha");
    Values("Sessions/Lab/__FolderData__", "D:\"Is Session\"=00000001\r\n");
    Session("Sessions/Lab/r1");
    Values("Sessions/Lab/Deep/__FolderData__", "D:\"Is Expanded\"=00000000\r\n");
    Values("Sessions/Lab/Deep/L3/__FOLDERDATA__", "D:\"Is Session\"=00000001\r\n");
    Session("Sessions/Lab/Deep/L3/L4/L5/bottom");
    // A folder with a file of its own, but no "Is Session" in it.
    Values("Sessions/Plain", "S:\"Hostname\"=not a session\r\n");
    Session("Sessions/Plain/inner");
    // "Is Session" that is no DWORD: a folder, with nothing beneath.
    Values("Sessions/Text", "S:\"Is Session\"=1\r\n");
    // A session's own sub-keys are not part of the tree.
    Session("Sessions/Zed");
    Session("Sessions/Zed/child");
    Session("Sessions/x__FolderData__old/hidden");
  }

  std::vector<Seen> Walk(NPlatform& platform, NReportMessageParams& params, bool* complete,
                         const std::string& stopAt = {}) {
    NIniFileStore store(NUnicodeString(m_folder.u16string()), NUnicodeString(), platform);
    std::unique_ptr<NProfileKey> root = store.OpenRootKey(true, params);
    EXPECT_TRUE(root);
    std::vector<Seen> seen;
    NSessionTree tree(*root);
    *complete = tree.Walk(
        [&](const NSessionTreeEntry& entry) {
          seen.push_back({NUnicodeString(entry.path).ToUtf8(), entry.isSession, entry.key != nullptr});
          return seen.back().path != stopAt;
        },
        params);
    m_stopped = tree.Stopped();
    return seen;
  }
  std::vector<Seen> Walk(NPlatform& platform = NPlatform::Default()) { return Walk(platform, m_params, &m_complete); }

  bool m_stopped = false;
  NReportMessageParams m_params;
  bool m_complete = false;
};

TEST_F(NSessionTreeTest, WalksEveryDepthInTheStoreOrderSkippingFolderData) {
  MakeTree();
  const std::vector<Seen> seen = Walk();
  EXPECT_TRUE(m_complete);
  EXPECT_FALSE(m_stopped);
  const std::vector<Seen> expected = {
      {"alpha", true, true},          {"Lab", false, false},
      {"Lab\\Deep", false, false},    {"Lab\\Deep\\L3", false, false},
      {"Lab\\Deep\\L3\\L4", false, false}, {"Lab\\Deep\\L3\\L4\\L5", false, false},
      {"Lab\\Deep\\L3\\L4\\L5\\bottom", true, true}, {"Lab\\r1", true, true},
      {"Plain", false, true},         {"Plain\\inner", true, true},
      {"Text", false, true},          {"Zed", true, true}};
  EXPECT_EQ(seen, expected);
  EXPECT_EQ(m_params.GetCode(), 0u);
}

TEST_F(NSessionTreeTest, ReadsOnlyTheFilesOfEntriesItReportsAndListsEachFolderOnce) {
  MakeTree();
  NFaultPlatform counting(NPlatform::Default());
  (void)Walk(counting);
  EXPECT_TRUE(m_complete);
  // alpha, r1, bottom, Plain, inner, Text and Zed; no folder data, nothing
  // beneath a session or a skipped folder.
  EXPECT_EQ(counting.CallCount(NFaultKind::kRead), 7);
  EXPECT_EQ(counting.CallCount(NFaultKind::kWrite), 0);
  // Those seven, the missing journal beside each, and the missing
  // "Sessions.ini": a folder alone is no key.
  EXPECT_EQ(counting.CallCount(NFaultKind::kOpen), 15);
  // Sessions, Lab, Deep, L3, L4, L5, Plain, and the configuration folder
  // once, where "Sessions.ini" is looked for by case.
  EXPECT_EQ(counting.CallCount(NFaultKind::kListFolder), 8);
}

TEST_F(NSessionTreeTest, TheVisitorStopsTheWalk) {
  MakeTree();
  m_complete = true;
  const std::vector<Seen> seen = Walk(NPlatform::Default(), m_params, &m_complete, "Lab\\Deep");
  EXPECT_FALSE(m_complete);
  EXPECT_TRUE(m_stopped);
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen.back().path, "Lab\\Deep");
  EXPECT_EQ(m_params.GetCode(), 0u);
}

TEST_F(NSessionTreeTest, NoSessionsKeyOrAnEmptyOneIsAnEmptyTree) {
  EXPECT_TRUE(Walk().empty());
  EXPECT_TRUE(m_complete);
  fs::create_directories(Native("Sessions"));
  Values("Sessions/__FolderData__", "D:\"Is Expanded\"=00000001\r\n");
  m_complete = false;
  EXPECT_TRUE(Walk().empty());
  EXPECT_TRUE(m_complete);
}

TEST_F(NSessionTreeTest, AKeyThatCannotBeReadEndsTheWalkWithTheReason) {
  MakeTree();
  NFaultPlatform faults(NPlatform::Default());
  faults.FailNth(NFaultKind::kRead, 3, NStatus::kAccessDenied);
  m_complete = true;
  const std::vector<Seen> seen = Walk(faults);
  EXPECT_FALSE(m_complete);
  EXPECT_FALSE(m_stopped);
  EXPECT_EQ(m_params.GetCode(), kMsgPlatformOperationFailed);
  ASSERT_FALSE(seen.empty());
  // The third file read is r1's: it is not reported, and nothing after it.
  EXPECT_EQ(seen.back().path, "Lab\\Deep\\L3\\L4\\L5\\bottom");
}

TEST_F(NSessionTreeTest, AFolderThatCannotBeListedEndsTheWalkRatherThanLookingEmpty) {
  MakeTree();
  const std::vector<Seen> all = Walk();
  ASSERT_TRUE(m_complete);
  bool complete = false;
  int n = 1;
  for (; n < 100; ++n) {
    SCOPED_TRACE("failing listing " + std::to_string(n));
    NFaultPlatform faults(NPlatform::Default());
    faults.FailNth(NFaultKind::kListFolder, n, NStatus::kAccessDenied);
    NReportMessageParams why;
    const std::vector<Seen> seen = Walk(faults, why, &complete);
    if (!faults.Fired()) break;
    // Either the listing did not matter (a search by case for a file that
    // is not there), or the walk says it is incomplete.
    if (complete) {
      EXPECT_EQ(seen, all);
    } else {
      EXPECT_EQ(why.GetCode(), kMsgPlatformOperationFailed);
    }
  }
  EXPECT_GT(n, 5);
}

}  // namespace
