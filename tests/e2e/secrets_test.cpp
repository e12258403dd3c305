#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "VelmoraMacNative.h"
#include "support/private_session_bus.h"

namespace {

using vlm::test::outputOf;
using vlm::test::PrivateSessionBus;
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
  std::size_t items = 0;
  for (auto at = all.find("secret = "); at != std::string::npos;
       at = all.find("secret = ", at + 1)) {
    ++items;
  }
  EXPECT_EQ(items, 2U) << all;
  EXPECT_TRUE(vlm_secret_delete(kService, kAccount));
  EXPECT_EQ(get("another account"), Bytes{'x'});
}

// Runs every operation; each must fail, and soon: nobody is there to answer a prompt.
void expectFailuresAtOnce() {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(set({1, 2, 3}));
  const auto afterSet = std::chrono::steady_clock::now();
  EXPECT_EQ(vlm_secret_get(kService, kAccount, nullptr, 0), 0);
  const auto afterGet = std::chrono::steady_clock::now();
  EXPECT_FALSE(vlm_secret_delete(kService, kAccount));
  const auto afterDelete = std::chrono::steady_clock::now();
  // Storing asks the service twice: to remove what was there, and to take the new secret.
  EXPECT_LT(afterSet - start, std::chrono::seconds(2));
  EXPECT_LT(afterGet - afterSet, std::chrono::seconds(1));
  EXPECT_LT(afterDelete - afterGet, std::chrono::seconds(1));
}

TEST(Secrets, AKeyringThatIsMissingLockedSilentOrGoneIsAFailureAtOnce) {
  {
    SCOPED_TRACE("no bus");
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    expectFailuresAtOnce();
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
  }
  PrivateSessionBus bus;
  {
    SCOPED_TRACE("no keyring");
    expectFailuresAtOnce();
  }
  bus.startKeyring();
  ASSERT_TRUE(set({1, 2, 3}));
  {
    SCOPED_TRACE("silent");
    bus.keyring().signal(SIGSTOP);
    expectFailuresAtOnce();
    bus.keyring().signal(SIGCONT);
  }
  {
    SCOPED_TRACE("locked");
    bus.lockKeyring();
    expectFailuresAtOnce();
  }
  {
    SCOPED_TRACE("killed");
    bus.keyring().end(SIGKILL);
    expectFailuresAtOnce();
  }
  {
    SCOPED_TRACE("started again");
    bus.startKeyring();
    EXPECT_TRUE(set({4}));
    EXPECT_EQ(get(), Bytes{4});
  }
}

}  // namespace
