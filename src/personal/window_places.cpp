#include "personal/window_places.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace pelvan {
namespace {

constexpr char kSection[] = "WINDOWS";
constexpr char kMaximized[] = "maximized";

/// Nothing when the text is no place, or one that no screen has: somebody may have edited it.
std::optional<WindowPlace> parse(const std::string& text) {
    constexpr int kFarthest = 100000;
    std::istringstream in(text);
    WindowPlace place;
    std::string state;
    if (!(in >> place.left >> place.top >> place.width >> place.height)) return std::nullopt;
    for (const int number : {place.left, place.top, place.width, place.height})
        if (std::abs(number) > kFarthest) return std::nullopt;
    if (place.width <= 0 || place.height <= 0) return std::nullopt;
    place.maximized = in >> state && state == kMaximized;
    return place;
}

} // namespace

WindowPlace fitted(WindowPlace place, const WindowPlace& room) {
    place.width = std::min(place.width, room.width);
    place.height = std::min(place.height, room.height);
    place.left = std::clamp(place.left, room.left, room.left + room.width - place.width);
    place.top = std::clamp(place.top, room.top, room.top + room.height - place.height);
    return place;
}

std::optional<WindowPlace> WindowPlaces::of(const std::string& window) const {
    return parse(settings_.text(kSection, window));
}

void WindowPlaces::keep(const std::string& window, const WindowPlace& place) {
    std::ostringstream out;
    out << place.left << ' ' << place.top << ' ' << place.width << ' ' << place.height;
    if (place.maximized) out << ' ' << kMaximized;
    settings_.set_text(kSection, window, out.str());
}

void WindowPlaces::forget(const std::string& window) {
    settings_.set_text(kSection, window, {});
}

} // namespace pelvan
