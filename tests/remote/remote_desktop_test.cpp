// The example `remote-desktop` between two private desktops, judged by other programs.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <random>
#include <regex>

#include "hostile_peer.h"
#include "mac_keys.h"
#include "platform/linux/input/key_places.h"
#include "support/private_desktop.h"
#include "support/private_sound_server.h"
#include "support/scratch_folder.h"
#include "support/tone.h"

namespace vlm::test {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

// How much hostile peers say; more of it for a long run by hand.
int rounds() {
  const char* wanted = getenv("REMOTE_ROUNDS");
  return wanted == nullptr ? 40 : std::atoi(wanted);
}

Words on(const PrivateDesktop& desktop, Words command) {
  command.insert(command.begin(), {"env", "DISPLAY=" + desktop.display()});
  return command;
}

// The example in one of its roles; what it prints and logs is in files.
class Role {
 public:
  Role(const PrivateDesktop& desktop, Words words) : process_(command(desktop, std::move(words))) {}

  std::string printed() const { return contentsOf(folder_.file("out")); }
  std::string logged() const { return contentsOf(folder_.file("log")); }
  bool eventuallyLogs(const std::string& text) const {
    return eventually([&] { return logged().find(text) != std::string::npos; });
  }
  std::string invitation() const {
    EXPECT_TRUE(eventually([&] { return printed().ends_with('\n'); })) << logged();
    auto line = printed();
    if (!line.empty()) line.pop_back();
    return line;
  }
  ChildProcess& process() { return process_; }
  long residentKilobytes() const {
    std::ifstream status("/proc/" + std::to_string(process_.pid()) + "/status");
    std::string word;
    while (status >> word && word != "VmRSS:") continue;
    long size = 0;
    status >> size;
    return size;
  }

 private:
  Words command(const PrivateDesktop& desktop, Words words) const {
    words.insert(words.begin(), {"sh", "-c", "out=$1 log=$2; shift 2; exec \"$@\" >$out 2>$log",
                                 "sh", folder_.file("out"), folder_.file("log"), REMOTE_PROGRAM});
    return on(desktop, std::move(words));
  }

  ScratchFolder folder_;
  ChildProcess process_;
};

// The window that xdotool finds by what `by` says, once it is shown.
std::string windowOn(const PrivateDesktop& desktop, const std::string& by,
                     const std::string& name) {
  std::string window;
  const auto find = [&] {
    window = runCommand(on(desktop, {"xdotool", "search", "--onlyvisible", by, "^" + name + "$"}))
                 .output;
    return !window.empty();
  };
  EXPECT_TRUE(eventually(find)) << name;
  return window.substr(0, window.find('\n'));
}

// A window of one colour.
Words plainWindow(const std::string& title, const std::string& place, const std::string& colour) {
  return {"xterm", "-T",   title, "-geometry", place, "-bg",      colour,
          "-fg",   colour, "-cr", colour,      "-e",  "sleep 600"};
}

struct TwoDesktops {
  PrivateDesktop shared{{800, 600}};
  PrivateDesktop viewing{{1400, 900}};

  std::string viewerWindow() const { return windowOn(viewing, "--class", "Remote-desktop"); }

