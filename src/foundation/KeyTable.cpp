// SPDX-License-Identifier: MIT
#include "foundation/KeyTableGuess.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <functional>
#include <map>
#include <new>
#include <set>
#include <unordered_map>
#include <utility>

namespace Zorvan::DataStructures {

namespace {

constexpr std::uint32_t firstChunkSize = 4;
/// Entries that a table is expected to get at least; decides which tokens count
/// as consecutive.
constexpr std::uint64_t usualSize = 16;

std::uint32_t hashOf(std::string_view name) noexcept {
    std::uint64_t const hash = std::hash<std::string_view>()(name);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

/// Most names differ in their lengths or first characters.
bool isNamed(std::string const& one, std::string_view name) noexcept {
    return one.size() == name.size() && (name.empty() || (one.front() == name.front() && one == name));
}

template <class Word>
bool areEndsSame(char const* a, char const* b, std::size_t size) noexcept {
    auto const differ = [a, b](std::size_t at) {
        Word ofA, ofB;
        std::memcpy(&ofA, a + at, sizeof(Word));
        std::memcpy(&ofB, b + at, sizeof(Word));
        return static_cast<Word>(ofA ^ ofB);
    };
    return (differ(0) | differ(size - sizeof(Word))) == 0;
}

/// Most names are so short that a call takes longer than to compare both their ends, which overlap.
bool isSame(std::string const& a, std::string const& b) noexcept {
    std::size_t const size = a.size();
    if (size != b.size())
        return false;
    if (size >= 8 && size <= 16)
        return areEndsSame<std::uint64_t>(a.data(), b.data(), size);
    if (size >= 4 && size < 8)
        return areEndsSame<std::uint32_t>(a.data(), b.data(), size);
    return a == b;
}

std::size_t chunkSize(std::size_t chunk) noexcept {
    return std::size_t{firstChunkSize} << (chunk == 0 ? 0 : chunk - 1);
}

/// Where an entry is: the number of its chunk and its index there.
std::pair<std::size_t, std::size_t> placeOf(std::uint32_t index) noexcept {
    auto const chunk = static_cast<std::size_t>(std::bit_width(index / firstChunkSize));
    return {chunk, chunk == 0 ? index : index - chunkSize(chunk)};
}

} // namespace

/// What most tables do not have.
struct KeyTable::Rare {
    /// Entries of tokens that are far from all others.
    std::unordered_map<std::uint64_t, std::uint32_t> sparse;
    /// The other tokens of names that several tokens have; no empty sets.
    std::map<std::string, std::set<std::uint64_t>, std::less<>> furtherTokens;
};

KeyTable::KeyTable() = default;
KeyTable::KeyTable(KeyTable const& other)
    : chunks_(other.chunks_), numUsed_(other.numUsed_), firstFree_(other.firstFree_), size_(other.size_),
      dense_(other.dense_), slots_(other.slots_), numNames_(other.numNames_),
      rare_(other.rare_ ? std::make_unique<Rare>(*other.rare_) : nullptr) {}
KeyTable::KeyTable(KeyTable&& other) noexcept { swap(other); }
KeyTable::~KeyTable() = default;

KeyTable& KeyTable::operator=(KeyTable const& other) {
    KeyTable copy(other);
    swap(copy);
    return *this;
}

KeyTable& KeyTable::operator=(KeyTable&& other) noexcept {
    KeyTable taken(std::move(other));
    swap(taken);
    return *this;
}

KeyTable::KeyTable(std::vector<KeyTableEntry> const& entries) {
    for (KeyTableEntry const& entry : entries)
        add(entry.token, entry.name);
}

void KeyTable::swap(KeyTable& other) noexcept {
    chunks_.swap(other.chunks_);
    std::swap(numUsed_, other.numUsed_);
    std::swap(firstFree_, other.firstFree_);
    std::swap(size_, other.size_);
    dense_.swap(other.dense_);
    slots_.swap(other.slots_);
    std::swap(numNames_, other.numNames_);
    rare_.swap(other.rare_);
}

/// The entry of a small table that fulfils the condition, and its index; null for none.
template <class Condition>
std::pair<KeyTable::Entry const*, std::uint32_t>
KeyTable::searchSmall(Condition const& condition) const noexcept {
    std::uint32_t index = 0;
    for (std::vector<Entry> const& chunk : chunks_)
        for (Entry const& entry : chunk) {
            if ((numUsed_ >> index & 1) != 0 && condition(entry))
                return {&entry, index};
            ++index;
        }
    return {nullptr, noEntry};
}

std::uint64_t KeyTable::getToken(std::string_view name) const noexcept {
    if (isSmall()) {
        auto const* entry = searchSmall([name](Entry const& one) { return isNamed(one.name, name); }).first;
        return entry ? entry->token : noToken;
    }
    Slot const& slot = slots_[findSlot(name, hashOf(name))];
    return slot.entry == noEntry ? noToken : entryAt(slot.entry).token;
}

std::optional<std::string> KeyTable::getName(std::uint64_t token) const {
    std::string const* const name = findName(token);
    return name ? std::optional<std::string>(*name) : std::nullopt;
}

/// The name of a token that is expected at an index of a small table; null when it is not there.
std::string const* KeyTable::guessName(std::uint64_t token, std::uint64_t index) const noexcept {
    if (index >= maxSmall || (numUsed_ >> index & 1) == 0)
        return nullptr;
    Entry const& entry = chunks_[index / firstChunkSize][index % firstChunkSize];
    return entry.token == token ? &entry.name : nullptr;
}

std::string const* KeyTable::findName(std::uint64_t token) const noexcept {
    if (isSmall()) {
        if (numUsed_ == 0)
            return nullptr;
        // Mostly the tokens are consecutive, in the order of the entries.
        if (auto const* name = guessName(token, token - chunks_.front().front().token)) [[likely]]
            return name;
        auto const* entry = searchSmall([token](Entry const& one) { return one.token == token; }).first;
        return entry ? &entry->name : nullptr;
    }
    std::uint32_t const index = findEntry(token);
    return index == noEntry ? nullptr : &entryAt(index).name;
}

std::uint64_t KeyTable::numSameNames(KeyTable const& a, std::uint64_t firstOfA, KeyTable const& b,
                                     std::uint64_t firstOfB) noexcept {
    std::uint64_t const most = std::min(a.size_, b.size_);
    std::uint64_t same = 0;
    if (a.isSmall() && b.isSmall()) {
        // Mostly the tokens are consecutive, in the order of the entries.
        std::uint32_t const used = a.numUsed_ & b.numUsed_;
        Entry const* ofA = nullptr;
        Entry const* ofB = nullptr;
        for (; same < most && (used >> same & 1) != 0; ++same, ++ofA, ++ofB) {
            if (same % firstChunkSize == 0) {
                ofA = a.chunks_[same / firstChunkSize].data();
                ofB = b.chunks_[same / firstChunkSize].data();
            }
            if (ofA->token != firstOfA + same || ofB->token != firstOfB + same)
                break;
            if (!isSame(ofA->name, ofB->name))
                return same;
        }
    }
    for (; same < most; ++same) {
        auto const* nameOfA = a.findName(firstOfA + same);
        auto const* nameOfB = b.findName(firstOfB + same);
        if (!nameOfA || !nameOfB || !isSame(*nameOfA, *nameOfB))
            break;
    }
    return same;
}

bool KeyTable::add(std::uint64_t token, std::string_view name) {
    if (isSmall()) {
        bool isKnown = false;
        auto const hasToken = [&](Entry const& one) {
            isKnown = isKnown || isNamed(one.name, name);
            return one.token == token;
        };
        if (searchSmall(hasToken).first)
            return false;
        if (size_ < maxSmall && !isKnown) {
            addSmall(token, name);
            return true;
        }
        makePlaces();
    } else if (findEntry(token) != noEntry) {
        return false;
    }
    // Nothing of the table's contents changes until all that can fail is done.
    reserveSlot();
    std::uint32_t const index = reserveEntry();
    Entry& entry = entryAt(index);
    entry.name.assign(name);
    std::uint32_t const hash = hashOf(entry.name);
    Slot& slot = slots_[findSlot(entry.name, hash)];
    bool const isKnown = slot.entry != noEntry;
    setEntry(token, index);
    if (isKnown) {
        try {
            std::set<std::uint64_t> tokens = {token};
            auto& furtherTokens = rare().furtherTokens;
            if (auto const found = furtherTokens.find(entry.name); found != furtherTokens.end())
                found->second.merge(tokens);
            else
                furtherTokens.emplace(entry.name, std::move(tokens));
        } catch (...) {
            clearEntry(token);
            throw;
        }
    } else {
        slot = {hash, index};
        ++numNames_;
    }
    if (index == firstFree_)
        firstFree_ = static_cast<std::uint32_t>(entry.token);
    else
        ++numUsed_;
    entry.token = token;
    ++size_;
    return true;
}

void KeyTable::addSmall(std::uint64_t token, std::string_view name) {
    auto const index = static_cast<std::uint32_t>(std::countr_one(numUsed_));
    if (std::size_t const chunk = placeOf(index).first; chunk == chunks_.size()) {
        chunks_.reserve(2); // All that a small table has.
        chunks_.emplace_back(chunkSize(chunk));
    }
    Entry& entry = entryAt(index);
    entry.name.assign(name);
    entry.token = token;
    numUsed_ |= 1U << index;
    ++size_;
}

/// Makes a small table one that finds its entries by hash and by token.
void KeyTable::makePlaces() {
    std::uint32_t const used = numUsed_;
    try {
        slots_.resize(2 * maxSmall);
        for (std::uint32_t rest = used; rest != 0; rest &= rest - 1) {
            auto const index = static_cast<std::uint32_t>(std::countr_zero(rest));
            Entry const& entry = entryAt(index);
            std::uint32_t const hash = hashOf(entry.name);
            slots_[findSlot(entry.name, hash)] = {hash, index};
            setEntry(entry.token, index);
        }
    } catch (...) {
        slots_.clear();
        dense_.clear();
        rare_.reset();
        throw;
    }
    numNames_ = size_;
    numUsed_ = static_cast<std::uint32_t>(std::bit_width(used));
    for (std::uint32_t index = 0; index < numUsed_; ++index)
        if ((used >> index & 1) == 0)
            entryAt(index).token = std::exchange(firstFree_, index);
}

bool KeyTable::remove(std::uint64_t token, std::string_view name) {
    std::uint32_t const index = findEntry(token);
    if (index == noEntry || entryAt(index).name != name)
        return false;
    if (isSmall()) {
        numUsed_ &= ~(1U << index);
        --size_;
        std::string().swap(entryAt(index).name);
        return true;
    }
    std::size_t const place = findSlot(name, hashOf(name));
    if (!removeFurther(token, name, place))
        eraseSlot(place);
    clearEntry(token);
    Entry& entry = entryAt(index);
    entry.token = std::exchange(firstFree_, index);
    --size_;
    // Last, for `name` may be the very string that is kept here.
    std::string().swap(entry.name);
    return true;
}

bool KeyTable::moveDown(std::uint64_t from, std::uint64_t to) noexcept {
    std::uint32_t const index = findEntry(from);
    if (index == noEntry)
        return false;
    Entry& entry = entryAt(index);
    entry.token = to;
    if (isSmall())
        return true;
    // Each node that goes comes back under the other token.
    bool const isDense = from < dense_.size() && dense_[from] != noEntry;
    if (isDense)
        dense_[from] = noEntry;
    if (to < dense_.size()) {
        dense_[to] = index;
        if (!isDense)
            rare_->sparse.erase(from);
    } else {
        auto node = rare_->sparse.extract(from);
        node.key() = to;
        rare_->sparse.insert(std::move(node));
    }
    auto const further =
        rare_ ? rare_->furtherTokens.find(entry.name) : decltype(rare_->furtherTokens.end())();
    if (!rare_ || further == rare_->furtherTokens.end())
        return true;
    auto node = further->second.extract(from);
    if (node.empty()) {
        node = further->second.extract(further->second.begin());
        slots_[findSlot(entry.name, hashOf(entry.name))].entry = findEntry(node.value());
    }
    node.value() = to;
    further->second.insert(std::move(node));
    return true;
}

/// When several tokens have the name, takes one of them out, and hands the
/// meaning of the name, whose slot is at `place`, on. False: the token is the
/// only one.
bool KeyTable::removeFurther(std::uint64_t token, std::string_view name, std::size_t place) noexcept {
    if (!rare_)
        return false;
    auto const further = rare_->furtherTokens.find(name);
    if (further == rare_->furtherTokens.end())
        return false;
    std::set<std::uint64_t>& tokens = further->second;
    if (tokens.erase(token) == 0) {
        slots_[place].entry = findEntry(*tokens.begin());
        tokens.erase(tokens.begin());
    }
    if (tokens.empty())
        rare_->furtherTokens.erase(further);
    return true;
}

KeyTable::Rare& KeyTable::rare() {
    if (!rare_)
        rare_ = std::make_unique<Rare>();
    return *rare_;
}

KeyTable::Entry& KeyTable::entryAt(std::uint32_t index) noexcept {
    auto const [chunk, position] = placeOf(index);
    return chunks_[chunk][position];
}

KeyTable::Entry const& KeyTable::entryAt(std::uint32_t index) const noexcept {
    auto const [chunk, position] = placeOf(index);
    return chunks_[chunk][position];
}

/// The index of a token's entry, or `noEntry`.
std::uint32_t KeyTable::findEntry(std::uint64_t token) const noexcept {
    if (isSmall())
        return searchSmall([token](Entry const& one) { return one.token == token; }).second;
    if (token < dense_.size() && dense_[token] != noEntry)
        return dense_[token];
    if (!rare_)
        return noEntry;
    auto const found = rare_->sparse.find(token);
    return found == rare_->sparse.end() ? noEntry : found->second;
}

/// The index of the entry that is used next; it exists, and stays free.
std::uint32_t KeyTable::reserveEntry() {
    if (firstFree_ != noEntry)
        return firstFree_;
    if (numUsed_ == noEntry)
        throw std::bad_alloc();
    if (std::size_t const chunk = placeOf(numUsed_).first; chunk == chunks_.size())
        chunks_.emplace_back(chunkSize(chunk));
    return numUsed_;
}

void KeyTable::setEntry(std::uint64_t token, std::uint32_t index) {
    if (token >= dense_.size() && token < 2 * (size_ + usualSize))
        dense_.resize(static_cast<std::size_t>(token) + 1, noEntry);
    if (token < dense_.size())
        dense_[token] = index;
    else
        rare().sparse.emplace(token, index);
}

void KeyTable::clearEntry(std::uint64_t token) noexcept {
    if (token < dense_.size() && dense_[token] != noEntry)
        dense_[token] = noEntry;
    else if (rare_)
        rare_->sparse.erase(token);
}

/// The place of a name, or the free one that it would take. There are slots.
std::size_t KeyTable::findSlot(std::string_view name, std::uint32_t hash) const noexcept {
    std::size_t const mask = slots_.size() - 1;
    std::size_t place = hash & mask;
    while (slots_[place].entry != noEntry &&
           (slots_[place].hash != hash || entryAt(slots_[place].entry).name != name))
        place = (place + 1) & mask;
    return place;
}

/// Sees to it that one more name has a place.
void KeyTable::reserveSlot() {
    if (4 * (numNames_ + 1) <= 3 * slots_.size())
        return;
    std::vector<Slot> grown(2 * slots_.size());
    std::size_t const mask = grown.size() - 1;
    for (Slot const& slot : slots_) {
        if (slot.entry == noEntry)
            continue;
        std::size_t place = slot.hash & mask;
        while (grown[place].entry != noEntry)
            place = (place + 1) & mask;
        grown[place] = slot;
    }
    slots_.swap(grown);
}

/// Frees a place and moves names that follow it up, so that none is behind a
/// free place.
void KeyTable::eraseSlot(std::size_t place) noexcept {
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t next = (place + 1) & mask; slots_[next].entry != noEntry; next = (next + 1) & mask) {
        std::size_t const distance = (next - slots_[next].hash) & mask;
        if (distance >= ((next - place) & mask)) {
            slots_[place] = slots_[next];
            place = next;
        }
    }
    slots_[place] = Slot();
    --numNames_;
}

// --- Look-ups in steps

std::uint32_t KeyTableGuess::hashOf(std::string_view name) noexcept { return DataStructures::hashOf(name); }

void KeyTableGuess::fetchSlot(std::uint32_t hash) const noexcept {
    if (!table_.isSmall())
        __builtin_prefetch(&table_.slots_[hash & (table_.slots_.size() - 1)]);
}

std::uint32_t KeyTableGuess::entryOf(std::uint32_t hash) const noexcept {
    if (table_.isSmall())
        return KeyTable::noEntry;
    std::size_t const mask = table_.slots_.size() - 1;
    std::size_t place = hash & mask;
    while (table_.slots_[place].entry != KeyTable::noEntry && table_.slots_[place].hash != hash)
        place = (place + 1) & mask;
    return table_.slots_[place].entry;
}

void KeyTableGuess::fetchEntry(std::uint32_t hash) const noexcept {
    if (std::uint32_t const index = entryOf(hash); index != KeyTable::noEntry)
        __builtin_prefetch(&table_.entryAt(index).token);
}

std::uint64_t KeyTableGuess::token(std::uint32_t hash) const noexcept {
    std::uint32_t const index = entryOf(hash);
    if (index == KeyTable::noEntry)
        return KeyTable::noToken;
    KeyTable::Entry const& entry = table_.entryAt(index);
    __builtin_prefetch(&entry.name);
    if (entry.token < table_.dense_.size())
        __builtin_prefetch(&table_.dense_[entry.token]);
    return entry.token;
}

} // namespace Zorvan::DataStructures
