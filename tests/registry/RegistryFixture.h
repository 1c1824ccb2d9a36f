// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Registry.h"

#include <AttributeContainer/RegKeys.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Zorvan::AttributeContainer::Testing {

/// A key of the current user that is empty before each test and gone afterwards.
class ScratchKey : public testing::Test {
protected:
    static constexpr char path[] = "Software\\KxRegistryTests";

    ScratchKey() { remove(); }
    ~ScratchKey() override { remove(); }

    static HKEY currentUser() { return RegKeys::predefinedKey("HKEY_CURRENT_USER"); }
    /// A place in the scratch key, which is created with it.
    static std::shared_ptr<RegKeys> place(std::string const& below = "") {
        return std::make_shared<RegKeys>(std::string(path) + (below.empty() ? "" : "\\" + below),
                                         currentUser(), false);
    }

    static void remove() { RegKeys("", currentUser(), false).deleteTree(path); }
};

} // namespace Zorvan::AttributeContainer::Testing
