#include <gtest/gtest.h>

#include "stage.h"

namespace vlm::test {
namespace {

using platform::dispatch_get_main_queue;
using platform::dispatch_queue_create;
using platform::DispatchQoS;

TEST(Machine, JobsRunInOrderOfSubmissionAndOnlyWhenStepped) {
  Machine machine;
  std::string order;
  const auto queue = dispatch_queue_create("a", DispatchQoS::standard);
  const auto other = dispatch_queue_create("b", DispatchQoS::standard);
  queue->async([&] {
    order += platform::isMainThread() ? "A" : "a";
    // A wait inside a job runs other queues' jobs, and never a second one of its own queue.
    const auto semaphore = platform::dispatch_semaphore_create(0);
    dispatch_get_main_queue()->async([semaphore] { semaphore->signal(); });
    semaphore->wait();
    order += "-";
  });
  queue->async([&] { order += "c"; });
  other->async([&] { order += "b"; });
  EXPECT_EQ(order, "");
  dispatch_get_main_queue()->sync([&] { order += platform::isMainThread() ? "M" : "m"; });
  machine.run();
  EXPECT_EQ(order, "abM-c");
  EXPECT_TRUE(platform::isMainThread());
}

TEST(MachineDeathTest, AWaitThatNothingCanEndEndsTheTest) {
  Machine machine;
  EXPECT_DEATH(platform::dispatch_semaphore_create(0)->wait(), "can end the wait for a semaphore");
  const auto queue = dispatch_queue_create("a", DispatchQoS::standard);
  queue->async([queue] { queue->sync([] {}); });
  EXPECT_DEATH(machine.run(), "a synchronous job of queue a");
}

TEST(Machine, FaultsHitTheCallsTheyWereScriptedFor) {
  Machine machine;
  machine.refuse("operation(7", -5, 2, 1);
  std::vector<int> statuses;
  for (const int argument : {7, 8, 7, 7, 7}) {
    statuses.push_back(machine.journal.enter("operation", {argument}).status);
  }
  EXPECT_EQ(statuses, (std::vector{0, 0, -5, -5, 0}));
  machine.throwFrom("other(");
  EXPECT_THROW(machine.journal.enter("other"), std::bad_alloc);
}

}  // namespace
}  // namespace vlm::test
