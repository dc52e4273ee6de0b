#include "scan/scan_result.h"

#include <algorithm>

namespace pelvan {

std::string unfinished_text(const ScanResult& result) {
    constexpr std::size_t kMostNamed = 4;
    if (result.unasked == 0) return {};
    std::string where;
    for (std::size_t i = 0; i < std::min(result.busy.size(), kMostNamed); ++i)
        where += (i > 0 ? "; " : "") + result.busy[i];
    if (result.busy.size() > kMostNamed)
        where += " and " + std::to_string(result.busy.size() - kMostNamed) + " more";
    return "Not finished: somebody else sends on this line (" + where + "), so that " +
           std::to_string(result.unasked) +
           " requests were not sent. Silence whoever sends, and scan again.";
}

} // namespace pelvan
