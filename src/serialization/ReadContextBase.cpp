// SPDX-License-Identifier: MIT
#include <AttributeContainer/ReadContextBase.h>

namespace Zorvan::AttributeContainer {

ReadContextBase::ReadContextBase() = default;
ReadContextBase::~ReadContextBase() = default;

std::string const& ReadContextBase::getStaticClassName() {
    static std::string const& name = *new std::string("ReadContextBase");
    return name;
}

std::string const& ReadContextBase::getClassName() const { return getStaticClassName(); }

std::shared_ptr<AttrContainer> ReadContextBase::createObject(std::string const&) { return {}; }

std::shared_ptr<AttrContainer> ReadContextBase::createObject(std::string const& typeName) const {
    // The slot is not const for the sake of overrides that count or remember what they make.
    return const_cast<ReadContextBase*>(this)->createObject(typeName);
}

void ReadContextBase::idle() const {}

ReferenceDictionary* ReadContextBase::getReferenceDictionary() const { return nullptr; }

} // namespace Zorvan::AttributeContainer
