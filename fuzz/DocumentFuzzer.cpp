// SPDX-License-Identifier: MIT
// Documents of either rendering.
#include "DocumentChecks.h"

#include <AttributeContainer/AttributeContainer.h>

#include <memory>
#include <sstream>
#include <streambuf>

namespace {

using namespace Zorvan::AttributeContainer;

/// Holds one character of a text ready at a time, so that nothing can be read ahead.
class OneByOne : public std::streambuf {
public:
    explicit OneByOne(std::string& text) : next_(text.data()), end_(next_ + text.size()) {}

protected:
    int_type underflow() override {
        if (gptr() == egptr() && next_ != end_) {
            setg(next_, next_, next_ + 1);
            ++next_;
        }
        return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

private:
    char* next_;
    char* end_;
};

std::string codesOf(Result::element_type const& error) {
    std::string codes = std::to_string(error.getCode()) + "(";
    for (auto const& nested : error.getNested())
        if (auto const* coded = dynamic_cast<Result::element_type const*>(nested.get()))
            codes += codesOf(*coded);
    return codes + ")";
}

/// What reading a document answers, and what is there then.
std::string outcomeOf(std::streambuf& buffer, ModelFormat::Format format) {
    std::istream in(&buffer);
    auto const context = std::make_shared<ReadContextBase>();
    context->setFormat(format);
    auto const root = Object::create();
    Result result;
    {
        ReadFromScope scope(in, context);
        if (std::string title; format == ModelFormat::XmlV2) {
            scope.getImf().determineFormat();
            scope.getImf().readHeader(title);
        }
        result = root->readFrom(in, context);
    }
    std::ostringstream out;
    auto const writing = std::make_shared<WriteContextBase>();
    writing->setCreateObjectUuid(false); // Each would be another one.
    auto const written = root->writeTo(out, writing);
    fuzzing::require(!written || written->isWarning(), "what was read can be written");
    return (result ? codesOf(*result) : "") + out.str();
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string text(reinterpret_cast<char const*>(data), size);
    fuzzing::checkDocument(text);
    for (auto const format : fuzzing::renderings) {
        std::stringbuf whole(text, std::ios_base::in);
        OneByOne single(text);
        std::string const ahead = outcomeOf(whole, format), slow = outcomeOf(single, format);
        fuzzing::require(ahead == slow, "reading ahead makes no difference", ahead, slow);
    }
    return 0;
}
