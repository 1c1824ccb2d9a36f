// SPDX-License-Identifier: MIT
#include <AttributeContainer/WriteContextBase.h>

namespace Zorvan::AttributeContainer {

WriteContextBase::WriteContextBase(int format) : format_(format) {}
WriteContextBase::~WriteContextBase() = default;

std::string const& WriteContextBase::getStaticClassName() {
    static std::string const& name = *new std::string("WriteContextBase");
    return name;
}

std::string const& WriteContextBase::getClassName() const { return getStaticClassName(); }

SharedInstanceCollection* WriteContextBase::getSharedInstances() const { return nullptr; }

} // namespace Zorvan::AttributeContainer
