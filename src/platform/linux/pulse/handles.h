// SPDX-License-Identifier: MIT
#pragma once

#include "support/deleter.h"

#include <memory>
#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <pulse/thread-mainloop.h>

namespace sordin::pulse {

using LoopPointer = std::unique_ptr<pa_threaded_mainloop, Deleter<pa_threaded_mainloop_free>>;
using ContextPointer = std::unique_ptr<pa_context, Deleter<pa_context_unref>>;
using StreamPointer = std::unique_ptr<pa_stream, Deleter<pa_stream_unref>>;
using PropertiesPointer = std::unique_ptr<pa_proplist, Deleter<pa_proplist_free>>;

/// Releases the handle of an operation, which continues. Returns false if the operation could not be sent.
inline bool sent(pa_operation* operation) {
    if (operation != nullptr) {
        pa_operation_unref(operation);
    }
    return operation != nullptr;
}

/// Holds the loop's lock, which guards the objects of the connection. Code under the lock must not block, and
/// calls to code outside the folders of the sound servers must only post or set flags.
class LoopLock {
public:
    explicit LoopLock(pa_threaded_mainloop* loop) : loop_(loop) { pa_threaded_mainloop_lock(loop_); }
    ~LoopLock() { pa_threaded_mainloop_unlock(loop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pa_threaded_mainloop* loop_;
};

}  // namespace sordin::pulse
