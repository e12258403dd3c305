#include "platform/linux/secrets/conversation.h"

#include "platform/linux/glib/session_bus.h"
#include "platform/security.h"

namespace vlm::platform::secrets {
namespace {

// Leaves room for everything else within the second that a caller may have to wait.
constexpr std::chrono::milliseconds kPatience{800};

const SecretSchema& schema() {
  static const SecretSchema schema = {"io.velmora.Secret",
                                      SECRET_SCHEMA_NONE,
                                      {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                       {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                       {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                      0,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr,
                                      nullptr};
  return schema;
}

glib::Table attributes(const std::string& service, const std::string& account) {
  return glib::Table(secret_attributes_build(&schema(), "service", service.c_str(), "account",
                                             account.c_str(), nullptr));
}

bool isLocked(const GList& item) {
  return secret_item_get_locked(SECRET_ITEM(item.data)) != FALSE;
}

// Takes the locked items out of the list.
GList* unlocked(GList* items) {
  for (GList* each = items; each != nullptr;) {
    GList* const next = each->next;
    if (isLocked(*each)) {
      g_object_unref(each->data);
      items = g_list_delete_link(items, each);
    }
    each = next;
  }
  return items;
}

}  // namespace

Conversation::Conversation() : deadline_(kPatience), status_(errSecSuccess) {
  if (!glib::safeSessionBus(deadline_.cancellable(), error_.out())) {
    fail(errSecNotAvailable);
    return;
  }
  // Not the process's shared service: that one keeps talking to a daemon that is gone.
  service_.reset(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION,
                                          deadline_.cancellable(), error_.out()));
  if (!service_) fail(errSecNotAvailable);
}

glib::ObjectList Conversation::find(const std::string& service, const std::string& account,
                                    bool withSecrets) {
  if (status_ != errSecSuccess) return nullptr;
  const auto flags =
      SECRET_SEARCH_ALL | (withSecrets ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE);
  glib::ObjectList items(secret_service_search_sync(
      service_.get(), &schema(), attributes(service, account).get(),
      static_cast<SecretSearchFlags>(flags), deadline_.cancellable(), error_.out()));
  if (error_) fail(errSecNotAvailable);
  // One keyring that is locked must not hide what another holds.
  const bool isAny = items != nullptr;
  items.reset(unlocked(items.release()));
  if (isAny && !items) fail(errSecInteractionNotAllowed);
  return items;
}

OSStatus Conversation::create(const std::string& service, const std::string& account,
                              SecretValue* secret) {
  if (status_ != errSecSuccess) return status_;
  const glib::Object<SecretCollection> keyring(secret_collection_for_alias_sync(
      service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, deadline_.cancellable(),
      error_.out()));
  if (!keyring) return fail(errSecNotAvailable);
  if (secret_collection_get_locked(keyring.get())) return fail(errSecInteractionNotAllowed);
  const std::string label = service + " (" + account + ")";
  const glib::Object<SecretItem> item(secret_item_create_sync(
      keyring.get(), &schema(), attributes(service, account).get(), label.c_str(), secret,
      SECRET_ITEM_CREATE_REPLACE, deadline_.cancellable(), error_.out()));
  return item ? errSecSuccess : fail(errSecNotAvailable);
}

OSStatus Conversation::remove(SecretItem* item) {
  if (status_ != errSecSuccess) return status_;
  const bool removed =
      secret_item_delete_sync(item, deadline_.cancellable(), error_.out()) != FALSE;
  return removed ? errSecSuccess : fail(errSecNotAvailable);
}

}  // namespace vlm::platform::secrets
