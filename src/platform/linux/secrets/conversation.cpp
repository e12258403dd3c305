#include "platform/linux/secrets/conversation.h"

namespace vlm::platform::secrets {
namespace {

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

}  // namespace

Conversation::Conversation(const glib::Deadline& deadline)
    : deadline_(deadline), bus_(deadline.cancellable(), error_.out()) {
  if (bus_) {
    service_ = openUnpromptedService(*bus_.get(), deadline_.cancellable(), error_.out());
  }
  if (!service_) fail(errSecNotAvailable);
}

OSStatus Conversation::fail() {
  return fail(error_.is(SECRET_ERROR, SECRET_ERROR_IS_LOCKED) ? errSecInteractionNotAllowed
                                                              : errSecNotAvailable);
}

glib::ObjectList Conversation::find(const std::string& service, const std::string& account,
                                    bool withSecrets) {
  glib::ObjectList found;
  if (status_ != errSecSuccess) return found;
  const auto wanted = attributes(service, account);
  const glib::ObjectList keyrings(secret_service_get_collections(service_.get()));
  for (GList* each = keyrings.get(); each != nullptr; each = each->next) {
    search(SECRET_COLLECTION(each->data), wanted.get(), withSecrets, found);
  }
  if (status_ == errSecSuccess && !found && isAnyLocked_) fail(errSecInteractionNotAllowed);
  return found;
}

// One keyring that is locked must not hide what another holds.
void Conversation::search(SecretCollection* keyring, GHashTable* attributes, bool withSecrets,
                          glib::ObjectList& found) {
  if (secret_collection_get_locked(keyring) != FALSE) {
    isAnyLocked_ = true;
    return;
  }
  const auto flags =
      SECRET_SEARCH_ALL | (withSecrets ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE);
  const glib::ObjectList items(secret_collection_search_sync(
      keyring, &schema(), attributes, static_cast<SecretSearchFlags>(flags),
      deadline_.cancellable(), error_.out()));
  if (error_) fail();
  for (GList* each = items.get(); each != nullptr; each = each->next) {
    if (secret_item_get_locked(SECRET_ITEM(each->data)) != FALSE) {
      isAnyLocked_ = true;
    } else {
      found.reset(g_list_append(found.release(), g_object_ref(each->data)));
    }
  }
}

glib::Object<SecretItem> Conversation::create(const std::string& service,
                                              const std::string& account, SecretValue* secret) {
  if (status_ != errSecSuccess) return nullptr;
  const glib::Object<SecretCollection> keyring(secret_collection_for_alias_sync(
      service_.get(), SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE, deadline_.cancellable(),
      error_.out()));
  if (!keyring) {
    fail(errSecNotAvailable);
    return nullptr;
  }
  if (secret_collection_get_locked(keyring.get()) != FALSE) {
    fail(errSecInteractionNotAllowed);
    return nullptr;
  }
  const std::string label = service + " (" + account + ")";
  glib::Object<SecretItem> item(secret_item_create_sync(
      keyring.get(), &schema(), attributes(service, account).get(), label.c_str(), secret,
      SECRET_ITEM_CREATE_REPLACE, deadline_.cancellable(), error_.out()));
  if (!item) fail();
  return item;
}

OSStatus Conversation::remove(SecretItem* item) {
  if (status_ != errSecSuccess) return status_;
  const bool removed =
      secret_item_delete_sync(item, deadline_.cancellable(), error_.out()) != FALSE;
  return removed ? errSecSuccess : fail();
}

}  // namespace vlm::platform::secrets
