#pragma once

#include <poll.h>

#include <string>
#include <utility>

#include "protocol.h"
#include "sockets.h"
#include "support/child_process.h"
#include "tls.h"

namespace vlm::test {

// One side of a connection that says what it likes.
class HostilePeer {
 public:
  HostilePeer(remote::Socket socket, const remote::Credentials& own, remote::Side side)
      : socket_(std::move(socket)), tls_(descriptor(), own, side) {
    wait(POLLOUT);
    connected_ = tries([this] { return tls_.shakeHands({}); });
  }

  bool isConnected() const { return connected_; }

  template <class Message>
  bool say(const Message& message) {
    bool all = true;
    for (const auto& frame : remote::framesOf(message.kKind, remote::bodyOf(message))) {
      all = all && sayBytes(frame);
    }
    return all;
  }

  // False when the other side has ended the connection.
  bool sayBytes(remote::ByteView bytes) {
    while (!bytes.empty()) {
      std::size_t taken = 0;
      const bool done = tries([&] {
        const auto sent = tls_.send(bytes);
        taken = sent.value_or(0);
        return sent.has_value();
      });
      if (!done) return false;
      bytes = bytes.subspan(taken);
    }
    return true;
  }

  // Takes what has come; false when the connection has ended.
  bool listen() {
    std::array<remote::u8, 16384> buffer;
    try {
      while (tls_.receive(buffer)) {
      }
      return true;
    } catch (const remote::TlsFailure&) {
      return false;
    }
  }
  bool isEnded() {
    return eventually([this] { return !listen(); });
  }

 private:
  int descriptor() const { return g_socket_get_fd(socket_.get()); }
  void wait(short events) const {
    pollfd ready{descriptor(), events, 0};
    poll(&ready, 1, 100);
  }
  template <class Step>
  bool tries(Step step) {
    try {
      return eventually([&] {
        if (step()) return true;
        wait(POLLIN);
        return false;
      });
    } catch (const remote::TlsFailure&) {
      return false;
    }
  }

  const remote::Socket socket_;
  remote::Tls tls_;
  bool connected_ = false;
};

}  // namespace vlm::test
