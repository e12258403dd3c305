#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <thread>

#include "command.h"
#include "desktop_target.h"
#include "failure.h"
#include "library.h"

namespace vlm::tools {
namespace {

constexpr std::uint64_t kShift = 0x20000;

// What the keys of a US keyboard write, by macOS virtual key code, without and with shift.
struct Key {
  std::uint16_t code;
  char plain;
  char shifted;
};
constexpr std::array kKeys{
    Key{0, 'a', 'A'},  Key{1, 's', 'S'},   Key{2, 'd', 'D'},   Key{3, 'f', 'F'},
    Key{4, 'h', 'H'},  Key{5, 'g', 'G'},   Key{6, 'z', 'Z'},   Key{7, 'x', 'X'},
    Key{8, 'c', 'C'},  Key{9, 'v', 'V'},   Key{11, 'b', 'B'},  Key{12, 'q', 'Q'},
    Key{13, 'w', 'W'}, Key{14, 'e', 'E'},  Key{15, 'r', 'R'},  Key{16, 'y', 'Y'},
    Key{17, 't', 'T'}, Key{18, '1', '!'},  Key{19, '2', '@'},  Key{20, '3', '#'},
    Key{21, '4', '$'}, Key{22, '6', '^'},  Key{23, '5', '%'},  Key{24, '=', '+'},
    Key{25, '9', '('}, Key{26, '7', '&'},  Key{27, '-', '_'},  Key{28, '8', '*'},
    Key{29, '0', ')'}, Key{30, ']', '}'},  Key{31, 'o', 'O'},  Key{32, 'u', 'U'},
    Key{33, '[', '{'}, Key{34, 'i', 'I'},  Key{35, 'p', 'P'},  Key{36, '\n', '\r'},
    Key{37, 'l', 'L'}, Key{38, 'j', 'J'},  Key{39, '\'', '"'}, Key{40, 'k', 'K'},
    Key{41, ';', ':'}, Key{42, '\\', '|'}, Key{43, ',', '<'},  Key{44, '/', '?'},
    Key{45, 'n', 'N'}, Key{46, 'm', 'M'},  Key{47, '.', '>'},  Key{48, '\t', '\t'},
    Key{49, ' ', ' '}, Key{50, '`', '~'},
};

struct Press {
  std::uint16_t code;
  std::uint64_t flags;
};

Press pressFor(char character) {
  for (const auto& key : kKeys) {
    if (key.plain == character) return {key.code, 0};
    if (key.shifted == character) return {key.code, kShift};
  }
  throw Failure("only what a US keyboard writes can be typed");
}

struct TypeOptions {
  std::string text;
  int interval = 0;
};

int type(const TypeOptions& options) {
  for (const char character : options.text) pressFor(character);  // all or nothing
  requireInput();
  for (const char character : options.text) {
    const auto [code, flags] = pressFor(character);
    vlm_input_key(code, true, flags);
    vlm_input_key(code, false, flags);
    std::this_thread::sleep_for(std::chrono::milliseconds(options.interval));
  }
  return 0;
}

struct PointerOptions {
  std::optional<std::array<double, 2>> move, warp, scroll;
  std::string click;
  bool json = false;
};

// Where the pointer is, or where it was just put when the desktop does not say.
bool placeOf(const PointerOptions& options, double& x, double& y) {
  if (vlm_input_cursor_pos(&x, &y)) return true;
  const auto& put = options.move ? options.move : options.warp;
  if (!put || !vlm_perm_accessibility(false)) return false;
  x = (*put)[0];
  y = (*put)[1];
  return true;
}

void click(const PointerOptions& options) {
  const auto& button = options.click;
  const std::int32_t number = button == "right"                          ? 1
                              : button == "centre" || button == "middle" ? 2
                                                                         : 0;
  double x = 0;
  double y = 0;
  if (!placeOf(options, x, y)) return;
  vlm_input_mouse_button(number, true, x, y);
  vlm_input_mouse_button(number, false, x, y);
}

int pointer(const PointerOptions& options) {
  // A desktop that wants to ask somebody does so now.
  if (options.warp || options.move || options.scroll || !options.click.empty()) {
    vlm_perm_accessibility(true);
  }
  if (options.warp) vlm_input_warp_cursor((*options.warp)[0], (*options.warp)[1]);
  if (options.move) vlm_input_mouse_move((*options.move)[0], (*options.move)[1]);
  if (!options.click.empty()) click(options);
  if (options.scroll) vlm_input_mouse_wheel((*options.scroll)[0], (*options.scroll)[1]);
  double x = 0;
  double y = 0;
  if (!placeOf(options, x, y)) throw Failure("the place of the pointer is not known");
  if (options.json) {
    std::printf("%s\n", nlohmann::json{{"x", x}, {"y", y}}.dump().c_str());
  } else {
    std::printf("%g %g\n", x, y);
  }
  return 0;
}

}  // namespace

void addType(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<TypeOptions>();
  auto& command = addCommand(program, chosen, "type",
                             "Press the keys that write a text on a US keyboard", options, type);
  command.add_option("text", options->text, "The text")->required();
  command.add_option("--interval", options->interval, "Pause after each key")->type_name("MS");
}

void addPointer(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<PointerOptions>();
  auto& command = addCommand(program, chosen, "pointer",
                             "Move, click or scroll, in this order, and print where the pointer is",
                             options, pointer);
  command.add_option("--warp", options->warp, "Put it somewhere without an event")
      ->type_name("X Y");
  command.add_option("--move", options->move, "Move it as the mouse does")->type_name("X Y");
  command.add_option("--click", options->click, "Click there")
      ->check(CLI::IsMember({"left", "right", "middle", "centre"}));
  command.add_option("--scroll", options->scroll, "Pixels to the left and up")->type_name("H V");
  command.add_flag("--json", options->json, "Print a JSON object");
}

}  // namespace vlm::tools
