// SPDX-License-Identifier: MIT
#include <AttributeContainer/Version.h>

#include "foundation/NeverDestroyed.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <limits>
#include <streambuf>
#include <string_view>
#include <tuple>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constinit NeverDestroyed<std::mutex> versionProtectStorage;
constinit NeverDestroyed<Version> versionStorage;

/// Makes both objects on the first call: static initialisers of other files may come before this one's.
void makeGlobals() {
    static bool const areMade = [] {
        versionProtectStorage.emplace();
        versionStorage.emplace(
            VersionNum("WtLib", 9, 1, 0, 0, 0, "APPLICATION_VERSION_REVISION"),
            VersionNum("WtLib", 9, 1, 0, 0, 0, ""), VersionNum("WtSocket", 1, 10, 0, 0, 0, ""),
            VersionNum("API", 2, 0, 24, 0, 0, ""), VersionNum("RootModel", 0, 0, 0, 0, 0, ""), "");
        return true;
    }();
    static_cast<void>(areMade);
}

[[gnu::init_priority(101)]] NeverDestroyedFill const fill(makeGlobals);

std::mutex& protection() {
    makeGlobals();
    return versionProtectStorage.get();
}

constexpr int endOfInput = -1;

class StreamSource {
public:
    explicit StreamSource(std::streambuf& buffer) : buffer_(buffer) {}
    int peek() {
        using Traits = std::streambuf::traits_type;
        auto const character = buffer_.sgetc();
        return Traits::eq_int_type(character, Traits::eof()) ? endOfInput : character;
    }
    void skip() { buffer_.sbumpc(); }

private:
    std::streambuf& buffer_;
};

class TextSource {
public:
    explicit TextSource(std::string_view text) : text_(text) {}
    int peek() const {
        return position_ < text_.size() ? static_cast<unsigned char>(text_[position_]) : endOfInput;
    }
    void skip() { ++position_; }
    std::size_t getPosition() const { return position_; }

private:
    std::string_view text_;
    std::size_t position_ = 0;
};

/// Reads release numbers as the stream operators for `int` and `char` would in the classic locale, state bits
/// included.
template <class Source>
class LevelReader {
public:
    explicit LevelReader(Source& source) : source_(source) {}

    bool read(VersionNum& number) {
        readInt(number.major);
        if (!readDot())
            return false;
        readInt(number.minor);
        if (!readDot())
            return false;
        readInt(number.patch);
        if (!readDot())
            return false;
        readInt(number.internal);
        number.beta = 0;
        if (state_ != std::ios_base::goodbit || peek() != '.')
            return true;
        source_.skip();
        readInt(number.beta);
        return true;
    }

    std::ios_base::iostate getState() const { return state_; }

private:
    int peek() {
        int const character = source_.peek();
        if (character == endOfInput)
            state_ |= std::ios_base::eofbit;
        return character;
    }

    /// The next character behind white space. At the end of input and after a failure the read that was to
    /// follow fails.
    int peekVisible() {
        if (state_ == std::ios_base::goodbit) {
            int character = peek();
            while (character == ' ' || (character >= '\t' && character <= '\r')) {
                source_.skip();
                character = peek();
            }
            if (character != endOfInput)
                return character;
        }
        state_ |= std::ios_base::failbit;
        return endOfInput;
    }

    bool readDot() {
        if (peekVisible() != '.')
            return false;
        source_.skip();
        return true;
    }

    /// Keeps `value` when there is nothing to read; otherwise text that is no number gives 0, and numbers out
    /// of range the nearest one, both with the fail bit.
    void readInt(int& value) {
        using Limits = std::numeric_limits<int>;
        int character = peekVisible();
        if (character == endOfInput)
            return;
        bool const isNegative = character == '-';
        if (isNegative || character == '+') {
            source_.skip();
            character = peek();
        }
        std::int64_t const limit = isNegative ? -std::int64_t{Limits::min()} : Limits::max();
        std::int64_t magnitude = 0;
        bool isNumber = false;
        for (; character >= '0' && character <= '9'; character = peek()) {
            isNumber = true;
            if (magnitude <= limit)
                magnitude = magnitude * 10 + (character - '0');
            source_.skip();
        }
        if (!isNumber || magnitude > limit) {
            state_ |= std::ios_base::failbit;
            magnitude = isNumber ? limit : 0;
        }
        value = static_cast<int>(isNegative ? -magnitude : magnitude);
    }

    Source& source_;
    std::ios_base::iostate state_ = std::ios_base::goodbit;
};

auto levelsOf(VersionNum const& number) {
    return std::tie(number.major, number.minor, number.patch, number.internal);
}

} // namespace

VersionNum::VersionNum() : major(0), minor(0), patch(0), internal(0), beta(0) {
    // The getter would take the lock for the pointer only, not for the copy.
    std::lock_guard const lock(protection());
    *this = versionStorage.get().formatVersion_;
}

VersionNum::VersionNum(int majorLevel, int minorLevel, int patchLevel, int internalLevel, int betaLevel,
                       std::string const& revisionText)
    : major(majorLevel), minor(minorLevel), patch(patchLevel), internal(internalLevel), beta(betaLevel),
      revision(revisionText) {
    std::lock_guard const lock(protection());
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): behind the lock
    name = versionStorage.get().appVersion_.name;
}

VersionNum::VersionNum(std::string const& versionName, int majorLevel, int minorLevel, int patchLevel,
                       int internalLevel, int betaLevel, std::string const& revisionText)
    : name(versionName), major(majorLevel), minor(minorLevel), patch(patchLevel), internal(internalLevel),
      beta(betaLevel), revision(revisionText) {}

