/*
 * From the key codes of X to those of vlm_input_key(). This header needs no other: copy it.
 *
 * Both kinds of code name places on the keyboard, whatever the layout makes of them. The code of X
 * is what every desktop of today gives (evdev's numbers plus 8):
 *
 *   Xlib, XCB  XKeyEvent.keycode, xcb_key_press_event_t.detail
 *   GTK 3      GdkEventKey.hardware_keycode, under X11 and Wayland
 *   GTK 4      the keycode of GtkEventControllerKey's signals
 *   Qt         QKeyEvent::nativeScanCode(), under X11 and Wayland
 *   SDL, libinput, Linux itself: their evdev code plus 8
 *
 * A test compares the table with the library's own.
 */
#ifndef REMOTE_MAC_KEYS_H
#define REMOTE_MAC_KEYS_H

#include <stddef.h>
#include <stdint.h>

enum { kNoMacKey = 0xFFFF };

/* The macOS virtual key code at the place, or kNoMacKey. */
static inline uint16_t macKeyFromX(unsigned xKeyCode) {
  /* clang-format off */
  static const struct { uint8_t x, mac; } kKeys[] = {
    {9, 0x35}, {10, 0x12}, {11, 0x13}, {12, 0x14}, {13, 0x15}, {14, 0x17}, {15, 0x16}, {16, 0x1A},
    {17, 0x1C}, {18, 0x19}, {19, 0x1D}, {20, 0x1B}, {21, 0x18}, {22, 0x33}, {23, 0x30}, {24, 0x0C},
    {25, 0x0D}, {26, 0x0E}, {27, 0x0F}, {28, 0x11}, {29, 0x10}, {30, 0x20}, {31, 0x22}, {32, 0x1F},
    {33, 0x23}, {34, 0x21}, {35, 0x1E}, {36, 0x24}, {37, 0x3B}, {38, 0x00}, {39, 0x01}, {40, 0x02},
    {41, 0x03}, {42, 0x05}, {43, 0x04}, {44, 0x26}, {45, 0x28}, {46, 0x25}, {47, 0x29}, {48, 0x27},
    {49, 0x32}, {50, 0x38}, {51, 0x2A}, {52, 0x06}, {53, 0x07}, {54, 0x08}, {55, 0x09}, {56, 0x0B},
    {57, 0x2D}, {58, 0x2E}, {59, 0x2B}, {60, 0x2F}, {61, 0x2C}, {62, 0x3C}, {63, 0x43}, {64, 0x3A},
    {65, 0x31}, {66, 0x39}, {67, 0x7A}, {68, 0x78}, {69, 0x63}, {70, 0x76}, {71, 0x60}, {72, 0x61},
    {73, 0x62}, {74, 0x64}, {75, 0x65}, {76, 0x6D}, {77, 0x47}, {79, 0x59}, {80, 0x5B}, {81, 0x5C},
    {82, 0x4E}, {83, 0x56}, {84, 0x57}, {85, 0x58}, {86, 0x45}, {87, 0x53}, {88, 0x54}, {89, 0x55},
    {90, 0x52}, {91, 0x41}, {94, 0x0A}, {95, 0x67}, {96, 0x6F}, {97, 0x5E}, {104, 0x4C}, {105, 0x3E},
    {106, 0x4B}, {108, 0x3D}, {110, 0x73}, {111, 0x7E}, {112, 0x74}, {113, 0x7B}, {114, 0x7C}, {115, 0x77},
    {116, 0x7D}, {117, 0x79}, {118, 0x72}, {119, 0x75}, {121, 0x4A}, {122, 0x49}, {123, 0x48}, {125, 0x51},
    {129, 0x5F}, {130, 0x68}, {131, 0x66}, {132, 0x5D}, {133, 0x37}, {134, 0x36}, {135, 0x6E}, {191, 0x69},
    {192, 0x6B}, {193, 0x71}, {194, 0x6A}, {195, 0x40}, {196, 0x4F}, {197, 0x50}, {198, 0x5A},
  };
  /* clang-format on */
  for (size_t i = 0; i < sizeof kKeys / sizeof kKeys[0]; ++i) {
    if (kKeys[i].x == xKeyCode) return kKeys[i].mac;
  }
  return kNoMacKey;
}

#endif /* REMOTE_MAC_KEYS_H */
