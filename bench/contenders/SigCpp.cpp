// SPDX-License-Identifier: MIT

// libsigc++ 3. An accumulator stops at the first refusal.

#include "../ChangeTasks.h"

#include <sigc++/sigc++.h>

#include <vector>

namespace bench {

namespace {

struct AllAllow {
    template <class Iterator>
    bool operator()(Iterator first, Iterator last) const {
        for (; first != last; ++first)
            if (!*first)
                return false;
        return true;
    }
};

struct SigCpp {
    static constexpr char name[] = "libsigc++";

    class Post {
    public:
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                connect();
        }
        void set(int value) {
            value_ = value;
            changed_.emit(value);
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    protected:
        sigc::connection connect() {
            return changed_.connect([this](int) { ++calls_; });
        }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        sigc::signal<void(int)> changed_;
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() { connect().disconnect(); }
    };

    class Pre {
    public:
        Pre(std::size_t numObservers, bool refuses) {
            for (std::size_t i = 0; i < numObservers; ++i)
                toChange_.connect([this, refuses](int) { return ++calls_, !refuses; });
        }
        void set(int value) {
            if (toChange_.emit(value))
                value_ = value;
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        sigc::signal<bool(int)>::accumulated<AllAllow> toChange_;
    };

    class Chain {
    public:
        explicit Chain(std::size_t length) : values_(length), changed_(length) {
            for (std::size_t i = 1; i < length; ++i)
                changed_[i - 1].connect([this, i](int value) { setAt(i, value); });
        }
        void set(int value) { setAt(0, value); }
        int value() const { return values_.back(); }

    private:
        void setAt(std::size_t index, int value) {
            values_[index] = value;
            changed_[index].emit(value);
        }
        std::vector<int> values_;
        std::vector<sigc::signal<void(int)>> changed_;
    };
};

Registration const registration(ChangeTasks<SigCpp>::contender());

} // namespace

} // namespace bench
