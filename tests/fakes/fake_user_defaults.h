// SPDX-License-Identifier: MIT
#pragma once

#include "platform/user_defaults.h"

#include <functional>
#include <map>

namespace sordin {

/// User defaults in memory.
class FakeUserDefaults final : public UserDefaults {
public:
    std::map<std::string, Value> values;
    std::function<void()> onApplied = [] {};

    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override {
        return typed<bool>(key);
    }
    [[nodiscard]] std::optional<double> number(const std::string& key) const override {
        return typed<double>(key);
    }
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override {
        return typed<std::string>(key);
    }
    [[nodiscard]] std::optional<std::vector<std::string>> texts(const std::string& key) const override {
        return typed<std::vector<std::string>>(key);
    }

    void apply(const Changes& changes) override {
        for (const auto& [key, value] : changes) {
            if (value) {
                values[key] = *value;
            } else {
                values.erase(key);
            }
        }
        onApplied();
    }

private:
    template <class Type>
    [[nodiscard]] std::optional<Type> typed(const std::string& key) const {
        const auto found = values.find(key);
        const auto* value = found == values.end() ? nullptr : std::get_if<Type>(&found->second);
        return value != nullptr ? std::optional(*value) : std::nullopt;
    }
};

}  // namespace sordin
