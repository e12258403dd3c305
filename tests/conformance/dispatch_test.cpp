#include "platform/dispatch.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "stage.h"

namespace vlm::platform {
namespace {

TEST(Dispatch, SerialQueueRunsJobsInOrderAndSyncWaitsForItsOwn) {
  test::Stage stage;
  const auto queue = dispatch_queue_create("vlm.test", DispatchQoS::userInteractive);
  EXPECT_EQ(queue->label(), "vlm.test");
  std::vector<int> order;
  for (int i = 0; i < 100; ++i) {
    queue->async([&order, queue, i] {
      order.push_back(i);
      if (i == 0) queue->async([&order] { order.push_back(1000); });
    });
  }
  bool waited = false;
  queue->sync([&] { waited = true; });
  EXPECT_TRUE(waited);
  queue->sync([] {});
  ASSERT_EQ(order.size(), 101U);
  int expected = 0;
  for (const int each : order) {
    if (each == 1000) continue;
    EXPECT_EQ(each, expected++);
  }
}

TEST(Dispatch, SemaphoreCountsSignalsOfOtherThreads) {
  test::Stage stage;
  const auto semaphore = dispatch_semaphore_create(1);
  semaphore->wait();
  std::thread other([semaphore] {
    semaphore->signal();
    semaphore->signal();
  });
  semaphore->wait();
  semaphore->wait();
  other.join();
}

}  // namespace
}  // namespace vlm::platform
