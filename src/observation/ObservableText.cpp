// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "foundation/MakeError.h"
#include "observation/LinkReading.h"
#include "observation/LinkText.h"
#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/Observer.h>
#include <AttributeContainer/ObserverRelationTable.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WriteToScope.h>

#include <algorithm>
#include <istream>
#include <ostream>
#include <tuple>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char const* FILE_NAME = "Observable";

// The first error stays; until there is one, the first warning.
void record(Result& recorded, Result error) {
    if (error != nullptr && (recorded == nullptr || (recorded->isWarning() && !error->isWarning())))
        recorded = std::move(error);
}

/// One link as it goes to a document or to a copy.
struct OrderedLink {
    std::uint64_t addition;
    LinkText text;
};

} // namespace

int Observable::copyFrom(Observable const& other) {
    PreserveObserverRelation const scope;
    if (&other == this)
        return 1;
    // Asking observers for their paths may run foreign code.
    std::shared_ptr<ObservingObject const> const heldOther = other.weak_from_this().lock();
    std::shared_ptr<ObservingObject const> const self = weak_from_this().lock();
    for (bool const isPre : {true, false}) {
        // In the order of addition, so that copies of links with equal priorities keep it whatever is live.
        std::vector<std::pair<std::uint64_t, std::unique_ptr<ObserverPath>>> links;
        std::vector<UnknownLink> unknown;
        ObserverList* const from = ObservationAccess::findList(other, isPre); // nothing of it is changed
        if (from != nullptr && !from->empty()) {
            ObserverWalk walk(*from);
            while (ObserverPath const* const path = walk.next()) {
                if (path->priority_ <= 0 || path->isTemporary() || !path->hasAction())
                    continue;
                bool const isNamed = path->text_ != nullptr || path->getPath().has_value();
                if (isNamed && !path->has(ObserverPath::REMOVED))
                    links.emplace_back(path->addition_, std::make_unique<ObserverPath>(*this, *path));
            }
        }
        if (from != nullptr && from->rep_ != nullptr && from->rep_->unknown != nullptr)
            for (UnknownLink const& link : from->rep_->unknown->links)
                if (link.text.priority > 0)
                    unknown.push_back(link);
        std::ranges::sort(links, {}, [](auto const& link) { return link.first; });
        if (links.empty() && unknown.empty()) {
            if (ObserverList* const list = ObservationAccess::findList(*this, isPre))
                list->sort();
            continue;
        }
        ObserverList& list = ObservationAccess::listOf(*this, isPre);
        // The links of one list are distinct. Comparing them may resolve paths, which an observable that is
        // still being constructed cannot answer.
        bool const isNew = list.empty();
        auto nextUnknown = unknown.begin();
        for (auto& [addition, link] : links) {
            for (; nextUnknown != unknown.end() && nextUnknown->addition < addition; ++nextUnknown)
                keepUnknownLink(isPre, nextUnknown->text);
            if (isNew)
                list.add(std::move(link));
            else
                addTo(list, std::move(link), false);
        }
        for (; nextUnknown != unknown.end(); ++nextUnknown)
            keepUnknownLink(isPre, nextUnknown->text);
        list.sort();
        LinkReadingScope::enlist(*this);
    }
    return 1;
}

void Observable::keepUnknownLink(bool isPre, LinkText link) {
    if (link.path && link.path->empty())
        link.path.reset(); // both are written as an empty value
    ObserverList::Rep& list = ObservationAccess::listOf(*this, isPre).rep();
    if (list.unknown == nullptr)
        list.unknown = std::make_unique<UnknownLinks>();
    std::string key = link.path.value_or("");
    key.append(1, '\0').append(link.action.value_or(""));
    if (!list.unknown->known.insert(std::move(key)).second)
        return;
    list.unknown->links.push_back({std::move(link), static_cast<std::uint64_t>(++list.lastNumber)});
}