std::string VersionNum::getReleaseNumbers() const {
    std::string text =
        getShortReleaseNumbers() + '.' + std::to_string(patch) + '.' + std::to_string(internal);
    if (beta != 0)
        text += '.' + std::to_string(beta);
    return text;
}

std::string VersionNum::getShortReleaseNumbers() const {
    return std::to_string(major) + '.' + std::to_string(minor);
}

std::string VersionNum::getUIReleaseNumbers() const { return getReleaseNumbers(); }

std::string VersionNum::getRevision() const { return revision; }

VersionNum VersionNum::maskMinorLevel() const { return {name, major, 0, 0, 0, 0, ""}; }
VersionNum VersionNum::maskPatchLevel() const { return {name, major, minor, 0, 0, 0, ""}; }
VersionNum VersionNum::maskInternalLevel() const { return {name, major, minor, patch, 0, 0, ""}; }
VersionNum VersionNum::maskBetaLevel() const { return {name, major, minor, patch, internal, 0, ""}; }

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface
bool VersionNum::isVersionNumberNewer(VersionNum current, VersionNum candidate) {
    if (current.major != candidate.major)
        return current.major < candidate.major;
    if (current.minor != candidate.minor)
        return current.minor < candidate.minor;
    if (current.patch == candidate.patch)
        return current.internal < candidate.internal;
    // Versions under way come before all others.
    auto const rank = [](int level) { return level == 1000 ? 0 : level == 100 ? 1 : 2; };
    if (rank(current.patch) != rank(candidate.patch))
        return rank(current.patch) < rank(candidate.patch);
    return current.patch < candidate.patch;
}

bool VersionNum::setVersionNumbersFrom(std::istream& in) {
    std::istream::sentry const ready(in, true);
    if (!ready)
        return false;
    StreamSource source(*in.rdbuf());
    LevelReader reader(source);
    bool isComplete = false;
    try {
        isComplete = reader.read(*this);
    } catch (...) {
        // As the stream operators do it: the buffer's exception shows as a bad stream, and as itself only on
        // request.
        if (!(in.exceptions() & std::ios_base::badbit)) {
            in.setstate(std::ios_base::badbit);
            return false;
        }
        try {
            in.setstate(std::ios_base::badbit);
        } catch (std::ios_base::failure const&) {
        }
        throw;
    }
    in.setstate(reader.getState());
    return isComplete;
}

bool VersionNum::setVersionNumbersFrom(std::string& text) {
    TextSource source(text);
    bool const isComplete = LevelReader(source).read(*this);
    text.erase(0, source.getPosition());
    return isComplete;
}

bool operator<(VersionNum const& a, VersionNum const& b) noexcept { return levelsOf(a) < levelsOf(b); }

bool operator<=(VersionNum const& a, VersionNum const& b) noexcept { return levelsOf(a) <= levelsOf(b); }

std::string& operator>>(std::string& text, VersionNum& number) {
    number.name.clear();
    number.setVersionNumbersFrom(text);
    return text;
}

std::string& operator<<(std::string& text, VersionNum const&) { return text; }

constinit std::mutex& Version::versionProtect = versionProtectStorage.get();

constinit Version& version = versionStorage.get();

Version::Version(VersionNum app, VersionNum format, VersionNum socket, VersionNum api, VersionNum rootModel,
                 std::string pretty)
    : appVersion_(std::move(app)), formatVersion_(std::move(format)), rootModelVersion_(std::move(rootModel)),
      socketVersion_(std::move(socket)), apiVersion_(std::move(api)), prettyVersion_(std::move(pretty)) {}

Version::Version(Version const& other) : Version(other, std::lock_guard(protection())) {}

Version::Version(Version const& other, std::lock_guard<std::mutex> const&)
    : appVersion_(other.appVersion_), formatVersion_(other.formatVersion_),
      rootModelVersion_(other.rootModelVersion_),
      savedModelVersion_(other.savedModelVersion_ ? std::make_unique<VersionNum>(*other.savedModelVersion_)
                                                  : nullptr),
      socketVersion_(other.socketVersion_), apiVersion_(other.apiVersion_),
      prettyVersion_(other.prettyVersion_) {}

Version::~Version() = default;

VersionNum const* Version::getAppVersion() const {
    std::lock_guard const lock(protection());
    return &appVersion_;
}

VersionNum const* Version::getFormatVersion() const {
    std::lock_guard const lock(protection());
    return &formatVersion_;
}

VersionNum const* Version::getRootModelVersion() const {
    std::lock_guard const lock(protection());
    return &rootModelVersion_;
}

VersionNum const* Version::getSavedModelVersion() const {
    std::lock_guard const lock(protection());
    return savedModelVersion_.get();
}

VersionNum const* Version::getSocketVersion() const {
    std::lock_guard const lock(protection());
    return &socketVersion_;
}

VersionNum const* Version::getApiVersion() const {
    std::lock_guard const lock(protection());
    return &apiVersion_;
}

std::string const& Version::getPrettyVersion() const {
    std::lock_guard const lock(protection());
    return prettyVersion_;
}

void Version::setAppVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    appVersion_ = number;
}

void Version::setFormatVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    formatVersion_ = number;
}

void Version::setRootModelVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    rootModelVersion_ = number;
}

void Version::setSavedModelVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    savedModelVersion_ = std::make_unique<VersionNum>(number);
}

void Version::setSocketVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    socketVersion_ = number;
}

void Version::setApiVersion(VersionNum const& number) {
    std::lock_guard const lock(protection());
    apiVersion_ = number;
}

bool Version::isBetaCandidate() const noexcept { return true; }

} // namespace Zorvan::AttributeContainer

char const* attributeContainergetVersionString() { return nullptr; }
