#include "personal/theme.h"

#include "platform/sectioned_text.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kLight[] = "light";
constexpr char kDark[] = "dark";

/// "Adwaita-dark", "Breeze-Dark", "Yaru-blue-dark", "Adwaita:dark".
bool is_dark_name(const std::string& theme) {
    const std::string name = upper_case(theme);
    return name.ends_with("-DARK") || name.ends_with(":DARK");
}

} // namespace

std::string text_of(ThemeChoice choice) {
    switch (choice) {
    case ThemeChoice::Light:
        return kLight;
    case ThemeChoice::Dark:
        return kDark;
    case ThemeChoice::AsDesktop:
        break;
    }
    return {};
}

ThemeChoice theme_choice(const std::string& text) {
    if (text == kLight) return ThemeChoice::Light;
    return text == kDark ? ThemeChoice::Dark : ThemeChoice::AsDesktop;
}

std::optional<Shade> shade_of_color_scheme(unsigned scheme) {
    if (scheme == 1) return Shade::Dark;
    if (scheme == 2) return Shade::Light;
    return std::nullopt;
}

std::optional<Shade> gtk_shade(const std::string& variable, const std::string& settings) {
    if (!variable.empty()) return is_dark_name(variable) ? Shade::Dark : Shade::Light;
    const auto prefers = find_value(settings, "Settings", "gtk-application-prefer-dark-theme");
    const auto theme = find_value(settings, "Settings", "gtk-theme-name");
    if (prefers && (*prefers == "1" || upper_case(*prefers) == "TRUE")) return Shade::Dark;
    if (theme && is_dark_name(*theme)) return Shade::Dark;
    if (prefers || theme) return Shade::Light;
    return std::nullopt;
}

Shade shade_to_use(const ShadeSources& sources) {
    if (sources.choice == ThemeChoice::Light) return Shade::Light;
    if (sources.choice == ThemeChoice::Dark) return Shade::Dark;
    return sources.desktop.value_or(sources.gtk.value_or(sources.colors));
}

} // namespace pelvan
