#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "VelmoraMacNative.h"
#include "platform/scripted/machine/machine.h"
#include "platform/security.h"

namespace {

// Bytes that appear nowhere but in the secret. Memory that is given back is searched for them.
constexpr std::string_view kMarker = "\x01velmora-marker\x02";
bool searching = false;
int markersGivenBack = 0;

void giveBack(void* memory) noexcept {
  if (searching && memory != nullptr) {
    const std::string_view block(static_cast<const char*>(memory), malloc_usable_size(memory));
    if (block.find(kMarker) != std::string_view::npos) ++markersGivenBack;
  }
  std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  giveBack(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  giveBack(memory);
}

namespace {

using vlm::platform::CFData;
using vlm::platform::CFValue;
using vlm::platform::scripted::Machine;
using Lines = std::vector<std::string>;

const std::uint8_t* bytes(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

CFData data(std::string_view text) {
  return CFData(text.begin(), text.end());
}

TEST(SecretStore, ReplacesByDeletingAndAdding) {
  Machine machine;
  machine.refuse("SecItemDelete", vlm::platform::errSecItemNotFound);
  EXPECT_TRUE(vlm_secret_set("s", "a", bytes("secret"), 6));
  EXPECT_EQ(machine.journal.take(),
            (Lines{"SecItemDelete({acct: a, class: genp, svce: s})",
                   "SecItemAdd({acct: a, class: genp, pdmn: ck, svce: s, v_Data: <6 bytes>})"}));
  EXPECT_EQ(machine.system.keychain.at({"s", "a"}), CFValue(data("secret")));

  machine.refuse("SecItemAdd", vlm::platform::errSecInteractionNotAllowed);
  EXPECT_FALSE(vlm_secret_set("s", "a", bytes("other"), 5));
  EXPECT_TRUE(machine.system.keychain.empty()) << "the old secret went before the new one failed";
  EXPECT_TRUE(machine.takeLog().empty());
}

TEST(SecretStore, FollowsTheSizeProtocol) {
  Machine machine;
  machine.system.keychain[{"s", "a"}] = data("0123456789");
  std::string out(12, '.');
  auto* at = reinterpret_cast<std::uint8_t*>(out.data());
  EXPECT_EQ(vlm_secret_get("s", "a", at, -1), -10);
  EXPECT_EQ(out, std::string(12, '.'));
  EXPECT_EQ(vlm_secret_get("s", "a", at, 12), 10);
  EXPECT_EQ(out, "0123456789..");
  const Lines one{
      "SecItemCopyMatching({acct: a, class: genp, m_Limit: m_LimitOne, r_Data: true, "
      "svce: s})"};
  machine.journal.take();
  machine.system.keychain[{"s", "a"}] = "text and no bytes";
  EXPECT_EQ(vlm_secret_get("s", "a", nullptr, 100), 0);
  EXPECT_EQ(machine.journal.take(), one);
  machine.refuse("SecItemCopyMatching", vlm::platform::errSecNotAvailable);
  EXPECT_EQ(vlm_secret_get("s", "a", nullptr, 100), 0);
  machine.answerNothing("SecItemCopyMatching");
  EXPECT_EQ(vlm_secret_get("s", "a", nullptr, 100), 0);
  EXPECT_TRUE(vlm_secret_delete("s", "a"));
  EXPECT_FALSE(vlm_secret_delete("s", "a"));
  EXPECT_EQ(vlm_secret_get("s", "a", nullptr, 100), 0);
}

TEST(SecretStore, LeavesNoSecretInMemoryThatIsGivenBack) {
  Machine machine;
  std::string out(kMarker.size(), '.');
  machine.refuse("SecItemAdd", vlm::platform::errSecNotAvailable);
  machine.throwFrom("SecItemAdd");
  searching = true;
  markersGivenBack = 0;
  const auto size = static_cast<int32_t>(kMarker.size());
  EXPECT_FALSE(vlm_secret_set("s", "a", bytes(kMarker), size));
  EXPECT_FALSE(vlm_secret_set("s", "a", bytes(kMarker), size));
  EXPECT_TRUE(vlm_secret_set("s", "a", bytes(kMarker), size));
  EXPECT_EQ(vlm_secret_get("s", "a", nullptr, 0), -size);
  EXPECT_EQ(vlm_secret_get("s", "a", reinterpret_cast<std::uint8_t*>(out.data()), size), size);
  EXPECT_EQ(out, kMarker);
  EXPECT_EQ(markersGivenBack, 0);
  machine.system.keychain.clear();
  EXPECT_EQ(markersGivenBack, 1) << "the search finds what is left behind";
  searching = false;
}

TEST(MachineIdentity, WritesTheTextAndItsNulOrNothing) {
  Machine machine;
  for (const int32_t capacity : {-1, 0, 36, 37, 64}) {
    std::string out(64, '.');
    const bool fits = capacity > 36;
    EXPECT_EQ(vlm_machine_id(out.data(), capacity), fits ? 36 : 0) << capacity;
    EXPECT_EQ(out.substr(0, 38), fits ? std::string("00000000-1111-2222-3333-444444444444\0.", 38)
                                      : std::string(38, '.'));
  }
  const auto calls = machine.journal.take();
  EXPECT_EQ(std::ranges::count(calls, "IORegistryEntryFromPath(IOService:/)"), 5);
  EXPECT_EQ(std::ranges::count(calls, "IOObjectRelease(7)"), 5);

  char out[64];
  machine.system.platformUuid = 42;
  EXPECT_EQ(vlm_machine_id(out, 64), 0);
  machine.system.platformUuid = CFValue();
  EXPECT_EQ(vlm_machine_id(out, 64), 0);
  machine.system.hasRegistryRoot = false;
  machine.journal.take();
  EXPECT_EQ(vlm_machine_id(out, 64), 0);
  EXPECT_EQ(machine.journal.take(), Lines{"IORegistryEntryFromPath(IOService:/)"});
}

TEST(Permissions, AskTheUserOnlyWhenToldToAndNeeded) {
  struct Case {
    bool granted, grantsOnRequest, request, result;
    int questions;
  };
  for (const auto& [granted, grantsOnRequest, request, result, questions] :
       {Case{true, false, true, true, 0}, Case{false, true, false, false, 0},
        Case{false, true, true, true, 1}, Case{false, false, true, false, 1}}) {
    Machine machine;
    machine.system.mayRecordScreen = granted;
    machine.system.grantsScreenOnRequest = grantsOnRequest;
    machine.system.isTrusted = granted;
    machine.system.grantsTrustOnPrompt = grantsOnRequest;
    EXPECT_EQ(vlm_perm_screen_recording(request), result);
    EXPECT_EQ(machine.journal.take("CGRequest").size(), std::size_t(questions));
    EXPECT_EQ(vlm_perm_accessibility(request), result);
    EXPECT_EQ(machine.journal.take(),
              Lines{request ? "AXIsProcessTrustedWithOptions({AXTrustedCheckOptionPrompt: true})"
                            : "AXIsProcessTrusted()"});
  }
}

TEST(Permissions, OpenTheSettingsAtTheAnchorOfTheKind) {
  const std::pair<const char*, std::string> cases[] = {
      {"screen", "Privacy_ScreenCapture"},
      {"accessibility", "Privacy_Accessibility"},
      {"microphone", "Privacy_Microphone"},
      {"Screen", "Privacy"},
      {"", "Privacy"},
      {nullptr, "Privacy"},
  };
  Machine machine;
  for (const auto& [kind, anchor] : cases) {
    EXPECT_TRUE(vlm_perm_open_settings(kind));
    const auto opened = machine.journal.take("NSWorkspace openURL");
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_TRUE(opened[0].ends_with("?" + anchor + ")")) << opened[0];
  }
  machine.system.opensUrls = false;
  EXPECT_FALSE(vlm_perm_open_settings("screen"));
  machine.answerNothing("NSURL");
  machine.journal.take();
  EXPECT_FALSE(vlm_perm_open_settings("screen"));
  EXPECT_TRUE(machine.journal.take("NSWorkspace").empty());
}

}  // namespace
