// SPDX-License-Identifier: MIT
#pragma once

#include "DataFile.h"
#include "attributes/AttributeFixture.h"
#include "observation/ObservationAccess.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <stdexcept>

namespace Zorvan::AttributeContainer::Testing {

/// An attribute in a container in a tree, nobody else holds it, with the observers of the table.
class Scene {
public:
    /// `script` is what r does when it is asked, or when it is told. In a crowd, links that lead to nobody
    /// make the lists so long that links are found by index.
    Scene(std::string const& script, bool isAsked, int crowd) : isAsked_(isAsked), crowd_(crowd) {
        std::istringstream turns(script);
        for (std::string turn; std::getline(turns, turn, '>');)
            turns_.push_back(turn);
        auto const container = AttrContainer::create();
        auto const attribute = std::make_shared<CustAttr<int>>(1);
        tree_->addField(container, "container", 0);
        container->addAttribute(attribute, "attribute");
        attribute_ = attribute;
        for (auto const& [name, priority] : {std::pair('a', 3), {'c', 2}, {'r', 2}, {'b', 2}, {'d', 1}})
            for (bool const isPre : {true, false})
                link(*attribute, isPre, name, static_cast<short>(priority));
        for (bool const isPre : {true, false})
            link(*other_, isPre, 'x', 1);
        follow(*source_, *attribute);
        for (int i = 0; i < 2 * crowd; ++i) {
            std::string const nobody = "nobody" + std::to_string(i % crowd);
            auto const expected = i < crowd ? Observable::AddedInactive : Observable::AlreadyPresent;
            EXPECT_EQ(expected, attribute->addObserver(nobody, 1, NOTIFY, false));
            EXPECT_EQ(expected, attribute->addPreObserver(nobody, 1, PRE_NOTIFY, false));
        }
    }

    /// The calls of a change.
    std::string change(int value) {
        calls_.clear();
        lastKind_.clear();
        hasThrown_ = false;
        try {
            if (auto* const attribute = attribute_.lock().get())
                attribute->setValue(value);
        } catch (std::runtime_error const&) {
            hasThrown_ = true;
        }
        turns_.clear();
        return calls_;
    }
    std::string outcome() const {
        auto const attribute = attribute_.lock();
        return (attribute ? attribute->getValueAsText() : "gone") + (hasThrown_ ? ", thrown" : "");
    }
    /// What is left behind, as words; the numbers of links are those that the calls of a change tell.
    std::string faults(std::string const& calls) const {
        auto const attribute = attribute_.lock();
        std::string found = ObservationAccess::hasNotifyInfosOnThread() ? "infos " : "";
        if (Attribute::isObservingBlocked() || Attribute::isCachedAttributePending())
            found += "switches ";
        for (auto const& [name, observer] : observers_)
            if (name != 'x' && observer->watchesNothing() != (calls.find(name) == std::string::npos))
                found += std::string("entries of ") + name + ' ';
        if (!attribute)
            return found;
        auto const numLinks = attribute->getNumPrePaths() + attribute->getNumPostPaths();
        if (numLinks != static_cast<std::uint64_t>(std::ranges::count_if(calls, &isLetter) + 2 * crowd_))
            found += "links ";
        return found + (ObservationAccess::isWalking(*attribute) ? "a walk" : "");
    }

private:
    using Number = CustAttr<int>;

    static bool isLetter(char c) { return c >= 'a' && c <= 'z'; }

    std::shared_ptr<RecordingObserver> const& observer(char name) {
        auto& one = observers_[name];
        if (!one) {
            one = RecordingObserver::make({name}, unused_);
            one->toChange = handler(name, true);
            one->changed = handler(name, false);
        }
        return one;
    }
    Handler handler(char name, bool isPre) {
        return [this, name, isPre](Observable& observable, Cause const&) {
            auto& attribute = static_cast<Number&>(observable);
            int const proposed = proposedTo(attribute);
            std::string kind = name == 'x' ? "o" : "";
            kind += !isPre     ? attribute.getValueAsText() + "!"
                    : proposed ? std::to_string(proposed) + "?"
                               : "-?";
            if (kind != lastKind_)
                calls_ += (calls_.empty() ? "" : " ") + kind;
            lastKind_ = kind;
            calls_ += name;
            if (name != 'r' || isPre != isAsked_ || turns_.empty())
                return Action::ExecOk;
            std::istringstream acts(turns_.front());
            turns_.erase(turns_.begin());
            auto answer = Action::ExecOk;
            for (std::string one; std::getline(acts, one, ';');)
                act(attribute, one, answer);
            return answer;
        };
    }
    /// Gives the link of an observer another priority; adds it when there is none.
    void link(Number& attribute, bool isPre, char name, short priority) {
        Observer& one = *observer(name);
        std::uint64_t const token = isPre ? PRE_NOTIFY : NOTIFY;
        ObserverPath made(attribute, one, priority, token);
        if (std::uint64_t const found = attribute.lookupPath(made); found != NOT_FOUND) {
            attribute.getPath(found) = made;
            attribute.getPath(found).activate();
        } else if (isPre) {
            attribute.addPreObserver(one, priority, token, true);
        } else {
            attribute.addObserver(one, priority, token, true);
        }
    }
    static void unlink(Number& attribute, Observer& one, bool isPre) {
        ObserverPath like(attribute, one, 1, isPre ? PRE_NOTIFY : NOTIFY);
        EXPECT_TRUE(attribute.removePath(like));
    }

