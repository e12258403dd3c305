#include "windows/enumeration.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/cg_window.h"
#include "platform/integer.h"
#include "windows/accessibility.h"
#include "windows/title.h"
#include "windows/window_server.h"

namespace vlm::windows {
namespace {

using platform::CFArray;
using platform::CFValue;
using platform::truncated;

// Smaller windows, in points, are no windows that a person sees.
constexpr double kSmallestSide = 1.0;
// The two sources of a rectangle may differ by this many points in total and still mean one window.
constexpr std::int64_t kFarthestPair = 8;

// One window of the process as the window server knows it.
struct CgWin {
  std::uint32_t id = 0;
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t w = 0;
  std::int32_t h = 0;
};

std::optional<CgWin> candidate(const CFValue& window, std::int32_t pid) {
  if (integerEntry<std::int32_t>(window, platform::kCGWindowOwnerPID) != pid) return std::nullopt;
  const auto id = integerEntry<std::uint32_t>(window, platform::kCGWindowNumber);
  const auto bounds = windowBounds(window);
  if (!id || !bounds) return std::nullopt;
  return CgWin{
      *id, truncated<std::int32_t>(bounds->origin.x), truncated<std::int32_t>(bounds->origin.y),
      truncated<std::int32_t>(bounds->size.width), truncated<std::int32_t>(bounds->size.height)};
}

// Front to back.
std::vector<CgWin> windowServerWindows(std::int32_t pid) {
  constexpr auto kOptions =
      platform::kCGWindowListOptionOnScreenOnly | platform::kCGWindowListExcludeDesktopElements;
  std::vector<CgWin> windows;
  const auto list = platform::CGWindowListCopyWindowInfo(kOptions, platform::CGNullWindowID);
  if (!list) return windows;
  for (const auto& window : *list) {
    if (const auto found = candidate(window, pid)) windows.push_back(*found);
  }
  return windows;
}

// Nothing when the list can't be read or holds anything but elements.
std::optional<std::vector<Element>> accessibleWindows(platform::AXUIElement& application) {
  const auto value = attribute(application, platform::AXWindowsAttribute);
  const auto* array = value ? value->as<CFArray>() : nullptr;
  if (array == nullptr) return std::nullopt;
  std::vector<Element> windows;
  for (const auto& each : *array) {
    const auto* element = each.as<Element>();
    if (element == nullptr || !*element) return std::nullopt;
    windows.push_back(*element);
  }
  return windows;
}

// Everything but the number; nothing for a window that is not to be seen.
std::optional<VlmWindowEntry> describe(platform::AXUIElement& window, const Element& mainWindow) {
  if (isMinimized(window)) return std::nullopt;
  const auto rectangle = readRectangle(window);
  if (!rectangle || !rectangle->positionConverted || !rectangle->sizeConverted) return std::nullopt;
  if (rectangle->size.width < kSmallestSide || rectangle->size.height < kSmallestSide)
    return std::nullopt;
  VlmWindowEntry entry{};
  entry.left = truncated<std::int32_t>(rectangle->position.x);
  entry.top = truncated<std::int32_t>(rectangle->position.y);
  entry.width = truncated<std::int32_t>(rectangle->size.width);
  entry.height = truncated<std::int32_t>(rectangle->size.height);
  entry.isMain = mainWindow && platform::CFEqual(*mainWindow, window) ? 1 : 0;
  const auto title = attribute(window, platform::AXTitleAttribute);
  const auto* text = title ? title->as<std::string>() : nullptr;
  if (text != nullptr) vlmSetTitle(entry.title, *text);
  return entry;
}

std::int64_t distance(const CgWin& a, const VlmWindowEntry& b) {
  const auto apart = [](std::int32_t p, std::int32_t q) { return std::abs(std::int64_t{p} - q); };
  return apart(a.x, b.left) + apart(a.y, b.top) + apart(a.w, b.width) + apart(a.h, b.height);
}

// Gives each window of one enumeration a different number.
class Pairing {
 public:
  explicit Pairing(std::vector<CgWin> candidates) : candidates_(std::move(candidates)) {}

  // The nearest candidate that is not taken, the frontmost of equally near ones; 0 when none is
  // near enough.
  std::uint32_t take(const VlmWindowEntry& entry) {
    std::int64_t best = std::numeric_limits<std::int32_t>::max();
    std::uint32_t number = 0;
    for (const auto& each : candidates_) {
      if (taken_.contains(each.id)) continue;
      const std::int64_t apart = distance(each, entry);
      if (apart >= best) continue;
      best = apart;
      number = each.id;
    }
    if (number == 0 || best > kFarthestPair) return 0;
    taken_.insert(number);
    return number;
  }

 private:
  const std::vector<CgWin> candidates_;
  std::unordered_set<std::uint32_t> taken_;
};

}  // namespace

std::int32_t enumerate(std::int32_t pid, std::span<VlmWindowEntry> out) {
  Pairing pairing(windowServerWindows(pid));
  const auto application = platform::AXUIElementCreateApplication(pid);
  if (!application) return 0;
  const auto mainWindow = elementAttribute(*application, platform::AXMainWindowAttribute);
  const auto windows = accessibleWindows(*application);
  if (!windows) return 0;
  std::size_t count = 0;
  for (const auto& window : *windows) {
    if (count == out.size()) break;
    auto entry = describe(*window, mainWindow);
    if (!entry) continue;
    entry->windowId = pairing.take(*entry);
    if (entry->windowId != 0) out[count++] = *entry;
  }
  return static_cast<std::int32_t>(count);
}

}  // namespace vlm::windows
