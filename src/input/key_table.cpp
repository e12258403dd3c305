#include "input/key_table.h"

#include <array>
#include <cstddef>

namespace vlm::input {
namespace {

// Codes of Apple's keyboards are below this.
constexpr std::size_t kKeyCodes = 128;

struct Row {
  std::uint8_t macKeyCode;
  std::uint8_t windowsVirtualKey;
};

// The keypad and the punctuation keys are left out on purpose: hosts know them by Apple's codes.
constexpr std::array kRows{
    Row{0x00, 0x41},  // A
    Row{0x01, 0x53},  // S
    Row{0x02, 0x44},  // D
    Row{0x03, 0x46},  // F
    Row{0x04, 0x48},  // H
    Row{0x05, 0x47},  // G
    Row{0x06, 0x5A},  // Z
    Row{0x07, 0x58},  // X
    Row{0x08, 0x43},  // C
    Row{0x09, 0x56},  // V
    Row{0x0B, 0x42},  // B
    Row{0x0C, 0x51},  // Q
    Row{0x0D, 0x57},  // W
    Row{0x0E, 0x45},  // E
    Row{0x0F, 0x52},  // R
    Row{0x10, 0x59},  // Y
    Row{0x11, 0x54},  // T
    Row{0x1F, 0x4F},  // O
    Row{0x20, 0x55},  // U
    Row{0x22, 0x49},  // I
    Row{0x23, 0x50},  // P
    Row{0x25, 0x4C},  // L
    Row{0x26, 0x4A},  // J
    Row{0x28, 0x4B},  // K
    Row{0x2D, 0x4E},  // N
    Row{0x2E, 0x4D},  // M
    Row{0x12, 0x31},  // 1
    Row{0x13, 0x32},  // 2
    Row{0x14, 0x33},  // 3
    Row{0x15, 0x34},  // 4
    Row{0x16, 0x36},  // 6
    Row{0x17, 0x35},  // 5
    Row{0x19, 0x39},  // 9
    Row{0x1A, 0x37},  // 7
    Row{0x1C, 0x38},  // 8
    Row{0x1D, 0x30},  // 0
    Row{0x7A, 0x70},  // F1
    Row{0x78, 0x71},  // F2
    Row{0x63, 0x72},  // F3
    Row{0x76, 0x73},  // F4
    Row{0x60, 0x74},  // F5
    Row{0x61, 0x75},  // F6
    Row{0x62, 0x76},  // F7
    Row{0x64, 0x77},  // F8
    Row{0x65, 0x78},  // F9
    Row{0x6D, 0x79},  // F10
    Row{0x67, 0x7A},  // F11
    Row{0x6F, 0x7B},  // F12
    Row{0x69, 0x7C},  // F13
    Row{0x6B, 0x7D},  // F14
    Row{0x71, 0x7E},  // F15
    Row{0x7B, 0x25},  // Left arrow
    Row{0x7E, 0x26},  // Up arrow
    Row{0x7C, 0x27},  // Right arrow
    Row{0x7D, 0x28},  // Down arrow
    Row{0x72, 0x2D},  // Help / Insert
    Row{0x75, 0x2E},  // Forward delete
    Row{0x73, 0x24},  // Home
    Row{0x77, 0x23},  // End
    Row{0x74, 0x21},  // Page up
    Row{0x79, 0x22},  // Page down
    Row{0x31, 0x20},  // Space
    Row{0x24, 0x0D},  // Return
    Row{0x30, 0x09},  // Tab
    Row{0x35, 0x1B},  // Escape
    Row{0x33, 0x08},  // Delete (backspace)
};

// 0 means "not translated": no key has that virtual code.
constexpr std::array<std::uint8_t, kKeyCodes> byKeyCode() {
  std::array<std::uint8_t, kKeyCodes> table{};
  for (const auto& row : kRows) table[row.macKeyCode] = row.windowsVirtualKey;
  return table;
}

constexpr auto _vlmMacToVk = byKeyCode();

}  // namespace

std::int32_t vlmTranslateKey(std::uint16_t macKeyCode) {
  const auto virtualKey = macKeyCode < _vlmMacToVk.size() ? _vlmMacToVk[macKeyCode] : 0;
  return virtualKey != 0 ? virtualKey : macKeyCode;
}

}  // namespace vlm::input
