#include "support/private_home.h"

#include <cstdlib>
#include <stdexcept>

namespace vlm::test {

namespace fs = std::filesystem;

PrivateHome::PrivateHome() {
  std::string pattern = (fs::temp_directory_path() / "vlm-home-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no folder for a home");
  path_ = pattern;
  setVariable("HOME", pattern);
  setVariable("XDG_DATA_HOME", (path_ / "data").string());
  setVariable("XDG_CONFIG_HOME", (path_ / "config").string());
  setVariable("XDG_RUNTIME_DIR", pattern);
}

PrivateHome::~PrivateHome() {
  for (auto entry = before_.rbegin(); entry != before_.rend(); ++entry) {
    const auto& [name, value] = *entry;
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void PrivateHome::setVariable(const std::string& name, const std::string& value) {
  const char* old = std::getenv(name.c_str());
  before_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
  setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace vlm::test
