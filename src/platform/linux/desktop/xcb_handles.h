// SPDX-License-Identifier: MIT
// Owning handles for xcb.
#pragma once

#include "support/deleter.h"

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace sordin {

struct XcbFree {
    // xcb allocates its replies with malloc.
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    void operator()(void* memory) const { std::free(memory); }
};
template <class Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

using XcbConnection = std::unique_ptr<xcb_connection_t, Deleter<xcb_disconnect>>;

}  // namespace sordin
