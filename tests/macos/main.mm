#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <thread>

#include "standin/objects.h"
#include "standin/stage.h"

namespace {

// Each test is one turn of a host's run loop, and ends with no object of the platform or of the
// frameworks left: also none that another thread or the main queue is still to let go of.
class RunLoopTurn : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override { pool_ = [[NSAutoreleasePool alloc] init]; }
  void OnTestEnd(const testing::TestInfo&) override {
    standin::clear();
    [pool_ drain];
    for (int i = 0; i < 400 && !standin::objectsAlive().empty(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      @autoreleasepool {
        standin::runMainQueue();
      }
    }
    for (const auto& [name, count] : standin::objectsAlive()) {
      ADD_FAILURE() << count << " " << name << " left";
    }
  }

  NSAutoreleasePool* pool_ = nil;
};

}  // namespace

extern "C" {

// The run-time's frames have no frame pointers, and it keeps what it makes of classes, as Foundation
// does with what its first log line needs.
const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:NSLogv\n"; }

}  // extern "C"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new RunLoopTurn);
  return RUN_ALL_TESTS();
}
