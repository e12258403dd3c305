#include "support/scratch_folder.h"

#include <cstdlib>
#include <stdexcept>

namespace vlm::test {

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "vlm-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace vlm::test
