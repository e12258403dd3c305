#include "platform/linux/secrets/unprompted_service.h"

namespace vlm::platform::secrets {
namespace {

// A prompt that is not dismissed would wait in the service for ever.
void dismiss(SecretPrompt* prompt) {
  g_dbus_proxy_call(G_DBUS_PROXY(prompt), "Dismiss", nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                    nullptr, nullptr);
}

GVariant* refuse(SecretService*, SecretPrompt* prompt, GCancellable*, const GVariantType*,
                 GError** error) {
  dismiss(prompt);
  g_set_error_literal(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED, "a person would be asked");
  return nullptr;
}

void startRefusing(SecretService* service, SecretPrompt* prompt, const GVariantType*, GCancellable*,
                   GAsyncReadyCallback callback, gpointer user) {
  dismiss(prompt);
  const glib::Object<GTask> task(g_task_new(service, nullptr, callback, user));
  g_task_return_new_error(task.get(), SECRET_ERROR, SECRET_ERROR_IS_LOCKED,
                          "a person would be asked");
}

GVariant* finishRefusing(SecretService*, GAsyncResult* result, GError** error) {
  return static_cast<GVariant*>(g_task_propagate_pointer(G_TASK(result), error));
}

// libsecret asks for the process's shared connection, which GIO refuses to mix with one that is
// given. This is the one place where that can be taken back.
GObject* construct(GType type, guint count, GObjectConstructParam* properties) {
  auto* libsecret = G_OBJECT_CLASS(g_type_class_peek(SECRET_TYPE_SERVICE));
  GObject* object = libsecret->constructor(type, count, properties);
  g_object_set(object, "g-bus-type", G_BUS_TYPE_NONE, nullptr);
  return object;
}

void initialiseClass(gpointer type, gpointer) {
  G_OBJECT_CLASS(type)->constructor = construct;
  auto* service = SECRET_SERVICE_CLASS(type);
  service->prompt_sync = refuse;
  service->prompt_async = startRefusing;
  service->prompt_finish = finishRefusing;
}

GType unpromptedServiceType() {
  static const GType type = g_type_register_static_simple(
      SECRET_TYPE_SERVICE, "VlmUnpromptedService", sizeof(SecretServiceClass), initialiseClass,
      sizeof(SecretService), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

// A service that has just ended has no list of keyrings. libsecret takes that for a fault of the
// program and says so on standard error.
bool loadKeyrings(SecretService* service, GCancellable* cancellable, GError** error) {
  const std::unique_ptr<GVariant, decltype(&g_variant_unref)> listed(
      g_dbus_proxy_get_cached_property(G_DBUS_PROXY(service), "Collections"), g_variant_unref);
  if (listed) return secret_service_load_collections_sync(service, cancellable, error) != FALSE;
  g_set_error_literal(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "the service has ended");
  return false;
}

}  // namespace

glib::Object<SecretService> openUnpromptedService(GDBusConnection& bus, GCancellable* cancellable,
                                                  GError** error) {
  glib::Object<SecretService> service(static_cast<SecretService*>(
      g_initable_new(unpromptedServiceType(), cancellable, error, "g-connection", &bus, "flags",
                     SECRET_SERVICE_OPEN_SESSION, nullptr)));
  if (service && !loadKeyrings(service.get(), cancellable, error)) service = nullptr;
  return service;
}

}  // namespace vlm::platform::secrets
