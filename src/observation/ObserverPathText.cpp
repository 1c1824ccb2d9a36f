// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObserverPath.h>

#include "foundation/MakeError.h"
#include "observation/LinkReading.h"
#include "observation/LinkText.h"
#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"
#include "observation/RegisteredAction.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/Observer.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteToScope.h>

#include <istream>
#include <ostream>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char const* FILE_NAME = "ObserverPath";

enum LinkKeyword : std::uint64_t { OPENER = 0, PATH = 1, PRIORITY = 2, ACTION = 3 };

std::uint64_t keywordOf(std::string_view keyword) {
    if (keyword == "ObserverPath")
        return OPENER;
    if (keyword == "Path")
        return PATH;
    if (keyword == "Priority")
        return PRIORITY;
    return keyword == "Action" ? ACTION : ~std::uint64_t{0};
}

} // namespace

Result readLinkBlock(std::istream& in, std::shared_ptr<ReadContextBase const> const& context,
                     LinkText& link) {
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    ModelFormat::Format const format = context->getFormat();
    bool isOpened = false;
    std::string_view keyword;
    while (ModelInFormatAccess::current(imf, keyword)) {
        bool const isQuoted = ModelInFormatAccess::keywordQuoted(imf);
        if (!isQuoted && keyword.starts_with('}')) {
            imf.nextKeyword();
            return nullptr;
        }
        std::uint64_t const key = isQuoted ? ~std::uint64_t{0} : keywordOf(keyword);
        if (key == PRIORITY) {
            link.priority = DataInFormat<short>(in, format).get();
        } else if (key == PATH) {
            link.path = DataInFormat<std::string>(in, format).take();
        } else if (key == ACTION) {
            link.action = DataInFormat<std::string>(in, format).take();
        } else if (key == OPENER && !isOpened) {
            isOpened = true;
            imf.nextKeyword();
            if (!ModelInFormatAccess::isBlockStart(imf))
                continue;
        } else {
            ModelInFormat::cleanPropagateKeyword();
            return atOffset(addInfo(makeError(FILE_NAME, 432, UnknownKeyword), "Description",
                                    "Unknown Key: " + std::string(keyword)),
                            in);
        }
        if (in.fail())
            break;
        imf.nextKeyword();
    }
    // The block is still open.
    return readFailure(FILE_NAME, __LINE__, in, "The link cannot be read");
}

Result writeLinkBlock(std::ostream& out, std::shared_ptr<WriteContextBase const> const& context,
                      LinkText const& link) {
    WriteToScope scope(out, context);
    ModelOutFormat& mof = scope.getMof();
    ModelFormat::Format const format = context->getFormat();
    out.precision(8);
    mof.startBlock("ObserverPath").startValue("Path");
    if (link.path)
        DataOutFormat<std::string>(out, format).put(*link.path);
    mof.endValue().startValue("Priority");
    DataOutFormat<short>(out, format).put(link.priority);
    mof.endValue();
    if (link.action) {
        mof.startValue("Action");
        DataOutFormat<std::string>(out, format).put(*link.action);
        mof.endValue();
    }
    mof.endBlock();
    if (!out.good())
        return makeError(FILE_NAME, 482, StreamFailure);
    return nullptr;
}

Result ObserverPath::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (context == nullptr)
        return makeError(FILE_NAME, __LINE__, NoContext);
    LinkText link;
    link.priority = priority_;
    return readFrom(in, context, link);
}

Result ObserverPath::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> const& context,
                              LinkText& link) {
    Result result = readLinkBlock(in, context, link);
    if (has(REMOVED))
        return result;
    Hold const hold(*this);
    std::shared_ptr<RegisteredAction> released;
    if (link.priority != priority_) {
        priority_ = link.priority;
        if (list_ != nullptr)
            list_->rep_->priorityChanged();
    }
    if (link.action)
        released = exchangeAction(ObservationAccess::action(ActionContainer::the()->getToken(*link.action)));
    if (link.path)
        setText(std::make_unique<std::string>(*link.path), true);
    if (list_ != nullptr)
        mergeInto(list_->rep_->findEqual(LinkKey(*this, list_->rep_->numText > 0), this));
    if (link.path && !LinkReadingScope::isOpen())
        lookupObserver();
    return result;
}

Result ObserverPath::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) const {
    if (context == nullptr)
        return makeError(FILE_NAME, __LINE__, NoContext);
    Hold const hold(*this);
    LinkText link;
    link.priority = priority_;
    if (auto const name = getActionName())
        link.action = *name;
    link.path = documentPath();
    return writeLinkBlock(out, context, link);
}

// The string that the link was read with, as long as it means the same observer, or that has no other name.
// Runs foreign code: the caller holds the link.
std::optional<std::string> ObserverPath::documentPath() const {
    std::optional<std::string> path = getPath();
    if (!has(BY_REFERENCE) || !has(FROM_DOCUMENT) || text_ == nullptr || path == *text_)
        return path;
    std::string const text = *text_; // resolving calls foreign code
    Observer const* const observer = observer_;
    if (!path || resolve(owner_, text).get() == observer)
        return text;
    return path;
}

} // namespace Zorvan::AttributeContainer
