// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <set>

namespace sordin {

/// Things that exist as a plan says, by key. One that broke is made again, five times at most while it is
/// wanted: what cannot be had is not asked for for ever. A thing has broken().
template <class Key, class Thing>
class PlannedSet {
public:
    /// Ends what is not planned, and makes what is missing by make(key), which answers a unique pointer.
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

    /// Ends all of them, to be made again.
    void clear() { things_.clear(); }

private:
    static constexpr int mostFailures = 5;
    std::map<Key, std::unique_ptr<Thing>> things_;
    std::map<Key, int> failures_;  // of things that were wanted all the time
};

}  // namespace sordin
