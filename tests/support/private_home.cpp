#include "support/private_home.h"

#include <cstdlib>

namespace vlm::test {

PrivateHome::PrivateHome() {
  setVariable("HOME", path().string());
  setVariable("XDG_DATA_HOME", folder_.file("data"));
  setVariable("XDG_CONFIG_HOME", folder_.file("config"));
  setVariable("XDG_RUNTIME_DIR", path().string());
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
}

void PrivateHome::setVariable(const std::string& name, const std::string& value) {
  const char* old = std::getenv(name.c_str());
  before_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
  setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace vlm::test
