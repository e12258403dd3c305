// The viewer's window: the picture in its shape, as large as fits, the shared side's pointer drawn
// above it, and what the person does with keyboard and pointer.
#pragma once

#include <unistd.h>

#include <array>
#include <set>
#include <variant>

#include "mac_keys.h"
#include "protocol.h"
#include "x.h"

namespace remote {

class ViewerWindow {
 public:
  using Done = std::variant<Pointer, Button, Wheel, Key>;  // by the person, on the shared screen
  struct Listener {
    virtual ~Listener() = default;
    virtual void onInput(const Done& done) = 0;
    virtual void onFocus() = 0;
    virtual void onClosed() = 0;
  };

  ViewerWindow(X& x, Listener& listener, const std::string& title, bool fullScreen)
      : x_(x), listener_(listener) {
    window_ = makeChild(x_.root(), kEvents, 1280, 720);
    picture_ = makeChild(window_, 0, 1, 1);
    cursor_ = makeChild(window_, 0, 1, 1);
    describe(title);
    // Clicks on the drawn pointer are meant for what is below it.
    const auto nothing = xcb_generate_id(x_.get());
    xcb_xfixes_create_region(x_.get(), nothing, 0, nullptr);
    xcb_xfixes_set_window_shape_region(x_.get(), cursor_, XCB_SHAPE_SK_INPUT, 0, 0, nothing);
    xcb_map_window(x_.get(), window_);
    if (fullScreen) toggleFullScreen();
    x_.addHandler([this](const xcb_generic_event_t& event) { handle(event); });
  }

  void place(xcb_window_t view) {
    xcb_reparent_window(x_.get(), view, picture_, 0, 0);
    xcb_map_window(x_.get(), view);
    xcb_map_window(x_.get(), picture_);
    x_.flush();
  }
  void setPictureSize(int width, int height) { arrange(pictureSize_ = {width, height}, size_); }
  // Where the screen takes no input, the pointers of both sides are seen.
  void setScreen(int width, int height, bool takesInput) {
    screen_ = {width, height};
    takesInput_ = takesInput;
    const xcb_cursor_t cursor = takesInput ? noCursor_ : xcb_cursor_t{XCB_NONE};
    xcb_change_window_attributes(x_.get(), picture_, XCB_CW_CURSOR, &cursor);
    x_.flush();
  }
  bool isVisible() const { return visible_; }
  // The person works on the shared screen.
  bool isUsed() const { return focused_ && takesInput_; }

  // Where the shared side has it. The person's own is drawn without waiting for that.
  void showCursorAt(int x, int y, bool visible) {
    shared_ = {x, y};
    sharedIsVisible_ = visible;
    if (Clock::now() - moved_ > kOwnFor || !inside_) drawCursor();
  }

  void setCursorShape(const CursorShape& shape) {
    const auto& [width, height, hotX, hotY, pixels] = shape;
    hot_ = {hotX, hotY};
    // X windows are there or not: what is more than half transparent is not.
    std::vector<xcb_rectangle_t> opaque;
    for (std::size_t i = 0; i < pixels.size() / 4; ++i) {
      const auto column = static_cast<std::int16_t>(i % width);
      const auto row = static_cast<std::int16_t>(i / width);
      if (pixels[4 * i + 3] >= 128) opaque.push_back({column, row, 1, 1});
    }
    const auto image = xcb_generate_id(x_.get());
    const auto context = xcb_generate_id(x_.get());
    const auto region = xcb_generate_id(x_.get());
    auto* c = x_.get();
    const auto depth = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root_depth;
    xcb_create_pixmap(c, depth, image, window_, width, height);
    xcb_create_gc(c, context, image, 0, nullptr);
    xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, image, context, width, height, 0, 0, 0, depth,
                  static_cast<u32>(pixels.size()), pixels.data());
    xcb_change_window_attributes(c, cursor_, XCB_CW_BACK_PIXMAP, &image);
    configure(cursor_, kSize, {width, height});
    xcb_xfixes_create_region(c, region, static_cast<u32>(opaque.size()), opaque.data());
    xcb_xfixes_set_window_shape_region(c, cursor_, XCB_SHAPE_SK_BOUNDING, 0, 0, region);
    xcb_xfixes_destroy_region(c, region);
    xcb_clear_area(c, 0, cursor_, 0, 0, 0, 0);
    xcb_free_gc(c, context);
    xcb_free_pixmap(c, image);
    drawCursor();
  }

 private:
  using Pair = std::pair<int, int>;

  static constexpr u32 kEvents =
      XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_VISIBILITY_CHANGE |
      XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
      XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
      XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_ENTER_WINDOW;
  // So long after the last move the pointer is the person's own.
  static constexpr auto kOwnFor = std::chrono::milliseconds(500);

