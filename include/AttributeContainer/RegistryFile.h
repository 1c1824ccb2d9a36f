// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/Export.h>

#include <string>

namespace Zorvan::AttributeContainer {

/// Keeps the registry of this process in a file, on systems that have no registry of their own. The file is a
/// text that registry editors import and export (version 5, UTF-16). A process keeps one file at a time.
/// Names of keys have no line ends, at most 255 units, and at most 512 keys lie below one another.
///
///     RegistryFile file;
///     if (auto error = file.attach("settings.reg")) ...
///     ... // RegKeys and the registry visitors work on what the file holds
///     if (auto error = file.detach()) ...
///
/// Meanwhile any thread may use the registry and flush it; attach, detach and discard are for one at a time.
/// A file is written beside its place ("settings.reg.kx-saving") and then moved there, so that a crash leaves
/// the old one or the new one. From attach to detach a lock file ("settings.reg.lock") keeps other writers
/// away; one that a crash has left behind is in nobody's way. Errors carry the infos "Description", "Path"
/// and, where the text of the file is wrong, "Line".
class KX_ATTRIBUTECONTAINER_API RegistryFile {
public:
    /// Without a file.
    RegistryFile() = default;
    RegistryFile(RegistryFile const&) = delete;
    RegistryFile& operator=(RegistryFile const&) = delete;
    /// Detaches; changes that cannot be written are lost.
    ~RegistryFile();

    /// Whether this system's registry can be kept in a file: not where there is a real one.
    static bool isSupported() noexcept;

    /// Loads a file; one that does not exist is made when there is something to write. `StreamFailure` when
    /// the file cannot be read, or another process holds it; `UnknownKeyword` when its text is wrong;
    /// `NotSupported` when the registry is in use already: a file is attached, or something was stored. The
    /// registry and the file are then as before. `path` is UTF-8.
    [[nodiscard]] Result attach(std::string const& path);
    /// Writes the file if anything has changed. On failure the changes stay in memory.
    [[nodiscard]] Result flush();
    /// Writes the file if anything has changed, empties the registry, and gives the file free. On failure the
    /// file stays attached.
    [[nodiscard]] Result detach();
    /// Gives the file free as it is, and empties the registry: what was not flushed is lost. Does nothing
    /// when no file is attached here.
    void discard() noexcept;

private:
    bool attached_ = false;
};

} // namespace Zorvan::AttributeContainer
