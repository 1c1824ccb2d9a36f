// SPDX-License-Identifier: MIT
// What stands in a block of an unknown class, a child's or a field's, of either rendering. It is kept, and
// written in the other rendering, too.
#include "DocumentChecks.h"

#include <sstream>

namespace {

std::string document(std::string_view content, bool isXml, bool isField) {
    std::string const keyword = isField ? "SubContainer" : "Child";
    std::ostringstream out;
    if (!isXml) {
        out << "AttrContainer { \nAttr<String> { \nName \"Name\"\nValue \"r\"\n}\n"
            << (isField ? "" : "}\n") << keyword << " { \n\"Gone\" \"x\"\n"
            << content << "\n}\n"
            << (isField ? "}\n" : "");
        return out.str();
    }
    using Zorvan::AttributeContainer::ModelFormat;
    out << ModelFormat::XML_HEADER << '\n'
        << ModelFormat::XML_V2_COMMENT << '\n'
        << ModelFormat::XML_ROOT_START_TAG
        << "\n<AttrContainer>\n<Attr type=\"String\">\n<Name value=\"'Name'\" />\n<Value value=\"'r'\" "
           "/>\n</Attr>\n"
        << (isField ? "" : "</AttrContainer>\n") << '<' << keyword << ">\n<Gone value=\"'x'\" />\n"
        << content << "</" << keyword << ">\n"
        << (isField ? "</AttrContainer>\n" : "") << ModelFormat::XML_ROOT_END_TAG;
    return out.str();
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzzing::Input input(data, size);
    std::size_t const kind = input.below(4);
    fuzzing::checkDocument(document(input.rest(), kind % 2 != 0, kind / 2 != 0));
    return 0;
}
