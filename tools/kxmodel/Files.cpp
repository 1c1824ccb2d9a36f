// SPDX-License-Identifier: MIT
#include "Files.h"
#include "System.h"

#include <AttributeContainer/FileReplacement.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace fs = std::filesystem;

namespace kxmodel {

namespace {

constexpr char standardStream[] = "-";

/// By its other name, too: as a file that is opened anew, it would lose what was written to it before.
bool isStandardOutput(std::string const& path) { return path == standardStream || path == "/dev/stdout"; }

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// The reason that the last call of the C library gave.
std::string lastReason() { return std::generic_category().message(errno != 0 ? errno : EIO); }

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
    if (isStandardOutput(path))
        return write(stdout, content, name);

    std::error_code error;
    fs::path const file = pathOf(path);
    fs::file_status const status = fs::status(file, error); // What fails here fails again below.
    if (fs::is_directory(status))
        throw FileError(name, std::generic_category().message(EISDIR));
    // The links that lead to a pipe need not name a file.
    if (fs::exists(status) && !fs::is_regular_file(status))
        return writeAndClose(open(file, "wb", name), content, name);
    if (auto const reason = Zorvan::AttributeContainer::replaceFile(path, content))
        throw FileError(name, *reason);
}

} // namespace kxmodel
