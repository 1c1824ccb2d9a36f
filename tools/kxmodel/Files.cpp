// SPDX-License-Identifier: MIT
#include "Files.h"
#include "System.h"

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

/// The reason in the same words; those of the system may be in any language and encoding.
std::string reasonOf(std::error_code const& error) { return error.default_error_condition().message(); }

File open(fs::path const& path, char const* mode, std::string const& name) {
    errno = 0;
    File file(openFile(path, mode));
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
            throw FileError(name, reasonOf(error));
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
    File const owned = path == standardStream ? nullptr : open(pathOf(path), "rb", name);
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

    std::error_code error;
    fs::path const target = realFile(pathOf(path), error);
    if (error)
        throw FileError(name, reasonOf(error));
    fs::file_status const status = fs::status(target, error);
    if (fs::is_directory(status))
        throw FileError(name, std::generic_category().message(EISDIR));
    if (fs::exists(status) && !fs::is_regular_file(status))
        writeAndClose(open(target, "wb", name), content, name);
    else
        replaceFile(target, status, content, name);
}

} // namespace kxmodel
