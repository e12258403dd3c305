#include "platform/linux/input/key_places.h"

#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>

namespace vlm::platform::input {
namespace {

struct KeyPlace {
  std::uint16_t macKeyCode;
  std::string_view xkbName;
  std::uint16_t evdevCode;
};

constexpr std::array kKeyPlaces{
    KeyPlace{0x00, "AC01", KEY_A},           // A
    KeyPlace{0x01, "AC02", KEY_S},           // S
    KeyPlace{0x02, "AC03", KEY_D},           // D
    KeyPlace{0x03, "AC04", KEY_F},           // F
    KeyPlace{0x04, "AC06", KEY_H},           // H
    KeyPlace{0x05, "AC05", KEY_G},           // G
    KeyPlace{0x06, "AB01", KEY_Z},           // Z
    KeyPlace{0x07, "AB02", KEY_X},           // X
    KeyPlace{0x08, "AB03", KEY_C},           // C
    KeyPlace{0x09, "AB04", KEY_V},           // V
    KeyPlace{0x0A, "LSGT", KEY_102ND},       // ISO section, beside the left shift
    KeyPlace{0x0B, "AB05", KEY_B},           // B
    KeyPlace{0x0C, "AD01", KEY_Q},           // Q
    KeyPlace{0x0D, "AD02", KEY_W},           // W
    KeyPlace{0x0E, "AD03", KEY_E},           // E
    KeyPlace{0x0F, "AD04", KEY_R},           // R
    KeyPlace{0x10, "AD06", KEY_Y},           // Y
    KeyPlace{0x11, "AD05", KEY_T},           // T
    KeyPlace{0x12, "AE01", KEY_1},           // 1
    KeyPlace{0x13, "AE02", KEY_2},           // 2
    KeyPlace{0x14, "AE03", KEY_3},           // 3
    KeyPlace{0x15, "AE04", KEY_4},           // 4
    KeyPlace{0x16, "AE06", KEY_6},           // 6
    KeyPlace{0x17, "AE05", KEY_5},           // 5
    KeyPlace{0x18, "AE12", KEY_EQUAL},       // =
    KeyPlace{0x19, "AE09", KEY_9},           // 9
    KeyPlace{0x1A, "AE07", KEY_7},           // 7
    KeyPlace{0x1B, "AE11", KEY_MINUS},       // -
    KeyPlace{0x1C, "AE08", KEY_8},           // 8
    KeyPlace{0x1D, "AE10", KEY_0},           // 0
    KeyPlace{0x1E, "AD12", KEY_RIGHTBRACE},  // ]
    KeyPlace{0x1F, "AD09", KEY_O},           // O
    KeyPlace{0x20, "AD07", KEY_U},           // U
    KeyPlace{0x21, "AD11", KEY_LEFTBRACE},   // [
    KeyPlace{0x22, "AD08", KEY_I},           // I
    KeyPlace{0x23, "AD10", KEY_P},           // P
    KeyPlace{0x24, "RTRN", KEY_ENTER},       // Return
    KeyPlace{0x25, "AC09", KEY_L},           // L
    KeyPlace{0x26, "AC07", KEY_J},           // J
    KeyPlace{0x27, "AC11", KEY_APOSTROPHE},  // '
    KeyPlace{0x28, "AC08", KEY_K},           // K
    KeyPlace{0x29, "AC10", KEY_SEMICOLON},   // ;
    KeyPlace{0x2A, "BKSL", KEY_BACKSLASH},   // backslash
    KeyPlace{0x2B, "AB08", KEY_COMMA},       // ,
    KeyPlace{0x2C, "AB10", KEY_SLASH},       // /
    KeyPlace{0x2D, "AB06", KEY_N},           // N
    KeyPlace{0x2E, "AB07", KEY_M},           // M
    KeyPlace{0x2F, "AB09", KEY_DOT},         // .
    KeyPlace{0x30, "TAB", KEY_TAB},          // Tab
    KeyPlace{0x31, "SPCE", KEY_SPACE},       // Space
    KeyPlace{0x32, "TLDE", KEY_GRAVE},       // `
    KeyPlace{0x33, "BKSP", KEY_BACKSPACE},   // Delete (backspace)
    KeyPlace{0x35, "ESC", KEY_ESC},          // Escape
    KeyPlace{0x36, "RWIN", KEY_RIGHTMETA},   // right command
    KeyPlace{0x37, "LWIN", KEY_LEFTMETA},    // command
    KeyPlace{0x38, "LFSH", KEY_LEFTSHIFT},   // shift
    KeyPlace{0x39, "CAPS", KEY_CAPSLOCK},    // caps lock
    KeyPlace{0x3A, "LALT", KEY_LEFTALT},     // option
    KeyPlace{0x3B, "LCTL", KEY_LEFTCTRL},    // control
    KeyPlace{0x3C, "RTSH", KEY_RIGHTSHIFT},  // right shift
    KeyPlace{0x3D, "RALT", KEY_RIGHTALT},    // right option
    KeyPlace{0x3E, "RCTL", KEY_RIGHTCTRL},   // right control
    KeyPlace{0x40, "FK17", KEY_F17},         // F17
    KeyPlace{0x41, "KPDL", KEY_KPDOT},       // keypad .
    KeyPlace{0x43, "KPMU", KEY_KPASTERISK},  // keypad *
    KeyPlace{0x45, "KPAD", KEY_KPPLUS},      // keypad +
    KeyPlace{0x47, "NMLK", KEY_NUMLOCK},     // keypad clear, where others have num lock
    KeyPlace{0x48, "VOL+", KEY_VOLUMEUP},    // volume up
    KeyPlace{0x49, "VOL-", KEY_VOLUMEDOWN},  // volume down
    KeyPlace{0x4A, "MUTE", KEY_MUTE},        // mute
    KeyPlace{0x4B, "KPDV", KEY_KPSLASH},     // keypad /
    KeyPlace{0x4C, "KPEN", KEY_KPENTER},     // keypad enter
    KeyPlace{0x4E, "KPSU", KEY_KPMINUS},     // keypad -
    KeyPlace{0x4F, "FK18", KEY_F18},         // F18
    KeyPlace{0x50, "FK19", KEY_F19},         // F19
    KeyPlace{0x51, "KPEQ", KEY_KPEQUAL},     // keypad =
    KeyPlace{0x52, "KP0", KEY_KP0},          // keypad 0
    KeyPlace{0x53, "KP1", KEY_KP1},          // keypad 1
    KeyPlace{0x54, "KP2", KEY_KP2},          // keypad 2
    KeyPlace{0x55, "KP3", KEY_KP3},          // keypad 3
    KeyPlace{0x56, "KP4", KEY_KP4},          // keypad 4
    KeyPlace{0x57, "KP5", KEY_KP5},          // keypad 5
    KeyPlace{0x58, "KP6", KEY_KP6},          // keypad 6
    KeyPlace{0x59, "KP7", KEY_KP7},          // keypad 7
    KeyPlace{0x5A, "FK20", KEY_F20},         // F20
    KeyPlace{0x5B, "KP8", KEY_KP8},          // keypad 8
    KeyPlace{0x5C, "KP9", KEY_KP9},          // keypad 9
    KeyPlace{0x5D, "AE13", KEY_YEN},         // JIS yen
    KeyPlace{0x5E, "AB11", KEY_RO},          // JIS underscore
    KeyPlace{0x5F, "KPPT", KEY_KPCOMMA},     // JIS keypad ,
    KeyPlace{0x60, "FK05", KEY_F5},          // F5
    KeyPlace{0x61, "FK06", KEY_F6},          // F6
    KeyPlace{0x62, "FK07", KEY_F7},          // F7
    KeyPlace{0x63, "FK03", KEY_F3},          // F3
    KeyPlace{0x64, "FK08", KEY_F8},          // F8
    KeyPlace{0x65, "FK09", KEY_F9},          // F9
    KeyPlace{0x66, "HJCV", KEY_HANJA},       // JIS eisu
    KeyPlace{0x67, "FK11", KEY_F11},         // F11
    KeyPlace{0x68, "HNGL", KEY_HANGEUL},     // JIS kana
    KeyPlace{0x69, "FK13", KEY_F13},         // F13
    KeyPlace{0x6A, "FK16", KEY_F16},         // F16
    KeyPlace{0x6B, "FK14", KEY_F14},         // F14
    KeyPlace{0x6D, "FK10", KEY_F10},         // F10
    KeyPlace{0x6E, "COMP", KEY_COMPOSE},     // menu
    KeyPlace{0x6F, "FK12", KEY_F12},         // F12
    KeyPlace{0x71, "FK15", KEY_F15},         // F15
    KeyPlace{0x72, "INS", KEY_INSERT},       // Help / Insert
    KeyPlace{0x73, "HOME", KEY_HOME},        // Home
    KeyPlace{0x74, "PGUP", KEY_PAGEUP},      // Page up
    KeyPlace{0x75, "DELE", KEY_DELETE},      // Forward delete
    KeyPlace{0x76, "FK04", KEY_F4},          // F4
    KeyPlace{0x77, "END", KEY_END},          // End
    KeyPlace{0x78, "FK02", KEY_F2},          // F2
    KeyPlace{0x79, "PGDN", KEY_PAGEDOWN},    // Page down
    KeyPlace{0x7A, "FK01", KEY_F1},          // F1
    KeyPlace{0x7B, "LEFT", KEY_LEFT},        // Left arrow
    KeyPlace{0x7C, "RGHT", KEY_RIGHT},       // Right arrow
    KeyPlace{0x7D, "DOWN", KEY_DOWN},        // Down arrow
    KeyPlace{0x7E, "UP", KEY_UP},            // Up arrow
};

}  // namespace

std::optional<std::string_view> xkbKeyName(std::uint16_t macKeyCode) {
  const auto found = std::ranges::find(kKeyPlaces, macKeyCode, &KeyPlace::macKeyCode);
  if (found == kKeyPlaces.end()) return std::nullopt;
  return found->xkbName;
}

std::optional<std::uint16_t> evdevCode(std::uint16_t macKeyCode) {
  const auto found = std::ranges::find(kKeyPlaces, macKeyCode, &KeyPlace::macKeyCode);
  if (found == kKeyPlaces.end()) return std::nullopt;
  return found->evdevCode;
}

std::optional<std::uint16_t> macKeyCode(std::string_view xkbKeyName) {
  const auto found = std::ranges::find(kKeyPlaces, xkbKeyName, &KeyPlace::xkbName);
  if (found == kKeyPlaces.end()) return std::nullopt;
  return found->macKeyCode;
}

}  // namespace vlm::platform::input
