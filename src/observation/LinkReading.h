// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

#include <memory>
#include <vector>

namespace Zorvan::AttributeContainer {

/// While a tree is read, its links stay path strings: what they name may not be there yet, or not be where it
/// will be. Every readFrom of a container opens such a scope; the outermost one of a document resolves and
/// activates the links of all observables that got some.
class LinkReadingScope {
public:
    /// `outermost`: this read is the outermost on its stream. A handler may read a document of its own while
    /// another one is being read.
    explicit LinkReadingScope(bool outermost);
    LinkReadingScope(LinkReadingScope const&) = delete;
    LinkReadingScope& operator=(LinkReadingScope const&) = delete;
    /// Forgets what was noted when finish() was not called.
    ~LinkReadingScope();

    /// In the outermost scope, updates the links of every observable that was noted and still lives. Absolute
    /// paths start at `root` unless the thread has a path root. Does nothing in other scopes.
    void finish(std::shared_ptr<Observer> const& root);

    /// Whether a scope is open on the calling thread.
    static bool isOpen() noexcept;
    /// Notes an observable that got links, when a scope is open; weakly, so that it may go meanwhile.
    static void enlist(Observable& observable);

private:
    LinkReadingScope* const enclosing_;
    LinkReadingScope* const document_; ///< the outermost scope of this document
    std::vector<std::weak_ptr<Observable>> observables_;
};

/// Where absolute paths start on the calling thread while it has no path root. Scopes nest; an empty root
/// leaves the enclosing one in force.
class PathRootScope {
public:
    explicit PathRootScope(std::shared_ptr<Observer> const& root);
    PathRootScope(PathRootScope const&) = delete;
    PathRootScope& operator=(PathRootScope const&) = delete;
    ~PathRootScope();

    /// The thread's path root, else the root of the innermost scope, else null.
    static std::shared_ptr<Observer> effectiveRoot();

private:
    PathRootScope* const enclosing_;
    std::shared_ptr<Observer> const root_;
};

} // namespace Zorvan::AttributeContainer
