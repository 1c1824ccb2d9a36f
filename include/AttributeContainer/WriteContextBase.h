// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelFormat.h>

#include <cstdint>
#include <string>

namespace Zorvan::AttributeContainer {

class SharedInstanceCollection;

/// The rendering and the options of one write, and the hook through which an application collects shared
/// instances.
///
/// Make one, set it up, and hand it to the outermost writeTo as a shared pointer to const; every nested write
/// gets the same pointer. It is not changed while it is in use, so separate writes on different threads may
/// share it, unless it collects shared instances.
class KX_ATTRIBUTECONTAINER_API WriteContextBase {
public:
    /// Writes the rendering `format` (a ModelFormat::Format), with children and fields; every other option is
    /// off.
    explicit WriteContextBase(int format = ModelFormat::Text);
    WriteContextBase(WriteContextBase const&) = default;
    WriteContextBase& operator=(WriteContextBase const&) = default;

    /// "WriteContextBase".
    static std::string const& getStaticClassName();
    /// The static class name of the most derived class.
    virtual std::string const& getClassName() const;
    virtual ~WriteContextBase();

    /// Where containers that are met a second time are noted, to be written as references; null: they are
    /// written in full each time. It stays the context's.
    ///
    /// Whether a container was met before is its own flag, which stays set after the write: clear it
    /// (AttrContainer::setIsSerialized) in the whole tree before the tree is written again. The collection is
    /// complete when the tree is written; a document that has it in front needs a first pass into a stream
    /// that throws away what it gets.
    virtual SharedInstanceCollection* getSharedInstances() const;

    /// The rendering to write, a ModelFormat::Format.
    ModelFormat::Format getFormat() const { return static_cast<ModelFormat::Format>(format_); }
    void setFormat(int format) { format_ = format; }

    /// Only marked attributes, and fields that hold some, are written.
    bool writeOnlyMarked() const { return has(OnlyMarked); }
    void setWriteOnlyMarked(bool on) { set(OnlyMarked, on); }
    /// Only marked child objects are written.
    bool writeOnlyMarkedObjects() const { return has(OnlyMarkedObjects); }
    void setWriteOnlyMarkedObjects(bool on) { set(OnlyMarkedObjects, on); }
    /// For applications; the library only keeps it.
    bool writeDemandData() const { return has(DemandData); }
    void setWriteDemandData(bool on) { set(DemandData, on); }
    /// Values that equal the initial value of their type (0, false, empty) are written too.
    bool writeDefaultValues() const { return has(DefaultValues); }
    void setWriteDefaultValues(bool on) { set(DefaultValues, on); }
    /// An object without a UUID gets one before it is written.
    bool createObjectUuid() const { return has(ObjectUuid); }
    void setCreateObjectUuid(bool on) { set(ObjectUuid, on); }
    /// The children of objects are written.
    bool writeChildren() const { return has(Children); }
    void setWriteChildren(bool on) { set(Children, on); }
    /// The fields of containers are written.
    bool writeFields() const { return has(Fields); }
    void setWriteFields(bool on) { set(Fields, on); }
    /// For applications; the library only keeps it.
    bool writeEncrypted() const { return has(Encrypted); }
    void setWriteEncrypted(bool on) { set(Encrypted, on); }

private:
    enum Flag : std::uint8_t {
        OnlyMarked = 1,
        OnlyMarkedObjects = 2,
        DemandData = 4,
        DefaultValues = 8,
        ObjectUuid = 16,
        Children = 32,
        Fields = 64,
        Encrypted = 128
    };

    bool has(Flag flag) const { return (flags_ & flag) != 0; }
    void set(Flag flag, bool on) { flags_ = static_cast<std::uint8_t>(on ? flags_ | flag : flags_ & ~flag); }

    int format_ = ModelFormat::Text;
    std::uint8_t flags_ = Children | Fields;
};

} // namespace Zorvan::AttributeContainer
