// A connection: TLS, frames, and what still waits to be sent. Everything runs on the main loop.
#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>

#include <array>
#include <deque>

#include "loop.h"
#include "protocol.h"
#include "sockets.h"
#include "tls.h"

namespace remote {

class Channel {
 public:
  struct Listener {
    virtual ~Listener() = default;
    virtual void onReady() {}  // the handshake is done
    // Whatever it throws ends the connection.
    virtual void onMessage(Kind kind, ByteView body) = 0;
    // Once and last; the channel may be destroyed in it.
    virtual void onEnd(const std::string& reason) = 0;
  };

  // Takes over a connected or connecting socket. The viewing side says whom it expects.
  Channel(Socket socket, const Credentials& own, Side side,
          std::optional<Fingerprint> expected = {})
      : socket_(std::move(socket)),
        expected_(expected),
        tls_(descriptor(), own, side),
        assembler_(side == Side::share ? Side::view : Side::share) {
    g_socket_set_option(socket_.get(), IPPROTO_TCP, TCP_NODELAY, 1, nullptr);
    // The system takes little in advance: what waits, waits here, where it can be counted.
    g_socket_set_option(socket_.get(), IPPROTO_TCP, TCP_NOTSENT_LOWAT, 16 * 1024, nullptr);
    writable_ = Source::whenReady(descriptor(), G_IO_OUT, [this] { begin(); });
    clock_ = Source::every(Milliseconds(1000), [this] { checkProgress(); });
  }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  void setListener(Listener* listener) { listener_ = listener; }

  // Small messages overtake the frames of large ones.
  template <class AnyMessage>
  void send(const AnyMessage& message) {
    constexpr Kind kKind = AnyMessage::kKind;
    constexpr bool kIsLarge =
        kKind == Kind::picture || kKind == Kind::text || kKind == Kind::cursorShape;
    if (ended_ || !ready_) return;
    if (queued_ == 0) lastTaken_ = Clock::now();
    for (auto& frame : framesOf(kKind, bodyOf(message))) {
      queued_ += frame.size();
      (kIsLarge ? large_ : small_).push_back(std::move(frame));
    }
    if (queued_ > kMostQueued) return end("the other side takes too little");
    guarded([this] { flush(); });
  }
  // The bytes that the system has not taken yet.
  std::size_t queued() const { return queued_; }

  // Closes. onEnd follows a little later, since a message may be in hand.
  void end(const std::string& reason) {
    if (std::exchange(ended_, true)) return;
    readable_.reset();
    writable_.reset();
    mailbox_.post([this, reason] {
      g_socket_shutdown(socket_.get(), TRUE, TRUE, nullptr);
      if (listener_ != nullptr) listener_->onEnd(reason);
    });
  }

 private:
  // Each side speaks at least once a second. One that is silent, or takes nothing, is gone.
  static constexpr auto kLongestSilence = std::chrono::seconds(10);
  static constexpr std::size_t kMostQueued = std::size_t{16} << 20;

  int descriptor() const { return g_socket_get_fd(socket_.get()); }

  template <class Work>
  void guarded(Work&& work) {
    try {
      if (!ended_) work();
    } catch (const std::exception& error) {
      end(error.what());
    }
  }

  void begin() {
    writable_.reset();
    readable_ = Source::whenReady(descriptor(), G_IO_IN, [this] { proceed(); });
    proceed();
  }

  void proceed() {
    guarded([this] {
      if (!ready_) {
        if (!tls_.shakeHands(expected_)) return;
        ready_ = true;
        listener_->onReady();
      }
      receive();
      flush();
    });
  }

  void receive() {
    constexpr int kMostAtOnce = 64;  // a peer that never pauses leaves time for others
    std::array<u8, 16384> buffer;
    for (int i = 0; i < kMostAtOnce && !ended_; ++i) {
      const auto count = tls_.receive(buffer);
      if (!count) return;
      lastHeard_ = Clock::now();
      assembler_.feed(ByteView(buffer).first(*count), [this](Kind kind, ByteView body) {
        if (!ended_) listener_->onMessage(kind, body);
      });
    }
    // What TLS has read already does not make the socket readable again.
    mailbox_.post([this] { proceed(); });
  }

  void flush() {
    while (!ended_) {
      if (sending_.empty()) {
        auto& queue = small_.empty() ? large_ : small_;
        if (queue.empty()) return writable_.reset();
        sending_ = std::move(queue.front());
        queue.pop_front();
      }
      const auto taken = tls_.send(sending_);
      if (!taken) {
        if (!writable_)
          writable_ = Source::whenReady(descriptor(), G_IO_OUT, [this] { proceed(); });
        return;
      }
      lastTaken_ = Clock::now();
      queued_ -= *taken;
      sending_.erase(sending_.begin(), sending_.begin() + static_cast<std::ptrdiff_t>(*taken));
    }
  }

  void checkProgress() {
    const auto now = Clock::now();
    if (now - lastHeard_ > kLongestSilence) end("the other side has fallen silent");
    if (now - lastTaken_ > kLongestSilence && queued_ > 0) end("the other side takes nothing");
  }

  const Socket socket_;
  const std::optional<Fingerprint> expected_;
  Tls tls_;
  Assembler assembler_;
  Listener* listener_ = nullptr;
  bool ready_ = false;
  bool ended_ = false;
  std::deque<Bytes> small_, large_;
  Bytes sending_;  // the rest of one frame
  std::size_t queued_ = 0;
  Clock::time_point lastHeard_ = Clock::now(), lastTaken_ = Clock::now();
  Source readable_, writable_, clock_;
  Mailbox mailbox_;
};

}  // namespace remote
