// SPDX-License-Identifier: MIT
#pragma once

#include <any>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::ErrorHandling {

/// What every error object carries: where it was raised, named values that describe the case, and the errors
/// of lower operations that led to it. An error belongs to one thread at a time; nested errors are shared and
/// not changed.
class ErrorBase {
public:
    using Infos = std::unordered_map<std::string, std::any>;
    using Nested = std::vector<std::shared_ptr<ErrorBase>>;

    ErrorBase& operator=(ErrorBase const&) = delete;

    /// A deep copy, of the dynamic type; only the nested errors are shared with this one.
    [[nodiscard]] virtual std::unique_ptr<ErrorBase> clone() const = 0;
    /// True when the operation around the one that failed may go on.
    [[nodiscard]] virtual bool isWarning() const = 0;

    virtual ~ErrorBase() { releaseNested(); }

    /// The source file that raised the error, as the raising code named it.
    [[nodiscard]] std::string const& getFile() const noexcept { return file_; }
    /// The line in that file.
    [[nodiscard]] int getLine() const noexcept { return line_; }
    /// All infos; the values are `std::string`.
    [[nodiscard]] Infos const& getInfos() const noexcept { return infos_; }
    /// The nested errors in the order in which they were added.
    [[nodiscard]] Nested const& getNested() const noexcept { return nested_; }

    /// The text of one info; null when there is none of that name. It lives as long as this error.
    [[nodiscard]] std::string const* findInfo(std::string const& name) const {
        auto const found = infos_.find(name);
        return found == infos_.end() ? nullptr : std::any_cast<std::string>(&found->second);
    }

    /// Stores an info; an info of that name that is there already stays.
    // NOLINTNEXTLINE(performance-unnecessary-value-param): it is moved where the name is new.
    void addInfo(std::string name, std::string value) {
        infos_.try_emplace(std::move(name), std::move(value));
    }
    /// Appends a cause; an empty pointer is ignored. An error must not be among its own causes.
    void addNested(std::shared_ptr<ErrorBase> cause) {
        if (cause)
            nested_.push_back(std::move(cause));
    }

protected:
    ErrorBase(char const* file, int line) : file_(file ? file : ""), line_(line) {}
    ErrorBase(ErrorBase const&) = default;

private:
    /// Lets the nested errors go in a loop: a chain of them is as long as the input that caused it, which a
    /// recursion of destructors would pay for with the stack. The way back up is kept in the slot that the
    /// child was taken from, so nothing is allocated.
    void releaseNested() noexcept {
        std::shared_ptr<ErrorBase> parent;
        while (!nested_.empty()) {
            std::shared_ptr<ErrorBase> current = std::move(nested_.back());
            nested_.pop_back();
            while (current) {
                if (current.use_count() == 1 && !current->nested_.empty()) {
                    // What other threads did with it before they let go happens before it is taken apart:
                    // the count alone does not say so, letting go of a reference does.
                    std::shared_ptr<ErrorBase>(current).reset();
                    auto child = std::exchange(current->nested_.back(), std::move(parent));
                    parent = std::exchange(current, std::move(child));
                } else {
                    current = std::move(parent);
                    if (current) {
                        parent = std::move(current->nested_.back());
                        current->nested_.pop_back();
                    }
                }
            }
        }
    }

    std::string file_;
    int line_;
    Infos infos_;
    Nested nested_;
};

} // namespace Zorvan::ErrorHandling
