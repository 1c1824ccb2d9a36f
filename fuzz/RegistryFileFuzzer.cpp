// SPDX-License-Identifier: MIT
// Texts of registry editors: what is read is written, reads back equal, and is written again as the same
// bytes; what is refused is refused in one of its lines.
#include "Fuzzing.h"

#include "platform/RegistryText.h"

#include <algorithm>

using namespace Zorvan::AttributeContainer;
using fuzzing::require;

namespace {

bool isEqual(RegistryValue const& a, RegistryValue const& b) { return a.type == b.type && a.data == b.data; }

bool isEqual(std::shared_ptr<RegistryKey> const& a, std::shared_ptr<RegistryKey> const& b) {
    auto const isSame = [](auto const& x, auto const& y) {
        return x.first == y.first && isEqual(x.second, y.second);
    };
    auto const& keys = a->keys().map();
    auto const& values = a->values().map();
    return std::equal(keys.begin(), keys.end(), b->keys().map().begin(), b->keys().map().end(), isSame) &&
           std::equal(values.begin(), values.end(), b->values().map().begin(), b->values().map().end(),
                      isSame);
}

/// Most inputs are texts of one byte a character, so that the engine can change them; the others are files as
/// they are.
std::string fileOf(fuzzing::Input& input) {
    if (input.byte() % 2 == 0)
        return std::string(input.rest());
    std::string bytes = "\xFF\xFE";
    auto const put = [&bytes](std::string_view text) {
        for (char const c : text)
            bytes.append({c, 0});
    };
    put("Windows Registry Editor Version 5.00\n");
    put(input.rest());
    put("\n");
    return bytes;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzzing::Input input(data, size);
    std::string const bytes = fileOf(input);
    auto roots = makeRegistryRoots();
    if (auto const error = readRegistryText(bytes, roots)) {
        auto const numLines = static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n')) + 1;
        require(error->line >= 1 && error->line <= numLines, "the line is one of the file", bytes,
                error->description);
        return 0;
    }
    std::string const written = writeRegistryText(roots);
    auto again = makeRegistryRoots();
    require(!readRegistryText(written, again), "what was written reads back", bytes, written);
    for (std::size_t i = 0; i < again.size(); ++i)
        require(isEqual(roots[i].key, again[i].key), "the keys are equal", bytes, written);
    require(writeRegistryText(again) == written, "the bytes are the same", written, writeRegistryText(again));
    return 0;
}
