#include "platform/linux/x11/window_list.h"

#include <xcb/res.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/properties.h"

namespace vlm::platform::x11 {
namespace {

using WindowIds = std::vector<xcb_window_t>;

struct Atoms {
  explicit Atoms(const Connection& connection) {
    std::array<xcb_atom_t, 7> atoms = internAtoms<7>(
        connection, {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST", "_NET_SUPPORTING_WM_CHECK",
                     "_NET_WM_NAME", "_NET_WM_PID", "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN"});
    stacking = atoms[0];
    clients = atoms[1];
    manager = atoms[2];
    name = atoms[3];
    processId = atoms[4];
    state = atoms[5];
    hidden = atoms[6];
  }
  xcb_atom_t stacking, clients, manager, name, processId, state, hidden;
};

// A window manager that died leaves its lists behind; its window, which names itself, is gone.
bool hasWindowManager(const Connection& connection, const Atoms& atoms) {
  const xcb_window_t root = connection.screen().root;
  const auto window = PropertyRequest(connection, root, atoms.manager).values();
  return window.size() == 1 &&
         PropertyRequest(connection, window[0], atoms.manager).values() == window;
}

// Back to front.
WindowIds managedWindows(const Connection& connection, const Atoms& atoms) {
  const xcb_window_t root = connection.screen().root;
  PropertyRequest stacking(connection, root, atoms.stacking);
  PropertyRequest clients(connection, root, atoms.clients);
  auto windows = stacking.values();
  return windows.empty() ? clients.values() : windows;
}

// Back to front.
WindowIds childrenOfRoot(const Connection& connection) {
  const auto asked = xcb_query_tree(connection.get(), connection.screen().root);
  const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection.get(), asked, nullptr));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

// For each window its ancestor directly below the root; windows that are gone have none.
std::unordered_map<xcb_window_t, xcb_window_t> topLevels(const Connection& connection,
                                                         const WindowIds& windows) {
  std::unordered_map<xcb_window_t, xcb_window_t> found;
  std::vector<std::pair<xcb_window_t, xcb_window_t>> open;  // window, ancestor so far
  for (const auto window : windows) open.emplace_back(window, window);
  while (!open.empty()) {
    std::vector<xcb_query_tree_cookie_t> asked;
    asked.reserve(open.size());
    for (const auto& each : open) asked.push_back(xcb_query_tree(connection.get(), each.second));
    auto level = std::exchange(open, {});
    for (std::size_t i = 0; i < level.size(); ++i) {
      const Reply<xcb_query_tree_reply_t> tree(
          xcb_query_tree_reply(connection.get(), asked[i], nullptr));
      if (!tree) continue;
      if (tree->parent == tree->root || tree->parent == XCB_NONE) {
        found.emplace(level[i]);
      } else {
        open.emplace_back(level[i].first, tree->parent);
      }
    }
  }
  return found;
}

// Everything asked about one window, underway until it is collected.
class WindowRequest {
 public:
  WindowRequest(const Connection& connection, const Atoms& atoms, xcb_window_t window,
                bool asksForClient)
      : connection_(connection),
        window_(window),
        attributes_(xcb_get_window_attributes(connection.get(), window)),
        geometry_(xcb_get_geometry(connection.get(), window)),
        place_(xcb_translate_coordinates(connection.get(), window, connection.screen().root, 0, 0)),
        name_(connection, window, atoms.name),
        oldName_(connection, window, XCB_ATOM_WM_NAME),
        class_(connection, window, XCB_ATOM_WM_CLASS),
        processId_(connection, window, atoms.processId),
        state_(connection, window, atoms.state) {
    if (!asksForClient) return;
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    client_ = xcb_res_query_client_ids(connection.get(), 1, &wanted);
  }

