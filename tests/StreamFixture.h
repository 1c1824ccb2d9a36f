// SPDX-License-Identifier: MIT
#pragma once

#include <istream>
#include <iterator>
#include <locale>
#include <streambuf>
#include <string>
#include <utility>

/// What `in` still holds, whatever its state, which is cleared.
inline std::string restOf(std::istream& in) {
    in.clear();
    return std::string(std::istreambuf_iterator<char>(in), {});
}

/// Groups digits by two and has a decimal comma.
class OddNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\2"; }
    std::string do_truename() const override { return "yes"; }
};

inline std::locale oddLocale() { return {std::locale::classic(), new OddNumbers}; }

/// Such a locale is the global one as long as this lives.
class OddGlobalLocale {
public:
    OddGlobalLocale() : before_(std::locale::global(oddLocale())) {}
    OddGlobalLocale(OddGlobalLocale const&) = delete;
    OddGlobalLocale& operator=(OddGlobalLocale const&) = delete;
    ~OddGlobalLocale() { std::locale::global(before_); }

private:
    std::locale before_;
};

/// Throws where its text ends, and when something is written.
class BreakingBuffer : public std::streambuf {
public:
    explicit BreakingBuffer(std::string text = {}) : text_(std::move(text)) {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

protected:
    int_type underflow() override { throw 1; }
    std::streamsize xsputn(char const*, std::streamsize) override { throw 1; }

private:
    std::string text_;
};
