#include <glib.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>

#include "stage.h"
#include "support/private_desktop.h"

namespace vlm::test {

struct Stage::Impl {
  std::optional<PrivateDesktop> desktop;
};

Stage::Stage() : impl_(std::make_unique<Impl>()) {}
Stage::~Stage() = default;

void Stage::openDisplay() {
  PrivateDesktop::Options options;
  options.windowManager = false;
  impl_->desktop.emplace(options);
}

// The tests run on the process's first thread, which is the main thread here.
void Stage::onMainThread(const std::function<void()>& job) {
  job();
}

bool Stage::waitUntil(const std::function<bool()>& done) {
  for (int i = 0; i < 1000 && !done(); ++i) {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return done();
}

std::string Stage::loggedBy(const std::function<void()>& job) {
  ::testing::internal::CaptureStderr();
  job();
  return ::testing::internal::GetCapturedStderr();
}

}  // namespace vlm::test
