#pragma once

#include <functional>
#include <memory>
#include <string>

namespace vlm::test {

// What each platform needs around a conformance test.
class Stage {
 public:
  Stage();
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  // A display for the views of this test.
  void openDisplay();
  // Runs `job` as a job of the main thread.
  void onMainThread(const std::function<void()>& job);
  // Lets the main queue run until `done`; false when that takes too long to be coming.
  bool waitUntil(const std::function<bool()>& done);
  // What `job` makes the platform log, each line ended by a newline.
  std::string loggedBy(const std::function<void()>& job);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace vlm::test