    void act(Number& attribute, std::string const& words, Action::ExecReturn& answer) {
        std::istringstream in(words);
        std::string verb, what;
        int number = 0;
        in >> verb >> what >> number;
        int const value = std::atoi(what.c_str());
        bool const isAll = what == "all";
        auto const priority = static_cast<short>(number);
        std::map<std::string, std::function<void()>> const acts{
            {"-", [] {}},
            {"ask", [&] { link(attribute, true, what[0], priority); }},
            {"tell", [&] { link(attribute, false, what[0], priority); }},
            {"unask", [&] { unlink(attribute, *observer(what[0]), true); }},
            {"untell", [&] { unlink(attribute, *observer(what[0]), false); }},
            {"remove", [&] { forEach(what, [&](auto const& one) { attribute.rmObserver(*one); }); }},
            {"end", [&] { isAll ? observers_.clear() : static_cast<void>(observers_.erase(what[0])); }},
            {"drop", [&] { drop(what); }},
            {"set", [&] { attribute.setValue(value); }},
            {"try", [&] { EXPECT_THROW(attribute.setValue(value), std::runtime_error); }},
            {"by", [&] { attribute.setValue(number, observer(what[0]), nullptr, nullptr); }},
            {"put", [&] { blocked([&](auto& one) { one.setValue(value); })(attribute); }},
            {"text", [&] { assignText(attribute, what); }},
            {"touch", [&] { attribute.touch(nullptr, nullptr); }},
            {"read", [&] { EXPECT_EQ(read(attribute, "Value " + what + "\n}"), nullptr); }},
            {"preask", [&] { attribute.preTouch(nullptr, nullptr); }},
            {"follow", [&] { source_->setValue(value); }},
            {"other", [&] { other_->setValue(value); }},
            {"refuse", [&] { refuse(attribute); }},
            {"stop", [&] { answer = Action::ExecStop; }},
            {"disable", [&] { attribute.setNotificationEnabled(false); }},
            {"throw", [] { throw std::runtime_error("thrown by r"); }},
        };
        acts.at(verb)();
    }
    template <class Use>
    void forEach(std::string const& what, Use const& use) {
        for (auto const& [name, one] : observers_)
            if (name != 'x' && (what == "all" || what[0] == name))
                use(one);
    }
    void drop(std::string const& what) {
        auto const container = tree_ ? tree_->getField("container").lock() : nullptr;
        if (what == "attribute")
            container->rmAttribute("attribute");
        else if (what == "container")
            tree_->rmField("container");
        else
            tree_.reset();
        if (what == "everything")
            observers_.clear();
    }

    bool isAsked_;
    int crowd_;
    std::vector<std::string> turns_; ///< what r does the next times
    std::shared_ptr<Object> tree_ = Object::create();
    std::weak_ptr<Number> attribute_;
    std::shared_ptr<Number> other_ = std::make_shared<Number>(1), source_ = std::make_shared<Number>();
    std::map<char, std::shared_ptr<RecordingObserver>> observers_;
    std::string calls_, lastKind_;
    bool hasThrown_ = false;
    Log unused_;
};

/// Does what the rows of tests/data/attributes/observation-matrix.txt say: all of them, or each `step`th one.
inline void expectObservationMatrix(std::size_t first = 0, std::size_t step = 1) {
    auto const rows = dataRows("attributes/observation-matrix.txt");
    for (std::size_t i = first; i < rows.size(); i += step)
        for (int const crowd : {0, 20}) {
            auto const& row = rows[i];
            SCOPED_TRACE(row.place + (crowd ? ", crowded" : ""));
            Scene scene(row[0], row.section == "asked", crowd);
            EXPECT_EQ(scene.change(5), row[1]);
            EXPECT_EQ(scene.outcome(), row[2]);
            EXPECT_EQ(scene.change(6), row[3]);
            if (row[0].find("disable") == std::string::npos) {
                EXPECT_EQ(scene.faults(row[3]), "");
            }
        }
}

} // namespace Zorvan::AttributeContainer::Testing
