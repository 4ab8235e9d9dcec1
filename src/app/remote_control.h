// SPDX-License-Identifier: MIT
#pragma once

#include "engine/sordin_engine.h"
#include "platform/linux/session/control_interface.h"
#include "ui/model/status_label.h"

#include <optional>

namespace sordin {

/// Connects the engine to the D-Bus interface, also without a display. Main thread only.
class RemoteControl {
public:
    /// Both must outlive this object.
    RemoteControl(SordinEngine& engine, ApplicationService& service);

private:
    [[nodiscard]] ControlInterface::State state() const;

    SordinEngine& engine_;
    StatusLabel label_;
    std::optional<ControlInterface> interface_;
};

}  // namespace sordin
