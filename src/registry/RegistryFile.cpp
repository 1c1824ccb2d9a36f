// SPDX-License-Identifier: MIT
#include <AttributeContainer/RegistryFile.h>

#include "foundation/MakeError.h"
#include "platform/RegistryHive.h"

#include <optional>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

Result toResult(std::optional<HiveError> error, int line) {
    if (!error)
        return nullptr;
    ErrorCode const code = error->kind == HiveError::Kind::Unavailable ? NotSupported
                           : error->kind == HiveError::Kind::WrongText ? UnknownKeyword
                                                                       : StreamFailure;
    auto result =
        addInfo(makeError("RegistryFile", line, code), "Description", std::move(error->description));
    return error->line == 0 ? std::move(result)
                            : addInfo(std::move(result), "Line", std::to_string(error->line));
}

} // namespace

RegistryFile::~RegistryFile() {
    try {
        if (attached_ && detach())
            discard();
    } catch (...) {
        discard(); // short of memory
    }
}

bool RegistryFile::isSupported() noexcept { return isHiveSupported(); }

Result RegistryFile::attach(std::string const& path) {
    auto failure = attachHive(path);
    attached_ = attached_ || !failure; // before anything that needs memory
    return addInfo(toResult(std::move(failure), __LINE__), "Path", path);
}

Result RegistryFile::flush() {
    if (!attached_)
        return toResult(HiveError{HiveError::Kind::Unavailable, "no file is attached"}, __LINE__);
    return toResult(flushHive(), __LINE__);
}

Result RegistryFile::detach() {
    if (!attached_)
        return toResult(HiveError{HiveError::Kind::Unavailable, "no file is attached"}, __LINE__);
    auto error = toResult(detachHive(), __LINE__);
    attached_ = error != nullptr;
    return error;
}

void RegistryFile::discard() noexcept {
    if (attached_)
        dropHive();
    attached_ = false;
}

} // namespace Zorvan::AttributeContainer
