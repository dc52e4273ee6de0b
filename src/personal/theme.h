// Light or dark: what the person chose for this program, and what the desktop says when nothing was
// chosen. How the desktop is asked is the window system's business.
#pragma once

#include <optional>
#include <string>

namespace pelvan {

enum class Shade { Light, Dark };
enum class ThemeChoice { AsDesktop, Light, Dark };

/// As it is kept in the settings; a text that means nothing is the desktop's choice.
[[nodiscard]] std::string text_of(ThemeChoice choice);
[[nodiscard]] ThemeChoice theme_choice(const std::string& text);

/// What the desktop's colour scheme means: 1 dark, 2 light, all else no preference.
[[nodiscard]] std::optional<Shade> shade_of_color_scheme(unsigned scheme);

/// What the environment variable GTK_THEME ("Adwaita:dark"; may be empty) and the text of a GTK
/// settings file say.
[[nodiscard]] std::optional<Shade> gtk_shade(const std::string& variable,
                                             const std::string& settings);

/// What there is to go by, the first that says something counts.
struct ShadeSources {
    ThemeChoice choice = ThemeChoice::AsDesktop;
    std::optional<Shade> desktop; // its colour scheme
    std::optional<Shade> gtk;
    Shade colors = Shade::Light; // that the window system came with
};
[[nodiscard]] Shade shade_to_use(const ShadeSources& sources);

} // namespace pelvan
