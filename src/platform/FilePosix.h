// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zorvan::AttributeContainer {

/// Calls again what a signal has interrupted.
template <class Call>
auto untilDone(Call const& call) noexcept {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// An open file of the system. What fails leaves its reason in errno.
class File {
public:
    File() = default;
    File(std::string const& path, int flags, mode_t mode = 0)
        : descriptor_(untilDone([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); })) {}
    File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    File& operator=(File&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~File() {
        int const reason = errno;
        if (descriptor_ >= 0)
            ::close(descriptor_);
        errno = reason;
    }

    explicit operator bool() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

    /// Whether a path leads to it.
    bool isAt(std::string const& path) const {
        struct stat own {};
        struct stat present {};
        return ::fstat(descriptor_, &own) == 0 && ::lstat(path.c_str(), &present) == 0 &&
               own.st_ino == present.st_ino && own.st_dev == present.st_dev;
    }

    bool readAll(std::string& content) const {
        constexpr std::size_t blockSize = 65536;
        for (;;) {
            std::size_t const length = content.size();
            content.resize(length + blockSize);
            ssize_t const got =
                untilDone([&] { return ::read(descriptor_, content.data() + length, blockSize); });
            content.resize(length + static_cast<std::size_t>(got > 0 ? got : 0));
            if (got <= 0)
                return got == 0;
        }
    }

    bool writeAll(std::string_view content) const {
        while (!content.empty()) {
            ssize_t const written =
                untilDone([&] { return ::write(descriptor_, content.data(), content.size()); });
            if (written == 0)
                errno = EIO;
            if (written <= 0)
                return false;
            content.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

    /// Waits until the content is on the disk.
    bool sync() const {
        return untilDone([this] { return ::fsync(descriptor_); }) == 0;
    }

private:
    int descriptor_ = -1;
};

} // namespace Zorvan::AttributeContainer
