#pragma once

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <functional>

namespace vlm::test {

// For what only holds while the machine keeps time: a busy one gives a sound server gaps. One good
// attempt of a few is enough, since a fault of our own is there in all of them.
inline void expectInOneAttempt(const std::function<void()>& attempt) {
  constexpr int kAttempts = 4;
  for (int i = 1; i <= kAttempts; ++i) {
    ::testing::TestPartResultArray results;
    {
      const ::testing::ScopedFakeTestPartResultReporter reporter(&results);
      attempt();
    }
    bool failed = false;
    for (int part = 0; part < results.size(); ++part) {
      const auto& result = results.GetTestPartResult(part);
      failed = failed || result.failed();
      if (i == kAttempts && result.failed()) {
        ADD_FAILURE_AT(result.file_name(), result.line_number()) << result.message();
      }
    }
    if (!failed) return;
  }
}

}  // namespace vlm::test
