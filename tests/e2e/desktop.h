#pragma once

#include <glib.h>

#include <cstdint>
#include <string>

#include "support/child_process.h"

// What the tests on a desktop share: how other programs see the desktop, and the main loop.
namespace vlm::test {

inline std::string text(std::uint32_t window) {
  return std::to_string(window);
}

// "10,20 300x200", as xwininfo sees the content of a window.
inline std::string frameSeen(std::uint32_t window) {
  const auto output = outputOf({"xwininfo", "-id", text(window)});
  const auto number = [&](const std::string& label) {
    return std::to_string(std::stoi(output.substr(output.find(label) + label.size())));
  };
  return number("Absolute upper-left X:") + "," + number("Absolute upper-left Y:") + " " +
         number("Width:") + "x" + number("Height:");
}

inline std::string frameText(double x, double y, double width, double height) {
  const auto whole = [](double value) { return std::to_string(static_cast<int>(value)); };
  return whole(x) + "," + whole(y) + " " + whole(width) + "x" + whole(height);
}

inline void runMainLoop() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

// Runs the main loop until `condition` holds; false when that takes too long to be coming.
template <class Condition>
bool pumpUntil(Condition condition) {
  return eventually([&] {
    runMainLoop();
    return condition();
  });
}

}  // namespace vlm::test