  struct Answer {
    Window window;
    bool bypassesManager = false;
  };
  // Nothing for a window that is gone or that can't be seen by its nature.
  std::optional<Answer> collect(const Atoms& atoms) {
    auto* c = connection_.get();
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(c, attributes_, nullptr));
    const Reply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(c, geometry_, nullptr));
    const Reply<xcb_translate_coordinates_reply_t> place(
        xcb_translate_coordinates_reply(c, place_, nullptr));
    const std::int32_t client = clientProcess();
    if (!attributes || !geometry || !place) return std::nullopt;
    if (attributes->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT) return std::nullopt;
    Answer answer;
    answer.bypassesManager = attributes->override_redirect != 0;
    Window& window = answer.window;
    window.id = window_;
    window.frame = {place->dst_x, place->dst_y, geometry->width, geometry->height};
    window.title = name_.text();
    if (!window.title) window.title = oldName_.text();
    window.className = className();
    const auto own = processId_.values();
    window.processId = own.empty() ? client : static_cast<std::int32_t>(own.front());
    window.isOnScreen = attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                        std::ranges::count(state_.values(), atoms.hidden) == 0;
    return answer;
  }

 private:
  // WM_CLASS holds two texts, instance and class, each ended by a zero byte.
  std::optional<std::string> className() {
    const auto both = class_.text();
    if (!both) return std::nullopt;
    const auto end = both->find('\0');
    if (end == std::string::npos) return std::nullopt;
    return std::string(both->c_str() + end + 1);
  }

  // What the server knows about the client, for one that does not tell its process itself.
  std::int32_t clientProcess() {
    if (!client_) return 0;
    const Reply<xcb_res_query_client_ids_reply_t> reply(
        xcb_res_query_client_ids_reply(connection_.get(), *client_, nullptr));
    if (!reply) return 0;
    auto ids = xcb_res_query_client_ids_ids_iterator(reply.get());
    for (; ids.rem > 0; xcb_res_client_id_value_next(&ids)) {
      if ((ids.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
          xcb_res_client_id_value_value_length(ids.data) > 0) {
        return static_cast<std::int32_t>(*xcb_res_client_id_value_value(ids.data));
      }
    }
    return 0;
  }

  const Connection& connection_;
  xcb_window_t window_;
  xcb_get_window_attributes_cookie_t attributes_;
  xcb_get_geometry_cookie_t geometry_;
  xcb_translate_coordinates_cookie_t place_;
  PropertyRequest name_;
  PropertyRequest oldName_;
  PropertyRequest class_;
  PropertyRequest processId_;
  PropertyRequest state_;
  std::optional<xcb_res_query_client_ids_cookie_t> client_;
};

// The windows to describe, back to front. Where top-level windows are wanted that are no clients
// of the window manager, clients stand where their frames stand.
WindowIds candidates(const Connection& connection, const WindowIds& managed, bool isManaged,
                     const std::unordered_map<xcb_window_t, xcb_window_t>& frames,
                     Listing listing) {
  if (isManaged && listing == Listing::managed) return managed;
  std::unordered_map<xcb_window_t, WindowIds> clients;
  for (const auto window : managed) {
    if (const auto frame = frames.find(window); frame != frames.end()) {
      clients[frame->second].push_back(window);
    }
  }
  WindowIds result;
  for (const auto child : childrenOfRoot(connection)) {
    const auto held = clients.find(child);
    if (held == clients.end()) {
      result.push_back(child);
    } else {
      result.insert(result.end(), held->second.begin(), held->second.end());
    }
  }
  return result;
}

}  // namespace

std::vector<Window> listWindows(const Connection& connection, Listing listing) {
  const Atoms atoms(connection);
  const bool isManaged = hasWindowManager(connection, atoms);
  const WindowIds managed = isManaged ? managedWindows(connection, atoms) : WindowIds{};
  const auto frames = topLevels(connection, managed);
  const std::unordered_set<xcb_window_t> clients(managed.begin(), managed.end());
  const bool asksForClient = supports(connection, Extension::resources);
  std::vector<WindowRequest> requests;
  for (const auto window : candidates(connection, managed, isManaged, frames, listing)) {
    requests.emplace_back(connection, atoms, window, asksForClient);
  }
  std::vector<Window> windows;
  for (auto& request : requests) {
    auto answer = request.collect(atoms);
    if (!answer) continue;
    auto& window = answer->window;
    const bool isClient = clients.contains(window.id);
    // Of the rest only what is shown counts, and past a window manager only what bypasses it: it
    // has helper windows of its own.
    if (!isClient && (!window.isOnScreen || (isManaged && !answer->bypassesManager))) continue;
    const auto frame = frames.find(window.id);
    window.topLevel = frame == frames.end() ? window.id : frame->second;
    windows.push_back(std::move(window));
  }
  std::ranges::reverse(windows);
  return windows;
}

}  // namespace vlm::platform::x11
