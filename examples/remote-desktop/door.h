// Lets in who knows the token. Guessing is slow: ten wrong tokens in a minute close the door for a
// minute. Strangers cost little: few may be at the door at once, and none for long.
#pragma once

#include <cstdio>
#include <list>

#include "channel.h"

namespace remote {

class Door {
 public:
  using Admit = std::function<void(std::unique_ptr<Channel>)>;

  Door(const std::string& address, const Token& token, Admit admit)
      : token_(token), admit_(std::move(admit)), socket_(listenAt(address)) {
    const Object<GSocketAddress> own(g_socket_get_local_address(socket_.get(), nullptr));
    address_ = nameOf(own.get());
    // "Any address" is none that can be connected to.
    auto* internet = G_INET_SOCKET_ADDRESS(own.get());
    if (g_inet_address_get_is_any(g_inet_socket_address_get_address(internet)) != FALSE) {
      const auto port = g_inet_socket_address_get_port(internet);
      address_ = std::string(g_get_host_name()) + ":" + std::to_string(port);
    }
    readable_ = Source::whenReady(g_socket_get_fd(socket_.get()), G_IO_IN, [this] { accept(); });
    clock_ = Source::every(Milliseconds(500), [this] { sendAwayTheSlow(); });
  }

  std::string invitation() const {
    return Invitation{address_, credentials_.fingerprint(), token_}.text();
  }

 private:
  static constexpr std::size_t kMostGuests = 32;
  static constexpr std::size_t kMostWrong = 10;
  static constexpr int kMostLines = 20;  // about strangers in a minute, so that no disk fills
  static constexpr auto kLongestStay = std::chrono::seconds(5);
  static constexpr auto kMinute = std::chrono::seconds(60);

  // A connection that has not shown the token yet.
  struct Guest : Channel::Listener {
    Guest(Door& owner, Socket socket, std::string name)
        : door(owner),
          channel(new Channel(std::move(socket), owner.credentials_, Side::share)),
          peer(std::move(name)) {
      channel->setListener(this);
    }
    void onMessage(Kind kind, ByteView body) override { door.judge(*this, kind, body); }
    void onEnd(const std::string& reason) override {
      if (!judged) door.complain(peer, reason);
      door.leave(*this);
    }

    Door& door;
    std::unique_ptr<Channel> channel;
    const std::string peer;
    const Clock::time_point came = Clock::now();
    bool judged = false;
  };

  void accept() {
    Socket guest(g_socket_accept(socket_.get(), nullptr, nullptr));
    if (!guest || Clock::now() < closedUntil_) return;
    g_socket_set_blocking(guest.get(), FALSE);
    const Object<GSocketAddress> peer(g_socket_get_remote_address(guest.get(), nullptr));
    // The one that has taken longest makes room, so that idle strangers keep no viewer out.
    if (guests_.size() >= kMostGuests) guests_.pop_front();
    guests_.emplace_back(*this, std::move(guest), peer ? nameOf(peer.get()) : "?");
  }

  void judge(Guest& guest, Kind kind, ByteView body) {
    if (std::exchange(guest.judged, true)) return;
    if (!knowsToken(kind, body) || Clock::now() < closedUntil_) {
      countWrong(guest.peer);
      guest.channel->send(Bye{kRefused});
      return guest.channel->end("refused");
    }
    std::fprintf(stderr, "remote: %s is let in\n", guest.peer.c_str());
    admit_(std::move(guest.channel));
    leave(guest);
  }

  bool knowsToken(Kind kind, ByteView body) const try {
    const auto [version, token] = parse<Hello>(body);
    return kind == Kind::hello && version == kVersion && token.size() == token_.size() &&
           gnutls_memcmp(token.data(), token_.data(), token_.size()) == 0;
  } catch (const Malformed&) {
    return false;
  }

  void countWrong(const std::string& peer) {
    complain(peer, "a wrong token");
    const auto now = Clock::now();
    wrong_.push_back(now);
    while (now - wrong_.front() > kMinute) wrong_.pop_front();
    if (wrong_.size() < kMostWrong) return;
    closedUntil_ = now + kMinute;
    wrong_.clear();
    std::fprintf(stderr, "remote: ten wrong tokens, the door is closed for a minute\n");
  }

  void complain(const std::string& peer, const std::string& what) {
    const auto now = Clock::now();
    if (now - minuteBegan_ > kMinute) std::tie(minuteBegan_, lines_) = std::pair(now, 0);
    if (++lines_ > kMostLines) return;
    const char* last = lines_ == kMostLines ? " (this minute's last line)" : "";
    std::fprintf(stderr, "remote: %s is refused: %s%s\n", peer.c_str(), what.c_str(), last);
  }

  void leave(const Guest& guest) {
    guests_.remove_if([&](const Guest& other) { return &other == &guest; });
  }

  void sendAwayTheSlow() {
    while (!guests_.empty() && Clock::now() - guests_.front().came > kLongestStay) {
      complain(guests_.front().peer, "no greeting came");
      guests_.pop_front();
    }
  }

  const Credentials credentials_{Side::share};
  std::string address_;
  const Token token_;
  const Admit admit_;
  const Socket socket_;
  std::list<Guest> guests_;             // in the order in which they came
  std::list<Clock::time_point> wrong_;  // in the last minute
  Clock::time_point closedUntil_{}, minuteBegan_{};
  int lines_ = 0;
  Source readable_, clock_;
};

}  // namespace remote
