// What the profile window's library offers, which is loaded on first use: it puts the parts that
// the program has bound to the form's controls in their places, and adds tables and curves.
#pragma once

#include <QRectF>
#include <QString>
#include <functional>

#include "desktop/bindings/binding.h"
#include "profile/window/profile_picture.h"
#include "profile/window/sheet.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPainter;
class QProgressBar;
class QPushButton;
class QToolBar;

namespace pelvan::desktop {

/// A box with the label in front of it.
template <class Box> struct Labelled {
    QLabel* label = nullptr;
    Box* box = nullptr;
};

/// The sheets and desks must outlive the window.
struct ProfileParts {
    EventRunner run;
    Sheet& profiles;
    Sheet& steps;
    Sheet& findings;
    CurveDesk& curve;
    RunDesk& run_desk;
    /// Shows what is wrong with what was typed into a table.
    std::function<void(const QString&)> say;

    QToolBar* edit_bar = nullptr;
    QToolBar* run_bar = nullptr;
    Labelled<QComboBox> address = {};
    Labelled<QComboBox> model = {};
    Labelled<QComboBox> interval = {};
    Labelled<QLineEdit> steepest = {};
    QLabel* state = nullptr;
    QLabel* values = nullptr;
    QLabel* message = nullptr;
    QProgressBar* progress = nullptr;
    QPushButton* cancel = nullptr;
};

/// The window's content, and what the program asks of it later. The functions live as long as the
/// content.
struct ProfileWindow {
    QWidget* content = nullptr;
    /// The picture of the run as PNG; false when the file could not be written.
    std::function<bool(const QString& path)> save_run;
    std::function<void(QPainter& painter, const QRectF& target)> paint_curve;
    std::function<void(bool run)> show_side; // the picture of the run, or the curve
};

/// The module's one function, found by `kProfileFunction`.
using ProfileFunction = ProfileWindow (*)(const ProfileParts&);
inline constexpr char kProfileFunction[] = "pelvan_make_profile_window";

} // namespace pelvan::desktop
