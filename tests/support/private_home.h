#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/scratch_folder.h"

namespace vlm::test {

// Changes of the environment of this process; what was there before comes back in the end.
class Environment {
 public:
  Environment() = default;
  ~Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

  void set(const std::string& name, const std::string& value);

 private:
  std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

// A new folder that is the home folder of this process and of what it starts, until this goes.
struct PrivateHome : ScratchFolder {
  PrivateHome();

  Environment environment;
};

}  // namespace vlm::test
