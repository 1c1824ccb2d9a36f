// SPDX-License-Identifier: MIT
#include "DocumentFile.h"
#include "Files.h"
#include "Pairing.h"
#include "Placeholder.h"
#include "Sharing.h"
#include "TreePath.h"
#include "XmlRules.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/XMLSerialization.h>

#include <sstream>
#include <unordered_set>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// Finds what keeps the export of a tree from being well-formed XML, and what it leaves out.
class ExportCheck {
public:
    /// Texts are looked at when the export is known to hold something that XML forbids.
    ExportCheck(std::string const& fileName, bool hasChildren, bool checksTexts)
        : fileName_(fileName), hasChildren_(hasChildren), checksTexts_(checksTexts),
          context_(std::make_shared<WriteContextBase>(ModelFormat::Xml)) {}

    void check(AttrContainer& container) {
        // A shared container is looked at once.
        if (!checked_.insert(&container).second)
            return;
        checkName(container.getName());
        if (numBytesKept(container) != 0)
            warn("what is kept as text of an unknown class is not exported");

        for (auto const& attribute : attributesOf(container))
            if (isExported(*attribute.item))
                below(attribute, [&] { checkAttribute(attribute); });
        Members const members = membersOf(container);
        for (auto const& field : members.fields)
            below(field, [&] {
                if (!isXmlText(field.name) || field.name.find_first_of("<&\"") != std::string::npos)
                    warn("the name of the field is no value of an XML attribute");
                check(*field.item);
            });
        for (auto const& child : members.children)
            if (hasChildren_)
                below(child, [&] { check(*child.item); });
    }

    void finish() const {
        if (numWarnings_ > maxWarnings)
            printMessage(fileName_, "warning: and " + std::to_string(numWarnings_ - maxWarnings) + " more");
    }

private:
    static constexpr std::size_t maxWarnings = 20;

    static bool isExported(Attribute const& attribute) {
        constexpr int notExported = 32;
        AttrDefinition const* definition = attribute.getDefinition();
        return !definition || (definition->category & notExported) == 0;
    }

    /// Does something one step further down.
    template <class T, class Do>
    void below(Named<T> const& member, Do const& act) {
        std::size_t const length = path_.size();
        appendStep(path_, member.name, member.ordinal);
        act();
        path_.resize(length);
    }

    void checkAttribute(Named<Attribute> const& attribute) {
        checkName(attribute.name);
        if (!checksTexts_)
            return;
        std::ostringstream text;
        if (auto const failure = attribute.item->writeTo(text, context_); !failure && !isXmlText(text.view()))
            warn("the value holds a control character that XML forbids");
    }

    void checkName(std::string const& name) {
        if (!isXmlName(name))
            warn("\"" + onOneLine(name) + "\" is no XML name");
    }

    void warn(std::string const& what) {
        if (++numWarnings_ <= maxWarnings)
            printMessage(fileName_, "warning: " + (path_.empty() ? "/" : onOneLine(path_)) + ": " + what);
    }

    std::string const& fileName_;
    bool hasChildren_;
    bool checksTexts_;
    std::shared_ptr<WriteContextBase> context_;
    std::unordered_set<AttrContainer const*> checked_;
    std::string path_;
    std::size_t numWarnings_ = 0;
};

} // namespace

Status exportXml(ExportOptions const& options) {
    DocumentFile file(options.in);
    if (!file.isWhole(false))
        return Status::Failed;
    AttrContainer& root = *file.document().root;
    // The export writes a shared container wherever it stands.
    if (!canBeUnshared(root)) {
        printMessage(file.name(),
                     "its shared instances stand in too many places, or too deep, to be exported");
        return Status::Failed;
    }
    std::ostringstream out;
    auto const context = std::make_shared<WriteContextBase>(ModelFormat::Xml);
    auto const failure = options.hasChildren ? XMLSerialization::toWithChildren(out, root, context)
                                             : XMLSerialization::to(out, root, context);
    if (failure) {
        file.report().print(*failure);
        return Status::Failed;
    }
    ExportCheck check(file.name(), options.hasChildren, !isXmlText(out.view()));
    check.check(root);
    check.finish();
    writeAll(options.out, std::move(out).str());
    return Status::Good;
}

} // namespace kxmodel
