#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/scratch_folder.h"

namespace vlm::test {

// A new folder that is the home folder of this process and of what it starts, until this goes.
class PrivateHome {
 public:
  PrivateHome();
  ~PrivateHome();
  PrivateHome(const PrivateHome&) = delete;
  PrivateHome& operator=(const PrivateHome&) = delete;

  const std::filesystem::path& path() const { return folder_.path(); }
  // Changes the environment; what was there before comes back in the end.
  void setVariable(const std::string& name, const std::string& value);

 private:
  const ScratchFolder folder_;
  std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

}  // namespace vlm::test
