#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

#include "VelmoraMacNative.h"
#include "support/private_desktop.h"
#include "support/private_session_bus.h"
#include "support/scratch_folder.h"

namespace vlm::test {
namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kService = "Velmora.Tëst";
constexpr const char* kAccount = "Ünï ☂ account";

bool set(const Bytes& secret, const char* account = kAccount) {
  static const std::uint8_t empty = 0;
  const auto* data = secret.empty() ? &empty : secret.data();
  return vlm_secret_set(kService, account, data, static_cast<std::int32_t>(secret.size()));
}

// What the size protocol gives when it is followed.
Bytes get(const char* account = kAccount) {
  const std::int32_t length = -vlm_secret_get(kService, account, nullptr, 0);
  if (length <= 0) return {};
  Bytes secret(static_cast<std::size_t>(length));
  EXPECT_EQ(vlm_secret_get(kService, account, secret.data(), length), length);
  return secret;
}

Bytes pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  return bytes;
}

TEST(Secrets, EveryLengthAndByteComesBackAsItWas) {
  PrivateSessionBus bus;
  bus.startKeyring();
  for (const Bytes& secret : {Bytes{1}, Bytes{0, 0, 255, 0}, pattern(10), pattern(1 << 20)}) {
    SCOPED_TRACE(secret.size());
    ASSERT_TRUE(set(secret));
    EXPECT_EQ(get(), secret);
    Bytes untouched(secret.size(), 0xEE);
    const auto length = static_cast<std::int32_t>(secret.size());
    EXPECT_EQ(vlm_secret_get(kService, kAccount, untouched.data(), length - 1), -length);
    EXPECT_EQ(untouched, Bytes(secret.size(), 0xEE));
    EXPECT_EQ(vlm_secret_get(kService, kAccount, nullptr, length), length);
  }
  EXPECT_TRUE(set({}));
  EXPECT_EQ(vlm_secret_get(kService, kAccount, nullptr, 0), 0);
  EXPECT_TRUE(vlm_secret_delete(kService, kAccount)) << "an empty secret is an item all the same";
  EXPECT_FALSE(vlm_secret_delete(kService, kAccount));
  EXPECT_EQ(vlm_secret_get(kService, kAccount, nullptr, 0), 0);
}

TEST(Secrets, AnotherProgramSeesOneItemAfterReplacing) {
  PrivateSessionBus bus;
  bus.startKeyring();
  ASSERT_TRUE(set({'o', 'l', 'd'}));
  ASSERT_TRUE(set({'n', 'e', 'w'}));
  ASSERT_TRUE(set({'x'}, "another account"));
  EXPECT_EQ(outputOf({"secret-tool", "lookup", "service", kService, "account", kAccount}), "new");
  const auto all = outputOf({"secret-tool", "search", "--all", "service", kService});
  EXPECT_EQ(timesIn(all, "secret = "), 2U) << all;
  EXPECT_TRUE(vlm_secret_delete(kService, kAccount));
  EXPECT_EQ(get("another account"), Bytes{'x'});
}

// Runs every operation; each must fail, and soon: no person is there to answer a prompt.
void expectFailuresAtOnce(const char* what) {
  SCOPED_TRACE(what);
  const auto expectWithin = [](std::chrono::seconds limit, const auto& fails) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(fails());
    EXPECT_LT(std::chrono::steady_clock::now() - start, limit);
  };
  // Storing asks the service twice: to remove what was there, and to take the new secret.
  expectWithin(2s, [] { return !set({1, 2, 3}); });
  expectWithin(1s, [] { return vlm_secret_get(kService, kAccount, nullptr, 0) == 0; });
  expectWithin(1s, [] { return !vlm_secret_delete(kService, kAccount); });
}

TEST(Secrets, AKeyringThatIsMissingLockedSilentOrGoneIsAFailureAtOnce) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  expectFailuresAtOnce("no bus");
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  PrivateSessionBus bus;
  expectFailuresAtOnce("no keyring");
  bus.startKeyring();
  ASSERT_TRUE(set({1, 2, 3}));
  bus.keyring().signal(SIGSTOP);
  expectFailuresAtOnce("silent");
  bus.keyring().signal(SIGCONT);
  bus.lockKeyring();
  expectFailuresAtOnce("locked");
  bus.keyring().end(SIGKILL);
  expectFailuresAtOnce("killed");
  bus.startKeyring();
  EXPECT_TRUE(set({4})) << "started again";
  EXPECT_EQ(get(), Bytes{4});
}

// KeePassXC as it is by default, with a database that holds nothing: it asks before another program
// gets at an item, and for the password when a locked database is searched.
class PasswordManager {
 public:
  explicit PasswordManager(bool isLocked) {
    constexpr const char* kDatabase =
        "<KeePassFile><Meta><CustomData><Item><Key>FDO_SECRETS_EXPOSED_GROUP</Key>"
        "<Value>{00000000-0000-0000-0000-000000000001}</Value></Item></CustomData></Meta><Root>"
        "<Group><UUID>AAAAAAAAAAAAAAAAAAAAAQ==</UUID><Name>All</Name></Group></Root></KeePassFile>";
    writeFile(folder_.file("db.xml"), std::string(kDatabase));
    writeFile(folder_.file("keys"), std::string("pw\npw\n"));
    writeFile(folder_.file("ini"), std::string("[FdoSecrets]\nEnabled=true\n"));
    run("keepassxc-cli import -q -p -t 100 db.xml db.kdbx <keys");
    manager_.emplace(inFolder(std::string("exec keepassxc --config ini --localconfig local") +
                              (isLocked ? "" : " --pw-stdin") + " db.kdbx <keys >log 2>&1"));
    outputOf({"gdbus", "wait", "--session", "--timeout", "20", "org.freedesktop.secrets"});
    if (!eventually([] { return windows() == 1; })) throw std::runtime_error("no KeePassXC");
  }

  static std::size_t windows() {
    return timesIn(
        runCommand({"xdotool", "search", "--onlyvisible", "--class", "KeePassXC"}).output, "\n");
  }
  std::string contents() const { return run("keepassxc-cli ls -q -R db.kdbx <keys"); }

 private:
  std::vector<std::string> inFolder(const std::string& command) const {
    return {"sh", "-c", "cd " + folder_.file("") + " && " + command};
  }
  std::string run(const std::string& command) const { return outputOf(inFolder(command)); }

  const ScratchFolder folder_;
  std::optional<ChildProcess> manager_;
};

TEST(Secrets, AStoreThatWouldAskAPersonIsAFailureAtOnce) {
  const PrivateDesktop desktop({.width = 1200, .height = 900, .windowManager = false});
  for (const bool isLocked : {false, true}) {
    const PrivateSessionBus bus;
    const PasswordManager manager(isLocked);
    expectFailuresAtOnce(isLocked ? "locked database" : "open database");
    outputOf({"sleep", "1"});
    EXPECT_EQ(PasswordManager::windows(), 1U) << "no window but its own";
    EXPECT_EQ(manager.contents(), "[empty]");
  }
}

}  // namespace
}  // namespace vlm::test
