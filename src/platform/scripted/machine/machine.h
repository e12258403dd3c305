#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/dispatch.h"
#include "platform/scripted/machine/audio_stage.h"
#include "platform/scripted/machine/desktop_stage.h"
#include "platform/scripted/machine/display_stage.h"
#include "platform/scripted/machine/journal.h"
#include "platform/scripted/machine/screen_stage.h"
#include "platform/scripted/machine/stepped_queue.h"
#include "platform/scripted/machine/system_stage.h"
#include "platform/scripted/machine/video_stage.h"

namespace vlm::platform::scripted {

// A machine in memory behind the platform headers. A test makes one, sets the stage, calls the
// library and reads from the journal what reached the platform. A framework is a stage (a plain
// struct in its own header, a member here) and a source file that serves the framework's
// operations: each enters the journal, returns the fault that the test ordered, or acts on the
// stage.
class Machine {
 public:
  enum class Queues {
    stepped,  // jobs run only in run() and inside waits, one at a time: the same on every run
    threads,  // every queue has a thread, the main queue too
  };

  // Becomes the machine that the platform's operations act on, in place of any other.
  explicit Machine(Queues queues = Queues::stepped);
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // The machine in force. Without one, an empty machine with threads.
  static Machine& current();

  Journal journal;
  ScreenStage screen;
  VideoStage video;
  DisplayStage display;
  SystemStage system;
  DesktopStage desktop;
  AudioStage audio;

  // Shorthands for the usual faults.
  void refuse(std::string prefix, OSStatus status, int times = 1, int passing = 0);
  void refuse(std::string prefix, const char* error);
  void answerNothing(std::string prefix);
  void throwFrom(std::string prefix);

  // What the library has logged since the last take; other lines are forgotten too.
  std::vector<std::string> takeLog();

  // Runs what is pending, and what that leads to. Stepped machines only.
  void run();
  // Stepped machines only: the next answer or job after `passing` others comes late, when only it
  // can end a wait or in runLate().
  void delay(int passing) { stepper_.delay(passing); }
  // Says whether something came late since then. Nothing does any more.
  bool wasDelayed() { return stepper_.endDelay(); }
  void runLate();
  // Whether the test's own thread passes for the main thread; at first it does. Stepped machines
  // only: with threads, the main thread is the main queue's.
  void setOnMainThread(bool onMainThread) { stepper_.setOnMainThread(onMainThread); }
  bool onMainThread() const;

  // Calls `answer` from a thread of the platform's, later.
  void answerLater(std::function<void()> answer) { services_->async(std::move(answer)); }
  std::shared_ptr<DispatchQueue> makeQueue(std::string label);
  std::shared_ptr<DispatchSemaphore> makeSemaphore(int count);
  const std::shared_ptr<DispatchQueue>& mainQueue() const { return main_; }

 private:
  const Queues queues_;
  Stepper stepper_;
  std::thread::id mainThread_;
  // Declared last: what they still run acts on the members above.
  std::shared_ptr<DispatchQueue> services_;
  std::shared_ptr<DispatchQueue> main_;
  Machine* const previous_;
};

}  // namespace vlm::platform::scripted
