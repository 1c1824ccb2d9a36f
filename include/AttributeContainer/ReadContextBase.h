// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelFormat.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

class AttrContainer;
class ReferenceDictionary;

/// The rendering and the options of one read, and the hooks through which an application takes part in it.
///
/// Make one, set it up, and hand it to the outermost readFrom as a shared pointer to const; every nested read
/// gets the same pointer. It is not changed while it is in use, so separate reads on different threads may
/// share it, when its hooks bear being called by several and it has no dictionary.
class KX_ATTRIBUTECONTAINER_API ReadContextBase {
public:
    /// Reads the text rendering, accepts unknown containers, every other option is off.
    ReadContextBase();
    ReadContextBase(ReadContextBase const&) = default;
    ReadContextBase& operator=(ReadContextBase const&) = default;

    /// "ReadContextBase".
    static std::string const& getStaticClassName();
    /// The static class name of the most derived class.
    virtual std::string const& getClassName() const;
    virtual ~ReadContextBase();

    /// Makes the container for a class that nobody else knows; an empty pointer leaves it to the
    /// placeholders.
    virtual std::shared_ptr<AttrContainer> createObject(std::string const& typeName);
    /// Called each time that the end of a container's block is reached. Does nothing here.
    virtual void idle() const;
    /// The dictionary of the containers that occur more than once in the document; null: none. It stays the
    /// context's.
    virtual ReferenceDictionary* getReferenceDictionary() const;

    /// createObject() for readers, which hold their context as const.
    std::shared_ptr<AttrContainer> createObject(std::string const& typeName) const;

    /// The rendering to read, a ModelFormat::Format.
    ModelFormat::Format getFormat() const { return static_cast<ModelFormat::Format>(format_); }
    void setFormat(int format) { format_ = format; }

    /// For applications; the library only keeps it.
    bool readDemandData() const { return has(DemandData); }
    void setReadDemandData(bool on) { set(DemandData, on); }
    /// Only attributes that are marked already take over the values that are read.
    bool readMarked() const { return has(Marked); }
    void setReadMarked(bool on) { set(Marked, on); }
    /// For applications; the library only keeps it.
    bool updateObject() const { return has(UpdateObject); }
    void setUpdateObject(bool on) { set(UpdateObject, on); }
    /// For applications; the library only keeps it.
    bool readEncrypted() const { return has(Encrypted); }
    void setReadEncrypted(bool on) { set(Encrypted, on); }
    /// Fields of a class that cannot be made are kept in an UnknownAttrContainer.
    bool areUnknownContainersAccepted() const { return has(UnknownContainers); }
    void setAreUnknownContainersAccepted(bool on) { set(UnknownContainers, on); }

private:
    enum Flag : std::uint8_t {
        DemandData = 1,
        Marked = 2,
        UpdateObject = 4,
        Encrypted = 8,
        UnknownContainers = 16
    };

    bool has(Flag flag) const { return (flags_ & flag) != 0; }
    void set(Flag flag, bool on) { flags_ = static_cast<std::uint8_t>(on ? flags_ | flag : flags_ & ~flag); }

    int format_ = ModelFormat::Text;
    std::uint8_t flags_ = UnknownContainers;
};

} // namespace Zorvan::AttributeContainer