  // Points at the middle of the viewer's window until the pointer is in the middle of the shared
  // screen: the viewer may not be connected yet.
  bool pointsAtTheMiddle(const std::string& window) const {
    return eventually([&] {
      outputOf(on(viewing, {"xdotool", "mousemove", "--window", window, "600", "300", "mousemove",
                            "--window", window, "640", "360", "sleep", "0.2"}));
      return outputOf(on(shared, {"xdotool", "getmouselocation"})).starts_with("x:400 y:300 ");
    });
  }
};

std::string clipboardOf(const PrivateDesktop& desktop) {
  return runCommand(on(desktop, {"xclip", "-selection", "clipboard", "-o"})).output;
}

void copyOn(const PrivateDesktop& desktop, const std::string& text) {
  // The program stays to hand the text out, and must not keep the test's output open.
  outputOf(on(desktop, {"sh", "-c", "printf %s \"$1\" | xclip -selection clipboard >/dev/null 2>&1",
                        "sh", text}));
}

TEST(RemoteDesktop, ShowsTypesDrawsCopiesAndPlaysOnTheOtherSide) {
  const PrivateSoundServer sharedSound;
  const std::string sharedServer = "PULSE_SERVER=" + std::string(getenv("PULSE_SERVER"));
  const TwoDesktops desktops;
  const auto& shared = desktops.shared;
  const auto& viewing = desktops.viewing;
  const ScratchFolder folder;
  const auto typed = folder.file("typed");
  const ChildProcess editor(
      on(shared, {"xterm", "-geometry", "80x24+0+0", "-bg", "#2a6f97", "-e", "cat >" + typed}));
  Role share(shared, {"share"});
  const auto invitation = share.invitation();
  const PrivateSoundServer viewerSound;
  Role view(viewing, {"view", invitation});
  const auto window = desktops.viewerWindow();
  ASSERT_TRUE(share.eventuallyLogs("is let in"));

  EXPECT_TRUE(desktops.pointsAtTheMiddle(window));
  outputOf(on(viewing, {"xdotool", "click", "1"}));
  const std::string text = "Hello, (World) 42! ~Aa_Zz@";
  outputOf(on(viewing, {"xdotool", "type", "--delay", "30", text}));
  outputOf(on(viewing, {"xdotool", "key", "Return"}));
  EXPECT_TRUE(eventually([&] { return contentsOf(typed) == text + "\n"; })) << contentsOf(typed);

  copyOn(shared, "from the shared side: \u00e9\u4e2d");
  EXPECT_TRUE(
      eventually([&] { return clipboardOf(viewing) == "from the shared side: \u00e9\u4e2d"; }));
  copyOn(viewing, "from the viewer");
  EXPECT_TRUE(eventually([&] { return clipboardOf(shared) == "from the viewer"; }));

  writeFile(folder.file("tone"), sine(3, {440, 440}, 0.4));
  SoundRecorder recorder(viewerSound, "spk.monitor");
  outputOf({"env", sharedServer, "pacat", "--rate=48000", "--channels=2", "--format=float32le",
            folder.file("tone")});
  std::this_thread::sleep_for(500ms);
  const auto tone = toneIn(recorder.finish(), 2, 0, 440);
  EXPECT_NEAR(tone.frequency, 440, 4);
  EXPECT_NEAR(tone.loudest, 0.4, 0.1);

  // The shared screen in the viewer's size, less the pointer in both.
  outputOf(on(viewing, {"xdotool", "mousemove", "0", "0"}));
  outputOf(on(shared, {"xdotool", "mousemove", "799", "599"}));
  const auto likeness = [&] {
    const auto one = folder.file("shared.png"), other = folder.file("seen.png");
    outputOf(on(shared, {"import", "-silent", "-window", "root", "-resize", "960x720", one}));
    outputOf(on(viewing, {"import", "-silent", "-window", window, "-gravity", "center", "-crop",
                          "960x720+0+0", "+repage", other}));
    return std::stod(runCommand({"compare", "-metric", "PSNR", one, other, "null:"}).output);
  };
  EXPECT_TRUE(eventually([&] { return likeness() > 25; })) << likeness();
}

TEST(RemoteDesktop, LetsNobodyInWithoutTheTokenAndShowsNothingOfAnotherHost) {
  const TwoDesktops desktops;
  const auto& shared = desktops.shared;
  const auto& viewing = desktops.viewing;
  Role share(shared, {"share"});
  const auto invitation = share.invitation();
  const auto status = [&](const std::string& other) {
    return runCommand(on(viewing, {"timeout", "10", REMOTE_PROGRAM, "view", other})).status;
  };
  constexpr int kRefused = 3;
  const auto port = std::regex_replace(invitation, std::regex(".*:([0-9]+)/.*"), "$1");
  EXPECT_EQ(outputOf({"ss", "-Hltn", "sport", "=", port}).find("0.0.0.0"),
            outputOf({"ss", "-Hltn", "sport", "=", port}).rfind("0.0.0.0"));
  EXPECT_NE(outputOf({"ss", "-Hltn", "sport", "=", port}).find("127.0.0.1:" + port),
            std::string::npos);

  auto wrong = invitation;
  wrong.back() = wrong.back() == '0' ? '1' : '0';
  EXPECT_EQ(status(wrong), kRefused);
  EXPECT_TRUE(share.eventuallyLogs("is refused: a wrong token"));

  const auto slash = invitation.rfind('/');
  auto other = invitation;
  other[slash - 1] = other[slash - 1] == '0' ? '1' : '0';
  EXPECT_EQ(status(other), kRefused);
  EXPECT_EQ(share.logged().find("is let in"), std::string::npos);

  for (int i = 1; i < 10; ++i) EXPECT_EQ(status(wrong), kRefused);
  EXPECT_TRUE(share.eventuallyLogs("the door is closed"));
  EXPECT_EQ(runCommand(on(viewing, {"timeout", "3", REMOTE_PROGRAM, "view", invitation})).status,
            124);
  EXPECT_EQ(share.logged().find("is let in"), std::string::npos);

  for (const auto& target :
       {Words{"--display", "nowhere"}, Words{"--window", "0x7ffffff"}, Words{"--app", "nothing"}}) {
    Words words{"timeout", "10", REMOTE_PROGRAM, "share"};
    words.insert(words.end(), target.begin(), target.end());
    EXPECT_EQ(runCommand(on(shared, words)).status, 1) << target.front();
  }
}

TEST(RemoteDesktop, TheNewestViewerIsServedAndKeysOfALostOneAreReleased) {
  const TwoDesktops desktops;
  const auto& shared = desktops.shared;
  const auto& viewing = desktops.viewing;
  Role share(shared, {"share"});
  const auto invitation = share.invitation();
  Role first(viewing, {"view", invitation});
  ASSERT_TRUE(share.eventuallyLogs("is let in"));
  const auto isHeld = [&] {
    constexpr auto kDevices =
        "for kind in pointer keyboard; do xinput query-state \"Virtual core XTEST $kind\"; done";
    return runCommand(on(shared, {"sh", "-c", kDevices})).output.find("=down") != std::string::npos;
  };
  ASSERT_TRUE(desktops.pointsAtTheMiddle(desktops.viewerWindow()));
  outputOf(on(viewing, {"xdotool", "click", "1", "mousedown", "1"}));
  outputOf(on(viewing, {"xdotool", "keydown", "shift"}));
  EXPECT_TRUE(eventually(isHeld));
  first.process().end(SIGKILL);
  EXPECT_TRUE(eventually([&] { return !isHeld(); }));
  outputOf(on(viewing, {"xdotool", "keyup", "shift", "mouseup", "1"}));

  Role second(viewing, {"view", invitation});
  EXPECT_TRUE(eventually([&] { return timesIn(share.logged(), "is let in") == 2; }));
  Role third(viewing, {"view", invitation});
  EXPECT_EQ(second.process().wait(), 0);
  EXPECT_NE(second.logged().find("another viewer took over"), std::string::npos);
  share.process().signal(SIGTERM);
  EXPECT_EQ(third.process().wait(), 0);
  EXPECT_NE(third.logged().find("the sharing has ended"), std::string::npos);
}

TEST(RemoteDesktop, AWindowThatIsSharedIsAllThatIsSeenAndEndsTheSharingWhenItCloses) {
  const TwoDesktops desktops;
  const auto& shared = desktops.shared;
  const auto& viewing = desktops.viewing;
  const ChildProcess chosen(on(shared, plainWindow("Only this", "60x20+40+40", "#2a6f97")));
  const auto window = windowOn(shared, "--name", "Only this");
  const ChildProcess above(on(shared, plainWindow("Not this", "60x20+60+60", "red")));
  windowOn(shared, "--name", "Not this");
  Role share(shared, {"share", "--window", window});
  Role view(viewing, {"view", share.invitation()});
  const auto seen = desktops.viewerWindow();
  const auto middle = [&] {
    return outputOf(
        on(viewing, {"import", "-silent", "-window", seen, "-gravity", "center", "-crop",
                     "600x400+0+0", "-resize", "1x1!", "-depth", "8", "txt:-"}));
  };
  EXPECT_TRUE(eventually([&] { return middle().find("#2") != std::string::npos; })) << middle();

  // Nothing of the other window or of the pointer is touched.
  outputOf(on(shared, {"xdotool", "mousemove", "5", "5"}));
  outputOf(on(viewing, {"xdotool", "mousemove", "--window", seen, "640", "360", "click", "1"}));
  copyOn(viewing, "not for the other side");
  outputOf(on(shared, {"xdotool", "windowclose", window}));
  EXPECT_EQ(view.process().wait(), 0);
  EXPECT_TRUE(share.eventuallyLogs("what is shared has gone"));
  EXPECT_TRUE(outputOf(on(shared, {"xdotool", "getmouselocation"})).starts_with("x:5 y:5 "));
  EXPECT_NE(clipboardOf(shared), "not for the other side");
  Role other(viewing, {"view", share.invitation()});
  EXPECT_EQ(other.process().wait(), 0);
}

// Something that begins as a message does and goes wrong somewhere.
remote::Bytes damaged(std::mt19937& random, remote::Side side) {
  constexpr std::array kKinds{1, 2, 3, 4, 5, 6, 7, 8, 64};
  const auto kind = side == remote::Side::view ? kKinds[random() % kKinds.size()]
                                               : static_cast<int>(32 + random() % 7);
  remote::Bytes body(random() % 16);
  for (auto& byte : body) byte = static_cast<remote::u8>(random());
  auto frame = remote::framesOf(static_cast<remote::Kind>(kind), body).front();
  if (random() % 8 == 0) frame[random() % frame.size()] = static_cast<remote::u8>(random());
  return frame;
}

// Kilobytes. The address sanitizer keeps freed memory back.
#ifdef __SANITIZE_ADDRESS__
constexpr long kMostGrowth = 600'000;
#else
constexpr long kMostGrowth = 150'000;
#endif

TEST(RemoteDesktop, HostileViewersHarmNothing) {
  const TwoDesktops desktops;
  const auto& shared = desktops.shared;
  const auto& viewing = desktops.viewing;
  Role share(shared, {"share"});
  const auto invitation = remote::Invitation::parse(share.invitation());
  const remote::Credentials own(remote::Side::view);
  const remote::Hello hello{remote::kVersion,
                            remote::Bytes(invitation.token.begin(), invitation.token.end())};
  const long before = share.residentKilobytes();

  // Those that never speak hold up no viewer.
  std::vector<remote::Socket> silent;
  for (int i = 0; i < std::min(5 * rounds(), 1000); ++i) {
    silent.push_back(remote::connectTo(invitation.address));
  }
  std::mt19937 random(5);
  int messages = 0;
  for (int i = 0; i < rounds(); ++i) {
    HostilePeer peer(remote::connectTo(invitation.address), own, remote::Side::view);
    ASSERT_TRUE(peer.isConnected() && peer.say(hello));
    while (peer.sayBytes(damaged(random, remote::Side::view))) {
      ++messages;
      if (!peer.listen()) break;
    }
  }
  {
    HostilePeer slow(remote::connectTo(invitation.address), own, remote::Side::view);
    slow.say(hello);
    for (int i = 0; i < 50; ++i)
      copyOn(shared, std::string(100'000, static_cast<char>('a' + i % 26)));
  }
  const long grown = share.residentKilobytes() - before;
  EXPECT_LT(grown, kMostGrowth);
  RecordProperty("messages", messages);
  RecordProperty("kilobytes", static_cast<int>(grown));

  Role view(viewing, {"view", share.invitation()});
  const auto window = desktops.viewerWindow();
  EXPECT_TRUE(desktops.pointsAtTheMiddle(window)) << share.logged();
  EXPECT_GE(messages, rounds());
}

TEST(RemoteDesktop, AHostileHostHarmsNoViewer) {
  const PrivateDesktop viewing({1400, 900});
  const remote::Credentials own(remote::Side::share);
  auto door = remote::listenAt("127.0.0.1:0");
  g_socket_set_blocking(door.get(), TRUE);
  const remote::Object<GSocketAddress> address(g_socket_get_local_address(door.get(), nullptr));
  const remote::Invitation invitation{remote::nameOf(address.get()), own.fingerprint(), {}};
  Role view(viewing, {"view", invitation.text()});
  std::mt19937 random(6);
  int messages = 0;
  for (int round = 0; round < 5; ++round) {
    remote::Socket guest(g_socket_accept(door.get(), nullptr, nullptr));
    g_socket_set_blocking(guest.get(), FALSE);
    HostilePeer host(std::move(guest), own, remote::Side::share);
    ASSERT_TRUE(host.isConnected());
    host.say(remote::Screen{800, 600, 1});
    // Each has the form of a message and content that makes no sense.
    for (int i = 0; i < rounds(); ++i) {
      remote::Bytes bytes(64 + random() % 1000);
      for (auto& byte : bytes) byte = static_cast<remote::u8>(random());
      bytes[0] = bytes[1] = bytes[2] = 0, bytes[3] = 1;
      host.say(remote::Picture{random(), bytes});
      host.say(remote::CursorPlace{static_cast<std::int16_t>(random()),
                                   static_cast<std::int16_t>(random()), remote::u8(random())});
      const auto side = static_cast<remote::u16>(1 + random() % 128);
      host.say(remote::CursorShape{side, side, 0, 0, remote::Bytes(std::size_t{4} * side * side)});
      messages += 3;
      host.listen();
    }
    while (host.sayBytes(damaged(random, remote::Side::share))) ++messages, host.listen();
  }
  EXPECT_GT(messages, 15 * rounds());
  EXPECT_LT(view.residentKilobytes(), 300'000);
  view.process().signal(SIGTERM);
  EXPECT_EQ(view.process().wait(), 0);
}

TEST(RemoteDesktop, KeysHaveThePlacesThatTheLibraryGivesThem) {
  const PrivateDesktop desktop({640, 480, false});
  const auto names = outputOf({"xkbcomp", "-w0", desktop.display(), "-"});
  const std::regex name("<([^>]+)> = (?:([0-9]+)|<([^>]+)>);");
  std::map<std::string, unsigned> codes;
  std::map<unsigned, int> places;
  for (std::sregex_iterator found(names.begin(), names.end(), name), end; found != end; ++found) {
    const auto& match = *found;
    const auto code =
        match[2].matched ? static_cast<unsigned>(std::stoul(match[2])) : codes[match[3]];
    codes[match[1]] = code;
    const auto place = platform::input::macKeyCode(match[1].str());
    if (place || !places.contains(code)) places[code] = place.value_or(kNoMacKey);
  }
  int known = 0;
  for (const auto& [code, place] : places) {
    EXPECT_EQ(macKeyFromX(code), place) << code;
    known += place != kNoMacKey ? 1 : 0;
  }
  EXPECT_GT(known, 110);
}

}  // namespace
}  // namespace vlm::test
