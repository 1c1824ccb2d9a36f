// SPDX-License-Identifier: MIT
#include <AttributeContainer/SharedInstanceCollection.h>

#include "foundation/MakeError.h"
#include "serialization/ModelInFormatAccess.h"

#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteToScope.h>

#include <istream>
#include <ostream>
#include <string_view>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {
char const* const SOURCE = "SharedInstanceCollection";
std::string const& openerKeyword() { return SharedInstanceCollection::getStaticClassName(); }
constexpr std::string_view INSTANCES = "Instances";
} // namespace

SharedInstanceCollection::SharedInstanceCollection() = default;
SharedInstanceCollection::~SharedInstanceCollection() = default;

std::string const& SharedInstanceCollection::getStaticClassName() {
    static std::string const& name = *new std::string("SharedInstanceCollection");
    return name;
}

std::string const& SharedInstanceCollection::getClassName() const { return getStaticClassName(); }

Result SharedInstanceCollection::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (!context)
        return makeError(SOURCE, __LINE__, NoContext);
    WriteToScope scope(out, context);
    ModelOutFormat& mof = scope.getMof();
    mof.startBlock(openerKeyword()).startBlock(std::string(INSTANCES));
    DataOutFormat<std::set<std::uint64_t>>(out, context->getFormat()).put(ids_);
    mof.endBlock().endBlock();
    return out.good() ? nullptr : makeError(SOURCE, 96, StreamFailure);
}

Result SharedInstanceCollection::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (!context)
        return makeError(SOURCE, __LINE__, NoContext);
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    auto const fail = [](int line, ErrorCode code) {
        ModelInFormat::cleanPropagateKeyword();
        return makeError(SOURCE, line, code);
    };
    std::string_view keyword;
    while (!ModelInFormatAccess::isBlockEnd(imf)) {
        if (!ModelInFormatAccess::current(imf, keyword))
            return fail(__LINE__, StreamFailure);
        bool const quoted = ModelInFormatAccess::keywordQuoted(imf);
        bool const isOpener = !quoted && keyword == openerKeyword();
        bool const isInstances = !quoted && keyword == INSTANCES;
        if (!isOpener && !isInstances)
            return fail(148, UnknownKeyword);
        imf.nextKeyword();
        if (!ModelInFormatAccess::isBlockStart(imf))
            return fail(in.good() ? 148 : __LINE__, in.good() ? UnknownKeyword : StreamFailure);
        if (isInstances) {
            std::set<std::uint64_t> ids =
                DataInFormat<std::set<std::uint64_t>>(in, context->getFormat()).take();
            if (!in.good())
                return fail(__LINE__, StreamFailure);
            ids_.swap(ids);
            imf.nextKeyword();
            if (!ModelInFormatAccess::isBlockEnd(imf))
                return fail(in.good() ? 148 : __LINE__, in.good() ? UnknownKeyword : StreamFailure);
        }
        imf.nextKeyword();
    }
    return nullptr;
}

void SharedInstanceCollection::copyToVector(std::vector<std::uint64_t>& ids) const {
    ids.assign(ids_.begin(), ids_.end());
}

} // namespace Zorvan::AttributeContainer
