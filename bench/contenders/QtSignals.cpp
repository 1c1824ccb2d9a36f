// SPDX-License-Identifier: MIT

// Qt 6: signals and slots, connected directly.

#include "../ChangeTasks.h"

#include <QObject>

#include <memory>
#include <vector>

namespace bench {

class QtValue : public QObject {
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE set NOTIFY changed)

public:
    int value() const { return value_; }
    void set(int value) {
        if (value == value_)
            return;
        value_ = value;
        Q_EMIT changed(value);
    }

Q_SIGNALS:
    void changed(int value);

private:
    int value_ = 0;
};

class QtCounter : public QObject {
    Q_OBJECT

public:
    void told(int) { ++calls; }
    std::uint64_t calls = 0;
};

namespace {

struct QtSignals {
    static constexpr char name[] = "Qt 6";

    class Post {
    public:
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                QObject::connect(&value_, &QtValue::changed, &newCounter(), &QtCounter::told);
        }
        void set(int value) { value_.set(value); }
        int value() const { return value_.value(); }
        std::uint64_t calls() const {
            std::uint64_t sum = 0;
            for (auto const& counter : counters_)
                sum += counter->calls;
            return sum;
        }

    protected:
        QtCounter& newCounter() { return *counters_.emplace_back(std::make_unique<QtCounter>()); }
        QtValue& subject() { return value_; }

    private:
        QtValue value_;
        std::vector<std::unique_ptr<QtCounter>> counters_;
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() {
            QObject::disconnect(QObject::connect(&subject(), &QtValue::changed, &guest_, &QtCounter::told));
        }

    private:
        QtCounter guest_;
    };

    class Chain {
    public:
        explicit Chain(std::size_t length) : values_(length) {
            for (std::size_t i = 1; i < length; ++i)
                QObject::connect(&values_[i - 1], &QtValue::changed, &values_[i], &QtValue::set);
        }
        void set(int value) { values_.front().set(value); }
        int value() const { return values_.back().value(); }

    private:
        std::vector<QtValue> values_;
    };
};

Registration const registration(ChangeTasks<QtSignals>::contender());

} // namespace

} // namespace bench

#include "QtSignals.moc"
