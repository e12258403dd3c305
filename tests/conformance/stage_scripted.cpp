#include <chrono>
#include <thread>

#include "platform/scripted/machine.h"
#include "stage.h"

namespace vlm::test {

using platform::scripted::Machine;

struct Stage::Impl {
  Machine machine{Machine::Queues::threads};
};

Stage::Stage() : impl_(std::make_unique<Impl>()) {}
Stage::~Stage() = default;

void Stage::openDisplay() {}

void Stage::onMainThread(const std::function<void()>& job) {
  impl_->machine.mainQueue()->sync(job);
}

bool Stage::waitUntil(const std::function<bool()>& done) {
  for (int i = 0; i < 1000 && !done(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return done();
}

std::string Stage::loggedBy(const std::function<void()>& job) {
  impl_->machine.takeLog();
  job();
  std::string text;
  for (const auto& line : impl_->machine.takeLog()) text += line + "\n";
  return text;
}

}  // namespace vlm::test
