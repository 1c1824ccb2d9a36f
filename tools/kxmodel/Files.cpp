// SPDX-License-Identifier: MIT
#include "Files.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace kxmodel {

namespace {

constexpr char standardStream[] = "-";

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// The reason that the last call of the C library gave.
std::string lastReason() { return std::generic_category().message(errno != 0 ? errno : EIO); }

File open(fs::path const& path, char const* mode, std::string const& name) {
    errno = 0;
    File file(std::fopen(path.string().c_str(), mode));
    if (!file)
        throw FileError(name, lastReason());
    return file;
}

void write(std::FILE* file, std::string const& content, std::string const& name) {
    errno = 0;
    bool const isWritten = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    if (!isWritten || std::fflush(file) != 0)
        throw FileError(name, lastReason());
}

/// Writes and closes; some file systems report a full disk only then.
void writeAndClose(File file, std::string const& content, std::string const& name) {
    write(file.get(), content, name);
    errno = 0;
    if (std::fclose(file.release()) != 0)
        throw FileError(name, lastReason());
}

/// The file that a path means: symbolic links are followed to their end, which need not exist.
fs::path realFile(fs::path path, std::string const& name) {
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int i = 0; i < maxLinks; ++i) {
        if (!fs::is_symlink(path, error))
            return path;
        fs::path const target = fs::read_symlink(path, error);
        if (error)
            throw FileError(name, error.message());
        path = path.parent_path() / target;
    }
    throw FileError(name, std::generic_category().message(ELOOP));
}

/// Removes a file at the end of its scope unless it was renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(fs::path const& target) : path_(target) {
        std::random_device random;
        std::uint64_t const number = (std::uint64_t{random()} << 32) | random();
        path_ += "." + std::to_string(number) + ".tmp";
    }
    ~TemporaryFile() {
        std::error_code ignored;
        if (!path_.empty())
            fs::remove(path_, ignored);
    }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    fs::path const& path() const { return path_; }

    void renameTo(fs::path const& target, std::string const& name) {
        std::error_code error;
        fs::rename(path_, target, error);
        if (error)
            throw FileError(name, error.message());
        path_.clear();
    }

private:
    fs::path path_;
};

void replaceFile(fs::path const& target, fs::file_status const& status, std::string const& content,
                 std::string const& name) {
    bool const isThere = fs::exists(status);
    // Renaming asks only for the folder; a file that is not to be written to must be respected too.
    if (isThere)
        open(target, "r+b", name);

    TemporaryFile temporary(target);
    writeAndClose(open(temporary.path(), "wb", name), content, name);
    std::error_code ignored;
    if (isThere)
        fs::permissions(temporary.path(), status.permissions(), ignored);
    temporary.renameTo(target, name);
}

} // namespace

std::string inputName(std::string const& path) { return path == standardStream ? "standard input" : path; }

std::string outputName(std::string const& path) { return path == standardStream ? "standard output" : path; }

std::string readAll(std::string const& path) {
    std::string const name = inputName(path);
    File const owned = path == standardStream ? nullptr : open(path, "rb", name);
    std::FILE* const file = owned ? owned.get() : stdin;

    std::string content;
    std::string buffer(std::size_t{1} << 16, '\0');
    errno = 0;
    while (std::size_t const count = std::fread(buffer.data(), 1, buffer.size(), file))
        content.append(buffer, 0, count);
    if (std::ferror(file))
        throw FileError(name, lastReason());
    return content;
}

void writeAll(std::string const& path, std::string const& content) {
    std::string const name = outputName(path);
    if (path == standardStream)
        return write(stdout, content, name);

    fs::path const target = realFile(path, name);
    std::error_code error;
    fs::file_status const status = fs::status(target, error);
    if (fs::is_directory(status))
        throw FileError(name, std::generic_category().message(EISDIR));
    if (fs::exists(status) && !fs::is_regular_file(status))
        writeAndClose(open(target, "wb", name), content, name);
    else
        replaceFile(target, status, content, name);
}

} // namespace kxmodel
