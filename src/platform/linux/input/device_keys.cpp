#include "platform/linux/input/device_keys.h"

#include <xcb/xinput.h>

#include <string_view>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::input {
namespace {

KeySet keysDown(const x11::Connection& connection, std::uint8_t device) {
  const auto asked = xcb_input_query_device_state(connection.get(), device);
  const x11::Reply<xcb_input_query_device_state_reply_t> reply(
      xcb_input_query_device_state_reply(connection.get(), asked, nullptr));
  if (!reply) return {};
  for (auto part = xcb_input_query_device_state_classes_iterator(reply.get()); part.rem > 0;
       xcb_input_input_state_next(&part)) {
    if (part.data->class_id != XCB_INPUT_INPUT_CLASS_KEY) continue;
    return keySet(reinterpret_cast<const xcb_input_key_state_t*>(part.data)->keys);
  }
  return {};
}

// The server names XTEST's devices so: "Virtual core XTEST keyboard".
bool isOfTestExtension(const xcb_input_xi_device_info_t& device) {
  const std::string_view name(xcb_input_xi_device_info_name(&device), device.name_len);
  return name.find("XTEST") != name.npos;
}

}  // namespace

std::optional<DeviceKeys> deviceKeys(const x11::Connection& connection) {
  if (!supports(connection, x11::Extension::input)) return std::nullopt;
  const auto asked = xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL);
  const x11::Reply<xcb_input_xi_query_device_reply_t> reply(
      xcb_input_xi_query_device_reply(connection.get(), asked, nullptr));
  if (!reply) return std::nullopt;
  DeviceKeys keys;
  for (auto each = xcb_input_xi_query_device_infos_iterator(reply.get()); each.rem > 0;
       xcb_input_xi_device_info_next(&each)) {
    if (each.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) continue;
    const auto down = keysDown(connection, static_cast<std::uint8_t>(each.data->deviceid));
    (isOfTestExtension(*each.data) ? keys.posted : keys.hardware) |= down;
  }
  return keys;
}

}  // namespace vlm::platform::input
