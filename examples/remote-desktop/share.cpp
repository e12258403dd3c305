// The role `share`: one viewer at a time, the newest one.
#include <csignal>

#include "clipboard.h"
#include "cursor_watch.h"
#include "door.h"
#include "input.h"
#include "pictures.h"
#include "roles.h"

namespace remote {
namespace {

// A connection that has been let in.
class Session : public Channel::Listener {
 public:
  Session(X& x, Target& target, Clipboard* clipboard, const ShareOptions& options,
          std::unique_ptr<Channel> channel, Job ended)
      : clipboard_(clipboard), ended_(std::move(ended)), channel_(std::move(channel)) {
    channel_->setListener(this);
    try {
      begin(x, target, options);
    } catch (const std::exception& error) {
      // What was shared may be gone. The viewer need not try again.
      channel_->send(Bye{kEnded});
      channel_->end(error.what());
    }
  }

  void onMessage(Kind kind, ByteView body) override {
    if (input_) input_->heard();
    switch (kind) {
      case Kind::ack:
        return pictures_->acknowledged(std::get<0>(parse<Ack>(body)));
      case Kind::report:
        return pictures_->reported(parse<Report>(body));
      case Kind::keyframe:
        return parse<Keyframe>(body), pictures_->wantKeyframe();
      case Kind::pointer:
        return control(parse<Pointer>(body));
      case Kind::button:
        return control(parse<Button>(body));
      case Kind::wheel:
        return control(parse<Wheel>(body));
      case Kind::key:
        return control(parse<Key>(body));
      case Kind::text:
        if (const auto text = parseText(body); clipboard_ != nullptr) clipboard_->offer(text);
        return;
      default:
        throw Malformed("a second greeting");
    }
  }

  void onEnd(const std::string& reason) override {
    std::fprintf(stderr, "remote: the viewer has gone: %s\n", reason.c_str());
    const auto ended = ended_;  // it destroys this
    ended();
  }

  void onX(const xcb_generic_event_t& event) {
    if (cursor_) cursor_->handle(event);
  }
  Channel& channel() { return *channel_; }

 private:
  void begin(X& x, Target& target, const ShareOptions& options) {
    pictures_ = std::make_unique<Pictures>(target, *channel_, options.pictures);
    const auto frame = target.frame();
    channel_->send(Screen{u16(frame.width), u16(frame.height), u8(options.control)});
    cursor_ = std::make_unique<CursorWatch>(x, target, *channel_);
    if (options.control) input_ = std::make_unique<Input>(target);
    if (clipboard_ != nullptr) clipboard_->askForText();
    clock_ = Source::every(Milliseconds(1000), [this, &target] {
      channel_->send(Alive{});
      if (!target.exists()) channel_->end("the shared window was closed");
    });
  }

  void control(const auto& message) {
    if (input_) input_->apply(message);
  }

  Clipboard* const clipboard_;
  const Job ended_;
  const std::unique_ptr<Channel> channel_;
  std::unique_ptr<Pictures> pictures_;
  std::unique_ptr<CursorWatch> cursor_;
  std::unique_ptr<Input> input_;
  Source clock_;
};

class Sharer {
 public:
  explicit Sharer(const ShareOptions& options)
      : options_(options),
        target_(x_, options.target),
        door_(options.address, randomToken(), [this](auto channel) { admit(std::move(channel)); }) {
    // What can't be captured now is said at once, not to the first viewer.
    target_.capture(
        1, [](auto...) {}, nullptr, nullptr);
    x_.addHandler([this](const auto& event) {
      if (session_) session_->onX(event);
    });
    if (options.control) {
      clipboard_.emplace(x_, [this](const Bytes& text) {
        if (session_) session_->channel().send(Text{text});
      });
    }
    std::printf("%s\n", door_.invitation().c_str());
    std::fflush(stdout);
  }
  ~Sharer() {
    if (session_) session_->channel().send(Bye{kEnded});
  }

 private:
  static Token randomToken() {
    Token token;
    check(gnutls_rnd(GNUTLS_RND_KEY, token.data(), token.size()));
    return token;
  }

  void admit(std::unique_ptr<Channel> channel) {
    if (session_) session_->channel().send(Bye{kReplaced});
    // First the old one ends: it lets go of its keys and its capture.
    session_.reset();
    session_ = std::make_unique<Session>(x_, target_, clipboard_ ? &*clipboard_ : nullptr, options_,
                                         std::move(channel), [this] { session_.reset(); });
  }

  const ShareOptions options_;
  X x_;
  Target target_;
  std::optional<Clipboard> clipboard_;
  std::unique_ptr<Session> session_;
  Door door_;
};

}  // namespace

int share(const ShareOptions& options) {
  const Sharer sharer(options);
  runUntilSignal();
  return 0;
}

}  // namespace remote
