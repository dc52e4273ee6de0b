// Families of cases as tests write them down.
#pragma once

#include "text/strings.h"

namespace pelvan::testing {

/// Takes "given->expected|given->expected" apart.
inline std::vector<std::pair<std::string, std::string>> cases(const std::string& table) {
    std::vector<std::pair<std::string, std::string>> out;
    for (const std::string& one : split(table, '|')) {
        const auto arrow = one.find("->");
        out.emplace_back(one.substr(0, arrow), one.substr(arrow + 2));
    }
    return out;
}

} // namespace pelvan::testing
