#include "platform/linux/input/portal_poster.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/linux/glib/log_line.h"
#include "platform/linux/input/button.h"
#include "platform/linux/input/key_places.h"

namespace vlm::platform::input {
namespace {

// The left key is the one that is pressed for a modifier.
struct ModifierKeys {
  CGEventFlags flag;
  std::uint16_t left;
  std::uint16_t right;
};
constexpr std::array kModifiers{
    ModifierKeys{kCGEventFlagMaskShift, KEY_LEFTSHIFT, KEY_RIGHTSHIFT},
    ModifierKeys{kCGEventFlagMaskControl, KEY_LEFTCTRL, KEY_RIGHTCTRL},
    ModifierKeys{kCGEventFlagMaskCommand, KEY_LEFTMETA, KEY_RIGHTMETA},
    ModifierKeys{kCGEventFlagMaskAlternate, KEY_LEFTALT, KEY_RIGHTALT},
};

bool contains(const std::vector<std::uint16_t>& keys, std::uint16_t key) {
  return std::ranges::find(keys, key) != keys.end();
}

bool isModifier(std::uint16_t key) {
  return key == KEY_CAPSLOCK || std::ranges::any_of(kModifiers, [&](const auto& each) {
           return each.left == key || each.right == key;
         });
}

// The key to press for a modifier; of the option keys the one that the flags name.
std::uint16_t keyFor(const ModifierKeys& modifier, CGEventFlags flags) {
  const bool isRight = modifier.flag == kCGEventFlagMaskAlternate &&
                       (flags & NX_DEVICERALTKEYMASK) != 0 && (flags & NX_DEVICELALTKEYMASK) == 0;
  return isRight ? modifier.right : modifier.left;
}

std::int32_t codeOf(Button button) {
  constexpr std::array<std::int32_t, 3> kCodes{BTN_LEFT, BTN_MIDDLE, BTN_RIGHT};
  return kCodes[static_cast<std::size_t>(button)];
}

}  // namespace

PortalPoster& PortalPoster::shared() {
  static auto* const poster = new PortalPoster();  // never ended: a process may exit while it posts
  return *poster;
}

bool PortalPoster::mayPost() {
  const MutexLock lock(mutex_);
  if (desktop_ && !desktop_->isGiven()) forget();
  return desktop_ != nullptr;
}

bool PortalPoster::ask() {
  const MutexLock oneAtATime(asking_);
  if (mayPost()) return true;
  std::string reason;
  auto desktop = portal::RemoteDesktop::open(reason);
  const MutexLock lock(mutex_);
  desktop_ = std::move(desktop);
  return desktop_ != nullptr;
}

bool PortalPoster::post(const Event& event) {
  const MutexLock lock(mutex_);
  if (!desktop_) {
    glib::writeLogLineOnce(
        "[vlm] input is posted in a Wayland session once vlm_perm_accessibility(true) was "
        "answered with true");
    return false;
  }
  bool isPosted = true;
  if (const auto* input = std::get_if<MouseInput>(&event.input)) isPosted = postMouse(*input);
  if (const auto* input = std::get_if<ScrollInput>(&event.input)) isPosted = postScroll(*input);
  if (const auto* input = std::get_if<KeyInput>(&event.input)) {
    isPosted = postKey(*input, event.flags);
  }
  // A refusal may be of one call that this desktop does not know, or the end of the leave.
  if (!isPosted && !desktop_->isGiven()) forget();
  return isPosted;
}

void PortalPoster::forget() {
  glib::writeLogLine("[vlm] the desktop takes no more input");
  desktop_ = nullptr;
  heldModifiers_.clear();
  press_.reset();
}

bool PortalPoster::postMouse(const MouseInput& input) {
  desktop_->movePointer(input.position.x, input.position.y);
  const auto change = buttonChangeOf(input.type);
  return !change || desktop_->pressButton(codeOf(change->button), change->down);
}

// Positive is up and left here, and down and right there.
bool PortalPoster::postScroll(const ScrollInput& input) {
  const auto& desktop = *desktop_;
  const auto turn = [&desktop](portal::Axis axis, std::int32_t steps) {
    constexpr auto kMost = WheelAxis::kMostSteps;
    return steps == 0 || desktop.turnWheel(axis, std::clamp(-steps, -kMost, kMost));
  };
  const bool isTurned = turn(portal::Axis::vertical, vertical_.turn(input.vertical));
  return turn(portal::Axis::horizontal, horizontal_.turn(input.horizontal)) && isTurned;
}

bool PortalPoster::postKey(const KeyInput& input, CGEventFlags flags) {
  const auto key = evdevCode(input.keyCode);
  if (!key) return true;
  if (isModifier(*key)) {
    std::erase(heldModifiers_, *key);
    if (input.down) heldModifiers_.push_back(*key);
    return desktop_->pressKey(*key, input.down);
  }
  if (input.down) {
    const bool isRepeat = press_ && press_->key == *key;
    giveBackModifiers();
    // As the kernel repeats it: released and pressed at the same time.
    if (isRepeat) desktop_->pressKey(*key, false);
    press_ = Press{*key, {}, {}};
    takeModifiers(*press_, flags);
    return desktop_->pressKey(*key, true);
  }
  const bool isReleased = desktop_->pressKey(*key, false);
  if (press_ && press_->key == *key) giveBackModifiers();
  return isReleased;
}

// No desktop says which keys a person holds: what is known is what was posted here.
void PortalPoster::takeModifiers(Press& press, CGEventFlags flags) {
  for (const auto& modifier : kModifiers) {
    const bool isWanted = (flags & modifier.flag) != 0;
    bool isHeld = false;
    for (const auto key : {modifier.left, modifier.right}) {
      if (!contains(heldModifiers_, key)) continue;
      isHeld = true;
      if (!isWanted) press.lifted.push_back(key);
    }
    if (isWanted && !isHeld) press.pressed.push_back(keyFor(modifier, flags));
  }
  pressAll(press.lifted, false);
  pressAll(press.pressed, true);
}

void PortalPoster::giveBackModifiers() {
  const auto press = std::exchange(press_, std::nullopt);
  if (!press) return;
  pressAll(press->pressed, false);
  for (const auto key : press->lifted) {
    if (contains(heldModifiers_, key)) desktop_->pressKey(key, true);
  }
}

void PortalPoster::pressAll(const std::vector<std::uint16_t>& keys, bool down) const {
  for (const auto key : keys) desktop_->pressKey(key, down);
}

}  // namespace vlm::platform::input
