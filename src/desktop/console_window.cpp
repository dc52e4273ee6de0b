#include "desktop/console_window.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 4;
constexpr int kSpacing = 3;
constexpr int kNumberWidth = 64;

template <class Layout> Layout* tight(Layout* layout) {
    layout->setContentsMargins(kMargin + 2, kMargin, kMargin + 2, kMargin);
    layout->setSpacing(kSpacing);
    return layout;
}

/// A frame with the options of a group in it, along the given direction.
QGroupBox* option_frame(const BindContext& context, Frame& frame, OptionGroup& options,
                        QBoxLayout::Direction direction) {
    auto* box = new QGroupBox;
    bind(context, frame, box);
    auto* layout = tight(new QBoxLayout(direction, box));
    for (QRadioButton* radio : make_radios(context, options, box))
        layout->addWidget(radio);
    layout->addStretch();
    return box;
}

QLineEdit* edit_for(const BindContext& context, TextBox& model, int width) {
    auto* edit = new QLineEdit;
    bind(context, model, edit);
    if (width > 0) edit->setFixedWidth(width);
    return edit;
}

QLabel* label_for(const BindContext& context, Label& model, QWidget* widget) {
    auto* label = new QLabel;
    bind(context, model, label);
    set_label(label, widget);
    return label;
}

QGroupBox* modbus_frame(const BindContext& context, ModbusPanel& panel) {
    auto* box = new QGroupBox;
    bind(context, panel.Fram_Modbus, box);
    auto* type = new QComboBox;
    bind(context, panel.cmb_CommandType, type);
    auto* address = edit_for(context, panel.txt_Address, kNumberWidth);
    auto* start = edit_for(context, panel.txt_Register, kNumberWidth);
    auto* values = edit_for(context, panel.txt_Values, 0);
    auto* grid = tight(new QGridLayout(box));
    grid->addWidget(label_for(context, panel.lbl_CommandType, type), 0, 0);
    grid->addWidget(type, 0, 1, 1, 3);
    grid->addWidget(label_for(context, panel.lbl_Address, address), 1, 0);
    grid->addWidget(address, 1, 1);
    grid->addWidget(label_for(context, panel.lbl_Register, start), 1, 2);
    // Aligned, so that the column may be wider than the box in it.
    grid->addWidget(start, 1, 3, Qt::AlignLeft);
    grid->addWidget(label_for(context, panel.lbl_Values, values), 2, 0);
    grid->addWidget(values, 2, 1, 1, 3);
    auto* bases = new QVBoxLayout;
    for (QRadioButton* radio : make_radios(context, panel.opt_NumberBase, box))
        bases->addWidget(radio);
    grid->addLayout(bases, 1, 4, 2, 1);
    grid->setColumnStretch(3, 1);
    return box;
}

/// The command text of the protocols that send text.
QWidget* command_text(const BindContext& context, frm_Pelvan5VB& form) {
    auto* edit = edit_for(context, form.txt_CommsCommand, 0);
    return edit;
}

} // namespace

QWidget* make_console(const BindContext& context, frm_Pelvan5VB& form) {
    auto* content = new QWidget;
    auto* send = new QPushButton;
    bind(context, form.cmd_SendCommand, send);
    send->setDefault(true);
    auto* status = new QLabel;
    bind(context, form.lbl_Status, status);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* fields = new QHBoxLayout;
    fields->setSpacing(2 * kSpacing);
    fields->addWidget(
        option_frame(context, form.fram_Protocol, form.opt_Protocol, QBoxLayout::TopToBottom));
    fields->addWidget(modbus_frame(context, form.modbus), 1);
    fields->addWidget(command_text(context, form), 1);
    fields->addWidget(
        option_frame(context, form.fram_DataFormat, form.opt_DataFormat, QBoxLayout::TopToBottom));
    fields->addWidget(send, 0, Qt::AlignVCenter);

    auto* layout = tight(new QVBoxLayout(content));
    layout->addLayout(fields);
    layout->addWidget(status);
    layout->addStretch();
    return content;
}

} // namespace pelvan::desktop
