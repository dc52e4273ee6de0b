#include "desktop/windows/profile_window.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QToolBar>

#include "desktop/bindings/qt_text.h"
#include "desktop/printing/print_module.h"
#include "desktop/profiles/profile_library.h"

namespace pelvan::desktop {
namespace {

template <class Box, class Model>
Labelled<Box> labelled(const BindContext& context, Label& label, Model& model) {
    auto* box = bound<Box>(context, model);
    return {label_for(context, label, box), box};
}

QToolBar* make_bar(const QString& name) {
    auto* bar = new QToolBar;
    bar->setAccessibleName(name);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    return bar;
}

QLabel* make_line(const BindContext& context, Label& model) {
    auto* label = bound<QLabel>(context, model);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

ProfileParts make_parts(const BindContext& context, frm_ProfileLogic& form) {
    ProfileParts parts{context.run,
                       form.profile_sheet(),
                       form.step_sheet(),
                       form.finding_sheet(),
                       form.curve_desk(),
                       form.run_desk(),
                       [&form](const QString& text) { form.say(from_qt(text)); }};
    parts.edit_bar = make_bar(QStringLiteral("Editing"));
    parts.run_bar = make_bar(QStringLiteral("Running"));
    parts.address = labelled<QComboBox>(context, form.line.lbl_Address, form.line.cmbAddress);
    parts.model = labelled<QComboBox>(context, form.lbl_Model, form.cmbModel);
    parts.interval = labelled<QComboBox>(context, form.run.lbl_Interval, form.run.cmbInterval);
    parts.steepest = labelled<QLineEdit>(context, form.lbl_Steepest, form.txt_Steepest);
    parts.state = make_line(context, form.run.lbl_State);
    parts.state->setWordWrap(false);
    parts.values = make_line(context, form.run.lbl_Values);
    parts.message = make_line(context, form.lbl_Message);
    parts.progress = bound<QProgressBar>(context, form.line.ProgressBar1);
    parts.cancel = bound<QPushButton>(context, form.line.cmdCancel);
    return parts;
}

/// The entries of the menus once more, as buttons; the frame has made their actions.
void fill_bar(QToolBar& bar, const std::vector<MenuEntry*>& entries, const MdiFrame& frame) {
    for (const MenuEntry* entry : entries) {
        if (entry == nullptr) {
            bar.addSeparator();
            continue;
        }
        if (auto* action = frame.findChild<QAction*>(to_qt(entry->Name()))) bar.addAction(action);
    }
}

PrintRequest print_request(ProfilePrint how, const std::string& path, QWidget* parent) {
    switch (how) {
    case ProfilePrint::Preview:
        return {PrintAction::Preview, parent, {}};
    case ProfilePrint::Pdf:
        return {PrintAction::WritePdf, parent, to_qt(path)};
    case ProfilePrint::Print:
        break;
    }
    return {PrintAction::Print, parent, {}};
}

/// Does what only the window can, for as long as it is there.
class WindowServices : public QObject {
  public:
    WindowServices(const QString& directory, frm_ProfileLogic& form, const ProfileWindow& window,
                   Dialogs& dialogs, QWidget* parent)
        : QObject(window.content), directory_(directory), window_(window), dialogs_(dialogs),
          parent_(parent), pictures_(form.picture_wanted.subscribe([this](const std::string& path) {
              if (!window_.save_run(to_qt(path)))
                  warn("The picture could not be written:\n" + path);
          })),
          sides_(form.side_wanted.subscribe([this](bool run) { window_.show_side(run); })),
          prints_(form.print_wanted.subscribe([this](const ProfileDocument& document,
                                                     ProfilePrint how, const std::string& path) {
              const QString problem = print_with_module(directory_, document, window_.paint_curve,
                                                        print_request(how, path, parent_));
              if (!problem.isEmpty()) warn(from_qt(problem));
          })) {}

  private:
    void warn(const std::string& text) {
        dialogs_.message_box(text, {}, MessageButtons::Ok, MessageIcon::Exclamation);
    }
    QString directory_; // of the libraries
    ProfileWindow window_;
    Dialogs& dialogs_;
    QWidget* parent_;
    Subscription pictures_;
    Subscription sides_;
    Subscription prints_;
};

} // namespace

void add_profile_window(const QString& directory, frm_ProfileLogic& form, Dialogs& dialogs,
                        MdiFrame& frame) {
    const BindContext& context = frame.context();
    const ProfileParts parts = make_parts(context, form);
    const auto [window, error] = make_profile_window(directory, parts);
    if (window.content == nullptr) {
        dialogs.message_box("The profiles cannot be shown: " + from_qt(error));
        form.Unload();
        return;
    }
    bind(context, form.run.tmr_Poll);
    // It needs the room; not maximized, because the windows that follow would be so too.
    frame.add_child(form, window.content, frame.canvas().rect());
    fill_bar(*parts.edit_bar, form.menu.edit_bar(), frame);
    fill_bar(*parts.run_bar, form.menu.run_bar(), frame);
    on_key(context, window.content, Qt::Key_Escape, [&form] { form.line.ask_to_cancel(); });
    new WindowServices(directory, form, window, dialogs, &frame);
}

} // namespace pelvan::desktop
