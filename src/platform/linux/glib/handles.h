#pragma once

#include <gio/gio.h>

#include <memory>

// One owner for each kind of thing that GLib hands out.
namespace vlm::platform::glib {

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T>
using Object = std::unique_ptr<T, Unref>;

struct UnrefTable {
  void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Table = std::unique_ptr<GHashTable, UnrefTable>;

struct FreeObjects {
  void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using ObjectList = std::unique_ptr<GList, FreeObjects>;

// Receives the error of one call. An error's text may contain what it was about: it is never
// logged.
class Error {
 public:
  Error() = default;
  ~Error() { g_clear_error(&error_); }
  Error(const Error&) = delete;
  Error& operator=(const Error&) = delete;

  GError** out() {
    g_clear_error(&error_);
    return &error_;
  }
  explicit operator bool() const { return error_ != nullptr; }
  bool is(GQuark domain, int code) const { return g_error_matches(error_, domain, code) != FALSE; }

 private:
  GError* error_ = nullptr;
};

}  // namespace vlm::platform::glib
