// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>

namespace Zorvan::AttributeContainer {

/// A named version number of five levels with a revision text.
class KX_ATTRIBUTECONTAINER_API VersionNum {
public:
    std::string name;
    int major;
    int minor;
    int patch;
    int internal;
    int beta;
    std::string revision;

    /// The format version of the global record `version`. Takes `Version::versionProtect`.
    VersionNum();
    /// Named like the application version of the global record `version`. Takes `Version::versionProtect`.
    VersionNum(int majorLevel, int minorLevel, int patchLevel, int internalLevel, int betaLevel,
               std::string const& revisionText);
    VersionNum(std::string const& versionName, int majorLevel, int minorLevel, int patchLevel,
               int internalLevel, int betaLevel, std::string const& revisionText);

    /// "major.minor.patch.internal", and ".beta" when that is not 0.
    [[nodiscard]] std::string getReleaseNumbers() const;
    /// "major.minor".
    [[nodiscard]] std::string getShortReleaseNumbers() const;
    /// The same as `getReleaseNumbers`.
    [[nodiscard]] std::string getUIReleaseNumbers() const;
    /// The revision text.
    [[nodiscard]] std::string getRevision() const;

    /// Copies in which the named level and all below it are 0 and the revision is empty.
    [[nodiscard]] VersionNum maskMinorLevel() const;
    [[nodiscard]] VersionNum maskPatchLevel() const;
    [[nodiscard]] VersionNum maskInternalLevel() const;
    [[nodiscard]] VersionNum maskBetaLevel() const;

    /// Whether `candidate` is newer than `current` by major, minor, patch and internal level. The patch
    /// levels 1000 and 100 mark versions under way: they rank below all others, 1000 lowest.
    [[nodiscard]] static bool isVersionNumberNewer(VersionNum current, VersionNum candidate);

    /// Reads "major.minor.patch.internal" and, when a "." follows, the beta level, which is 0 otherwise.
    /// White space in front of a level or a "." is skipped. Decimal in every locale; the state bits are those
    /// that `>>` sets. False when one of the first three "." is missing: what stands in its place is left in
    /// the stream, and the levels before it have their new values.
    bool setVersionNumbersFrom(std::istream& in);
    /// The same from the front of a text, which keeps what was not read.
    bool setVersionNumbersFrom(std::string& text);
};

/// By major, minor, patch and internal level.
[[nodiscard]] KX_ATTRIBUTECONTAINER_API bool operator<(VersionNum const& a, VersionNum const& b) noexcept;
[[nodiscard]] KX_ATTRIBUTECONTAINER_API bool operator<=(VersionNum const& a, VersionNum const& b) noexcept;

/// Reads release numbers from the front of `text` into `number`, whose name it empties; returns `text`.
KX_ATTRIBUTECONTAINER_API std::string& operator>>(std::string& text, VersionNum& number);
/// Returns `text` as it is.
KX_ATTRIBUTECONTAINER_API std::string& operator<<(std::string& text, VersionNum const& number);

/// All versions that a program reports. What the getters point to lives in the record and is read without the
/// lock: it must not be read while another thread sets it.
class KX_ATTRIBUTECONTAINER_API Version {
public:
    /// Held by every function of this class while it reads or copies a field. It outlives all static objects.
    static std::mutex& versionProtect;

    Version(VersionNum app, VersionNum format, VersionNum socket, VersionNum api, VersionNum rootModel,
            std::string pretty);
    Version(Version const& other);
    Version& operator=(Version const&) = delete;
    ~Version();

    [[nodiscard]] VersionNum const* getAppVersion() const;
    [[nodiscard]] VersionNum const* getFormatVersion() const;
    [[nodiscard]] VersionNum const* getRootModelVersion() const;
    /// Null until one was set.
    [[nodiscard]] VersionNum const* getSavedModelVersion() const;
    [[nodiscard]] VersionNum const* getSocketVersion() const;
    [[nodiscard]] VersionNum const* getApiVersion() const;
    [[nodiscard]] std::string const& getPrettyVersion() const;

    void setAppVersion(VersionNum const& number);
    void setFormatVersion(VersionNum const& number);
    void setRootModelVersion(VersionNum const& number);
    /// The number that was set before is destroyed.
    void setSavedModelVersion(VersionNum const& number);
    void setSocketVersion(VersionNum const& number);
    void setApiVersion(VersionNum const& number);

    /// True.
    [[nodiscard]] bool isBetaCandidate() const noexcept;

private:
    friend class VersionNum; // its constructors copy fields of the global record under the lock

    Version(Version const& other, std::lock_guard<std::mutex> const& lock);

    VersionNum appVersion_;
    VersionNum formatVersion_;
    VersionNum rootModelVersion_;
    std::unique_ptr<VersionNum> savedModelVersion_;
    VersionNum socketVersion_;
    VersionNum apiVersion_;
    std::string prettyVersion_;
};

/// The versions of this library. Usable from static initialisers and during exit.
extern KX_ATTRIBUTECONTAINER_API Version& version;

} // namespace Zorvan::AttributeContainer

/// No version text has been settled: null.
KX_ATTRIBUTECONTAINER_API char const* attributeContainergetVersionString();
