#pragma once

#include <string>

#include "platform/foundation.h"
#include "platform/linux/glib/deadline.h"
#include "platform/linux/glib/handles.h"
#include "platform/linux/glib/own_context.h"
#include "platform/linux/glib/session_bus.h"
#include "platform/linux/secrets/unprompted_service.h"
#include "platform/security.h"

namespace vlm::platform::secrets {

// One conversation with the Secret Service, which ends by the deadline whatever the service does.
// The service takes each for a new client and never gets to ask a person: a keyring that is locked
// is not even searched, since some services ask for its password when it is.
class Conversation {
 public:
  explicit Conversation(const glib::Deadline& deadline);

  // Why nothing more can be asked; errSecSuccess while all is well.
  OSStatus status() const { return status_; }

  // The items at the address that can be read. Where there are none but something is locked, the
  // status becomes errSecInteractionNotAllowed.
  glib::ObjectList find(const std::string& service, const std::string& account, bool withSecrets);
  // The new item; null and a status when there is none.
  glib::Object<SecretItem> create(const std::string& service, const std::string& account,
                                  SecretValue* secret);
  OSStatus remove(SecretItem* item);

 private:
  OSStatus fail(OSStatus reason) { return status_ = reason; }
  // What the last error means.
  OSStatus fail();
  void search(SecretCollection* keyring, GHashTable* attributes, bool withSecrets,
              glib::ObjectList& found);

  const glib::Deadline& deadline_;
  const glib::OwnContext context_;
  glib::Error error_;
  glib::OwnSessionBus bus_;
  glib::Object<SecretService> service_;
  OSStatus status_ = errSecSuccess;
  bool isAnyLocked_ = false;
};

}  // namespace vlm::platform::secrets
