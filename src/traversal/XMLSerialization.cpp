// SPDX-License-Identifier: MIT
#include <AttributeContainer/XMLSerialization.h>

#include "containers/ContainerAccess.h"
#include "containers/TraversalPath.h"
#include "foundation/MakeError.h"
#include "serialization/TextSink.h"
#include "traversal/NameMatcher.h"

#include <AttributeContainer/Version.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>

#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr char sourceName[] = "XMLSerialization";
constexpr int categoryNotWritten = 32;

std::string attributeText(std::string_view key, std::string_view value) {
    return std::string(key).append("=\"").append(value).append("\"");
}

/// "int" for "Attr<int>"; the class names of other attributes are kept.
std::string_view typeText(std::string_view className) {
    constexpr std::string_view opening = "Attr<";
    if (className.starts_with(opening) && className.ends_with('>'))
        return className.substr(opening.size(), className.size() - opening.size() - 1);
    return className;
}

class XmlExport {
public:
    XmlExport(std::ostream& out, std::shared_ptr<WriteContextBase> context, bool writesChildren)
        : out_(out), context_(std::move(context)), writesChildren_(writesChildren) {}

    Result writeDocument(AttrContainer& container) {
        context_->setFormat(ModelFormat::Xml);
        TextSink(out_)
            .append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root version=\"")
            .append(version.getFormatVersion()->getReleaseNumbers())
            .append("\" format=\"0\">\n")
            .finish();
        if (auto error = writeContainer(container, {}))
            return error;
        TextSink(out_).append("</Root>").finish();
        out_.flush(); // What does not reach a full disk is missed here and not when the stream goes.
        return out_.good() ? nullptr : makeError(sourceName, __LINE__, StreamFailure);
    }

private:
    Result writeContainer(AttrContainer& container, std::string_view fieldName) {
        if (context_->writeOnlyMarkedObjects()) {
            auto const first = ContainerAccess::firstAttribute(container);
            if (!first || !first->isMarked())
                return nullptr;
        }
        if (TraversalPath::depthOf(this) == TraversalPath::maxDepth)
            return addInfo(makeError(sourceName, __LINE__, StreamFailure), "Description",
                           "The containers nest too deep");
        TraversalPath const path(this, &container);
        if (!path.isEntered())
            return nullptr;
        context_->setFormat(ModelFormat::Xml);
        WriteToScope scope(out_, context_);
        ModelOutFormat& mof = scope.getMof();
        std::string attributes = attributeText("type", container.getClassName());
        if (!fieldName.empty())
            attributes.append(" ").append(attributeText("fieldname", fieldName));
        mof.startBlock(container.getName(), attributes);
        mof.startBlock("fields");
        if (auto error = writeFields(container))
            return error;
        mof.endBlock();
        mof.startBlock("attrs");
        if (auto error = writeAttributes(container, mof))
            return error;
        mof.endBlock();
        if (auto* object = writesChildren_ ? dynamic_cast<Object*>(&container) : nullptr) {
            mof.startBlock("children");
            if (auto error = writeChildren(*object))
                return error;
            mof.endBlock();
        }
        mof.endBlock();
        return nullptr;
    }

    Result writeFields(AttrContainer& container) {
        FieldNames const fields(container);
        for (std::uint64_t i = 0; i < fields.size(); ++i)
            if (auto const field = fields.at(i)) {
                std::uint64_t const token = ContainerAccess::fields(container)->getFirstToken() + i;
                if (auto error = writeContainer(*field, container.getFieldName(token).value_or("")))
                    return error;
            }
        return nullptr;
    }

    Result writeAttributes(AttrContainer& container, ModelOutFormat& mof) {
        AttributeNames const attributes(container);
        for (std::uint64_t i = 0; i < attributes.size(); ++i) {
            auto const attribute = attributes.at(i);
            auto const* definition = container.getAttrDefinition(attributes.tokenOf(i));
            if (!attribute || (definition && (definition->category & categoryNotWritten)) ||
                (context_->writeOnlyMarked() && !attribute->isMarked()))
                continue;
            mof.startBlock(std::string(attributes.nameAt(i)),
                           attributeText("type", typeText(attribute->getClassName())));
            if (auto result = attribute->writeTo(out_, context_); result && !result->isWarning())
                return result;
            mof.endBlock();
        }
        return nullptr;
    }

    Result writeChildren(Object& object) {
        for (std::uint64_t i = 0; i < object.children().getNumChildren(); ++i) {
            auto const child = object.children().getChild(i);
            if (auto error = writeContainer(*child, {}))
                return error;
        }
        return nullptr;
    }

    std::ostream& out_;
    std::shared_ptr<WriteContextBase> context_;
    bool writesChildren_;
};

Result writeDocument(std::ostream& out, AttrContainer const& container,
                     std::shared_ptr<WriteContextBase> context, bool writesChildren) {
    if (!context)
        return makeError(sourceName, __LINE__, NoContext);
    auto const held = container.weak_from_this().lock(); // Attributes of applications may let go of the tree.
    // Writing is not constant, since classes of applications may make values on demand.
    return XmlExport(out, std::move(context), writesChildren)
        .writeDocument(const_cast<AttrContainer&>(container));
}

} // namespace

Result XMLSerialization::to(std::ostream& out, AttrContainer const& container,
                            std::shared_ptr<WriteContextBase> context) {
    return writeDocument(out, container, std::move(context), false);
}

Result XMLSerialization::toWithChildren(std::ostream& out, AttrContainer const& container,
                                        std::shared_ptr<WriteContextBase> context) {
    return writeDocument(out, container, std::move(context), true);
}

} // namespace Zorvan::AttributeContainer
