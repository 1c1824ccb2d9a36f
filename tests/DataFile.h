// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// A line of a file below tests/data: columns with " | " between them, blanks around each dropped. Lines that
/// begin with "#" are comments, "== title" begins a section. In a column "^n", "^r", "^t", "^s" and "^p" are
/// a line feed, a carriage return, a tab, a blank and a bar, "^" and two hexadecimal digits are a byte.
struct DataRow {
    std::string place, section;
    std::vector<std::string> columns;

    /// A column that is not there is empty.
    std::string operator[](std::size_t index) const {
        return index < columns.size() ? columns[index] : std::string();
    }
    unsigned number(std::size_t index) const {
        return static_cast<unsigned>(std::strtol((*this)[index].c_str(), nullptr, 0));
    }
};

inline std::string withoutEscapes(std::string const& column) {
    static std::map<char, char> const letters{{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'s', ' '}, {'p', '|'}};
    std::string text;
    for (std::size_t i = 0; i < column.size(); ++i)
        if (column[i] != '^')
            text += column[i];
        else if (auto const letter = letters.find(column.at(++i)); letter != letters.end())
            text += letter->second;
        else
            text += static_cast<char>(std::stoi(column.substr(i++, 2), nullptr, 16));
    return text;
}

inline std::string trimmed(std::string const& text) {
    auto const first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

/// The rows of a file; none, which is a failure, when it cannot be read.
inline std::vector<DataRow> dataRows(std::string const& file) {
    std::ifstream in(std::string(KX_TEST_DATA_DIR "/") + file, std::ios::binary);
    std::vector<DataRow> rows;
    std::string line, section;
    for (int number = 1; std::getline(in, line); ++number) {
        if (line.starts_with("== "))
            section = line.substr(3);
        if (line.empty() || line.starts_with('#') || line.starts_with("== "))
            continue;
        rows.push_back({file + ":" + std::to_string(number) + ": " + line, section, {}});
        line += ' ';
        for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 2) {
            end = line.find(" | ", begin);
            rows.back().columns.push_back(withoutEscapes(trimmed(line.substr(begin, end - begin))));
        }
    }
    EXPECT_FALSE(rows.empty()) << file;
    return rows;
}
