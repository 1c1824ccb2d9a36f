// SPDX-License-Identifier: MIT
#include "platform/RegistryHive.h"

namespace Zorvan::AttributeContainer {

namespace {

HiveError unavailable() { return {HiveError::Kind::Unavailable, "the registry is the system's"}; }

} // namespace

bool isHiveSupported() noexcept { return false; }

std::optional<HiveError> attachHive(std::string const&) { return unavailable(); }

std::optional<HiveError> flushHive() { return unavailable(); }

std::optional<HiveError> detachHive() { return unavailable(); }

void dropHive() noexcept {}

} // namespace Zorvan::AttributeContainer
