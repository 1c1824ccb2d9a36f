// SPDX-License-Identifier: MIT
#include "DocumentFile.h"
#include "TreePath.h"
#include "TreeText.h"

#include <AttributeContainer/ActionContainer.h>

#include <limits>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

struct Assignment {
    std::string_view path;
    std::shared_ptr<Attribute> target;
    std::shared_ptr<Attribute> value;
};

/// Is asked after all others whether a change may be made, so that it sees their refusal.
class RefusalWitness : public Observer {
public:
    std::string getName() override { return "RefusalWitness"; }
    Action::ExecReturn toChangeNotify(Observable& observable,
                                      std::optional<std::reference_wrapper<ObservingObject>>&) override {
        isAsked_ = true;
        if (auto const refusal =
                std::dynamic_pointer_cast<InfoFailed>(observable.lookupNotifyInfo(typeid(InfoFailed))))
            reason_ = refusal->error ? describe(*refusal->error) : "no reason is given";
        return Action::ExecOk;
    }

    bool isAsked() const { return isAsked_; }
    /// Empty unless the change was refused.
    std::string const& reason() const { return reason_; }

private:
    bool isAsked_ = false;
    std::string reason_;
};

/// Finds the attribute and reads the value; otherwise `why` says what is wrong.
std::optional<Assignment> prepare(Document const& document, std::string const& text, std::string& why) {
    std::size_t const sign = findAssignment(text);
    if (sign == text.npos) {
        why = "\"" + onOneLine(text) + "\" has no \"=\" between a path and a value";
        return std::nullopt;
    }
    Assignment assignment{std::string_view(text).substr(0, sign), {}, {}};
    PathTarget const found = resolvePath(document.root, assignment.path);
    if (!found.attribute) {
        why = found.why;
        return std::nullopt;
    }
    assignment.target = found.attribute;
    std::string const value = text.substr(sign + 1);
    assignment.value = parseValue(*found.attribute, value);
    if (!assignment.value) {
        why.append(onOneLine(assignment.path)).append(": \"").append(onOneLine(value)).append("\" is no ") +=
            shortTypeOf(*found.attribute);
        return std::nullopt;
    }
    return assignment;
}

/// Makes the notified change; the reason when it was refused, otherwise nothing.
std::string assign(Assignment const& assignment) {
    auto const witness = std::make_shared<RefusalWitness>();
    std::uint64_t const preNotify = ActionContainer::the()->getToken("PreNotify");
    Attribute& target = *assignment.target;
    target.addPreObserver(*witness, std::numeric_limits<short>::min(), preNotify, true);
    target = *assignment.value;
    target.rmObserver(*witness);
    // An observer may keep the others from being asked.
    if (!witness->isAsked() && target.isDifferent(*assignment.value))
        return "no reason is given";
    return witness->reason();
}

} // namespace

Status set(SetOptions const& options) {
    DocumentFile file(options.file);
    if (!file.isWhole(false))
        return Status::Failed;

    std::vector<Assignment> assignments;
    for (std::string const& text : options.assignments) {
        std::string why;
        auto const assignment = prepare(file.document(), text, why);
        if (!assignment) {
            printMessage(file.name(), why);
            return Status::Failed;
        }
        assignments.push_back(*assignment);
    }
    for (Assignment const& assignment : assignments) {
        std::string const reason = assign(assignment);
        if (!reason.empty()) {
            printMessage(file.name(), onOneLine(assignment.path) + ": the change is refused: " + reason);
            return Status::Failed;
        }
    }
    return file.write(options.out.value_or(options.file), file.document().rendering);
}

} // namespace kxmodel
