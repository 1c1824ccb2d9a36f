// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ObserverInfo.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// Free-form texts by key, attached to a change for the observers that know the keys.
class KX_ATTRIBUTECONTAINER_API InfoStringMap : public ObserverInfo {
public:
    InfoStringMap() = default;
    InfoStringMap(InfoStringMap const& other) = default;
    explicit InfoStringMap(std::map<std::string, std::string> infos);
    ~InfoStringMap() override;

    /// Takes over the texts of the other map; whether this info expires stays as it is.
    InfoStringMap& operator=(InfoStringMap const& other);

    /// "InfoStringMap".
    static std::string const& getStaticClassName();
    std::string const& getClassName() const override;

    /// Inserts or overwrites one text. Exists for T = std::string only.
    template <typename T>
    void addInfo(std::string const& key, T const& value);
    /// The text of a key; an empty text when there is none.
    std::optional<std::string> getInfoByKey(std::string const& key) const;
    /// All texts.
    std::map<std::string, std::string> const& getInfos() const { return infos_; }
    /// Replaces all texts.
    void setInfos(std::map<std::string, std::string> infos);
    /// Number of texts.
    std::uint64_t getNumberInfos() const { return infos_.size(); }

private:
    std::map<std::string, std::string> infos_;
};

template <>
KX_ATTRIBUTECONTAINER_API void InfoStringMap::addInfo<std::string>(std::string const& key,
                                                                   std::string const& value);

} // namespace Zorvan::AttributeContainer
