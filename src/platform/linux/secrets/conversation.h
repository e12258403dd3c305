#pragma once

// libsecret calls the calls below stable only to those who say that they know what they do.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include <string>

#include "platform/foundation.h"
#include "platform/linux/glib/deadline.h"
#include "platform/linux/glib/handles.h"

namespace vlm::platform::secrets {

// One conversation with the Secret Service, short enough to end within a second whatever the
// service does. It never lets the service ask a person: a keyring that is locked stays so.
class Conversation {
 public:
  Conversation();

  // Why nothing more can be asked; errSecSuccess while all is well.
  OSStatus status() const { return status_; }

  // The items at the address that are not locked. Where all are, the status becomes
  // errSecInteractionNotAllowed.
  glib::ObjectList find(const std::string& service, const std::string& account, bool withSecrets);
  OSStatus create(const std::string& service, const std::string& account, SecretValue* secret);
  OSStatus remove(SecretItem* item);

 private:
  OSStatus fail(OSStatus reason) { return status_ = reason; }

  glib::Deadline deadline_;
  glib::Error error_;
  glib::Object<SecretService> service_;
  OSStatus status_;
};

}  // namespace vlm::platform::secrets
