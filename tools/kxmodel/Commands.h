// SPDX-License-Identifier: MIT
#pragma once

#include "Document.h"
#include "TreeComparer.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kxmodel {

/// The exit status of the program.
enum class Status {
    Good = 0,
    Warnings = 1,  ///< `check` only: a document was read, with warnings.
    Different = 1, ///< `diff` only: the documents differ.
    Failed = 2     ///< Something could not be read or written, or the call was wrong.
};

struct ShowOptions {
    std::string file;
    std::optional<std::uint32_t> depth; ///< Levels below the root that are shown; all without one.
    bool hidesValues = false;
    bool showsLinks = false;
    bool isFull = false; ///< Long values are not cut.
};

struct ConvertOptions {
    std::string in;
    std::string out;
    Rendering to = Zorvan::AttributeContainer::ModelFormat::Text;
    bool isLossAccepted = false;
};

struct DiffOptions {
    std::string first;
    std::string second;
    CompareOptions compare;
    bool isQuiet = false; ///< Only the exit status tells.
    bool isJson = false;
    bool isFull = false; ///< Long values are not cut.
};

struct MergeOptions {
    std::string target;
    std::string source;
    std::optional<std::string> out; ///< Not needed for a dry run.
    bool deletesSurplus = false;    ///< What only the target has is removed.
    bool isDryRun = false;          ///< Nothing is written.
};

struct ExportOptions {
    std::string in;
    std::string out;
    bool hasChildren = false;
};

struct GetOptions {
    std::string file;
    std::string path;
};

struct SetOptions {
    std::string file;
    std::vector<std::string> assignments; ///< Each is a path, "=", and a value.
    std::optional<std::string> out;       ///< The file itself without one.
};

struct RegistryOptions {
    std::string file; ///< Not for a list.
    std::string key;
    std::optional<std::string> hive; ///< The file that keeps the registry where the system has none.
    std::string out;                 ///< Loading only.
    bool isStrict = false;           ///< Nothing is written when a value would be left out.
};

/// A graph shows no more containers.
constexpr std::size_t maxGraphNodes = 400;

struct GraphOptions {
    std::string file;
    std::string out = "-"; ///< What it ends in says whether it becomes a text or a picture.
};

/// Writes the tree of a document to standard output.
Status show(ShowOptions const& options);
/// Reads a document and writes it in a rendering.
Status convert(ConvertOptions const& options);
/// Reads documents and reports every warning and error.
Status check(std::vector<std::string> const& files);
/// Writes the differences of two documents to standard output.
Status diff(DiffOptions const& options);
/// Merges a document into another one and writes the result.
Status merge(MergeOptions const& options);
/// Writes a document as plain XML for other programs.
Status exportXml(ExportOptions const& options);
/// Writes the value of an attribute to standard output.
Status get(GetOptions const& options);
/// Changes attributes and writes the document.
Status set(SetOptions const& options);
/// Writes the tree of a document as a graph, or as a picture of it.
Status graph(GraphOptions const& options);
/// Saves the values of a document to the registry.
Status saveToRegistry(RegistryOptions const& options);
/// Reads a document, takes over the values that the registry has for it, and writes it.
Status loadFromRegistry(RegistryOptions const& options);
/// Writes the values of a key, and of those below it, to standard output.
Status listRegistry(RegistryOptions const& options);

} // namespace kxmodel
