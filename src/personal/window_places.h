// Where windows stood when they were closed last, for those that the person has moved or sized by
// hand.
#pragma once

#include <optional>
#include <string>

#include "personal/personal_settings.h"

namespace pelvan {

/// In pixels of the window system. A child window's counts from the frame's room.
struct WindowPlace {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool maximized = false; // then the rest is what it goes back to
    bool operator==(const WindowPlace&) const = default;
};

/// The place moved, and made smaller where it must be, so that nothing of it lies outside `room`.
[[nodiscard]] WindowPlace fitted(WindowPlace place, const WindowPlace& room);

class WindowPlaces {
  public:
    /// `settings` is borrowed and must outlive this.
    explicit WindowPlaces(PersonalSettings& settings) : settings_(settings) {}

    /// Nothing for a window that stands where the program puts it.
    [[nodiscard]] std::optional<WindowPlace> of(const std::string& window) const;
    void keep(const std::string& window, const WindowPlace& place);
    void forget(const std::string& window);

  private:
    PersonalSettings& settings_;
};

} // namespace pelvan
