// What the two sides say to each other. A message has a kind and a body; it travels in one or more
// frames of at most kFrameSize bytes of body, so that a large one does not hold up a small one:
//
//   kind: 1 byte | 1 for the last frame, else 0: 1 byte | length of what follows: 2 bytes | body
//
// Numbers are big-endian. Whatever else comes in is Malformed and ends the connection.
#pragma once

#include <glib.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace remote {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using Bytes = std::vector<u8>;
using ByteView = std::span<const u8>;

struct Malformed : std::runtime_error {
  using runtime_error::runtime_error;
};

enum class Kind : u8 {
  hello = 1,
  ack,
  report,
  keyframe,
  pointer,
  button,
  wheel,
  key,
  screen = 32,
  picture,
  sound,
  cursorPlace,
  cursorShape,
  alive,
  bye,
  text = 64,
};

template <Kind kind, class... Fields>
struct Message : std::tuple<Fields...> {
  using std::tuple<Fields...>::tuple;
  static constexpr Kind kKind = kind;
};

}  // namespace remote

// Fields are taken out as those of a tuple are: const auto [x, y] = message.
template <remote::Kind kind, class... Fields>
struct std::tuple_size<remote::Message<kind, Fields...>> : tuple_size<tuple<Fields...>> {};
template <std::size_t i, remote::Kind kind, class... Fields>
struct std::tuple_element<i, remote::Message<kind, Fields...>>
    : tuple_element<i, tuple<Fields...>> {};

namespace remote {

// By the viewing side.
using Hello = Message<Kind::hello, u8, Bytes>;           // version, token
using Ack = Message<Kind::ack, u32>;                     // the picture of this number has arrived
using Report = Message<Kind::report, u8, u16, u16>;      // pictures are wanted; shown, passed over
using Keyframe = Message<Kind::keyframe>;                // the decoder has lost the stream
using Pointer = Message<Kind::pointer, u16, u16>;        // x, y
using Button = Message<Kind::button, u8, u8, u16, u16>;  // button, down, x, y
using Wheel = Message<Kind::wheel, std::int8_t, std::int8_t>;  // steps to the left, steps up
using Key = Message<Kind::key, u16, u8, u32>;                  // macOS key code, down, modifiers
// By the sharing side. Places are points from the top left corner of what is shared.
using Screen = Message<Kind::screen, u16, u16, u8>;  // its size in points; it takes input
using Picture = Message<Kind::picture, u32, Bytes>;  // number, access unit
using Sound = Message<Kind::sound, Bytes>;           // an opus packet: 20 ms of stereo
using CursorPlace = Message<Kind::cursorPlace, std::int16_t, std::int16_t, u8>;  // x, y, visible
// Width, height, hot spot; 4 bytes a pixel: blue, green, red, opacity.
using CursorShape = Message<Kind::cursorShape, u16, u16, u16, u16, Bytes>;
using Alive = Message<Kind::alive>;
using Bye = Message<Kind::bye, u8>;  // one of the reasons below
// By both.
using Text = Message<Kind::text, Bytes>;  // of the clipboard, UTF-8

inline constexpr u8 kVersion = 1;
enum ByeReason : u8 { kRefused = 1, kReplaced, kEnded };
enum class Side : u8 { share, view };

inline constexpr std::size_t kFrameSize = 8192;
inline constexpr std::size_t kFrameHeader = 4;
inline constexpr std::size_t kLongestText = 256 * 1024;
inline constexpr u16 kLargestCursor = 128;

// The longest body of a message of this kind; throws when this side never sends it.
inline std::size_t longestBody(Kind kind, Side sender) {
  const bool isBySharer = kind >= Kind::screen;
  if (kind != Kind::text && isBySharer != (sender == Side::share)) throw Malformed("a wrong kind");
  if (kind == Kind::text) return kLongestText;
  if (kind == Kind::picture) return std::size_t{8} << 20;
  if (kind == Kind::sound) return 1500;
  if (kind == Kind::cursorShape) return 8 + std::size_t{4} * kLargestCursor * kLargestCursor;
  if (kind < Kind::hello || kind > Kind::bye || (kind > Kind::key && kind < Kind::screen)) {
    throw Malformed("no known kind");
  }
  return 32;
}

// Bytes come last in a message and take all that is left.
inline void write(Bytes& body, const Bytes& bytes) {
  body.insert(body.end(), bytes.begin(), bytes.end());
}
inline void write(Bytes& body, std::integral auto number) {
  for (auto shift = 8 * sizeof number; shift > 0; shift -= 8) {
    body.push_back(static_cast<u8>(number >> (shift - 8)));
  }
}
inline void read(ByteView& body, Bytes& bytes) {
  bytes.assign(body.begin(), body.end());
  body = {};
}
template <std::integral Number>
void read(ByteView& body, Number& number) {
  if (body.size() < sizeof number) throw Malformed("a message is too short");
  std::uint64_t value = 0;
  for (const u8 byte : body.first(sizeof number)) value = value << 8 | byte;
  number = static_cast<Number>(value);
  body = body.subspan(sizeof number);
}

template <class AnyMessage>
Bytes bodyOf(const AnyMessage& message) {
  Bytes body;
  std::apply([&](const auto&... field) { (write(body, field), ...); }, message);
  return body;
}

template <class AnyMessage>
AnyMessage parse(ByteView body) {
  AnyMessage message;
  std::apply([&](auto&... field) { (read(body, field), ...); }, message);
  if (!body.empty()) throw Malformed("a message is too long");
  return message;
}

inline CursorShape parseCursorShape(ByteView body) {
  auto shape = parse<CursorShape>(body);
  const auto& [width, height, hotX, hotY, pixels] = shape;
  if (width == 0 || height == 0 || width > kLargestCursor || height > kLargestCursor ||
      hotX >= width || hotY >= height || pixels.size() != std::size_t{4} * width * height) {
    throw Malformed("a cursor does not fit its size");
  }
  return shape;
}

// UTF-8 without NUL.
inline bool isText(ByteView bytes) {
  const auto* text = reinterpret_cast<const char*>(bytes.data());
  return g_utf8_validate(text, static_cast<gssize>(bytes.size()), nullptr) != FALSE;
}

inline std::string parseText(ByteView body) {
  if (!isText(body)) throw Malformed("a text is not UTF-8");
  return {body.begin(), body.end()};
}

inline std::vector<Bytes> framesOf(Kind kind, ByteView body) {
  std::vector<Bytes> frames;
  do {
    const auto part = body.first(std::min(body.size(), kFrameSize));
    body = body.subspan(part.size());
    Bytes frame{static_cast<u8>(kind), static_cast<u8>(body.empty())};
    write(frame, static_cast<u16>(part.size()));
    frame.insert(frame.end(), part.begin(), part.end());
    frames.push_back(std::move(frame));
  } while (!body.empty());
  return frames;
}

// Puts messages together from the bytes that one side sends. It never holds more than one frame and
// one unfinished message of each kind.
class Assembler {
 public:
  explicit Assembler(Side sender) : sender_(sender) {}

