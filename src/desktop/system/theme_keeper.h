// Light or dark, as the person or the desktop has it. What is known without asking anybody counts
// before the first window is painted; the desktop is asked behind that, because its answer may take
// a while, and again with each change of its settings.
#pragma once

#include <QObject>
#include <QPalette>
#include <QTimer>
#include <optional>

#include "personal/personal_settings.h"
#include "personal/theme.h"

namespace pelvan::desktop {

class ThemeKeeper : public QObject {
  public:
    /// `settings` is borrowed; the choice and the desktop's last answer are kept there.
    explicit ThemeKeeper(PersonalSettings& settings);

    /// Asks the desktop; its answers come as events. Nothing on a machine without a session bus.
    void follow_desktop();
    void choose(ThemeChoice choice);
    [[nodiscard]] ThemeChoice choice() const { return sources_.choice; }

  private:
    void ask();
    void take_answer(std::optional<Shade> shade);
    void apply();

    PersonalSettings& settings_;
    ShadeSources sources_;
    Shade shown_;
    const QPalette tool_tips_;
    QTimer ask_;
};

/// The colours of a shade, for a window system that has none of it.
[[nodiscard]] QPalette palette_of(Shade shade);

} // namespace pelvan::desktop
