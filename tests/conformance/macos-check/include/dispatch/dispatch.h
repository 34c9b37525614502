#pragma once

#include <stddef.h>
#include <stdint.h>

#define NSEC_PER_SEC 1000000000ull
#define NSEC_PER_MSEC 1000000ull
#define USEC_PER_SEC 1000000ull
#define NSEC_PER_USEC 1000ull

// An object converts to its base: by inheritance in C++, by an untyped pointer in C.
#ifdef __cplusplus
extern "C" {
struct dispatch_object_s {};
struct dispatch_queue_s : dispatch_object_s {};
struct dispatch_queue_attr_s : dispatch_object_s {};
struct dispatch_semaphore_s : dispatch_object_s {};
struct dispatch_source_s : dispatch_object_s {};
typedef struct dispatch_object_s* dispatch_object_t;
#else
struct dispatch_queue_s;
struct dispatch_queue_attr_s;
struct dispatch_semaphore_s;
struct dispatch_source_s;
typedef void* dispatch_object_t;
#endif
struct dispatch_source_type_s;

typedef struct dispatch_queue_s* dispatch_queue_t;
typedef struct dispatch_queue_attr_s* dispatch_queue_attr_t;
typedef struct dispatch_semaphore_s* dispatch_semaphore_t;
typedef struct dispatch_source_s* dispatch_source_t;
typedef const struct dispatch_source_type_s* dispatch_source_type_t;
typedef void (*dispatch_function_t)(void* context);
typedef void (^dispatch_block_t)(void);

void dispatch_retain(dispatch_object_t object);
void dispatch_release(dispatch_object_t object);
void dispatch_resume(dispatch_object_t object);
void dispatch_set_context(dispatch_object_t object, void* context);
void dispatch_set_finalizer_f(dispatch_object_t object, dispatch_function_t finalizer);

typedef uint64_t dispatch_time_t;
#define DISPATCH_TIME_NOW (0ull)
#define DISPATCH_TIME_FOREVER (~0ull)
dispatch_time_t dispatch_time(dispatch_time_t when, int64_t nanoseconds);

extern struct dispatch_queue_attr_s _dispatch_queue_attr_concurrent;
#define DISPATCH_QUEUE_SERIAL NULL
#define DISPATCH_QUEUE_CONCURRENT (&_dispatch_queue_attr_concurrent)
#define DISPATCH_QUEUE_PRIORITY_DEFAULT 0
#define DISPATCH_TARGET_QUEUE_DEFAULT NULL
dispatch_queue_t dispatch_get_main_queue(void);
dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags);
dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes);
/// From macOS 10.12.
dispatch_queue_t dispatch_queue_create_with_target(const char* label, dispatch_queue_attr_t attributes,
                                                   dispatch_queue_t target);
void dispatch_async(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_sync(dispatch_queue_t queue, dispatch_block_t block);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_after_f(dispatch_time_t when, dispatch_queue_t queue, void* context, dispatch_function_t work);

dispatch_semaphore_t dispatch_semaphore_create(intptr_t value);
/// 0 when signalled, else after the time.
intptr_t dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout);
intptr_t dispatch_semaphore_signal(dispatch_semaphore_t semaphore);

extern const struct dispatch_source_type_s _dispatch_source_type_timer;
#define DISPATCH_SOURCE_TYPE_TIMER (&_dispatch_source_type_timer)
dispatch_source_t dispatch_source_create(dispatch_source_type_t type, uintptr_t handle, uintptr_t mask,
                                         dispatch_queue_t queue);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, uint64_t interval,
                               uint64_t leeway);
void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler);
void dispatch_source_set_cancel_handler_f(dispatch_source_t source, dispatch_function_t handler);
void dispatch_source_cancel(dispatch_source_t source);

#ifdef __cplusplus
}
#endif
