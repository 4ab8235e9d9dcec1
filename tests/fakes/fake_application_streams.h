// SPDX-License-Identifier: MIT
#pragma once

#include "platform/application_streams.h"

namespace sordin {

/// Streams that the test controls.
struct FakeApplicationStreams final : ApplicationStreams {
    Handler changed;
    LeftOut leftOut;

    void onChange(Handler handler) override { changed = std::move(handler); }
    void leaveOut(LeftOut what) override { leftOut = std::move(what); }
};

}  // namespace sordin