  xcb_window_t makeChild(xcb_window_t parent, u32 events, u16 width, u16 height) {
    const auto made = xcb_generate_id(x_.get());
    const std::array<u32, 2> values{0, events};
    xcb_create_window(x_.get(), XCB_COPY_FROM_PARENT, made, parent, 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    return made;
  }

  void setProperty(std::string_view name, xcb_atom_t type, std::string_view text) {
    xcb_change_property(x_.get(), XCB_PROP_MODE_REPLACE, window_, x_.atom(name), type, 8,
                        static_cast<u32>(text.size()), text.data());
  }

  void describe(const std::string& title) {
    using namespace std::string_view_literals;
    setProperty("_NET_WM_NAME", x_.atom("UTF8_STRING"), title);
    setProperty("WM_NAME", XCB_ATOM_STRING, title);
    setProperty("WM_CLASS", XCB_ATOM_STRING, "remote-desktop\0Remote-desktop\0"sv);
    const auto pid = static_cast<u32>(getpid());
    xcb_change_property(x_.get(), XCB_PROP_MODE_REPLACE, window_, x_.atom("_NET_WM_PID"),
                        XCB_ATOM_CARDINAL, 32, 1, &pid);
    xcb_change_property(x_.get(), XCB_PROP_MODE_REPLACE, window_, x_.atom("WM_PROTOCOLS"),
                        XCB_ATOM_ATOM, 32, 1, &deleteWindow_);
  }

  xcb_cursor_t makeNoCursor() {
    const auto empty = xcb_generate_id(x_.get());
    const auto context = xcb_generate_id(x_.get());
    const auto cursor = xcb_generate_id(x_.get());
    const xcb_rectangle_t all{0, 0, 1, 1};
    xcb_create_pixmap(x_.get(), 1, empty, x_.root(), 1, 1);
    xcb_create_gc(x_.get(), context, empty, 0, nullptr);  // its foreground is 0
    xcb_poly_fill_rectangle(x_.get(), empty, context, 1, &all);
    xcb_create_cursor(x_.get(), cursor, empty, empty, 0, 0, 0, 0, 0, 0, 0, 0);
    return cursor;
  }

  void toggleFullScreen() {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = x_.atom("_NET_WM_STATE");
    message.data.data32[0] = 2;  // toggle
    message.data.data32[1] = x_.atom("_NET_WM_STATE_FULLSCREEN");
    xcb_send_event(x_.get(), 0, x_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    x_.flush();
  }

  static constexpr u16 kPlace = XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y;
  static constexpr u16 kSize = XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT;
  void configure(xcb_window_t window, u16 what, Pair to) {
    const std::array values{u32(to.first), u32(to.second)};
    xcb_configure_window(x_.get(), window, what, values.data());
  }

  void arrange(Pair picture, Pair space) {
    const double scale =
        std::min(double(space.first) / picture.first, double(space.second) / picture.second);
    shown_ = {std::max(1, int(picture.first * scale)), std::max(1, int(picture.second * scale))};
    corner_ = {(space.first - shown_.first) / 2, (space.second - shown_.second) / 2};
    configure(picture_, kPlace, corner_);
    configure(picture_, kSize, shown_);
    drawCursor();
    x_.flush();
  }

  void drawCursor() {
    const auto [x, y] = shared_;
    configure(cursor_, kPlace,
              {corner_.first + x * shown_.first / screen_.first - hot_.first,
               corner_.second + y * shown_.second / screen_.second - hot_.second});
    sharedIsVisible_ ? xcb_map_window(x_.get(), cursor_) : xcb_unmap_window(x_.get(), cursor_);
    x_.flush();
  }

  // From the window to the shared screen.
  bool toShared(int x, int y, Pair& place) const {
    place = {(x - corner_.first) * screen_.first / shown_.first,
             (y - corner_.second) * screen_.second / shown_.second};
    return x >= corner_.first && y >= corner_.second && place.first < screen_.first &&
           place.second < screen_.second;
  }

  void handle(const xcb_generic_event_t& event) {
    switch (event.response_type) {
      case XCB_CONFIGURE_NOTIFY: {
        const auto& change = as<xcb_configure_notify_event_t>(event);
        if (change.window == window_) arrange(pictureSize_, size_ = {change.width, change.height});
        return;
      }
      case XCB_VISIBILITY_NOTIFY:
        visible_ = as<xcb_visibility_notify_event_t>(event).state != XCB_VISIBILITY_FULLY_OBSCURED;
        return;
      case XCB_UNMAP_NOTIFY:
        if (as<xcb_unmap_notify_event_t>(event).window == window_) visible_ = false;
        return;
      case XCB_FOCUS_IN:
        focused_ = true;
        return listener_.onFocus();
      case XCB_FOCUS_OUT:
        focused_ = false;
        return releaseKeys();
      case XCB_LEAVE_NOTIFY:
        inside_ = false;
        return;
      case XCB_CLIENT_MESSAGE:
        if (as<xcb_client_message_event_t>(event).data.data32[0] == deleteWindow_) {
          listener_.onClosed();
        }
        return;
      case XCB_ENTER_NOTIFY:
      case XCB_MOTION_NOTIFY:
        return handleMotion(as<xcb_motion_notify_event_t>(event));
      case XCB_BUTTON_PRESS:
      case XCB_BUTTON_RELEASE:
        return handleButton(as<xcb_button_press_event_t>(event));
      case XCB_KEY_PRESS:
      case XCB_KEY_RELEASE:
        return handleKey(as<xcb_key_press_event_t>(event));
    }
  }

  void handleMotion(const xcb_motion_notify_event_t& event) {
    Pair place;
    inside_ = takesInput_ && toShared(event.event_x, event.event_y, place);
    if (!inside_) return;
    moved_ = Clock::now();
    shared_ = place;
    sharedIsVisible_ = true;
    drawCursor();
    listener_.onInput(Pointer{u16(place.first), u16(place.second)});
  }

  void handleButton(const xcb_button_press_event_t& event) {
    constexpr std::array<u8, 3> kButtons{0, 2, 1};  // X counts left, middle, right
    const bool down = event.response_type == XCB_BUTTON_PRESS;
    Pair place;
    const bool inside = toShared(event.event_x, event.event_y, place);
    place = {std::clamp(place.first, 0, screen_.first - 1),
             std::clamp(place.second, 0, screen_.second - 1)};
    if (down && !inside) return;
    if (event.detail >= 1 && event.detail <= 3) {
      const auto button = kButtons[event.detail - 1u];
      listener_.onInput(Button{button, u8(down), u16(place.first), u16(place.second)});
    } else if (down && event.detail >= 4 && event.detail <= 7) {
      const std::array kTurns{Wheel{0, 1}, Wheel{0, -1}, Wheel{1, 0}, Wheel{-1, 0}};
      listener_.onInput(kTurns[event.detail - 4u]);
    }
  }

  static u32 flagsOf(unsigned state) {
    constexpr std::array kFlags{
        std::pair{XCB_MOD_MASK_LOCK, 0x10000u},    std::pair{XCB_MOD_MASK_SHIFT, 0x20000u},
        std::pair{XCB_MOD_MASK_CONTROL, 0x40000u}, std::pair{XCB_MOD_MASK_1, 0x80000u},
        std::pair{XCB_MOD_MASK_5, 0x80000u},       std::pair{XCB_MOD_MASK_4, 0x100000u}};
    u32 flags = 0;
    for (const auto& [mask, flag] : kFlags) flags |= (state & mask) != 0 ? flag : 0;
    return flags;
  }

  void handleKey(const xcb_key_press_event_t& event) {
    constexpr u16 kReturn = 0x24;
    constexpr u16 kCapsLock = 0x39;  // goes along with each key
    constexpr unsigned kChord = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
    const bool down = event.response_type == XCB_KEY_PRESS;
    const auto code = macKeyFromX(event.detail);
    if (code == kNoMacKey || code == kCapsLock) return;
    if (code == kReturn && (event.state & kChord) == kChord) {
      if (down && !std::exchange(chordIsDown_, true)) toggleFullScreen();
      return;
    }
    chordIsDown_ = false;
    down ? void(held_.insert(code)) : void(held_.erase(code));
    listener_.onInput(Key{code, u8(down), flagsOf(event.state)});
  }

  void releaseKeys() {
    for (const u16 code : std::exchange(held_, {})) listener_.onInput(Key{code, u8{0}, 0u});
  }

  X& x_;
  Listener& listener_;
  const xcb_atom_t deleteWindow_ = x_.atom("WM_DELETE_WINDOW");
  const xcb_cursor_t noCursor_ = makeNoCursor();
  xcb_window_t window_ = 0, picture_ = 0, cursor_ = 0;
  Pair size_{1280, 720}, pictureSize_{1280, 720}, screen_{1280, 720};
  Pair corner_{0, 0}, shown_{1280, 720};  // of the picture in the window
  Pair shared_{0, 0}, hot_{0, 0};         // pointer on the shared screen; where its shape points
  bool sharedIsVisible_ = false, takesInput_ = false;
  bool visible_ = true, focused_ = false, inside_ = false, chordIsDown_ = false;
  Clock::time_point moved_{};
  std::set<u16> held_;
};

}  // namespace remote
