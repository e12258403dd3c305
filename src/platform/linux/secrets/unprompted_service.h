#pragma once

// libsecret calls the calls below stable only to those who say that they know what they do.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include "platform/linux/glib/handles.h"

namespace vlm::platform::secrets {

// The Secret Service over a connection of its own, so that the service takes the caller for a new
// client, as the next process will be. Where the service wants a person to be asked, by way of a
// prompt, the operation fails with SECRET_ERROR_IS_LOCKED instead. Null and an error when there is
// no service.
glib::Object<SecretService> openUnpromptedService(GDBusConnection& bus, GCancellable* cancellable,
                                                  GError** error);

}  // namespace vlm::platform::secrets
