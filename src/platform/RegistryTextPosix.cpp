// SPDX-License-Identifier: MIT
#include "platform/RegistryText.h"

#include "platform/RegistryNames.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr Utf16View header = u"Windows Registry Editor Version 5.00";
constexpr Utf16View lineEnd = u"\r\n";
constexpr Utf16View blanks = u" \t";

// --- writing

class Writer {
public:
    std::string write(RegistryRoots const& roots) {
        put(u"\xFEFF");
        put(header);
        put(lineEnd);
        for (RegistryRoot const& root : roots) {
            Utf16String path(root.name);
            // Every registry has its roots: they need no line of their own.
            if (!root.key->values().map().empty())
                writeValues(path, *root.key);
            writeSubKeys(path, *root.key);
        }
        put(lineEnd);
        return std::move(bytes_);
    }

private:
    /// `path` is that of the key, and so again afterwards.
    void writeSubKeys(Utf16String& path, RegistryKey const& key) {
        std::size_t const length = path.size();
        for (auto const& [name, subKey] : key.keys().map()) {
            path.append(u"\\").append(name);
            writeValues(path, *subKey);
            writeSubKeys(path, *subKey);
            path.resize(length);
        }
    }

    void writeValues(Utf16View path, RegistryKey const& key) {
        put(lineEnd);
        put(u'[');
        put(path);
        put(u']');
        put(lineEnd);
        for (auto const& [name, value] : key.values().map()) {
            lineStart_ = bytes_.size();
            if (name.empty())
                put(u'@');
            else
                putQuoted(name);
            put(u'=');
            writeData(value);
            put(lineEnd);
        }
    }

    void writeData(RegistryValue const& value) {
        auto const& data = value.data;
        if (value.type == REG_SZ && isPlainText(data)) {
            Utf16String text;
            for (std::size_t i = 0; i + 2 < data.size(); i += 2)
                text += static_cast<Utf16Unit>(data[i] | data[i + 1] << 8);
            putQuoted(text);
        } else if (value.type == REG_DWORD && data.size() == 4) {
            put(u"dword:");
            for (std::size_t i = 4; i > 0; --i)
                putHex(data[i - 1]);
        } else {
            put(u"hex");
            if (value.type != REG_BINARY) {
                put(u'(');
                putNumber(value.type);
                put(u')');
            }
            put(u':');
            writeBytes(data);
        }
    }

    void writeBytes(std::vector<BYTE> const& data) {
        constexpr std::size_t lineLimit = 76; // characters, without the comma and the backslash
        for (std::size_t i = 0; i < data.size(); ++i) {
            if (i > 0) {
                put(u',');
                if ((bytes_.size() - lineStart_) / 2 >= lineLimit) {
                    put(u"\\\r\n");
                    lineStart_ = bytes_.size();
                    put(u"  ");
                }
            }
            putHex(data[i]);
        }
    }

    /// Whether quotes can hold the text: it ends with its only null character, and is one line.
    static bool isPlainText(std::vector<BYTE> const& data) {
        if (data.size() < 2 || data.size() % 2 != 0)
            return false;
        for (std::size_t i = 0; i < data.size(); i += 2) {
            int const unit = data[i] | data[i + 1] << 8;
            if ((unit == 0) != (i + 2 == data.size()) || unit == '\r' || unit == '\n')
                return false;
        }
        return true;
    }

    void putQuoted(Utf16View text) {
        put(u'"');
        for (Utf16Unit const unit : text) {
            if (unit == u'"' || unit == u'\\')
                put(u'\\');
            if (unit == u'\r' || unit == u'\n')
                put(unit == u'\r' ? u"\\r" : u"\\n");
            else
                put(unit);
        }
        put(u'"');
    }

    void putHex(BYTE byte) {
        constexpr Utf16View digits = u"0123456789abcdef";
        put(digits[byte >> 4]);
        put(digits[byte & 0xF]);
    }

