#pragma once

#include <cstddef>
#include <cstdint>

// The operations of Grand Central Dispatch that the macOS side of the ports uses, without blocks.
// Dispatch.cpp answers them with threads and ends the process where the real ones do: a semaphore released
// with less than it was made with, a suspended source released, one resumption too many.

struct dispatch_object_s;
struct dispatch_queue_s;
struct dispatch_queue_attr_s;
struct dispatch_semaphore_s;
struct dispatch_source_s;
struct dispatch_source_type_s;

/// Any object.
struct dispatch_object_t {
    dispatch_object_t(dispatch_queue_s* queue);
    dispatch_object_t(dispatch_semaphore_s* semaphore);
    dispatch_object_t(dispatch_source_s* source);
    dispatch_object_s* object;
};

using dispatch_queue_t = dispatch_queue_s*;
using dispatch_queue_attr_t = const dispatch_queue_attr_s*;
using dispatch_semaphore_t = dispatch_semaphore_s*;
using dispatch_source_t = dispatch_source_s*;
using dispatch_source_type_t = const dispatch_source_type_s*;
using dispatch_function_t = void (*)(void* context);
using dispatch_time_t = std::uint64_t;

inline constexpr dispatch_time_t DISPATCH_TIME_NOW = 0;
inline constexpr dispatch_time_t DISPATCH_TIME_FOREVER = ~dispatch_time_t{0};
inline constexpr long DISPATCH_QUEUE_PRIORITY_DEFAULT = 0;
extern const dispatch_queue_attr_t DISPATCH_QUEUE_CONCURRENT;
extern const dispatch_source_type_t DISPATCH_SOURCE_TYPE_TIMER;

void dispatch_retain(dispatch_object_t object);
void dispatch_release(dispatch_object_t object);
void dispatch_resume(dispatch_object_t object);
void dispatch_set_context(dispatch_object_t object, void* context);
void dispatch_set_finalizer_f(dispatch_object_t object, dispatch_function_t finalizer);
dispatch_time_t dispatch_time(dispatch_time_t when, std::int64_t nanoseconds);

dispatch_queue_t dispatch_get_global_queue(long identifier, unsigned long flags);
dispatch_queue_t dispatch_queue_create_with_target(const char* label, dispatch_queue_attr_t attributes,
                                                   dispatch_queue_t target);
void dispatch_async_f(dispatch_queue_t queue, void* context, dispatch_function_t work);
void dispatch_sync_f(dispatch_queue_t queue, void* context, dispatch_function_t work);

dispatch_semaphore_t dispatch_semaphore_create(long value);
long dispatch_semaphore_wait(dispatch_semaphore_t semaphore, dispatch_time_t timeout);
long dispatch_semaphore_signal(dispatch_semaphore_t semaphore);

dispatch_source_t dispatch_source_create(dispatch_source_type_t type, unsigned long handle,
                                         unsigned long mask, dispatch_queue_t queue);
void dispatch_source_set_timer(dispatch_source_t source, dispatch_time_t start, std::uint64_t interval,
                               std::uint64_t leeway);
void dispatch_source_set_event_handler_f(dispatch_source_t source, dispatch_function_t handler);
void dispatch_source_set_cancel_handler_f(dispatch_source_t source, dispatch_function_t handler);
void dispatch_source_cancel(dispatch_source_t source);
