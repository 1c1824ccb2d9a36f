// SPDX-License-Identifier: MIT
#include <AttributeContainer/Object.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

/// The components of a generic path; both slashes separate, empty components do not count.
std::vector<std::string_view> componentsOf(std::string_view path) {
    std::vector<std::string_view> components;
    while (!path.empty()) {
        auto const end = std::min(path.find_first_of("/\\"), path.size());
        if (end != 0)
            components.push_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return components;
}

constexpr int maxAskedAncestors = 256;

class DepthScope {
public:
    explicit DepthScope(int& depth) : depth_(depth) { ++depth_; }
    ~DepthScope() { --depth_; }
    DepthScope(DepthScope const&) = delete;
    DepthScope& operator=(DepthScope const&) = delete;

private:
    int& depth_;
};

/// The path that the names of an object and its ancestors give.
std::string pathByNames(std::shared_ptr<Object> object) {
    std::vector<std::string> names;
    for (auto parent = object->getParent(); parent; parent = object->getParent()) {
        names.push_back(object->getName());
        object = std::move(parent);
    }
    std::string path = names.empty() ? "/" : "";
    for (auto one = names.rbegin(); one != names.rend(); ++one)
        path.append("/").append(*one);
    return path;
}

std::optional<std::string const> optionalPath(std::string_view path) {
    return std::optional<std::string const>(std::string(path));
}

} // namespace

std::shared_ptr<Object> Object::getParent() const { return parent_.lock(); }

std::shared_ptr<Object> Object::findRoot() {
    auto root = std::static_pointer_cast<Object>(shared_from_this());
    while (auto parent = root->getParent())
        root = std::move(parent);
    return root;
}

std::shared_ptr<Object const> Object::findRoot() const { return const_cast<Object*>(this)->findRoot(); }

std::optional<std::string> Object::inqObjPath() {
    auto const parent = getParent();
    if (!parent)
        return "/";
    // Classes may answer otherwise than by their place, so each ancestor is asked; far up a very deep tree,
    // where that would need too much stack, the names alone count.
    static constinit thread_local int depth = 0;
    std::optional<std::string> path;
    if (depth < maxAskedAncestors) {
        DepthScope const scope(depth);
        path = parent->inqObjPath();
    } else {
        path = pathByNames(parent);
    }
    if (!path)
        return std::nullopt;
    if (path->empty() || path->back() != '/')
        *path += '/';
    return *path + getName();
}

std::optional<std::string> Object::inqObjPath() const { return const_cast<Object*>(this)->inqObjPath(); }

std::optional<std::string> Object::inqObjPath(Object const& base) {
    auto const ownPath = inqObjPath();
    auto const basePath = base.inqObjPath();
    if (!ownPath || !basePath)
        return std::nullopt;
    auto const own = componentsOf(*ownPath);
    auto const from = componentsOf(*basePath);
    auto const [ownRest, fromRest] = std::mismatch(own.begin(), own.end(), from.begin(), from.end());
    // The rules of lexically relative file paths: "." is no step, ".." takes one back.
    std::ptrdiff_t steps = 0;
    for (auto one = fromRest; one != from.end(); ++one)
        if (*one == "..")
            --steps;
        else if (*one != ".")
            ++steps;
    if (steps < 0)
        return std::string();
    if (steps == 0 && ownRest == own.end())
        return std::string(".");
    std::string relative;
    for (; steps > 0; --steps)
        relative.append(relative.empty() ? "~" : "/~");
    for (auto one = ownRest; one != own.end(); ++one)
        relative.append(relative.empty() ? "" : "/").append(*one);
    return relative;
}

std::weak_ptr<ObservingObject> Object::inqObserver(std::optional<std::string const> const& path) {
    return std::const_pointer_cast<ObservingObject>(std::as_const(*this).inqObserver(path).lock());
}

std::weak_ptr<ObservingObject const> Object::inqObserver(std::optional<std::string const> const& path) const {
    if (!path || path->empty())
        return AttrContainer::inqObserver(path);
    std::string_view const whole = *path;
    if (whole.front() == '/') {
        auto const rest = std::min(whole.find_first_not_of('/'), whole.size());
        return findRoot()->inqObserver(optionalPath(whole.substr(rest)));
    }
    if (whole.front() == '~') {
        if (auto above = std::shared_ptr<Object const>(getParent())) {
            if (whole == "~")
                return above;
            if (whole[1] == '/') {
                std::string_view rest = whole.substr(2);
                // Further steps up are taken here, one by one, not by recursion.
                while (rest.starts_with("~/")) {
                    auto next = above->getParent();
                    if (!next)
                        break;
                    above = std::move(next);
                    rest.remove_prefix(2);
                }
                return above->inqObserver(optionalPath(rest));
            }
        }
    }
    if (auto const& child = children_.inqChild(*path))
        return std::shared_ptr<ObservingObject const>(child);
    return AttrContainer::inqObserver(path);
}

std::shared_ptr<Object> Object::inqObject(std::optional<std::string> const& path) {
    std::optional<std::string const> target;
    if (path)
        target.emplace(*path);
    return std::dynamic_pointer_cast<Object>(inqObserver(target).lock());
}

std::shared_ptr<Object const> Object::inqObject(std::optional<std::string> const& path) const {
    return const_cast<Object*>(this)->inqObject(path);
}

} // namespace Zorvan::AttributeContainer
