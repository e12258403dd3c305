#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "support/child_process.h"

namespace vlm::bench {

// What a sharing program has delivered since it started.
struct Delivered {
  std::uint64_t frames = 0;
  std::uint64_t bytes = 0;
};

class DeliveredCount {
 public:
  void add(std::size_t bytes) {
    frames_.fetch_add(1, std::memory_order_relaxed);
    bytes_.fetch_add(bytes, std::memory_order_relaxed);
  }
  Delivered now() const { return {frames_.load(), bytes_.load()}; }

 private:
  std::atomic<std::uint64_t> frames_{0};
  std::atomic<std::uint64_t> bytes_{0};
};

// In a measured program: answers each question that comes through `socket` with the count, until
// the other end is closed. Between questions it costs nothing.
void answer(int socket, const DeliveredCount& count);

// One reading of a measured program.
struct Reading {
  std::int64_t time = 0;       // of the shared clock
  std::int64_t processor = 0;  // spent by the program
  Delivered delivered;
};

// A program under measurement. It is started with the number of a descriptor in its arguments, in
// the place of "%fd".
class Metered {
 public:
  enum class Protocol {
    answers,   // answer() above
    progress,  // FFmpeg's -progress reports, several a second
  };

  Metered(std::vector<std::string> command, Protocol protocol);
  ~Metered();
  Metered(const Metered&) = delete;
  Metered& operator=(const Metered&) = delete;

  // Throws when the program has ended.
  Reading read();

 private:
  struct Sockets {
    Sockets();
    ~Sockets();
    int ours = -1;
    int childs = -1;
  };

  Delivered ask() const;
  Delivered nextReport();

  const Protocol protocol_;
  Sockets sockets_;
  test::ChildProcess child_;
  std::string unread_;
};

}  // namespace vlm::bench
