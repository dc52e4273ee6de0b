// One binding a kind of control model: it mirrors model and widget both ways. A window is layout
// plus these calls and holds no rule of the program. The widget gets the control's name as object
// name, its tool tip and an accessible name. Models must outlive their widgets; a model is bound to
// one widget at a time. User events reach the model through the context's runner only.
#pragma once

#include <vector>

#include "desktop/bindings/binding.h"
#include "forms/form.h"
#include "forms/lists.h"

class QAbstractButton;
class QAbstractSlider;
class QAction;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListView;
class QMenu;
class QProgressBar;
class QRadioButton;
class QTableView;
class QTimer;

namespace pelvan::desktop {

void bind(const BindContext& context, Label& model, QLabel* label);
void bind(const BindContext& context, Frame& model, QGroupBox* box);
void bind(const BindContext& context, Button& model, QAbstractButton* button);
void bind(const BindContext& context, CheckBox& model, QCheckBox* box);
/// One radio button an option, in order; they need no group of their own. Not called `bind` because
/// the standard library's function of that name would be found for a vector.
void bind_options(const BindContext& context, OptionGroup& model,
                  const std::vector<QRadioButton*>& radios);
/// Makes one radio button an option below `parent`, and binds them.
[[nodiscard]] std::vector<QRadioButton*> make_radios(const BindContext& context, OptionGroup& model,
                                                     QWidget* parent);

void bind(const BindContext& context, TextBox& model, QLineEdit* edit);
void bind(const BindContext& context, ComboBox& model, QComboBox* combo);

/// A bar whose Max lies below its Min runs from Min at the widget's beginning to Max at its end.
void bind(const BindContext& context, ScrollBar& model, QAbstractSlider* bar);
void bind(const BindContext& context, ProgressBar& model, QProgressBar* bar);

/// Gives the view a model of its own that reads the control's lines. Bind when the view has its
/// font; 10,000 lines scroll as fast as ten.
///
/// The view scrolls to the line that is selected. With `held` it stands still instead when lines
/// come at the end, while `held` says so or somebody has scrolled up.
void bind(const BindContext& context, ListBox& model, QListView* view,
          std::function<bool()> held = {});
/// Keeps the rows of two lists level; `beside` may be hidden at times.
void scroll_together(QListView* lines, QListView* beside);
/// The grid's row 0 becomes the header. Enter and the space bar act as the left mouse button, the
/// menu key as the right one.
///
/// `look`, if given, is asked first for what a cell shows in a role (row and column of the grid);
/// an invalid answer leaves it to the grid. The view is not told when its answers change.
using CellLook = std::function<QVariant(int row, int column, int role)>;
void bind(const BindContext& context, Grid& model, QTableView* view, CellLook look = {});

void bind(const BindContext& context, MenuEntry& model, QAction* action);
/// The entry's children as a menu; owned by `parent`.
[[nodiscard]] QMenu* make_menu(const BindContext& context, MenuEntry& model, QWidget* parent);

/// A timer owned by the context's owner. A tick that falls due while the handler of the one before
/// is still running (in a dialog, say) is left out.
QTimer* bind(const BindContext& context, Timer& model);

/// Caption, visibility, place, state and pointer of a window, whether a child of the frame or not.
/// Closing the window unloads the form, and the window stays when the form refuses.
void bind(const BindContext& context, Form& model, QWidget* window);

/// A new widget of the kind, bound to the control.
template <class Widget, class Model> Widget* bound(const BindContext& context, Model& model) {
    auto* widget = new Widget;
    bind(context, model, widget);
    return widget;
}

/// A new label bound to the control that names `widget` (see `set_label`).
[[nodiscard]] QLabel* label_for(const BindContext& context, Label& model, QWidget* widget);

/// A new frame with one radio button an option below each other.
[[nodiscard]] QGroupBox* option_frame(const BindContext& context, Frame& frame,
                                      OptionGroup& options);

/// Makes `label` name `widget`, on the screen (access key) and for those who hear the screen; its
/// own caption or tool tip stays the spoken name where it has one.
void set_label(QLabel* label, QWidget* widget);

/// Runs `handler` when the key is pressed in the widget, instead of what the widget does with it.
void on_key(const BindContext& context, QWidget* widget, Qt::Key key,
            std::function<void()> handler);

} // namespace pelvan::desktop
