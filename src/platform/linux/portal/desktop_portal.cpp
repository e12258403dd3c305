#include "platform/linux/portal/desktop_portal.h"

#include <gio/gunixfdlist.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/linux/glib/deadline.h"
#include "platform/linux/glib/own_context.h"

namespace vlm::platform::portal {
namespace {

constexpr const char* kName = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
// The bus may have to start the portal, and that the desktop's part of it.
constexpr std::chrono::milliseconds kPatience{5000};
constexpr std::chrono::milliseconds kFarewell{1000};

// Waits for the signal that answers one request.
class Response {
 public:
  Response(GDBusConnection* bus, const std::string& path) : bus_(bus) {
    answered_ = g_dbus_connection_signal_subscribe(
        bus, kName, "org.freedesktop.portal.Request", "Response", path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NO_MATCH_RULE, &onResponse, this, nullptr);
    gone_ = g_dbus_connection_signal_subscribe(bus, "org.freedesktop.DBus", "org.freedesktop.DBus",
                                               "NameOwnerChanged", nullptr, kName,
                                               G_DBUS_SIGNAL_FLAGS_NONE, &onOwner, this, nullptr);
  }
  ~Response() {
    g_dbus_connection_signal_unsubscribe(bus_, answered_);
    g_dbus_connection_signal_unsubscribe(bus_, gone_);
  }
  Response(const Response&) = delete;
  Response& operator=(const Response&) = delete;

  Answer await(Patience patience) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + kPatience;
    auto* const context = g_main_context_get_thread_default();
    const Tick tick(context);
    while (!results_ && reason_.empty()) {
      if (g_dbus_connection_is_closed(bus_) != FALSE) reason_ = "the session bus was lost";
      if (patience == Patience::service && Clock::now() > end) {
        reason_ = "the desktop's portal does not answer";
      }
      if (reason_.empty()) g_main_context_iteration(context, TRUE);
    }
    return {std::move(results_), reason_, isRefused_};
  }

 private:
  // Lets the wait look around now and then.
  class Tick {
   public:
    explicit Tick(GMainContext* context) : source_(g_timeout_source_new(kMilliseconds)) {
      g_source_set_callback(
          source_, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
      g_source_attach(source_, context);
    }
    ~Tick() {
      g_source_destroy(source_);
      g_source_unref(source_);
    }
    Tick(const Tick&) = delete;
    Tick& operator=(const Tick&) = delete;

   private:
    static constexpr guint kMilliseconds = 250;
    GSource* const source_;
  };

  static void onResponse(GDBusConnection*, const char*, const char*, const char*, const char*,
                         GVariant* parameters, gpointer self) {
    auto& response = *static_cast<Response*>(self);
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})")) == FALSE) return;
    guint32 status = 0;
    GVariant* results = nullptr;
    g_variant_get(parameters, "(u@a{sv})", &status, &results);
    Variant owned(results);
    if (status == 0) {
      response.results_ = std::move(owned);
    } else {
      response.isRefused_ = status == 1;
      response.reason_ = status == 1 ? "the person refused" : "the desktop's portal failed";
    }
  }

  static void onOwner(GDBusConnection*, const char*, const char*, const char*, const char*,
                      GVariant* parameters, gpointer self) {
    const char* owner = "";
    g_variant_get(parameters, "(&s&s&s)", nullptr, nullptr, &owner);
    if (*owner == '\0') static_cast<Response*>(self)->reason_ = "the desktop's portal ended";
  }

  GDBusConnection* const bus_;
  guint answered_ = 0;
  guint gone_ = 0;
  Variant results_;
  std::string reason_;
  bool isRefused_ = false;
};

// Where the portal puts the request of a client with this name.
std::string requestPath(GDBusConnection* bus, const std::string& token) {
  std::string sender = g_dbus_connection_get_unique_name(bus) + 1;  // it begins with a colon
  std::ranges::replace(sender, '.', '_');
  return std::string(kPath) + "/request/" + sender + "/" + token;
}

// The tuple with the options behind its members.
GVariant* with(GVariant* arguments, Options& options) {
  const Variant tuple(g_variant_ref_sink(arguments));
  std::vector<GVariant*> members;
  const auto count = g_variant_n_children(tuple.get());
  for (gsize i = 0; i < count; ++i) members.push_back(g_variant_get_child_value(tuple.get(), i));
  members.push_back(options.take());
  auto* const all = g_variant_new_tuple(members.data(), members.size());
  members.pop_back();
  for (auto* member : members) g_variant_unref(member);
  return all;
}

}  // namespace

