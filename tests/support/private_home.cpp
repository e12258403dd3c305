#include "support/private_home.h"

#include <cstdlib>

namespace vlm::test {

Environment::~Environment() {
  for (auto entry = before_.rbegin(); entry != before_.rend(); ++entry) {
    const auto& [name, value] = *entry;
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
}

void Environment::set(const std::string& name, const std::string& value) {
  const char* old = std::getenv(name.c_str());
  before_.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
  setenv(name.c_str(), value.c_str(), 1);
}

PrivateHome::PrivateHome() {
  environment.set("HOME", path().string());
  environment.set("XDG_DATA_HOME", file("data"));
  environment.set("XDG_CONFIG_HOME", file("config"));
  environment.set("XDG_RUNTIME_DIR", path().string());
}

}  // namespace vlm::test
