// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <set>

namespace sordin {

/// A set of objects that follows a plan, by key. An object whose broken() is true is created again, at most
/// five times while the plan contains its key, so that retries end. Thing needs broken().
template <class Key, class Thing>
class PlannedSet {
public:
    /// Destroys objects that the plan does not contain, and creates missing ones with make(key), which
    /// returns a unique_ptr.
    template <class Make>
    void follow(const std::set<Key>& plan, Make make) {
        for (auto thing = things_.begin(); thing != things_.end();) {
            if (plan.count(thing->first) > 0 && !thing->second->broken()) {
                ++thing;
                continue;
            }
            failures_[thing->first] += thing->second->broken() ? 1 : 0;
            thing = things_.erase(thing);
        }
        for (auto failure = failures_.begin(); failure != failures_.end();) {
            failure = plan.count(failure->first) > 0 ? std::next(failure) : failures_.erase(failure);
        }
        for (const Key& key : plan) {
            const auto failed = failures_.find(key);
            if (things_.count(key) == 0 && (failed == failures_.end() || failed->second < mostFailures)) {
                things_[key] = make(key);
            }
        }
    }

    /// Destroys all objects; the next follow() creates them again.
    void clear() { things_.clear(); }

private:
    static constexpr int mostFailures = 5;
    std::map<Key, std::unique_ptr<Thing>> things_;
    std::map<Key, int> failures_;  // of keys that stayed in the plan
};

}  // namespace sordin
