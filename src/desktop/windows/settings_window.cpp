#include "desktop/windows/settings_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace pelvan::desktop {
namespace {

constexpr int kFieldWidth = 90;
constexpr int kStateWidth = 460;
constexpr int kStateLines = 4;
constexpr int kBesideState = 340; // the fields beside it, and margins
constexpr int kMinListLines = 3;  // of sixteen, on a small screen
constexpr int kBelowList = 300;   // the device's box and the button, and margins
constexpr int kTitleBar = 40;     // what a window has round it, generously

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

/// How large a window may become.
QSize room_on_screen() {
    return QGuiApplication::primaryScreen()->availableSize() - QSize(0, kTitleBar);
}

/// A sentence that may take several lines, and be copied.
QLabel* sentence(const BindContext& context, Label& model) {
    auto* label = bound<QLabel>(context, model);
    label->setWordWrap(true);
    label->setMinimumWidth(std::min(kStateWidth, room_on_screen().width() - kBesideState));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QGroupBox* device_frame(const BindContext& context, DevicePickerPanel& picker) {
    auto* box = bound<QGroupBox>(context, picker.fram_Device);
    auto* state = sentence(context, picker.lbl_DeviceState);
    state->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // The buttons stay where they are while a path is typed.
    state->setMinimumHeight(kStateLines * state->fontMetrics().lineSpacing());
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
    layout->addWidget(bound<QCheckBox>(context, exchange.chk_Echo));
    layout->addWidget(bound<QCheckBox>(context, exchange.chk_OwnHandshake));
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

/// The content of a dialog, which grows with it as far as the screen goes, and scrolls beyond.
class Content : public QScrollArea {
  public:
    Content(QWidget* window, QWidget* content, const QSize& room) : window_(window), room_(room) {
        setFrameShape(QFrame::NoFrame);
        setWidgetResizable(true);
        setFocusPolicy(Qt::NoFocus); // it follows the focus of what is in it
        setWidget(content);
        content->installEventFilter(this);
        auto* layout = new QVBoxLayout(window);
        layout->setContentsMargins({});
        layout->addWidget(this);
        fit({});
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == widget() && event->type() == QEvent::LayoutRequest) fit(window_->size());
        return QScrollArea::eventFilter(watched, event);
    }

  private:
    void fit(const QSize& least) {
        const QSize wanted = widget()->sizeHint().expandedTo(widget()->minimumSizeHint());
        window_->resize(wanted.expandedTo(least).boundedTo(room_));
    }

    QWidget* window_;
    QSize room_;
};

/// A question in the middle of the closing, too, is a window that goes: some window managers give
/// the keyboard back to that one. The frame takes it.
class KeyboardBack : public QObject {
  public:
    KeyboardBack(QWidget* window, MdiFrame& frame) : QObject(window), frame_(frame) {
        window->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Hide)
            QTimer::singleShot(0, &frame_, [this] { frame_.activateWindow(); });
        return QObject::eventFilter(watched, event);
    }

  private:
    MdiFrame& frame_;
};

/// Binds the form last, when the window has its size, and lays it over the middle of its parent.
void finish(const BindContext& context, Form& form, MdiFrame& frame, QWidget* window,
            QWidget* content) {
    new Content(window, content, room_on_screen());
    const QPoint middle = frame.frameGeometry().center();
    window->move(middle - window->rect().center());
    on_key(context, window, Qt::Key_F1, [&frame, &form] { frame.show_help(form.help_page()); });
    bind(context, form, window);
    new KeyboardBack(window, frame);
}

} // namespace

QWidget* make_comms_settings(const BindContext& context, frm_CommsSettings& form, MdiFrame& frame) {
    QWidget* window = make_dialog(&frame);
    auto* content = new QWidget;
    auto* all = new QVBoxLayout(content);
    auto* layout = new QHBoxLayout;
    all->addLayout(layout);
    all->addWidget(bound<QCheckBox>(context, form.chk_GivePorts));
    for (std::size_t i = 0; i < form.fram_Protocol.size(); ++i) {
        layout->addWidget(protocol_frame(context, form, i));
        on_key(context, layout->itemAt(static_cast<int>(i))->widget(), Qt::Key_Return,
               [&form, i] { form.cmd_SaveChanges[i].press(); });
    }
    QGroupBox* device = device_frame(context, form.picker);
    auto* rows = qobject_cast<QVBoxLayout*>(device->layout());
    rows->insertWidget(rows->count() - 1, sentence(context, form.lbl_PortUse)); // above the stretch
    auto* line = new QVBoxLayout;
    line->addWidget(device, 1);
    QGroupBox* exchange = exchange_frame(context, form.exchange);
    line->addWidget(exchange);
    for (QGroupBox* box : {device, exchange})
        on_key(context, box, Qt::Key_Return, [&form] { form.save_shown(); });
    layout->addLayout(line, 1);
    on_key(context, window, Qt::Key_Escape, [&form] { form.cmd_OK_Click(); });
    QMenu* menu = make_menu(context, form.Hiddenmenu, window);
    window->addActions(menu->actions()); // its key works without the menu
    finish(context, form, frame, window, content);
    new MenuOpener(window, menu);
    return window;
}

QWidget* make_serial_devices(const BindContext& context, frm_SerialDevices& form, MdiFrame& frame) {
    QWidget* window = make_dialog(&frame);
    auto* list = new QListView;
    list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const int line_height = list->fontMetrics().height() + 2;
    const int lines = (room_on_screen().height() - kBelowList) / line_height;
    list->setMinimumHeight(std::clamp(lines, kMinListLines, kMaxPortNumber + 1) * line_height);
    list->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    bind(context, form.lst_Ports, list);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->addWidget(label_for(context, form.lbl_Ports, list));
    layout->addWidget(list, 1);
    QGroupBox* device = device_frame(context, form.picker);
    on_key(context, device, Qt::Key_Return, [&form] { form.picker.cmd_AssignDevice.press(); });
    layout->addWidget(device);
    layout->addWidget(make_button(context, form.cmd_Close), 0, Qt::AlignRight);
    on_key(context, window, Qt::Key_Escape, [&form] { form.Unload(); });
    finish(context, form, frame, window, content);
    return window;
}

} // namespace pelvan::desktop
