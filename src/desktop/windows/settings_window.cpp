#include "desktop/windows/settings_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace pelvan::desktop {
namespace {

constexpr int kFieldWidth = 90;
constexpr int kStateWidth = 460;
constexpr int kListHeight = 16;

/// A dialog above the frame, which holds the frame's windows while it is open.
QWidget* make_dialog(QWidget* frame) {
    auto* window = new QWidget(frame, Qt::Dialog);
    window->setWindowModality(Qt::WindowModal);
    return window;
}

QPushButton* make_button(const BindContext& context, Button& model) {
    auto* button = bound<QPushButton>(context, model);
    button->setAutoDefault(true); // Enter presses the button that has the focus
    return button;
}

void add_field(const BindContext& context, QFormLayout& form, Label& label, TextBox& model) {
    auto* edit = bound<QLineEdit>(context, model);
    edit->setFixedWidth(kFieldWidth);
    form.addRow(label_for(context, label, edit), edit);
}

QGroupBox* protocol_frame(const BindContext& context, frm_CommsSettings& form, std::size_t i) {
    auto* box = bound<QGroupBox>(context, form.fram_Protocol[i]);
    auto* fields = new QFormLayout(box);
    add_field(context, *fields, form.lbl_Port[i], form.txt_Port[i]);
    add_field(context, *fields, form.lbl_Baud[i], form.txt_Baud[i]);
    add_field(context, *fields, form.lbl_Parity[i], form.txt_Parity[i]);
    add_field(context, *fields, form.lbl_DataBits[i], form.txt_DataBits[i]);
    add_field(context, *fields, form.lbl_StopBits[i], form.txt_StopBits[i]);
    auto* mode = bound<QComboBox>(context, form.ComboRTSMode[i]);
    fields->addRow(label_for(context, form.lbl_RTSMode[i], mode), mode);
    auto* save = make_button(context, form.cmd_SaveChanges[i]);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(save);
    buttons->addWidget(make_button(context, form.cmd_OK[i]));
    fields->addRow(buttons);
    return box;
}

QGroupBox* device_frame(const BindContext& context, DevicePickerPanel& picker) {
    auto* box = bound<QGroupBox>(context, picker.fram_Device);
    auto* state = bound<QLabel>(context, picker.lbl_DeviceState);
    state->setWordWrap(true);
    state->setMinimumWidth(kStateWidth);
    state->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* devices = bound<QComboBox>(context, picker.cmb_Device);
    devices->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    auto* row = new QHBoxLayout;
    row->addWidget(label_for(context, picker.lbl_Device, devices));
    row->addWidget(devices, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(make_button(context, picker.cmd_AssignDevice));
    buttons->addWidget(make_button(context, picker.cmd_RefreshDevices));
    buttons->addStretch();
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(state);
    layout->addLayout(row);
    layout->addLayout(buttons);
    layout->addStretch();
    return box;
}

QGroupBox* exchange_frame(const BindContext& context, ExchangePanel& exchange) {
    auto* box = bound<QGroupBox>(context, exchange.fram_Exchange);
    auto* advice = bound<QLabel>(context, exchange.lbl_Advice);
    advice->setWordWrap(true);
    advice->setMinimumHeight(2 * advice->fontMetrics().lineSpacing()); // it comes and goes
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(bound<QCheckBox>(context, exchange.chk_Complete));
    layout->addWidget(advice);
    return box;
}

/// Opens a menu at the right mouse button and at the menu key, wherever in the window. A text box
/// shows the entries below those of its own.
class MenuOpener : public QObject {
  public:
    MenuOpener(QWidget* window, QMenu* menu) : QObject(window), menu_(menu) {
        for (QWidget* widget : window->findChildren<QWidget*>())
            widget->installEventFilter(this);
        window->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::ContextMenu) return false;
        QMenu* menu = menu_;
        if (auto* edit = qobject_cast<QLineEdit*>(watched)) {
            menu = edit->createStandardContextMenu();
            menu->setAttribute(Qt::WA_DeleteOnClose);
            menu->addSeparator();
            menu->addActions(menu_->actions());
        }
        menu->popup(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    }

  private:
    QMenu* menu_;
};

/// Binds the form last, when the window has its size, and lays it over the middle of its parent.
void finish(const BindContext& context, Form& form, MdiFrame& frame, QWidget* window) {
    window->adjustSize();
    const QPoint middle = frame.frameGeometry().center();
    window->move(middle - window->rect().center());
    on_key(context, window, Qt::Key_F1, [&frame, &form] { frame.show_help(form.help_page()); });
    bind(context, form, window);
}

} // namespace

QWidget* make_comms_settings(const BindContext& context, frm_CommsSettings& form, MdiFrame& frame) {
    QWidget* window = make_dialog(&frame);
    auto* layout = new QHBoxLayout(window);
    for (std::size_t i = 0; i < form.fram_Protocol.size(); ++i) {
        layout->addWidget(protocol_frame(context, form, i));
        on_key(context, layout->itemAt(static_cast<int>(i))->widget(), Qt::Key_Return,
               [&form, i] { form.cmd_SaveChanges[i].press(); });
    }
    auto* line = new QVBoxLayout;
    line->addWidget(device_frame(context, form.picker), 1);
    line->addWidget(exchange_frame(context, form.exchange));
    layout->addLayout(line, 1);
    on_key(context, window, Qt::Key_Escape, [&form] { form.cmd_OK_Click(); });
    QMenu* menu = make_menu(context, form.Hiddenmenu, window);
    window->addActions(menu->actions()); // its key works without the menu
    new MenuOpener(window, menu);
    finish(context, form, frame, window);
    return window;
}

QWidget* make_serial_devices(const BindContext& context, frm_SerialDevices& form, MdiFrame& frame) {
    QWidget* window = make_dialog(&frame);
    auto* list = new QListView;
    list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    list->setMinimumHeight((kListHeight + 1) * (list->fontMetrics().height() + 2));
    bind(context, form.lst_Ports, list);
    auto* layout = new QVBoxLayout(window);
    layout->addWidget(label_for(context, form.lbl_Ports, list));
    layout->addWidget(list, 1);
    layout->addWidget(device_frame(context, form.picker));
    layout->addWidget(make_button(context, form.cmd_Close), 0, Qt::AlignRight);
    on_key(context, window, Qt::Key_Escape, [&form] { form.Unload(); });
    finish(context, form, frame, window);
    return window;
}

} // namespace pelvan::desktop
