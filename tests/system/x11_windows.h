// SPDX-License-Identifier: MIT
#pragma once

#include "rig/child_process.h"

#include <QRect>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace sordin {

struct ShownWindow {
    std::string id;
    QRect place;  ///< without the frame of the window manager
};

/// The windows of an X server, from xdotool and xprop.
class X11Display {
public:
    /// Appends the errors of the tools to `log`. `environment` holds NAME=value for the tools, for a server
    /// other than that of the test.
    explicit X11Display(std::filesystem::path log, std::vector<std::string> environment = {})
        : log_(std::move(log)), environment_(std::move(environment)) {}

    /// Output of the command; empty if it fails.
    std::string run(const std::vector<std::string>& command) const {
        std::vector<std::string> all{"env"};
        all.insert(all.end(), environment_.begin(), environment_.end());
        all.insert(all.end(), command.begin(), command.end());
        return outputOf(all, log_).value_or("");
    }
    /// The visible windows of the program.
    [[nodiscard]] std::vector<ShownWindow> windows() const {
        std::vector<ShownWindow> all;
        std::istringstream ids(run({"xdotool", "search", "--onlyvisible", "--name", "^Sordin$"}));
        for (std::string id; ids >> id;) {
            std::map<std::string, int> value;
            std::istringstream geometry(run({"xdotool", "getwindowgeometry", "--shell", id}));
            for (std::string name, number; std::getline(geometry, name, '=') && geometry >> number;) {
                value[name] = std::stoi(number);
                geometry.ignore();
            }
            all.push_back({id, {value["X"], value["Y"], value["WIDTH"], value["HEIGHT"]}});
        }
        return all;
    }
    [[nodiscard]] bool isActive(const ShownWindow& window) const {
        return run({"xdotool", "getactivewindow"}) == window.id + "\n";
    }

private:
    std::filesystem::path log_;
    std::vector<std::string> environment_;
};

}  // namespace sordin