Result Observable::readFrom(std::istream& in, std::shared_ptr<ReadContextBase const> context) {
    if (context == nullptr)
        return makeError(FILE_NAME, 627, NoContext);
    ReadFromScope scope(in, context);
    ModelInFormat& imf = scope.getImf();
    bool const isXml = context->getFormat() == ModelFormat::XmlV2;
    bool isPre = false;
    bool isInSection = false; // behind the opener of a section, before its link or, in XML, its end tag
    Result recorded;
    std::string_view keyword;
    while (ModelInFormatAccess::current(imf, keyword)) {
        bool const isQuoted = ModelInFormatAccess::keywordQuoted(imf);
        if (!isQuoted && keyword.starts_with('}')) {
            if (isXml && isInSection) {
                isInSection = false;
                imf.nextKeyword();
                continue;
            }
            ModelInFormat::setPropagateKeyword(std::string(keyword));
            return recorded;
        }
        if (!isQuoted && (keyword == "PreObserver" || keyword == "PostObserver")) {
            isPre = keyword == "PreObserver";
            isInSection = true;
            imf.nextKeyword();
            if (isXml)
                imf.nextKeyword();
        } else if (!isQuoted && keyword == "ObserverPath") {
            if (Result error = readLink(in, context, isPre, recorded))
                return error;
            if (isXml && ModelInFormatAccess::isBlockEnd(imf))
                imf.nextKeyword();
            isInSection = false;
        } else {
            Result error = atOffset(makeError(FILE_NAME, 737, UnknownKeyword), in);
            if (recorded != nullptr)
                error = addNested(std::move(error), *recorded);
            return error;
        }
    }
    if (isInSection || in.bad())
        return readFailure(FILE_NAME, __LINE__, in, "The link cannot be read");
    return recorded;
}

// Reads one link and adds it. What does not end the read is recorded.
Result Observable::readLink(std::istream& in, std::shared_ptr<ReadContextBase const> const& context,
                            bool isPre, Result& recorded) {
    auto path = std::make_unique<ObserverPath>();
    path->owner_ = this;
    path->priority_ = 1;
    path->setTemporary(false);
    LinkText link;
    link.priority = 1;
    if (Result error = path->readFrom(in, context, link)) {
        if (!error->isWarning())
            return error;
        record(recorded, std::move(error));
    }
    if (path->hasAction()) {
        int const added = addTo(ObservationAccess::listOf(*this, isPre), std::move(path), true);
        if (added == 2 || added > AlreadyPresent) { // no outcome that this version knows
            keepUnknownLink(isPre, std::move(link));
            record(recorded, atOffset(makeError(FILE_NAME, 694, TargetMissing), in));
        }
        LinkReadingScope::enlist(*this);
        return nullptr;
    }
    keepUnknownLink(isPre, std::move(link));
    record(recorded, atOffset(makeError(FILE_NAME, 674, ObserverUnresolved), in));
    return nullptr;
}

Result Observable::writeTo(std::ostream& out, std::shared_ptr<WriteContextBase const> context) {
    if (context == nullptr)
        return makeError(FILE_NAME, __LINE__, NoContext);
    if (context->getFormat() == ModelFormat::Xml || context->writeOnlyMarked())
        return nullptr;
    if (!ObservationAccess::hasLinks(*this))
        return out.good() ? nullptr : makeError(FILE_NAME, 618, StreamFailure);
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    for (bool const isPre : {true, false})
        if (Result error = writeLinks(out, context, isPre))
            return error;
    if (!out.good())
        return makeError(FILE_NAME, 618, StreamFailure);
    return nullptr;
}

Result Observable::writeLinks(std::ostream& out, std::shared_ptr<WriteContextBase const> const& context,
                              bool isPre) {
    std::vector<OrderedLink> links;
    ObserverList* const list = ObservationAccess::findList(*this, isPre);
    if (list == nullptr || list->rep_ == nullptr)
        return nullptr;
    if (!list->empty()) {
        ObserverWalk walk(*list);
        while (ObserverPath const* const path = walk.next()) {
            if (path->priority_ < 1 || path->isTemporary() || !path->hasAction())
                continue;
            OrderedLink link{path->addition_, {path->priority_, std::nullopt, *path->getActionName()}};
            link.text.path = path->documentPath();
            if (link.text.path && !link.text.path->empty())
                links.push_back(std::move(link));
        }
    }
    if (list->rep_->unknown != nullptr)
        for (UnknownLink const& link : list->rep_->unknown->links)
            if (link.text.priority >= 1)
                links.push_back({link.addition, link.text});
    if (links.empty())
        return nullptr;
    std::ranges::sort(links, {},
                      [](OrderedLink const& link) { return std::tuple(link.text.priority, link.addition); });

    WriteToScope scope(out, context);
    ModelOutFormat& mof = scope.getMof();
    bool const isText = context->getFormat() == ModelFormat::Text;
    char const* const name = isPre ? "PreObserver" : "PostObserver";
    for (OrderedLink const& link : links) {
        isText ? mof.startValue(name) : mof.startBlock(name);
        Result error = writeLinkBlock(out, context, link.text);
        if (error != nullptr && !error->isWarning())
            return error;
        isText ? mof.endValue() : mof.endBlock();
    }
    return nullptr;
}

void ObservationAccess::dropUnknownLinks(Observable& observable) {
    for (ObserverList* const list : listsOf(observable))
        if (list != nullptr && list->rep_ != nullptr)
            list->rep_->unknown.reset();
}

} // namespace Zorvan::AttributeContainer