    void putNumber(DWORD number) {
        int shift = 28;
        while (shift > 0 && number >> shift == 0)
            shift -= 4;
        for (; shift >= 0; shift -= 4)
            put(u"0123456789abcdef"[number >> shift & 0xF]);
    }

    void put(Utf16View text) {
        for (Utf16Unit const unit : text)
            put(unit);
    }
    void put(Utf16Unit unit) {
        bytes_ += static_cast<char>(unit & 0xFF);
        bytes_ += static_cast<char>(unit >> 8);
    }

    std::string bytes_;
    std::size_t lineStart_ = 0;
};

// --- reading

/// Thrown, and caught, within this file only.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Reader {
public:
    Reader(Utf16View text, RegistryRoots& roots) : rest_(text), roots_(roots) {}

    std::optional<RegistryTextError> read() {
        try {
            if (rest_.empty() || rest_.back() != u'\n') {
                line_ += static_cast<std::uint64_t>(std::count(rest_.begin(), rest_.end(), u'\n'));
                throw Refusal{"the file ends within a line"};
            }
            if (!take(header))
                throw Refusal{R"(the line is not "Windows Registry Editor Version 5.00")"};
            endLine();
            while (!rest_.empty())
                readLine();
            return std::nullopt;
        } catch (Refusal const& refusal) {
            return RegistryTextError{refusal.what(), line_};
        }
    }

