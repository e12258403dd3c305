// The role `view`: connects, shows, passes on what the person does, and connects again when the
// connection is lost.
#include "channel.h"
#include "clipboard.h"
#include "roles.h"
#include "screen_view.h"
#include "sound.h"
#include "viewer_window.h"

namespace remote {
namespace {

class Viewer : Channel::Listener, ViewerWindow::Listener {
 public:
  Viewer(const Invitation& invitation, bool fullScreen)
      : invitation_(invitation),
        window_(x_, *this, "Remote desktop " + invitation.address, fullScreen),
        view_([this](int width, int height) { window_.setPictureSize(width, height); }),
        clipboard_(x_, [this](const Bytes& text) { sendText(text); }) {
    window_.place(view_.window());
    report_ = Source::every(Milliseconds(500), [this] { report(); });
    connect();
  }
  // 0 when the sharing ended or the window was closed.
  int status() const { return status_; }

 private:
  void connect() try {
    channel_.reset(new Channel(connectTo(invitation_.address), credentials_, Side::view,
                               invitation_.fingerprint));
    channel_->setListener(this);
  } catch (const std::exception& error) {
    onEnd(error.what());
  }

  void onReady() override {
    channel_->send(Hello{kVersion, Bytes(invitation_.token.begin(), invitation_.token.end())});
  }

  void onMessage(Kind kind, ByteView body) override {
    switch (kind) {
      case Kind::screen:
        return begin(parse<Screen>(body));
      case Kind::picture:
        return show(parse<Picture>(body));
      case Kind::sound:
        return sound_.play(std::get<0>(parse<Sound>(body)));
      case Kind::cursorShape:
        return window_.setCursorShape(parseCursorShape(body));
      case Kind::text:
        return clipboard_.offer(parseText(body));
      case Kind::alive:
        return void(parse<Alive>(body));
      case Kind::bye:
        return part(std::get<0>(parse<Bye>(body)));
      default:
        break;
    }
    const auto [x, y, visible] = parse<CursorPlace>(body);
    window_.showCursorAt(x, y, visible != 0);
  }

  void onEnd(const std::string& reason) override {
    std::fprintf(stderr, "remote: not connected: %s\n", reason.c_str());
    isConnected_ = false;
    // Another host under the same address will not become the right one.
    if (reason.find("fingerprint") != reason.npos) part(kRefused);
    retry_ = Source::every(Milliseconds(1000), [this] {
      retry_.reset();
      if (!parted_) connect();
    });
  }

  void begin(const Screen& screen) {
    const auto [width, height, takesInput] = screen;
    if (width == 0 || height == 0) throw Malformed("a screen without a size");
    isConnected_ = true;
    view_.restart();
    window_.setScreen(width, height, takesInput != 0);
    if (window_.isUsed()) clipboard_.askForText();
  }

  void show(const Picture& picture) {
    const auto& [number, unit] = picture;
    channel_->send(Ack{number});
    if (!view_.decode(unit)) channel_->send(Keyframe{});
  }

  void part(u8 reason) {
    constexpr std::array kReasons{"", "the host refuses us", "another viewer took over",
                                  "the sharing has ended"};
    if (reason == 0 || reason >= kReasons.size()) throw Malformed("no known reason");
    std::fprintf(stderr, "remote: %s\n", kReasons[reason]);
    status_ = reason == kRefused ? 3 : 0;
    parted_ = true;
    endLoop();
  }

  void report() {
    const auto [shown, passedOver] = view_.counts();
    send(Report{u8(window_.isVisible()), shown, passedOver});
  }

  template <class AnyMessage>
  void send(const AnyMessage& message) {
    if (isConnected_) channel_->send(message);
  }

  // What is copied elsewhere on this display is passed on when the person turns to the window.
  void sendText(const Bytes& text) {
    if (window_.isUsed()) send(Text{text});
  }

  void onInput(const ViewerWindow::Done& done) override {
    std::visit([this](const auto& message) { send(message); }, done);
  }
  void onFocus() override { clipboard_.askForText(); }
  void onClosed() override {
    parted_ = true;
    endLoop();
  }

  const Invitation invitation_;
  const Credentials credentials_{Side::view};
  X x_;
  ViewerWindow window_;
  ScreenView view_;
  SoundPlayer sound_;
  Clipboard clipboard_;
  std::unique_ptr<Channel> channel_;
  bool isConnected_ = false;
  bool parted_ = false;
  int status_ = 0;
  Source report_, retry_;
};

}  // namespace

int view(const Invitation& invitation, bool fullScreen) {
  const Viewer viewer(invitation, fullScreen);
  runUntilSignal();
  return viewer.status();
}

}  // namespace remote
