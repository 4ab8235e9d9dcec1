// SPDX-License-Identifier: MIT
#pragma once

#include "support/deleter.h"

#include <memory>
#include <pipewire/pipewire.h>

namespace sordin::pipewire {

/// An entry in an object's list of listeners, removed with this object. Not movable, because lists point to
/// it.
class Hook {
public:
    Hook() = default;
    ~Hook() { spa_hook_remove(&hook_); }
    Hook(const Hook&) = delete;
    Hook& operator=(const Hook&) = delete;

    [[nodiscard]] spa_hook* get() { return &hook_; }

private:
    spa_hook hook_{};
};

using LoopPointer = std::unique_ptr<pw_thread_loop, Deleter<pw_thread_loop_destroy>>;
using ContextPointer = std::unique_ptr<pw_context, Deleter<pw_context_destroy>>;
using CorePointer = std::unique_ptr<pw_core, Deleter<pw_core_disconnect>>;
using ProxyPointer = std::unique_ptr<pw_proxy, Deleter<pw_proxy_destroy>>;
using StreamPointer = std::unique_ptr<pw_stream, Deleter<pw_stream_destroy>>;
using PropertiesPointer = std::unique_ptr<pw_properties, Deleter<pw_properties_free>>;

/// Holds the loop's lock, which guards the objects of the connection. Code under the lock must not block, and
/// calls to code outside the folders of the sound servers must only post or set flags.
class LoopLock {
public:
    explicit LoopLock(pw_thread_loop* loop) : loop_(loop) { pw_thread_loop_lock(loop_); }
    ~LoopLock() { pw_thread_loop_unlock(loop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pw_thread_loop* loop_;
};

}  // namespace sordin::pipewire
