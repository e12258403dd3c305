#include "platform/linux/input/key_places.h"

#include <algorithm>
#include <array>

namespace vlm::platform::input {
namespace {

struct KeyPlace {
  std::uint16_t macKeyCode;
  std::string_view xkbName;
};

constexpr std::array kKeyPlaces{
    KeyPlace{0x00, "AC01"},  // A
    KeyPlace{0x01, "AC02"},  // S
    KeyPlace{0x02, "AC03"},  // D
    KeyPlace{0x03, "AC04"},  // F
    KeyPlace{0x04, "AC06"},  // H
    KeyPlace{0x05, "AC05"},  // G
    KeyPlace{0x06, "AB01"},  // Z
    KeyPlace{0x07, "AB02"},  // X
    KeyPlace{0x08, "AB03"},  // C
    KeyPlace{0x09, "AB04"},  // V
    KeyPlace{0x0A, "LSGT"},  // ISO section, beside the left shift
    KeyPlace{0x0B, "AB05"},  // B
    KeyPlace{0x0C, "AD01"},  // Q
    KeyPlace{0x0D, "AD02"},  // W
    KeyPlace{0x0E, "AD03"},  // E
    KeyPlace{0x0F, "AD04"},  // R
    KeyPlace{0x10, "AD06"},  // Y
    KeyPlace{0x11, "AD05"},  // T
    KeyPlace{0x12, "AE01"},  // 1
    KeyPlace{0x13, "AE02"},  // 2
    KeyPlace{0x14, "AE03"},  // 3
    KeyPlace{0x15, "AE04"},  // 4
    KeyPlace{0x16, "AE06"},  // 6
    KeyPlace{0x17, "AE05"},  // 5
    KeyPlace{0x18, "AE12"},  // =
    KeyPlace{0x19, "AE09"},  // 9
    KeyPlace{0x1A, "AE07"},  // 7
    KeyPlace{0x1B, "AE11"},  // -
    KeyPlace{0x1C, "AE08"},  // 8
    KeyPlace{0x1D, "AE10"},  // 0
    KeyPlace{0x1E, "AD12"},  // ]
    KeyPlace{0x1F, "AD09"},  // O
    KeyPlace{0x20, "AD07"},  // U
    KeyPlace{0x21, "AD11"},  // [
    KeyPlace{0x22, "AD08"},  // I
    KeyPlace{0x23, "AD10"},  // P
    KeyPlace{0x24, "RTRN"},  // Return
    KeyPlace{0x25, "AC09"},  // L
    KeyPlace{0x26, "AC07"},  // J
    KeyPlace{0x27, "AC11"},  // '
    KeyPlace{0x28, "AC08"},  // K
    KeyPlace{0x29, "AC10"},  // ;
    KeyPlace{0x2A, "BKSL"},  // backslash
    KeyPlace{0x2B, "AB08"},  // ,
    KeyPlace{0x2C, "AB10"},  // /
    KeyPlace{0x2D, "AB06"},  // N
    KeyPlace{0x2E, "AB07"},  // M
    KeyPlace{0x2F, "AB09"},  // .
    KeyPlace{0x30, "TAB"},   // Tab
    KeyPlace{0x31, "SPCE"},  // Space
    KeyPlace{0x32, "TLDE"},  // `
    KeyPlace{0x33, "BKSP"},  // Delete (backspace)
    KeyPlace{0x35, "ESC"},   // Escape
    KeyPlace{0x36, "RWIN"},  // right command
    KeyPlace{0x37, "LWIN"},  // command
    KeyPlace{0x38, "LFSH"},  // shift
    KeyPlace{0x39, "CAPS"},  // caps lock
    KeyPlace{0x3A, "LALT"},  // option
    KeyPlace{0x3B, "LCTL"},  // control
    KeyPlace{0x3C, "RTSH"},  // right shift
    KeyPlace{0x3D, "RALT"},  // right option
    KeyPlace{0x3E, "RCTL"},  // right control
    KeyPlace{0x40, "FK17"},  // F17
    KeyPlace{0x41, "KPDL"},  // keypad .
    KeyPlace{0x43, "KPMU"},  // keypad *
    KeyPlace{0x45, "KPAD"},  // keypad +
    KeyPlace{0x47, "NMLK"},  // keypad clear, where others have num lock
    KeyPlace{0x48, "VOL+"},  // volume up
    KeyPlace{0x49, "VOL-"},  // volume down
    KeyPlace{0x4A, "MUTE"},  // mute
    KeyPlace{0x4B, "KPDV"},  // keypad /
    KeyPlace{0x4C, "KPEN"},  // keypad enter
    KeyPlace{0x4E, "KPSU"},  // keypad -
    KeyPlace{0x4F, "FK18"},  // F18
    KeyPlace{0x50, "FK19"},  // F19
    KeyPlace{0x51, "KPEQ"},  // keypad =
    KeyPlace{0x52, "KP0"},   // keypad 0
    KeyPlace{0x53, "KP1"},   // keypad 1
    KeyPlace{0x54, "KP2"},   // keypad 2
    KeyPlace{0x55, "KP3"},   // keypad 3
    KeyPlace{0x56, "KP4"},   // keypad 4
    KeyPlace{0x57, "KP5"},   // keypad 5
    KeyPlace{0x58, "KP6"},   // keypad 6
    KeyPlace{0x59, "KP7"},   // keypad 7
    KeyPlace{0x5A, "FK20"},  // F20
    KeyPlace{0x5B, "KP8"},   // keypad 8
    KeyPlace{0x5C, "KP9"},   // keypad 9
    KeyPlace{0x5D, "AE13"},  // JIS yen
    KeyPlace{0x5E, "AB11"},  // JIS underscore
    KeyPlace{0x5F, "KPPT"},  // JIS keypad ,
    KeyPlace{0x60, "FK05"},  // F5
    KeyPlace{0x61, "FK06"},  // F6
    KeyPlace{0x62, "FK07"},  // F7
    KeyPlace{0x63, "FK03"},  // F3
    KeyPlace{0x64, "FK08"},  // F8
    KeyPlace{0x65, "FK09"},  // F9
    KeyPlace{0x66, "HJCV"},  // JIS eisu
    KeyPlace{0x67, "FK11"},  // F11
    KeyPlace{0x68, "HNGL"},  // JIS kana
    KeyPlace{0x69, "FK13"},  // F13
    KeyPlace{0x6A, "FK16"},  // F16
    KeyPlace{0x6B, "FK14"},  // F14
    KeyPlace{0x6D, "FK10"},  // F10
    KeyPlace{0x6E, "COMP"},  // menu
    KeyPlace{0x6F, "FK12"},  // F12
    KeyPlace{0x71, "FK15"},  // F15
    KeyPlace{0x72, "INS"},   // Help / Insert
    KeyPlace{0x73, "HOME"},  // Home
    KeyPlace{0x74, "PGUP"},  // Page up
    KeyPlace{0x75, "DELE"},  // Forward delete
    KeyPlace{0x76, "FK04"},  // F4
    KeyPlace{0x77, "END"},   // End
    KeyPlace{0x78, "FK02"},  // F2
    KeyPlace{0x79, "PGDN"},  // Page down
    KeyPlace{0x7A, "FK01"},  // F1
    KeyPlace{0x7B, "LEFT"},  // Left arrow
    KeyPlace{0x7C, "RGHT"},  // Right arrow
    KeyPlace{0x7D, "DOWN"},  // Down arrow
    KeyPlace{0x7E, "UP"},    // Up arrow
};

}  // namespace

std::optional<std::string_view> xkbKeyName(std::uint16_t macKeyCode) {
  const auto found = std::ranges::find(kKeyPlaces, macKeyCode, &KeyPlace::macKeyCode);
  if (found == kKeyPlaces.end()) return std::nullopt;
  return found->xkbName;
}

std::optional<std::uint16_t> macKeyCode(std::string_view xkbKeyName) {
  const auto found = std::ranges::find(kKeyPlaces, xkbKeyName, &KeyPlace::xkbName);
  if (found == kKeyPlaces.end()) return std::nullopt;
  return found->macKeyCode;
}

}  // namespace vlm::platform::input
