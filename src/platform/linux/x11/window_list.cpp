#include "platform/linux/x11/window_list.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/shadow.h"
#include "platform/linux/x11/window_request.h"

namespace vlm::platform::x11 {
namespace {

// Back to front.
WindowIds childrenOf(const Connection& connection, xcb_window_t window) {
  const auto asked = xcb_query_tree(connection.get(), window);
  const Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(connection.get(), asked, nullptr));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

// Adds the windows in and below this one that bear the mark by which every manager knows its
// clients, down to the depth of a frame.
void addMarked(const Connection& connection, const WindowAtoms& atoms, xcb_window_t window,
               int depth, WindowIds& clients) {
  constexpr std::uint32_t kWithdrawn = 0;
  PropertyRequest mark(connection, window, atoms.mark);
  if (const auto state = mark.values(); !state.empty()) {
    if (state.front() != kWithdrawn) clients.push_back(window);
  } else if (depth > 0) {
    for (const auto child : childrenOf(connection, window)) {
      addMarked(connection, atoms, child, depth - 1, clients);
    }
  }
}

// What the root says of a window manager and its windows. Whether that manager still lives is asked
// when this is made and answered by isManaged(), so that other questions can be underway meanwhile.
class Management {
 public:
  Management(const Connection& connection, const WindowAtoms& atoms) {
    const xcb_window_t root = connection.screen().root;
    PropertyRequest manager(connection, root, atoms.manager);
    PropertyRequest stacking(connection, root, atoms.stacking);
    PropertyRequest mapping(connection, root, atoms.clients);
    PropertyRequest activeClient(connection, root, atoms.active);
    manager_ = manager.values();
    if (manager_.size() != 1) return;
    check_.emplace(connection, manager_.front(), atoms.manager);
    clients = stacking.values();
    if (clients.empty()) clients = mapping.values();
    // Some keep no list, that of Xwayland in Weston among them.
    constexpr int kDeepestFrame = 3;
    if (clients.empty()) addMarked(connection, atoms, root, kDeepestFrame, clients);
    if (const auto named = activeClient.values(); !named.empty()) active = named.front();
  }

  // A window manager that died leaves its lists behind; its window, which names itself, is gone.
  bool isManaged() { return check_ && check_->values() == manager_; }

  WindowIds clients;  // back to front
  xcb_window_t active = XCB_NONE;

 private:
  WindowIds manager_;
  std::optional<PropertyRequest> check_;
};

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

std::int32_t processOf(const std::unordered_map<xcb_window_t, std::int32_t>& processes,
                       xcb_window_t window) {
  const auto process = processes.find(window);
  return process == processes.end() ? 0 : process->second;
}

std::vector<WindowRequest> ask(const Connection& connection, const WindowAtoms& atoms,
                               const WindowIds& windows, Details details) {
  std::vector<WindowRequest> requests;
  requests.reserve(windows.size());
  for (const auto window : windows) requests.emplace_back(connection, atoms, window, details);
  return requests;
}

// The windows in their order, without those that are gone. With a process only its windows are
// asked about further, which takes another round trip.
std::vector<WindowRequest::Answer> describe(const Connection& connection, const WindowAtoms& atoms,
                                            WindowIds windows, Details details,
                                            std::optional<std::int32_t> wanted = std::nullopt) {
  ProcessRequest processRequest(connection, atoms, windows);
  std::vector<WindowRequest> requests;
  if (!wanted) requests = ask(connection, atoms, windows, details);
  const auto processes = processRequest.collect();
  if (wanted) {
    std::erase_if(windows, [&](auto window) { return processOf(processes, window) != *wanted; });
    requests = ask(connection, atoms, windows, details);
  }
  std::vector<WindowRequest::Answer> answers;
  for (auto& request : requests) {
    auto answer = request.collect(atoms);
    if (!answer) continue;
    answer->window.processId = processOf(processes, answer->window.id);
    answers.push_back(std::move(*answer));
  }
  return answers;
}

// The places of top-level windows that are no clients of the window manager; clients have the
// places of their frames. Back to front.
WindowIds everyCandidate(const Connection& connection, const WindowIds& clients,
                         const std::unordered_map<xcb_window_t, xcb_window_t>& frames) {
  std::unordered_map<xcb_window_t, WindowIds> held;
  for (const auto window : clients) {
    if (const auto frame = frames.find(window); frame != frames.end()) {
      held[frame->second].push_back(window);
    }
  }
  WindowIds result;
  for (const auto child : childrenOf(connection, connection.screen().root)) {
    const auto inside = held.find(child);
    if (inside == held.end()) {
      result.push_back(child);
    } else {
      result.insert(result.end(), inside->second.begin(), inside->second.end());
    }
  }
  return result;
}

// None and "wherever the pointer is" are no windows.
xcb_window_t focusedTopLevel(const Connection& connection) {
  const auto asked = xcb_get_input_focus(connection.get());
  const Reply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection.get(), asked, nullptr));
  if (!reply || reply->focus <= XCB_INPUT_FOCUS_POINTER_ROOT) return XCB_NONE;
  return topLevelOf(connection, reply->focus);
}

