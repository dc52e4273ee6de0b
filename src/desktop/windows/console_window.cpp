#include "desktop/windows/console_window.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
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

/// Lines close to each other, a label apart from the box beside it.
QGridLayout* field_grid(QGroupBox* box) {
    auto* grid = tight(new QGridLayout(box));
    grid->setHorizontalSpacing(2 * kSpacing);
    return grid;
}

QGroupBox* tight_options(const BindContext& context, Frame& frame, OptionGroup& options) {
    QGroupBox* box = option_frame(context, frame, options);
    tight(box->layout());
    return box;
}

QLineEdit* edit_for(const BindContext& context, TextBox& model, int width) {
    auto* edit = bound<QLineEdit>(context, model);
    if (width > 0) edit->setFixedWidth(width);
    return edit;
}

QGroupBox* modbus_frame(const BindContext& context, ModbusPanel& panel) {
    auto* box = bound<QGroupBox>(context, panel.Fram_Modbus);
    auto* type = bound<QComboBox>(context, panel.cmb_CommandType);
    auto* address = edit_for(context, panel.txt_Address, kNumberWidth);
    auto* start = edit_for(context, panel.txt_Register, kNumberWidth);
    auto* values = edit_for(context, panel.txt_Values, 0);
    QGridLayout* grid = field_grid(box);
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

QGroupBox* text_frame(const BindContext& context, TextPanel& panel) {
    auto* box = bound<QGroupBox>(context, panel.Fram_CommsCommand);
    auto* address = edit_for(context, panel.txt_DeviceAddress, kNumberWidth);
    auto* command = edit_for(context, panel.txt_CommsCommand, 0);
    QGridLayout* grid = field_grid(box);
    grid->addWidget(label_for(context, panel.lbl_DeviceAddress, address), 0, 0);
    grid->addWidget(address, 0, 1, Qt::AlignLeft);
    grid->addWidget(label_for(context, panel.lbl_CommsCommand, command), 1, 0);
    grid->addWidget(command, 1, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(2, 1);
    return box;
}

QGroupBox* tellura_frame(const BindContext& context, TelluraPanel& panel) {
    auto* box = bound<QGroupBox>(context, panel.Fram_Tellura);
    auto* address = edit_for(context, panel.TxtTelluraAddress, kNumberWidth);
    auto* parameter = edit_for(context, panel.TxtParameterAddress, kNumberWidth);
    auto* count = edit_for(context, panel.TxtNoBytes, kNumberWidth);
    auto* data = edit_for(context, panel.TxtData, 0);
    QGridLayout* grid = field_grid(box);
    grid->addWidget(label_for(context, panel.LblTelluraAddress, address), 0, 0);
    grid->addWidget(address, 0, 1);
    grid->addWidget(label_for(context, panel.LblParameterAddress, parameter), 0, 2);
    grid->addWidget(parameter, 0, 3, Qt::AlignLeft);
    grid->addWidget(label_for(context, panel.LblNoBytes, count), 1, 0);
    grid->addWidget(count, 1, 1);
    grid->addWidget(label_for(context, panel.LblData, data), 1, 2);
    grid->addWidget(data, 1, 3);
    int column = 4;
    for (OptionGroup* group : {&panel.OptReadWrite, &panel.OptErrorChecking}) {
        // A parent of their own keeps the two groups apart.
        auto* options = new QWidget;
        auto* layout = new QVBoxLayout(options);
        layout->setContentsMargins(kMargin, 0, 0, 0);
        layout->setSpacing(kSpacing);
        for (QRadioButton* radio : make_radios(context, *group, options))
            layout->addWidget(radio);
        grid->addWidget(options, 0, column++, 2, 1);
    }
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(2, 1);
    return box;
}

/// What the last command came to, and how far a setup file is.
QHBoxLayout* status_line(const BindContext& context, frm_Pelvan5VB& form) {
    auto* status = bound<QLabel>(context, form.lbl_Status);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* progress = bound<QProgressBar>(context, form.script.prg_SetupFile);
    auto* cancel = bound<QPushButton>(context, form.script.cmd_CancelSetup);
    auto* line = new QHBoxLayout;
    line->addWidget(status, 1);
    line->addWidget(progress);
    line->addWidget(cancel);
    return line;
}

} // namespace

QWidget* make_console(const BindContext& context, frm_Pelvan5VB& form) {
    auto* content = new QWidget;
    auto* send = bound<QPushButton>(context, form.cmd_SendCommand);
    send->setDefault(true);

    auto* fields = new QHBoxLayout;
    fields->setSpacing(2 * kSpacing);
    fields->addWidget(tight_options(context, form.fram_Protocol, form.opt_Protocol));
    fields->addWidget(modbus_frame(context, form.modbus), 1);
    fields->addWidget(text_frame(context, form.text), 1);
    fields->addWidget(tellura_frame(context, form.tellura), 1);
    fields->addWidget(
        tight_options(context, form.modbus.fram_DataFormat, form.modbus.opt_DataFormat));
    fields->addWidget(send, 0, Qt::AlignVCenter);

    auto* layout = tight(new QVBoxLayout(content));
    layout->addLayout(fields);
    layout->addLayout(status_line(context, form));
    layout->addStretch();
    return content;
}

} // namespace pelvan::desktop
