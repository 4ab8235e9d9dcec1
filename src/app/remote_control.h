// SPDX-License-Identifier: MIT
#pragma once

#include "engine/sordin_engine.h"
#include "platform/linux/session/control_interface.h"
#include "ui/model/status_label.h"

#include <optional>

namespace sordin {

/// Has the engine driven over the bus, also where there is no display. Lives on the main thread.
class RemoteControl {
public:
    /// Both must outlive it.
    RemoteControl(SordinEngine& engine, ApplicationService& service);

private:
    [[nodiscard]] ControlInterface::State state() const;

    SordinEngine& engine_;
    StatusLabel label_;
    std::optional<ControlInterface> interface_;
};

}  // namespace sordin
