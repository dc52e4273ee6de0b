// A profile as it is printed: a title and the table of its steps; the curve is painted by whoever
// shows it.
#pragma once

#include <string>
#include <vector>

namespace pelvan {

struct ProfileDocument {
    std::string title;
    std::string date;
    std::vector<std::string> lines; // below the title
    std::vector<std::string> headings;
    std::vector<std::vector<std::string>> rows; // a text for each heading
};

} // namespace pelvan
