// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/RegKeys.h>
#include <AttributeContainer/Visitor.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

/// The base keys of a walk. Those that are empty, or cannot be opened, are passed over.
using RegKeysArray = std::vector<std::shared_ptr<RegKeys const>>;

/// The base of the visitors that keep the values of a tree in the registry. Each attribute is one value, of
/// the attribute's name, in the key of its container; the key of a field is a subkey, of the field's registry
/// name, of its parent's key. The visited root is the base key itself. Attributes of a category with the bit
/// 0x20 are left out, and so are fields whose key name an earlier field of the same container has.
///
///     AttrWriteRegistry writer(keys, 0, 100);
///     root->attributeVisitor(writer, true);
///
/// The base keys stay open until the visitor goes. A visitor serves one walk at a time, on one thread.
class KX_ATTRIBUTECONTAINER_API AttrRegistryVisitor : public AttributeVisitor {
public:
    AttrRegistryVisitor(AttrRegistryVisitor const&) = delete;
    AttrRegistryVisitor& operator=(AttrRegistryVisitor const&) = delete;
    ~AttrRegistryVisitor() override;

    using AttributeVisitor::visit;
    using AttributeVisitor::visitDone;
    /// Enters the container's key. `Ignored` for a field whose key name is taken; `SkipChildren` without
    /// base keys, or when a key cannot be created.
    VisitResult visit(AttrContainer& container) override;
    /// Leaves the container's key.
    VisitResult visitDone(AttrContainer& container) override;

protected:
    AttrRegistryVisitor(RegKeysArray const& baseKeys, bool writes, unsigned int firstLevel,
                        unsigned int maxLevel);

    /// The keys of the current container, one for each base key; empty where that could not be opened.
    std::vector<std::shared_ptr<RegKeys>> const& keys() const { return keys_; }
    /// Whether the attribute's category keeps it out of the registry.
    static bool isLeftOut(Attribute const& attribute);
    /// Back to where a walk begins.
    void restart();

private:
    struct Frame {
        std::string keyName;
        std::shared_ptr<AttrContainer> container;
        std::set<std::string> usedKeyNames; ///< of its fields, in the case that the registry compares
    };

    bool enter(AttrContainer& container);
    bool updatePaths();

    bool writes_;
    std::vector<std::shared_ptr<RegKeys>> keys_;
    std::vector<std::string> basePrefixes_;
    std::vector<Frame> frames_;
};

/// Assigns to attributes what the registry holds for them. The last base key that has a value decides; values
/// that do not parse become what the attribute's reader makes of them.
class KX_ATTRIBUTECONTAINER_API AttrReadRegistry : public AttrRegistryVisitor {
public:
    /// Without `notify` observers are not told of the new values.
    AttrReadRegistry(RegKeysArray const& baseKeys, bool notify, unsigned int firstLevel,
                     unsigned int maxLevel);
    /// With one base key.
    AttrReadRegistry(std::shared_ptr<RegKeys const> baseKey, bool notify, unsigned int firstLevel,
                     unsigned int maxLevel);
    ~AttrReadRegistry() override;

    using AttrRegistryVisitor::visit;
    /// Assigns to the attribute what is found for it; `Continue`. Throws what observers throw.
    VisitResult visit(Attribute& attribute) override;

    /// How many attributes were assigned to.
    int getNumRead() const { return numRead_; }

private:
    bool notify_;
    int numRead_ = 0;
};

/// Writes the values of attributes, as text, to every base key. What cannot be written is not reported.
class KX_ATTRIBUTECONTAINER_API AttrWriteRegistry : public AttrRegistryVisitor {
public:
    /// Opens the base keys; those that are missing are not created.
    AttrWriteRegistry(RegKeysArray const& baseKeys, unsigned int firstLevel, unsigned int maxLevel);
    /// With one base key.
    AttrWriteRegistry(std::shared_ptr<RegKeys const> baseKey, unsigned int firstLevel, unsigned int maxLevel);
    ~AttrWriteRegistry() override;

    using AttrRegistryVisitor::visit;
    /// Writes the attribute's value; `Ignored` when no base key could be opened.
    VisitResult visit(Attribute& attribute) override;
};

} // namespace Zorvan::AttributeContainer
