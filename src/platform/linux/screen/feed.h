#pragma once

#include <optional>
#include <string>

#include "platform/linux/screen/source.h"

namespace vlm::platform::screen {

// The line to the service that shows the content, and what a capture waits for. Everything but
// hangUp() happens on the stream's thread.
class Feed {
 public:
  virtual ~Feed() = default;

  // The content at the other end, which lives as long as this; null and why when it can't be
  // captured.
  virtual Source* open(std::string& reason) = 0;

  // Hands the source whatever has come; waits for nothing.
  virtual void dispatch() = 0;
  // Hands it only what came along with answers that it waited for.
  virtual void dispatchArrived() {}
  // Sends what is to be sent. False when something has come already; else the descriptor becomes
  // readable when something does.
  virtual bool prepareToWait() { return true; }
  virtual int descriptor() const = 0;
  // Why nothing can come any more.
  virtual std::optional<std::string> lost() const = 0;

  // Loses the service on purpose: a thread that waits for it goes on at once. Any thread.
  virtual void hangUp() noexcept = 0;
};

}  // namespace vlm::platform::screen
