// SPDX-License-Identifier: MIT
#include "platform/FilePaths.h"
#include "platform/FilePosix.h"

#include <AttributeContainer/FileReplacement.h>

#include <chrono>
#include <system_error>
#include <thread>

#include <sys/file.h>

namespace Zorvan::AttributeContainer {

namespace {

std::string failure(std::string const& action, int reason = errno) {
    return action + ": " + std::generic_category().message(reason);
}

/// Makes a file, locked. One that is there already belongs to somebody who is writing it and is waited for,
/// or to nobody any more: then it is removed. Without a file when that fails; see errno.
File makeLocked(std::string const& path, mode_t mode) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds patience(10);
    constexpr std::chrono::milliseconds pause(2);
    int reason = EBUSY;
    for (auto const end = Clock::now() + patience; Clock::now() < end; std::this_thread::sleep_for(pause)) {
        File file(path, O_WRONLY | O_CREAT | O_EXCL, mode);
        bool const isNew = static_cast<bool>(file);
        if (!isNew && errno == EEXIST) {
            file = File(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
            // It was moved or removed between the two calls, or another user has made it and will open it to
            // others.
            if (!file && (errno == ENOENT || errno == EACCES)) {
                reason = errno;
                continue;
            }
        }
        if (!file)
            return file;
        bool const isLocked = untilDone([&] { return ::flock(file.descriptor(), LOCK_EX | LOCK_NB); }) == 0;
        // Where nothing can be locked, to have made the file must do.
        if (isNew && !isLocked && errno != EWOULDBLOCK)
            return file;
        // Whoever was here before may have moved or removed it until it was locked.
        if (!isLocked || !file.isAt(path))
            continue;
        if (isNew)
            return file;
        ::unlink(path.c_str());
    }
    errno = reason;
    return {};
}

/// Gives a new file the owner and the permissions of an old one, where that is allowed. It was made for its
/// owner alone, so whatever fails gives nobody more rights.
void inheritRights(File const& file, struct stat const& old) {
    mode_t mode = old.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
    if (::fchown(file.descriptor(), old.st_uid, old.st_gid) != 0 &&
        ::fchown(file.descriptor(), static_cast<uid_t>(-1), old.st_gid) != 0)
        mode = (mode & ~mode_t{S_IRWXG}) | (mode & mode_t{S_IRWXO}) << 3;
    ::fchmod(file.descriptor(), mode);
}

} // namespace

std::optional<std::string> replaceFile(std::string const& path, std::string_view content) {
    std::error_code error;
    std::filesystem::path const target = followLinks(path, error);
    if (error)
        return error.message();
    struct stat old {};
    bool const isThere = ::stat(target.c_str(), &old) == 0;
    // Renaming asks only for the folder; a file that is not to be written to must be respected too.
    if (isThere ? !File(target, O_WRONLY | O_NONBLOCK) : errno != ENOENT)
        return failure("cannot write the file");

    std::string const beside = savingPath(target);
    File const file = makeLocked(beside, isThere ? S_IRUSR | S_IWUSR : 0666);
    if (!file)
        return failure("cannot make the file \"" + beside + "\"");
    if (isThere)
        inheritRights(file, old);
    if (!file.writeAll(content) || !file.sync() || ::rename(beside.c_str(), target.c_str()) != 0) {
        auto const reason = errno;
        ::unlink(beside.c_str());
        return failure("cannot write the file", reason);
    }
    // The lock goes only now, so nobody takes the file for one that was left behind. That some systems cannot
    // make the entries of a folder last is no failure: the file is whole.
    if (File const folder(target.parent_path().empty() ? "." : target.parent_path().string(),
                          O_RDONLY | O_DIRECTORY);
        folder)
        static_cast<void>(folder.sync());
    return std::nullopt;
}

} // namespace Zorvan::AttributeContainer
