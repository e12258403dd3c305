#pragma once

#include <stdexcept>

namespace vlm::tools {

// Why the program can't do what it was asked, in one sentence for the person who asked.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace vlm::tools
