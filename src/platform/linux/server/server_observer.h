// SPDX-License-Identifier: MIT
#pragma once

namespace sordin {

/// Is told what becomes of a session with a sound server, on the session's thread, under its lock.
class ServerObserver {
public:
    virtual ~ServerObserver() = default;
    /// The connection is about to go; what was made with it has to go now.
    virtual void disconnecting() = 0;
    /// Something may have changed, perhaps many things at once: also whether there is a server.
    virtual void graphChanged() = 0;
};

}  // namespace sordin
