#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cf_value.h"
#include "platform/core_media.h"
#include "platform/core_video.h"
#include "platform/mutex.h"

namespace vlm::platform::scripted {

// Values as a person would note them down: 42, 1.0, true, text, [a, b], {key: value}, <3 bytes>.
std::string describe(const CFValue& value);
std::string describe(CMTime time);            // value/timescale
std::string describe(CGRect rect);            // (x, y, width, height)
std::string describe(CVPixelBuffer& buffer);  // format width x height
std::string fourCharacters(OSType code);

// What happens to a call of an operation instead of what usually does.
struct Fault {
  OSStatus status = noErr;  // refused with this status,
  std::string error;        // or with this description where the platform answers an NSError,
  bool nothing = false;     // or answered with success and nothing else,
  bool throws = false;      // or ended by an exception, as when memory is short.
  bool fails() const { return status != noErr || !error.empty(); }
};

// Everything that reached the platform, in order, one line a call: "operation(argument, ...)".
// Faults are scripted for the lines that begin with a text, so that one may pick the operation
// alone ("VTSessionSetProperty(") or an argument too ("VTSessionSetProperty(RealTime").
class Journal {
 public:
  // Notes the call and returns the fault that the test ordered for it.
  Fault enter(std::string_view operation, std::initializer_list<CFValue> arguments = {})
      VLM_EXCLUDES(mutex_);
  // The same for a call that gives something back, which can't fail: it happens in destructors.
  void leave(std::string_view operation, std::initializer_list<CFValue> arguments = {}) noexcept
      VLM_EXCLUDES(mutex_);
  void note(std::string line) VLM_EXCLUDES(mutex_);

  // The fault happens to `times` matching calls, after `passing` others of them.
  void script(std::string prefix, Fault fault, int times = 1, int passing = 0) VLM_EXCLUDES(mutex_);

  // The lines since the last take that begin with `prefix`. Forgets all of them.
  std::vector<std::string> take(std::string_view prefix = {}) VLM_EXCLUDES(mutex_);

 private:
  struct Script {
    std::string prefix;
    Fault fault;
    int times;
    int passing;
  };
  Fault faultFor(std::string_view line) VLM_REQUIRES(mutex_);

  Mutex mutex_;
  std::vector<std::string> lines_ VLM_GUARDED_BY(mutex_);
  std::vector<Script> scripts_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform::scripted
