#include "platform/linux/x11/window_request.h"

#include <xcb/res.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

// By the part of their windows' numbers that all windows of a client share.
std::unordered_map<std::uint32_t, std::int32_t> processesOfClients(const Connection& connection,
                                                                   const WindowIds& windows) {
  std::vector<xcb_res_client_id_spec_t> wanted;
  wanted.reserve(windows.size());
  for (const auto window : windows) {
    wanted.push_back({window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
  }
  const auto asked = xcb_res_query_client_ids(
      connection.get(), static_cast<std::uint32_t>(wanted.size()), wanted.data());
  const Reply<xcb_res_query_client_ids_reply_t> reply(
      xcb_res_query_client_ids_reply(connection.get(), asked, nullptr));
  std::unordered_map<std::uint32_t, std::int32_t> processes;
  if (!reply) return processes;
  auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
  for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
    if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
        xcb_res_client_id_value_value_length(ids.data) > 0) {
      processes.emplace(ids.data->spec.client,
                        static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data)));
    }
  }
  return processes;
}

}  // namespace

WindowAtoms::WindowAtoms(const Connection& connection) {
  const auto atoms =
      internAtoms<8>(connection, {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST",
                                  "_NET_ACTIVE_WINDOW", "_NET_SUPPORTING_WM_CHECK", "_NET_WM_NAME",
                                  "_NET_WM_PID", "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN"});
  stacking = atoms[0];
  clients = atoms[1];
  active = atoms[2];
  manager = atoms[3];
  name = atoms[4];
  processId = atoms[5];
  state = atoms[6];
  hidden = atoms[7];
}

ProcessRequest::ProcessRequest(const Connection& connection, const WindowAtoms& atoms,
                               WindowIds windows)
    : connection_(connection), windows_(std::move(windows)) {
  own_.reserve(windows_.size());
  for (const auto window : windows_) own_.emplace_back(connection, window, atoms.processId);
}

std::unordered_map<xcb_window_t, std::int32_t> ProcessRequest::collect() {
  std::unordered_map<xcb_window_t, std::int32_t> processes;
  WindowIds silent;
  for (std::size_t i = 0; i < windows_.size(); ++i) {
    const auto values = own_[i].values();
    if (values.empty()) {
      silent.push_back(windows_[i]);
    } else {
      processes.emplace(windows_[i], static_cast<std::int32_t>(values.front()));
    }
  }
  if (silent.empty() || !supports(connection_, Extension::resources)) return processes;
  const auto clients = processesOfClients(connection_, silent);
  const std::uint32_t clientPart = ~connection_.setup().resource_id_mask;
  for (const auto window : silent) {
    const auto client = clients.find(window & clientPart);
    if (client != clients.end()) processes.emplace(window, client->second);
  }
  return processes;
}

WindowRequest::WindowRequest(const Connection& connection, const WindowAtoms& atoms,
                             xcb_window_t window, Details details)
    : connection_(connection),
      window_(window),
      attributes_(xcb_get_window_attributes(connection.get(), window)),
      geometry_(xcb_get_geometry(connection.get(), window)),
      place_(xcb_translate_coordinates(connection.get(), window, connection.screen().root, 0, 0)),
      state_(connection, window, atoms.state) {
  if (details == Details::frame) return;
  texts_.emplace(Texts{{connection, window, atoms.name},
                       {connection, window, XCB_ATOM_WM_NAME},
                       {connection, window, XCB_ATOM_WM_CLASS}});
}

std::optional<WindowRequest::Answer> WindowRequest::collect(const WindowAtoms& atoms) {
  auto* c = connection_.get();
  const Reply<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(c, attributes_, nullptr));
  const Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, geometry_, nullptr));
  const Reply<xcb_translate_coordinates_reply_t> place(
      xcb_translate_coordinates_reply(c, place_, nullptr));
  if (!attributes || !geometry || !place) return std::nullopt;
  if (attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) return std::nullopt;
  Answer answer;
  answer.bypassesManager = attributes->override_redirect != 0;
  Window& window = answer.window;
  window.id = window_;
  window.frame = {place->dst_x, place->dst_y, geometry->width, geometry->height};
  if (texts_) {
    window.title = texts_->name.text();
    if (!window.title) window.title = texts_->oldName.text();
    window.className = classIn(texts_->windowClass);
  }
  window.isOnScreen = attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                      std::ranges::count(state_.values(), atoms.hidden) == 0;
  return answer;
}

// WM_CLASS holds two texts, instance and class, each ended by a zero byte.
std::optional<std::string> WindowRequest::classIn(PropertyRequest& windowClass) {
  const auto both = windowClass.text();
  if (!both) return std::nullopt;
  const auto end = both->find('\0');
  if (end == std::string::npos) return std::nullopt;
  return std::string(both->c_str() + end + 1);
}

}  // namespace vlm::platform::x11
