// SPDX-License-Identifier: MIT

// What the machine allows for changes: a loop over functions, without any way to change them meanwhile.

#include "../ChangeTasks.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace bench {

namespace {

struct FunctionLoop {
    static constexpr char name[] = "loop over std::function";

    class Post {
    public:
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                connect();
        }
        void set(int value) {
            value_ = value;
            for (auto const& observer : observers_)
                observer.second(value);
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    protected:
        std::size_t connect() {
            observers_.emplace_back(lastId_, [this](int) { ++calls_; });
            return lastId_++;
        }
        void disconnect(std::size_t id) {
            observers_.erase(std::lower_bound(
                observers_.begin(), observers_.end(), id,
                [](auto const& observer, std::size_t wanted) { return observer.first < wanted; }));
        }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        std::size_t lastId_ = 0;
        std::vector<std::pair<std::size_t, std::function<void(int)>>> observers_;
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() { disconnect(connect()); }
    };

    class Pre {
    public:
        Pre(std::size_t numObservers, bool refuses) {
            for (std::size_t i = 0; i < numObservers; ++i)
                observers_.emplace_back([this, refuses](int) { return ++calls_, !refuses; });
        }
        void set(int value) {
            for (auto const& observer : observers_)
                if (!observer(value))
                    return;
            value_ = value;
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        std::vector<std::function<bool(int)>> observers_;
    };

    class Chain {
    public:
        explicit Chain(std::size_t length) : values_(length) {
            for (std::size_t i = 1; i < length; ++i)
                followers_.emplace_back([this, i](int value) { setAt(i, value); });
        }
        void set(int value) { setAt(0, value); }
        int value() const { return values_.back(); }

    private:
        void setAt(std::size_t index, int value) {
            values_[index] = value;
            if (index < followers_.size())
                followers_[index](value);
        }
        std::vector<int> values_;
        std::vector<std::function<void(int)>> followers_;
    };
};

Registration const registration(ChangeTasks<FunctionLoop>::contender());

} // namespace

} // namespace bench
