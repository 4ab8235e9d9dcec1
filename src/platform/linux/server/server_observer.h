// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Observes a session with a sound server. Called on the session's thread, under its lock.
class ServerObserver {
public:
    virtual ~ServerObserver() = default;
    /// The connection is about to close; objects created on it must be destroyed now.
    virtual void disconnecting() = 0;
    /// The server's objects, or whether there is a server, may have changed. One call can cover many changes.
    virtual void graphChanged() = 0;
};

}  // namespace sordin
