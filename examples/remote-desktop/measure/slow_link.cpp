// A slow, long and lossy link between two network namespaces, for kernels without netem:
//
//   slow_link NAMESPACE NAMESPACE BITS_PER_SECOND DELAY_MS LOSS_PERCENT
//
// Each namespace gets a device `slow`. What is sent on one comes out of the other after its turn at
// the rate, plus the delay. What would wait for longer than a quarter of a second is dropped.
#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

int openDevice(const std::string& name) {
  const int space = open(("/run/netns/" + name).c_str(), O_RDONLY | O_CLOEXEC);
  const int device =
      setns(space, CLONE_NEWNET) == 0 ? open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1;
  close(space);
  ifreq request{};
  request.ifr_flags = IFF_TUN | IFF_NO_PI;
  std::snprintf(request.ifr_name, sizeof request.ifr_name, "slow");
  if (device < 0 || ioctl(device, TUNSETIFF, &request) != 0) {
    std::perror("slow_link");
    std::exit(1);
  }
  return device;
}

struct Packet {
  Clock::time_point due;
  std::vector<char> bytes;
};

struct Direction {
  int from, to;
  double bitsPerSecond;
  Clock::duration delay;
  double loss;
  Clock::time_point free{};
  std::deque<Packet> packets{};

  void take(std::mt19937& random) {
    constexpr auto kLongestQueue = std::chrono::milliseconds(250);
    std::array<char, 65536> buffer;
    for (ssize_t size; (size = read(from, buffer.data(), buffer.size())) > 0;) {
      const auto now = Clock::now();
      const bool isLost = std::uniform_real_distribution(0.0, 100.0)(random) < loss;
      if (isLost || free - now > kLongestQueue) continue;
      const std::chrono::duration<double> turn(static_cast<double>(size) * 8 / bitsPerSecond);
      free = std::max(free, now) + std::chrono::duration_cast<Clock::duration>(turn);
      packets.push_back({free + delay, {buffer.begin(), buffer.begin() + size}});
    }
  }
  void give() {
    for (; !packets.empty() && packets.front().due <= Clock::now(); packets.pop_front()) {
      if (write(to, packets.front().bytes.data(), packets.front().bytes.size()) < 0) continue;
    }
  }
};

}  // namespace

int main(int count, char** words) {
  if (count != 6) return 2;
  const int one = openDevice(words[1]), other = openDevice(words[2]);
  const double rate = std::atof(words[3]), loss = std::atof(words[5]);
  const auto delay = std::chrono::milliseconds(std::atoi(words[4]));
  std::array directions{Direction{one, other, rate, delay, loss},
                        Direction{other, one, rate, delay, loss}};
  std::mt19937 random(1);
  while (true) {
    const bool isWaiting = !directions[0].packets.empty() || !directions[1].packets.empty();
    std::array ready{pollfd{one, POLLIN, 0}, pollfd{other, POLLIN, 0}};
    poll(ready.data(), ready.size(), isWaiting ? 1 : 100);
    for (auto& direction : directions) {
      direction.take(random);
      direction.give();
    }
  }
}