std::unique_ptr<DesktopPortal> DesktopPortal::reach() {
  const glib::OwnContext context;
  const glib::Deadline deadline(kPatience);
  auto bus = std::make_unique<glib::OwnSessionBus>(deadline.cancellable(), nullptr);
  if (!*bus) return nullptr;
  return std::unique_ptr<DesktopPortal>(new DesktopPortal(std::move(bus), deadline.cancellable()));
}

DesktopPortal::DesktopPortal(std::unique_ptr<glib::OwnSessionBus> bus, GCancellable* ending)
    : ending_(G_CANCELLABLE(g_object_ref(ending))), bus_(std::move(bus)) {}

// A bus that does not answer any more is left without a word.
DesktopPortal::~DesktopPortal() {
  const glib::OwnContext context;
  const glib::Deadline farewell(kFarewell);
  g_dbus_connection_close_sync(bus_->get(), farewell.cancellable(), nullptr);
  g_cancellable_cancel(ending_.get());
}

Variant DesktopPortal::callOn(const char* path, const char* interface, const char* method,
                              GVariant* arguments, GUnixFDList** descriptors) const {
  const glib::OwnContext context;
  return Variant(g_dbus_connection_call_with_unix_fd_list_sync(
      bus_->get(), kName, path, interface, method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE,
      static_cast<int>(kPatience.count()), nullptr, descriptors, nullptr, nullptr));
}

std::uint32_t DesktopPortal::property(const char* interface, const char* name) const {
  const auto answer = callOn(kPath, "org.freedesktop.DBus.Properties", "Get",
                             g_variant_new("(ss)", interface, name));
  if (!answer || g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("(v)")) == FALSE) return 0;
  GVariant* value = nullptr;
  g_variant_get(answer.get(), "(v)", &value);
  const Variant owned(value);
  const bool isNumber = g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) != FALSE;
  return isNumber ? g_variant_get_uint32(value) : 0;
}

std::string DesktopPortal::createSession(const char* interface) {
  Options options;
  options.set("session_handle_token", std::string("vlm"));
  const auto answer = request(interface, "CreateSession", g_variant_new_tuple(nullptr, 0), options);
  const char* session = "";
  if (answer) g_variant_lookup(answer.results.get(), "session_handle", "&s", &session);
  return g_variant_is_object_path(session) != FALSE ? session : "";
}

bool DesktopPortal::hasSession(const std::string& session) const {
  return callOn(session.c_str(), "org.freedesktop.DBus.Properties", "Get",
                g_variant_new("(ss)", "org.freedesktop.portal.Session", "version")) != nullptr;
}

void DesktopPortal::closeSession(const std::string& session) const {
  const glib::OwnContext context;
  const Variant answer(g_dbus_connection_call_sync(
      bus_->get(), kName, session.c_str(), "org.freedesktop.portal.Session", "Close", nullptr,
      nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(kFarewell.count()), nullptr,
      nullptr));
}

Answer DesktopPortal::request(const char* interface, const char* method, GVariant* arguments,
                              Options& options, Patience patience) {
  const glib::OwnContext context;
  const std::string token = "vlm" + std::to_string(++requests_);
  options.set("handle_token", token);
  // Heard of before it is asked for: the answer may come before that of the call.
  Response response(bus_->get(), requestPath(bus_->get(), token));
  if (!call(interface, method, with(arguments, options))) {
    return {nullptr, "the desktop's portal refused a call"};
  }
  return response.await(patience);
}

void DesktopPortal::tell(const char* interface, const char* method, GVariant* arguments) const {
  g_dbus_connection_call(bus_->get(), kName, kPath, interface, method, arguments, nullptr,
                         G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
}

bool DesktopPortal::call(const char* interface, const char* method, GVariant* arguments,
                         int* descriptor) const {
  GUnixFDList* received = nullptr;
  const auto answer = callOn(kPath, interface, method, arguments, &received);
  const glib::Object<GUnixFDList> descriptors(received);
  if (descriptor != nullptr) {
    *descriptor = descriptors && g_unix_fd_list_get_length(descriptors.get()) > 0
                      ? g_unix_fd_list_get(descriptors.get(), 0, nullptr)
                      : -1;
  }
  return answer != nullptr;
}

}  // namespace vlm::platform::portal
