#include "platform/linux/x11/window_request.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/shadow.h"

namespace vlm::platform::x11 {

WindowAtoms::WindowAtoms(const Connection& connection) {
  const auto atoms = internAtoms<11>(
      connection, {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST", "_NET_ACTIVE_WINDOW",
                   "_NET_SUPPORTING_WM_CHECK", "_NET_WM_NAME", "_NET_WM_PID", "_NET_WM_STATE",
                   "_NET_WM_STATE_HIDDEN", "_GTK_FRAME_EXTENTS", "WM_STATE", kCompoundText});
  stacking = atoms[0];
  clients = atoms[1];
  active = atoms[2];
  manager = atoms[3];
  name = atoms[4];
  processId = atoms[5];
  state = atoms[6];
  hidden = atoms[7];
  shadow = atoms[8];
  mark = atoms[9];
}

ProcessRequest::ProcessRequest(const Connection& connection, const WindowAtoms& atoms,
                               WindowIds windows)
    : connection_(connection), pidProperty_(atoms.processId), windows_(std::move(windows)) {
  if (windows_.empty() || !supports(connection_, Extension::resources)) return;
  std::unordered_set<std::uint32_t> asked;
  std::vector<xcb_res_client_id_spec_t> wanted;
  for (const auto window : windows_) {
    if (!asked.insert(clientOf(window)).second) continue;
    wanted.push_back({window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID});
  }
  clients_ = xcb_res_query_client_ids(connection_.get(), static_cast<std::uint32_t>(wanted.size()),
                                      wanted.data());
}

// The part of a window's number that all windows of a client share.
std::uint32_t ProcessRequest::clientOf(xcb_window_t window) const {
  return window & ~connection_.setup().resource_id_mask;
}

std::unordered_map<std::uint32_t, std::int32_t> ProcessRequest::processesOfClients() {
  std::unordered_map<std::uint32_t, std::int32_t> processes;
  if (!clients_) return processes;
  const Reply<xcb_res_query_client_ids_reply_t> reply(
      xcb_res_query_client_ids_reply(connection_.get(), *clients_, nullptr));
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

std::unordered_map<xcb_window_t, std::int32_t> ProcessRequest::collect() {
  std::unordered_map<xcb_window_t, std::int32_t> processes;
  const auto clients = processesOfClients();
  std::vector<std::pair<xcb_window_t, PropertyRequest>> unknown;
  for (const auto window : windows_) {
    const auto client = clients.find(clientOf(window));
    if (client != clients.end()) {
      processes.emplace(window, client->second);
    } else {
      unknown.emplace_back(window, PropertyRequest(connection_, window, pidProperty_));
    }
  }
  for (auto& [window, request] : unknown) {
    const auto values = request.values();
    if (!values.empty()) processes.emplace(window, static_cast<std::int32_t>(values.front()));
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
      state_(connection, window, atoms.state),
      shadow_(connection, window, atoms.shadow) {
  if (details == Details::frame) return;
  texts_.emplace(Texts{{connection, window, atoms.name},
                       {connection, window, XCB_ATOM_WM_NAME},
                       {connection, window, XCB_ATOM_WM_CLASS},
                       {connection, window, XCB_ATOM_WM_TRANSIENT_FOR}});
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
  const Rectangle whole{place->dst_x, place->dst_y, geometry->width, geometry->height};
  window.frame = shadowIn(shadow_.values(), whole.size()).within(whole);
  if (texts_) {
    window.title = texts_->name.text();
    if (!window.title) window.title = texts_->oldName.text();
    window.className = classIn(texts_->windowClass);
    if (const auto owner = texts_->transientFor.values(); !owner.empty()) {
      window.transientFor = owner.front();
    }
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
