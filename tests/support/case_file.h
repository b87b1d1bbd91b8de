#pragma once
// Golden cases kept as data: one case a line, fields split at every "|" (blanks kept), lines that
// are empty or start with "#" are notes. A field reads the escapes \t \n \r \\ \| and \xHH, and
// "<null>" stands for a null pointer.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

struct case_row {
    std::string where;  // "file:line", for SCOPED_TRACE
    std::vector<std::string> fields;
    std::vector<bool> is_null;

    size_t size() const { return fields.size(); }
    const char* text(size_t i) const { return i < size() && !is_null[i] ? fields[i].c_str() : nullptr; }
    const std::string& str(size_t i) const { return fields.at(i); }
    int number(size_t i) const { return std::atoi(fields.at(i).c_str()); }
};

// The rows of tests/<relative>, only those whose first field is group when one is given; finding
// no row is a test failure.
inline std::vector<case_row> read_cases(const std::string& relative, const std::string& group = "") {
    std::ifstream in(std::string(LANTERN_SOURCE_DIR) + "/tests/" + relative, std::ios::binary);
    std::vector<case_row> rows;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (line.empty() || line[0] == '#') continue;
        case_row row{relative + ":" + std::to_string(number), {""}, {}};
        for (size_t i = 0; i < line.size(); ++i) {
            const char c = line[i];
            if (c == '|') {
                row.fields.emplace_back();
            } else if (c == '\\' && i + 1 < line.size()) {
                const char e = line[++i];
                if (e == 'x' && i + 2 < line.size()) {
                    row.fields.back() += static_cast<char>(std::strtol(line.substr(i + 1, 2).c_str(), nullptr, 16));
                    i += 2;
                } else {
                    row.fields.back() += e == 't' ? '\t' : e == 'n' ? '\n' : e == 'r' ? '\r' : e;
                }
            } else {
                row.fields.back() += c;
            }
        }
        for (const std::string& field : row.fields) row.is_null.push_back(field == "<null>");
        if (group.empty() || row.fields[0] == group) rows.push_back(row);
    }
    if (rows.empty()) ADD_FAILURE() << "no cases " << group << " read from tests/" << relative;
    return rows;
}
