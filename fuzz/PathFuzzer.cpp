// SPDX-License-Identifier: MIT
// Paths of observers and objects: any string gives an answer; what has a path is found under it.
#include "Fuzzing.h"

#include <AttributeContainer/Attr.h>
#include <AttributeContainer/Object.h>
#include <AttributeContainer/Observer.h>

using namespace Zorvan::AttributeContainer;
using fuzzing::require;

namespace {

std::shared_ptr<Object> tree() {
    auto const root = Object::create();
    static_cast<void>(root->setName("root", 0));
    std::shared_ptr<Object> parent = root;
    for (char const* name : {"a", "b", "c"}) {
        auto const child = Object::create();
        static_cast<void>(child->setName(name, 0));
        parent->addChild(child, 4);
        auto const twin = Object::create();
        static_cast<void>(twin->setName("a", 0));
        parent->addChild(twin, 4);
        parent->addField(AttrContainer::create(), "f", 4);
        parent->addAttribute(std::make_shared<CustAttr<int>>(1), "n");
        parent = child;
    }
    return root;
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static std::shared_ptr<Object> const root = tree();
    fuzzing::Input input(data, size);
    std::shared_ptr<Object> start = root;
    for (std::size_t depth = input.below(4); depth != 0 && start->children().getNumChildren() != 0; --depth)
        start = start->children().getChild(0);
    std::string const path(input.rest());
    static_cast<void>(start->inqObject(path));
    static_cast<void>(std::as_const(*start).inqObserver(path));
    auto const found = std::dynamic_pointer_cast<Observer>(start->inqObserver(path).lock());
    if (!found)
        return 0;
    auto const name = found->inqObjPath();
    // The library writes this path for a link to what was found.
    if (name && !name->empty())
        require(!start->inqObserver(name).expired(), "what has a path is found under it", path, *name);
    return 0;
}