  void feed(ByteView bytes, const std::function<void(Kind, ByteView)>& onMessage) {
    while (!bytes.empty()) {
      // First the header, then what it says is to follow.
      const auto wanted = frame_.size() < kFrameHeader ? kFrameHeader : kFrameHeader + bodySize();
      const auto part = bytes.first(std::min(bytes.size(), wanted - frame_.size()));
      frame_.insert(frame_.end(), part.begin(), part.end());
      bytes = bytes.subspan(part.size());
      if (frame_.size() >= kFrameHeader) checkHeader();
      if (frame_.size() >= kFrameHeader && frame_.size() == kFrameHeader + bodySize()) {
        finishFrame(onMessage);
      }
    }
  }

 private:
  Kind kind() const { return static_cast<Kind>(frame_[0]); }
  bool isLast() const { return frame_[1] == 1; }
  std::size_t bodySize() const { return std::size_t{frame_[2]} << 8 | frame_[3]; }

  void checkHeader() {
    const auto longest = longestBody(kind(), sender_);
    const bool isEmptyPart = !isLast() && bodySize() == 0;
    if (frame_[1] > 1 || isEmptyPart || bodySize() > kFrameSize ||
        unfinished_[kind()].size() + bodySize() > longest) {
      throw Malformed("a frame of a wrong size");
    }
  }

  void finishFrame(const std::function<void(Kind, ByteView)>& onMessage) {
    const auto [finished, last] = std::pair(kind(), isLast());
    write(unfinished_[finished], Bytes(frame_.begin() + kFrameHeader, frame_.end()));
    frame_.clear();
    if (!last) return;
    const Bytes message = std::exchange(unfinished_[finished], {});
    onMessage(finished, message);
  }

  const Side sender_;
  Bytes frame_;
  std::map<Kind, Bytes> unfinished_;
};

}  // namespace remote