// Front to back.
std::vector<Window> windowsIn(std::vector<WindowRequest::Answer> answers) {
  std::vector<Window> windows;
  windows.reserve(answers.size());
  for (auto& answer : answers) windows.push_back(std::move(answer.window));
  std::ranges::reverse(windows);
  return windows;
}

ManagedWindows listManaged(const Connection& connection, Details details,
                           std::optional<std::int32_t> wanted) {
  const WindowAtoms atoms(connection);
  Management management(connection, atoms);
  auto answers = describe(connection, atoms, management.clients, details, wanted);
  if (management.isManaged()) return {windowsIn(std::move(answers)), management.active};
  answers = describe(connection, atoms, childrenOf(connection, connection.screen().root), details,
                     wanted);
  std::erase_if(answers, [](const auto& answer) { return !answer.window.isOnScreen; });
  return {windowsIn(std::move(answers)), focusedTopLevel(connection)};
}

}  // namespace

std::vector<Window> listManagedWindows(const Connection& connection, Details details) {
  return listManaged(connection, details, std::nullopt).windows;
}

ManagedWindows listManagedWindowsOf(const Connection& connection, std::int32_t processId) {
  return listManaged(connection, Details::all, processId);
}

std::vector<StackedWindow> listAllWindows(const Connection& connection) {
  const WindowAtoms atoms(connection);
  Management management(connection, atoms);
  const bool isManaged = management.isManaged();
  const WindowIds managed = isManaged ? management.clients : WindowIds{};
  const auto frames = topLevels(connection, managed);
  const std::unordered_set<xcb_window_t> clients(managed.begin(), managed.end());
  const auto ids = everyCandidate(connection, managed, frames);
  std::vector<StackedWindow> windows;
  for (auto& [window, bypassesManager] : describe(connection, atoms, ids, Details::all)) {
    // Of what is no client only what is shown counts, and past a window manager only what bypasses
    // it: it has helper windows of its own.
    if (!clients.contains(window.id) && (!window.isOnScreen || (isManaged && !bypassesManager))) {
      continue;
    }
    const auto frame = frames.find(window.id);
    const auto topLevel = frame == frames.end() ? window.id : frame->second;
    windows.push_back({std::move(window), topLevel});
  }
  std::ranges::reverse(windows);
  return windows;
}

xcb_window_t activeWindow(const Connection& connection) {
  Management management(connection, WindowAtoms(connection));
  return management.isManaged() ? management.active : focusedTopLevel(connection);
}

std::optional<Rectangle> frameOf(const Connection& connection, xcb_window_t window) {
  auto* c = connection.get();
  const auto askedSize = xcb_get_geometry(c, window);
  const auto askedPlace = xcb_translate_coordinates(c, window, connection.screen().root, 0, 0);
  PropertyRequest shadow(connection, window, WindowAtoms(connection).shadow);
  const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(c, askedSize, nullptr));
  const Reply<xcb_translate_coordinates_reply_t> place(
      xcb_translate_coordinates_reply(c, askedPlace, nullptr));
  if (!size || !place) return std::nullopt;
  const Rectangle whole{place->dst_x, place->dst_y, size->width, size->height};
  return shadowIn(shadow.values(), whole.size()).within(whole);
}

xcb_window_t topLevelOf(const Connection& connection, xcb_window_t window) {
  const auto found = topLevels(connection, {window});
  return found.empty() ? XCB_NONE : found.begin()->second;
}

std::optional<Window> describeWindow(const Connection& connection, xcb_window_t window) {
  auto answers = describe(connection, WindowAtoms(connection), {window}, Details::all);
  if (answers.empty()) return std::nullopt;
  return std::move(answers.front().window);
}

}  // namespace vlm::platform::x11
