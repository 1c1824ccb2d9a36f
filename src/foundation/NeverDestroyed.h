// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <utility>

namespace Zorvan::AttributeContainer {

/// Static storage for a `T` that is never destroyed, so that it can be used at any time during exit.
/// References to it are constants: they are valid before any static initialiser runs. The object itself is
/// made by `emplace`; one object of early priority in the same file sees to that before any other file's
/// static initialisers:
///
///     constinit NeverDestroyed<std::string> storage;
///     constinit std::string const& GREETING = storage.get();
///     [[gnu::init_priority(101)]] NeverDestroyedFill const fill([] { storage.emplace("hello"); });
template <class T>
class NeverDestroyed {
public:
    constexpr NeverDestroyed() noexcept : empty_() {}
    /// With a default-constructed object, which needs no `emplace`.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): of the union one is
    constexpr explicit NeverDestroyed(std::in_place_t) noexcept : value_() {}
    NeverDestroyed(NeverDestroyed const&) = delete;
    NeverDestroyed& operator=(NeverDestroyed const&) = delete;
    constexpr ~NeverDestroyed() {} // NOLINT(modernize-use-equals-default): the default destroys the object

    /// Makes the object. To be called once.
    template <class... Arguments>
    void emplace(Arguments&&... arguments) {
        std::construct_at(std::addressof(value_), std::forward<Arguments>(arguments)...);
    }

    /// The object; before `emplace` its future place only.
    [[nodiscard]] constexpr T& get() noexcept { return value_; }

private:
    union {
        char empty_;
        T value_;
    };
};

/// Runs a function when it is constructed; see `NeverDestroyed`.
struct NeverDestroyedFill {
    explicit NeverDestroyedFill(void (*fill)()) { fill(); }
};

} // namespace Zorvan::AttributeContainer
