// SPDX-License-Identifier: MIT
#include "platform/RegistryHive.h"

#include "platform/FilePaths.h"
#include "platform/FilePosix.h"
#include "platform/RegistryText.h"

#include <AttributeContainer/FileReplacement.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include <sys/file.h>

namespace Zorvan::AttributeContainer {

namespace {

HiveError fileFailure(std::string const& action, int number = errno) {
    return {HiveError::Kind::FileFailure, action + ": " + std::generic_category().message(number)};
}

/// The lock file beside a file: whoever holds it may write that file. It goes with its holder; one that a
/// crash has left behind is locked by nobody.
class Lock {
public:
    /// Empty when another holds it, or it cannot be made; see errno.
    static std::unique_ptr<Lock> take(std::string path) {
        std::unique_ptr<Lock> lock(new Lock); // before there is a file that would stay when this fails
        for (;;) {
            File file(path, O_RDWR | O_CREAT | O_NOFOLLOW, 0666);
            if (!file || untilDone([&] { return ::flock(file.descriptor(), LOCK_EX | LOCK_NB); }) != 0)
                return nullptr;
            // The former holder may have removed the file between the two calls: then it locks nothing.
            if (file.isAt(path)) {
                lock->path_ = std::move(path);
                lock->file_ = std::move(file);
                return lock;
            }
        }
    }
    ~Lock() {
        if (file_)
            ::unlink(path_.c_str());
    }
    Lock(Lock const&) = delete;
    Lock& operator=(Lock const&) = delete;

private:
    Lock() = default;

    std::string path_;
    File file_;
};

struct Hive {
    std::string path;
    std::unique_ptr<Lock> lock;
};

/// The file that is attached, or null; guarded by the lock of the registry.
Hive* attached = nullptr;

/// The path of the file itself, also of one that is not there yet: links to it stay, all its names share one
/// lock file, and the directory in which the process works may change.
std::string resolve(std::string const& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path const file = followLinks(fs::absolute(path, error), error);
    if (error)
        return path;
    fs::path const directory = fs::canonical(file.parent_path(), error);
    return error ? path : (directory / file.filename()).string();
}

bool isEmpty(RegistryRoots const& roots) {
    return std::all_of(roots.begin(), roots.end(), [](RegistryRoot const& root) {
        return root.key->keys().map().empty() && root.key->values().map().empty();
    });
}

/// Reads the file of a hive; one that does not exist is empty.
std::optional<HiveError> load(Hive const& hive, RegistryRoots& roots) {
    File const file(hive.path, O_RDONLY | O_NONBLOCK);
    if (!file) {
        if (errno == ENOENT)
            return std::nullopt;
        return fileFailure("cannot open the file");
    }
    struct stat status {};
    if (::fstat(file.descriptor(), &status) == 0 && !S_ISREG(status.st_mode))
        return HiveError{HiveError::Kind::FileFailure, "it is not a regular file"};
    std::string content;
    if (!file.readAll(content))
        return fileFailure("cannot read the file");
    if (auto error = readRegistryText(content, roots))
        return HiveError{HiveError::Kind::WrongText, std::move(error->description), error->line};
    return std::nullopt;
}

std::optional<HiveError> flush() {
    RegistryState& state = registryState();
    if (!attached)
        return HiveError{HiveError::Kind::Unavailable, "no file is attached"};
    if (!state.isChanged)
        return std::nullopt;
    if (auto reason = replaceFile(attached->path, writeRegistryText(state.roots)))
        return HiveError{HiveError::Kind::FileFailure, *std::move(reason)};
    state.isChanged = false;
    return std::nullopt;
}

void drop() noexcept {
    std::unique_ptr<Hive> const hive(std::exchange(attached, nullptr));
    for (RegistryRoot const& root : registryState().roots)
        root.key->clear();
}

} // namespace

bool isHiveSupported() noexcept { return true; }

std::optional<HiveError> attachHive(std::string const& path) {
    RegistryState& state = registryState();
    std::lock_guard const guard(state.mutex);
    if (attached || !isEmpty(state.roots))
        return HiveError{HiveError::Kind::Unavailable,
                         attached ? "a file is attached already" : "the registry holds something already"};
    if (path.empty() || path.find('\0') != std::string::npos)
        return HiveError{HiveError::Kind::FileFailure, "that is no path"};
    auto hive = std::make_unique<Hive>(Hive{resolve(path), nullptr});
    hive->lock = Lock::take(hive->path + ".lock");
    if (!hive->lock)
        return errno == EWOULDBLOCK
                   ? HiveError{HiveError::Kind::FileFailure, "another process holds the file"}
                   : fileFailure("cannot make the file \"" + hive->path + ".lock\"");
    auto roots = makeRegistryRoots();
    if (auto error = load(*hive, roots))
        return error;
    // No handle is lost: those of the roots are numbers, and there is no other key.
    state.roots = std::move(roots);
    state.isChanged = false;
    attached = hive.release();
    return std::nullopt;
}

std::optional<HiveError> flushHive() {
    std::lock_guard const guard(registryState().mutex);
    return flush();
}

std::optional<HiveError> detachHive() {
    std::lock_guard const guard(registryState().mutex);
    auto error = flush();
    if (!error)
        drop();
    return error;
}

void dropHive() noexcept {
    std::lock_guard const guard(registryState().mutex);
    drop();
}

} // namespace Zorvan::AttributeContainer
