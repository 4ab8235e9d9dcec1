// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace sordin {

/// The user's settings by key. Any thread.
class UserDefaults {
public:
    using Value = std::variant<bool, double, std::string, std::vector<std::string>>;  // texts are UTF-8
    /// Keys with their new values; without a value, the key is removed.
    using Changes = std::vector<std::pair<std::string, std::optional<Value>>>;

    virtual ~UserDefaults() = default;

    /// Return the value of a key; none if it does not exist or has another type.
    [[nodiscard]] virtual std::optional<bool> boolean(const std::string& key) const = 0;
    [[nodiscard]] virtual std::optional<double> number(const std::string& key) const = 0;
    [[nodiscard]] virtual std::optional<std::string> text(const std::string& key) const = 0;
    [[nodiscard]] virtual std::optional<std::vector<std::string>> texts(const std::string& key) const = 0;

    /// Applies changes together, in one step. Readers see them after the return. A number that is not finite
    /// is ignored.
    virtual void apply(const Changes& changes) = 0;

    void set(const std::string& key, Value value) { apply({{key, std::move(value)}}); }
    void remove(const std::string& key) { apply({{key, std::nullopt}}); }
};

}  // namespace sordin
