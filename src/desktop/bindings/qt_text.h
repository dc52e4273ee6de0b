// Texts between the control models and Qt. Models hold bytes: UTF-8, or whatever a line or a file
// brought. What is not UTF-8 is shown as Latin-1, so that no byte disappears from sight.
#pragma once

#include <QString>
#include <string>

namespace pelvan::desktop {

[[nodiscard]] QString to_qt(const std::string& text);
[[nodiscard]] std::string from_qt(const QString& text);

/// Whether a text comes back from Qt as it was: one that is not UTF-8 does not.
[[nodiscard]] bool survives_qt(const std::string& text);

/// A caption without its access-key marks.
[[nodiscard]] QString without_marks(const QString& caption);

/// A tool tip that is shown as it stands, even when it looks like markup.
[[nodiscard]] QString plain_tip(const std::string& text);

/// A list line with its control characters made visible: a line end inside would break the row.
[[nodiscard]] QString visible_line(const std::string& text);

} // namespace pelvan::desktop
