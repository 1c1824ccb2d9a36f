// SPDX-License-Identifier: MIT

// Boost.Signals2, without and with the mutex that it has by default. A combiner stops at the first refusal.

#include "../ChangeTasks.h"

#include <boost/signals2/dummy_mutex.hpp>
#include <boost/signals2/signal_type.hpp>

#include <vector>

namespace bench {

namespace {

namespace signals = boost::signals2;
namespace keywords = boost::signals2::keywords;

struct AllAllow {
    using result_type = bool;
    template <class Iterator>
    bool operator()(Iterator first, Iterator last) const {
        for (; first != last; ++first)
            if (!*first)
                return false;
        return true;
    }
};

template <class Mutex>
struct Signals {
    using Told = typename signals::signal_type<void(int), keywords::mutex_type<Mutex>>::type;
    using Asked = typename signals::signal_type<bool(int), keywords::mutex_type<Mutex>,
                                                keywords::combiner_type<AllAllow>>::type;

    class Post {
    public:
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                connect();
        }
        void set(int value) {
            value_ = value;
            changed_(value);
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    protected:
        signals::connection connect() {
            return changed_.connect([this](int) { ++calls_; });
        }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        Told changed_;
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() { this->connect().disconnect(); }
    };

    class Pre {
    public:
        Pre(std::size_t numObservers, bool refuses) {
            for (std::size_t i = 0; i < numObservers; ++i)
                toChange_.connect([this, refuses](int) { return ++calls_, !refuses; });
        }
        void set(int value) {
            if (toChange_(value))
                value_ = value;
        }
        int value() const { return value_; }
        std::uint64_t calls() const { return calls_; }

    private:
        int value_ = 0;
        std::uint64_t calls_ = 0;
        Asked toChange_;
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
            changed_[index](value);
        }
        std::vector<int> values_;
        std::vector<Told> changed_;
    };
};

struct WithoutMutex : Signals<signals::dummy_mutex> {
    static constexpr char name[] = "Boost.Signals2, no mutex";
};
struct WithMutex : Signals<signals::mutex> {
    static constexpr char name[] = "Boost.Signals2";
};

Registration const registration(ChangeTasks<WithoutMutex>::contender());
Registration const mutexRegistration(ChangeTasks<WithMutex>::contender());

} // namespace

} // namespace bench
