// SPDX-License-Identifier: MIT
#pragma once

#include <ErrorHandling/ErrorBase.h>

#include <memory>
#include <string>
#include <utility>

namespace Zorvan::ErrorHandling {

/// What `isWarning`, the free function that belongs to the enumeration `E`, says about a code.
template <class E>
[[nodiscard]] bool isWarningCode(E const& code) {
    return isWarning(code);
}

/// An error with a code of the enumeration `E`, beside which a function `bool isWarning(E const&)` must be
/// declared.
template <class E>
class ErrorWithCode : public ErrorBase {
public:
    /// A new error without infos and nested errors. The file name is copied.
    ErrorWithCode(char const* file, int line, E code) : ErrorBase(file, line), code_(code) {}
    ErrorWithCode(ErrorWithCode const&) = default;

    [[nodiscard]] std::unique_ptr<ErrorBase> clone() const override {
        return std::make_unique<ErrorWithCode>(*this);
    }
    [[nodiscard]] bool isWarning() const override { return isWarningCode(code_); }

    /// The code that was given at construction.
    [[nodiscard]] E getCode() const noexcept { return code_; }

private:
    E code_;
};

/// Stores an info in `error` and hands the same error back, so that calls can be chained. An info of that
/// name that is there already stays; an empty error stays empty.
template <class E>
[[nodiscard]] std::unique_ptr<ErrorWithCode<E>> addInfo(std::unique_ptr<ErrorWithCode<E>> error,
                                                        char const* name, std::string value) {
    if (error)
        error->addInfo(name, std::move(value));
    return error;
}

/// Appends a clone of `cause` to the nested errors of `error` and hands the same error back; an empty error
/// stays empty.
template <class E>
[[nodiscard]] std::unique_ptr<ErrorWithCode<E>> addNested(std::unique_ptr<ErrorWithCode<E>> error,
                                                          ErrorBase const& cause) {
    if (error)
        error->addNested(cause.clone());
    return error;
}

} // namespace Zorvan::ErrorHandling
