// SPDX-License-Identifier: MIT

// GObject: an int property and its signal "notify".

#include "../ChangeTasks.h"

#include <glib-object.h>

#include <vector>

namespace bench {

namespace {

struct GValueHolder {
    GObject parent;
    int value;
};
struct GValueHolderClass {
    GObjectClass parent;
};

constexpr guint propertyId = 1;
GParamSpec* valueSpec = nullptr;

void setProperty(GObject* object, guint, GValue const* value, GParamSpec*) {
    reinterpret_cast<GValueHolder*>(object)->value = g_value_get_int(value);
}
void getProperty(GObject* object, guint, GValue* value, GParamSpec*) {
    g_value_set_int(value, reinterpret_cast<GValueHolder*>(object)->value);
}

void initClass(gpointer klass, gpointer) {
    auto* const objectClass = static_cast<GObjectClass*>(klass);
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    valueSpec = g_param_spec_int("value", nullptr, nullptr, G_MININT, G_MAXINT, 0,
                                 static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_EXPLICIT_NOTIFY));
    g_object_class_install_property(objectClass, propertyId, valueSpec);
}

GType holderType() {
    static GType const type =
        g_type_register_static_simple(G_TYPE_OBJECT, "BenchValueHolder", sizeof(GValueHolderClass), initClass,
                                      sizeof(GValueHolder), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

/// Owns an object with a value.
class Holder {
public:
    Holder() : object_(static_cast<GValueHolder*>(g_object_new(holderType(), nullptr))) {}
    ~Holder() { g_object_unref(object_); }
    Holder(Holder const&) = delete;
    Holder& operator=(Holder const&) = delete;

    /// As a setter in C does it.
    static void set(GValueHolder* object, int value) {
        if (object->value == value)
            return;
        object->value = value;
        g_object_notify_by_pspec(&object->parent, valueSpec);
    }
    GValueHolder* get() const { return object_; }

private:
    GValueHolder* object_;
};

void count(GObject*, GParamSpec*, gpointer calls) { ++*static_cast<std::uint64_t*>(calls); }
void follow(GObject* followed, GParamSpec*, gpointer follower) {
    Holder::set(static_cast<GValueHolder*>(follower), reinterpret_cast<GValueHolder*>(followed)->value);
}

struct GObjectNotify {
    static constexpr char name[] = "GObject";

    class Post {
    public:
        explicit Post(std::size_t numObservers) {
            for (std::size_t i = 0; i < numObservers; ++i)
                connect();
        }
        void set(int value) { Holder::set(holder_.get(), value); }
        int value() const { return holder_.get()->value; }
        std::uint64_t calls() const { return calls_; }

    protected:
        gulong connect() {
            return g_signal_connect(holder_.get(), "notify::value", G_CALLBACK(count), &calls_);
        }
        void disconnect(gulong id) { g_signal_handler_disconnect(holder_.get(), id); }

    private:
        Holder holder_;
        std::uint64_t calls_ = 0;
    };

    struct Links : Post {
        using Post::Post;
        void connectAndDisconnect() { disconnect(connect()); }
    };

    class Chain {
    public:
        explicit Chain(std::size_t length) : holders_(length) {
            for (std::size_t i = 1; i < length; ++i)
                g_signal_connect(holders_[i - 1].get(), "notify::value", G_CALLBACK(follow),
                                 holders_[i].get());
        }
        void set(int value) { Holder::set(holders_.front().get(), value); }
        int value() const { return holders_.back().get()->value; }

    private:
        std::vector<Holder> holders_;
    };
};

Registration const registration(ChangeTasks<GObjectNotify>::contender());

} // namespace

} // namespace bench
