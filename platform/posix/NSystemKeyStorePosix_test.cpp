// Where no session bus answers, the key store says so at once and never has
// one launched: asked without one, GDBus would run dbus-launch for an X11
// display. A dbus-launch of the test's own, first on PATH, tells if it was.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "platform/NPlatform.h"
#include "platform/NSystemKeyStore.h"
#include "platform/NUnicode.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFolder.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct NoBusCase {
  const char* what;
  std::optional<std::u16string> address;  // DBUS_SESSION_BUS_ADDRESS
  friend void PrintTo(const NoBusCase& c, std::ostream* out) { *out << c.what; }
};

class NSystemKeyStoreNoBusTest : public NTestFolderTest, public testing::WithParamInterface<NoBusCase> {};

TEST_P(NSystemKeyStoreNoBusTest, IsUnavailableAtOnceAndLaunchesNoBus) {
  // libsecret keeps its first connection for the life of the process.
  if (std::getenv("CFGDECK_TEST_KEYRING") != nullptr) GTEST_SKIP() << "this process may hold a bus connection";
  WriteText("bin/dbus-launch", "#!/bin/sh\ntouch \"$(dirname \"$0\")/../launched\"\nexit 1\n");
  ASSERT_EQ(::chmod(Native("bin/dbus-launch").c_str(), 0755), 0);
  WriteText("runtime/.keep", "");
  const NScopedEnvironment address("DBUS_SESSION_BUS_ADDRESS", GetParam().address);
  const NScopedEnvironment runtime("XDG_RUNTIME_DIR", Path("runtime"));
  const NScopedEnvironment display("DISPLAY", u":99");
  const NScopedEnvironment path("PATH", Path("bin") + u":/usr/bin:/bin");

  const auto store = NSystemKeyStore::Create(Path("keys"), NPlatform::Default());
  const NAes256Key untouched{1, 2, 3};
  NAes256Key key = untouched;
  const auto start = Clock::now();
  EXPECT_EQ(store->Load("ab", &key), NSystemKeyResult::kUnavailable);
  EXPECT_NE(store->LastError(), "");
  EXPECT_FALSE(store->Store("ab", "label", key));
  EXPECT_NE(store->LastError(), "");
  EXPECT_FALSE(store->Remove("ab"));
  EXPECT_NE(store->LastError(), "");
  const auto took = Clock::now() - start;
  EXPECT_LT(took, 500ms) << std::chrono::duration<double>(took).count() << " s";
  EXPECT_EQ(key, untouched);
  EXPECT_FALSE(Exists("launched")) << "a bus was launched";
}

INSTANTIATE_TEST_SUITE_P(
    Buses, NSystemKeyStoreNoBusTest,
    testing::Values(NoBusCase{"AddressLeadsNowhere", u"unix:path=/nonexistent/cfgdeck-bus"},
                    NoBusCase{"NoAddressNorRuntimeBus", std::nullopt},
                    NoBusCase{"AddressAsksForALaunch", u"autolaunch:"}),
    [](const testing::TestParamInfo<NoBusCase>& param) { return std::string(param.param.what); });

}  // namespace