private:
    void readLine() {
        skipBlanks();
        if (rest_.starts_with(u';'))
            rest_.remove_prefix(rest_.find(u'\n'));
        else if (take(u"["))
            readKey();
        else if (rest_.starts_with(u'@') || rest_.starts_with(u'"'))
            readValue();
        endLine();
    }

    void readKey() {
        if (rest_.starts_with(u'-'))
            throw Refusal{"a key to delete is nothing to keep"};
        Utf16View path = rest_.substr(0, rest_.find_first_of(lineEnd));
        path = path.substr(0, path.find_last_not_of(blanks) + 1);
        if (!path.ends_with(u']'))
            throw Refusal{R"(the key does not end with "]")"};
        rest_.remove_prefix(path.size());
        path.remove_suffix(1);
        if (path.find(u'\0') != Utf16View::npos)
            throw Refusal{"the name of the key holds a null character"};
        Utf16View const rootName = path.substr(0, path.find(u'\\'));
        key_ = nullptr;
        for (RegistryRoot const& root : roots_)
            if (compareRegistryNames(root.name, rootName) == 0)
                key_ = root.key;
        if (!key_)
            throw Refusal{"the key does not begin with the name of a predefined key"};
        path.remove_prefix(rootName.size());
        for (auto name = takeComponent(path); !name.empty(); name = takeComponent(path)) {
            key_ = key_->findOrAdd(name);
            if (!key_)
                throw Refusal{"a name of a key is too long, or the key is too deep"};
        }
    }

    void readValue() {
        if (!key_)
            throw Refusal{"there is a value before the first key"};
        Utf16String name;
        if (!take(u"@"))
            name = readQuoted();
        if (name.size() > RegistryKey::maxValueNameLength || name.find(u'\0') != Utf16String::npos)
            throw Refusal{"the name of the value is too long, or holds a null character"};
        skipBlanks();
        if (!take(u"="))
            throw Refusal{"there is no \"=\" behind the name of a value"};
        skipBlanks();
        if (rest_.starts_with(u'"')) {
            auto const text = readQuoted();
            std::vector<BYTE> data;
            for (std::size_t i = 0; i <= text.size(); ++i)
                for (int const shift : {0, 8}) // the null character at the end included
                    data.push_back(static_cast<BYTE>(text.c_str()[i] >> shift));
            key_->setValue(name, REG_SZ, std::move(data));
        } else if (take(u"dword:")) {
            DWORD const number = readNumber(8, 8);
            key_->setValue(name, REG_DWORD,
                           {static_cast<BYTE>(number), static_cast<BYTE>(number >> 8),
                            static_cast<BYTE>(number >> 16), static_cast<BYTE>(number >> 24)});
        } else if (take(u"hex")) {
            DWORD type = REG_BINARY;
            if (take(u"(")) {
                type = readNumber(1, 8);
                if (!take(u")"))
                    throw Refusal{"there is no \")\" behind the type of a value"};
            }
            if (!take(u":"))
                throw Refusal{R"(there is no ":" behind "hex")"};
            key_->setValue(name, type, readBytes());
        } else {
            throw Refusal{"what is behind the \"=\" is no text, dword or hex"};
        }
    }

    std::vector<BYTE> readBytes() {
        std::vector<BYTE> data;
        skipBlanks();
        if (rest_.starts_with(u'\r') || rest_.starts_with(u'\n'))
            return data;
        do {
            if (take(u"\\"))
                endLine();
            skipBlanks();
            data.push_back(static_cast<BYTE>(readNumber(2, 2)));
        } while (take(u","));
        return data;
    }

    /// A text in quotes; it may run over several lines.
    Utf16String readQuoted() {
        take(u"\"");
        Utf16String text;
        for (;;) {
            std::size_t const plain = rest_.find_first_of(u"\"\\\n");
            if (plain == Utf16View::npos)
                throw Refusal{"the text has no closing quote"};
            text.append(rest_.substr(0, plain));
            Utf16Unit const unit = rest_[plain];
            rest_.remove_prefix(plain + 1);
            if (unit == u'"')
                return text;
            if (unit == u'\n') {
                ++line_;
                text += unit;
            } else {
                text += readEscaped();
            }
        }
    }

    Utf16Unit readEscaped() {
        Utf16Unit const unit = rest_.front(); // The text does not end with a backslash, but with a line end.
        rest_.remove_prefix(1);
        switch (unit) {
        case u'"':
        case u'\\':
            return unit;
        case u'n':
            return u'\n';
        case u'r':
            return u'\r';
        case u'0':
            return u'\0';
        default:
            throw Refusal{"an unknown character follows a backslash"};
        }
    }

    /// A hexadecimal number.
    DWORD readNumber(int minDigits, int maxDigits) {
        DWORD number = 0;
        int digits = 0;
        for (; digits < maxDigits && !rest_.empty(); ++digits, rest_.remove_prefix(1)) {
            Utf16Unit const unit = rest_.front() | 0x20;
            if (rest_.front() >= u'0' && rest_.front() <= u'9')
                number = number << 4 | static_cast<DWORD>(rest_.front() - u'0');
            else if (unit >= u'a' && unit <= u'f')
                number = number << 4 | static_cast<DWORD>(unit - u'a' + 10);
            else
                break;
        }
        if (digits < minDigits)
            throw Refusal{"a hexadecimal number lacks digits"};
        return number;
    }

    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size())); }

    bool take(Utf16View word) {
        bool const found = rest_.starts_with(word);
        if (found)
            rest_.remove_prefix(word.size());
        return found;
    }

    void endLine() {
        skipBlanks();
        take(u"\r");
        if (!take(u"\n"))
            throw Refusal{"something unknown is in the line"};
        ++line_;
    }

    Utf16View rest_; ///< ends with a line end, or is empty
    std::uint64_t line_ = 1;
    RegistryRoots& roots_;
    std::shared_ptr<RegistryKey> key_;
};

} // namespace

std::string writeRegistryText(RegistryRoots const& roots) { return Writer().write(roots); }

std::optional<RegistryTextError> readRegistryText(std::string_view bytes, RegistryRoots& roots) {
    if (!bytes.starts_with("\xFF\xFE") || bytes.size() % 2 != 0)
        return RegistryTextError{"the file is not UTF-16 with a byte-order mark", 1};
    Utf16String text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 2; i < bytes.size(); i += 2)
        text += static_cast<Utf16Unit>(static_cast<unsigned char>(bytes[i]) |
                                       static_cast<unsigned char>(bytes[i + 1]) << 8);
    return Reader(text, roots).read();
}

} // namespace Zorvan::AttributeContainer
