// As much of the queues as the library uses.
#pragma once
#include <stdint.h>
#ifdef __cplusplus
extern "C" {
#endif
typedef struct dispatch_object_s* dispatch_queue_t;
typedef struct dispatch_object_s* dispatch_semaphore_t;
typedef struct dispatch_object_s* dispatch_object_t;
typedef struct dispatch_queue_attr_s* dispatch_queue_attr_t;
typedef void (*dispatch_function_t)(void*);
typedef unsigned int qos_class_t;
enum {
  QOS_CLASS_USER_INTERACTIVE = 0x21,
  QOS_CLASS_USER_INITIATED = 0x19,
  QOS_CLASS_DEFAULT = 0x15
};
#define DISPATCH_QUEUE_SERIAL ((dispatch_queue_attr_t)0)
#define DISPATCH_TIME_FOREVER (~0ull)
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attributes,
                                                              qos_class_t qos, int relative);
dispatch_queue_t dispatch_get_main_queue(void);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_retain(dispatch_object_t object);
void dispatch_release(dispatch_object_t object);
dispatch_semaphore_t dispatch_semaphore_create(long value);
long dispatch_semaphore_wait(dispatch_semaphore_t semaphore, uint64_t timeout);
long dispatch_semaphore_signal(dispatch_semaphore_t semaphore);
#ifdef __cplusplus
}
#endif
