// What strangers send is refused or understood, and never more than that.
#include "protocol.h"

#include <gtest/gtest.h>

#include <random>

#include "invitation.h"
#include "mac_keys.h"
#include "pace.h"

namespace remote {
namespace {

using namespace std::chrono_literals;

// A message of each kind that a side sends, for the wire.
std::vector<Bytes> messagesOf(Side sender) {
  std::vector<Bytes> all;
  const auto add = [&](const auto& message) {
    Bytes wire;
    for (const auto& frame : framesOf(message.kKind, bodyOf(message))) write(wire, frame);
    all.push_back(wire);
  };
  add(Text{Bytes(20'000, 'x')});
  if (sender == Side::view) {
    add(Hello{kVersion, Bytes(16, 7)}), add(Ack{1}), add(Report{1, 2, 3}), add(Keyframe{});
    add(Pointer{1, 2}), add(Button{1, 1, 2, 3}), add(Wheel{1, -1}), add(Key{1, 1, 0x20000});
  } else {
    add(Screen{640, 480, 1}), add(Picture{1, Bytes(30'000, 9)}), add(Sound{Bytes(100, 3)});
    add(CursorPlace{1, 2, 1}), add(CursorShape{2, 2, 0, 0, Bytes(16, 1)}), add(Alive{});
    add(Bye{kEnded});
  }
  return all;
}

// As the roles do.
void parseAny(Kind kind, ByteView body) {
  switch (kind) {
    case Kind::hello:
      return void(parse<Hello>(body));
    case Kind::ack:
      return void(parse<Ack>(body));
    case Kind::report:
      return void(parse<Report>(body));
    case Kind::keyframe:
      return void(parse<Keyframe>(body));
    case Kind::pointer:
      return void(parse<Pointer>(body));
    case Kind::button:
      return void(parse<Button>(body));
    case Kind::wheel:
      return void(parse<Wheel>(body));
    case Kind::key:
      return void(parse<Key>(body));
    case Kind::screen:
      return void(parse<Screen>(body));
    case Kind::picture:
      return void(parse<Picture>(body));
    case Kind::sound:
      return void(parse<Sound>(body));
    case Kind::cursorPlace:
      return void(parse<CursorPlace>(body));
    case Kind::cursorShape:
      return void(parseCursorShape(body));
    case Kind::alive:
      return void(parse<Alive>(body));
    case Kind::bye:
      return void(parse<Bye>(body));
    case Kind::text:
      return void(parseText(body));
  }
  FAIL() << "a kind that is none";
}

TEST(RemoteProtocol, MessagesArriveWholeHoweverTheBytesAreCut) {
  for (const auto sender : {Side::share, Side::view}) {
    Bytes wire;
    for (const auto& message : messagesOf(sender)) write(wire, message);
    for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, wire.size()}) {
      Assembler assembler(sender);
      std::size_t count = 0;
      for (std::size_t at = 0; at < wire.size(); at += piece) {
        assembler.feed(ByteView(wire).subspan(at, std::min(piece, wire.size() - at)),
                       [&](Kind kind, ByteView body) { parseAny(kind, body), ++count; });
      }
      EXPECT_EQ(count, messagesOf(sender).size());
    }
  }
}

TEST(RemoteProtocol, SmallMessagesPassBetweenTheFramesOfLargeOnes) {
  const auto large = framesOf(Kind::picture, bodyOf(Picture{5, Bytes(20'000, 1)}));
  const auto small = framesOf(Kind::alive, {});
  ASSERT_EQ(large.size(), 3u);
  std::vector<Kind> seen;
  Assembler assembler(Side::share);
  for (const auto& frame : {large[0], small[0], large[1], small[0], large[2]}) {
    assembler.feed(frame, [&](Kind kind, ByteView) { seen.push_back(kind); });
  }
  EXPECT_EQ(seen, (std::vector{Kind::alive, Kind::alive, Kind::picture}));
}

TEST(RemoteProtocol, TenThousandDamagedMessagesEndAtMostTheirConnection) {
  std::mt19937 random(3);
  for (const auto sender : {Side::share, Side::view}) {
    const auto messages = messagesOf(sender);
    int refused = 0, understood = 0;
    for (int i = 0; i < 10'000; ++i) {
      Bytes wire = messages[random() % messages.size()];
      if (i % 4 == 0) wire.resize(1 + random() % 64);
      for (auto changes = random() % 4 + (i % 4 == 0 ? 60 : 0); changes > 0; --changes) {
        wire[random() % std::min<std::size_t>(wire.size(), 64)] = static_cast<u8>(random());
      }
      Assembler assembler(sender);
      try {
        assembler.feed(wire, [&](Kind kind, ByteView body) { parseAny(kind, body), ++understood; });
      } catch (const Malformed&) {
        ++refused;
      }
    }
    EXPECT_GT(refused, 1000);
    EXPECT_GT(understood, 1000);
  }
}

TEST(RemoteProtocol, RefusesWhatIsTooLargeBeforeItHasCome) {
  const Bytes part = [] {
    Bytes frame{static_cast<u8>(Kind::picture), 0};
    write(frame, u16{kFrameSize});
    frame.resize(kFrameHeader + kFrameSize);
    return frame;
  }();
  Assembler assembler(Side::share);
  std::size_t taken = 0;
  EXPECT_THROW(
      for (;; taken += kFrameSize) { assembler.feed(part, [](Kind, ByteView) {}); }, Malformed);
  EXPECT_LE(taken, std::size_t{8} << 20);

  const std::vector<Bytes> headers{
      {static_cast<u8>(Kind::ack), 1, 0, 33},      // longer than any of its kind
      {static_cast<u8>(Kind::picture), 1, 32, 1},  // longer than a frame
      {static_cast<u8>(Kind::picture), 0, 0, 0},   // a part of nothing
      {static_cast<u8>(Kind::picture), 2, 0, 1},   // neither last nor not
      {static_cast<u8>(Kind::key), 1, 0, 7},       // of the other side
      {0, 1, 0, 1},
      {255, 1, 0, 1}};
  for (const auto& header : headers) {
    EXPECT_THROW(Assembler(Side::share).feed(header, [](Kind, ByteView) {}), Malformed)
        << int(header[0]) << " " << int(header[1]);
  }
}

TEST(RemoteProtocol, InvitationsAreReadBackAndOthersRefused) {
  Invitation invitation{"[::1]:5900", {1, 2, 0xAB}, {9, 0xFF}};
  const auto read = Invitation::parse(invitation.text());
  EXPECT_EQ(read.address, invitation.address);
  EXPECT_EQ(read.fingerprint, invitation.fingerprint);
  EXPECT_EQ(read.token, invitation.token);
  const auto text = invitation.text();
  for (const auto& wrong : {std::string(), std::string("remote://"), text.substr(0, 60),
                            text.substr(0, text.size() - 1), text + "0", "x" + text,
                            text.substr(0, text.size() - 2) + "zz"}) {
    EXPECT_THROW(Invitation::parse(wrong), std::invalid_argument) << wrong;
  }
}

// A line of a rate and a delay; each picture waits for those before it.
TEST(RemotePace, FindsWhatALineCarriesAndFillsNoQueue) {
  struct Case {
    double bitsPerSecond;
    Clock::duration delay;
  };
  for (const auto& [rate, delay] : {Case{2e6, 80ms}, Case{20e6, 40ms}, Case{1e9, 1ms}}) {
    Pace pace(30'000'000);
    auto now = Clock::time_point(1h);
    auto free = now;
    std::deque<std::pair<u32, Clock::time_point>> arrivals;
    Clock::duration latest{};
    for (u32 number = 1; number < 900; now += 33ms) {
      while (!arrivals.empty() && arrivals.front().second <= now) {
        pace.acknowledged(arrivals.front().first, arrivals.front().second);
        arrivals.pop_front();
      }
      if (!pace.hasRoom()) continue;
      const auto bytes = static_cast<std::size_t>(pace.bitRate()) / 8 / 30;
      const auto passing = std::chrono::duration<double>(static_cast<double>(bytes) * 8 / rate);
      free = std::max(free, now) + std::chrono::duration_cast<Clock::duration>(passing);
      pace.sent(number, bytes, now);
      arrivals.emplace_back(number++, free + delay);
      if (number > 300) latest = std::max(latest, free + delay - now);
    }
    EXPECT_GT(pace.bitRate(), std::min(rate * 0.5, 29e6)) << rate;
    EXPECT_LE(pace.bitRate(), rate) << rate;
    EXPECT_LT(latest, delay + 150ms) << rate;
  }
  Pace pace(1'000'000);
  EXPECT_THROW(pace.acknowledged(1, Clock::now()), Malformed);
}

}  // namespace
}  // namespace remote
