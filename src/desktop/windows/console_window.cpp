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
constexpr int kIntervalWidth = 44;
constexpr int kFrameCharacters = 90;

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
    // Headed, as the format of what is shown is by its frame.
    grid->addWidget(bound<QLabel>(context, panel.lbl_NumberBase), 0, 4);
    int row = 1;
    for (QRadioButton* radio : make_radios(context, panel.opt_NumberBase, box))
        grid->addWidget(radio, row++, 4);
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

/// Sending once, and sending again and again.
QWidget* send_column(const BindContext& context, frm_Pelvan5VB& form) {
    auto* send = bound<QPushButton>(context, form.cmd_SendCommand);
    send->setDefault(true);
    auto* repeat = bound<QPushButton>(context, form.repeat.cmd_Repeat);
    auto* interval = edit_for(context, form.repeat.txt_RepeatInterval, kIntervalWidth);
    auto* column = new QWidget;
    column->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    auto* grid = new QGridLayout(column);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(2 * kSpacing);
    grid->addWidget(send, 1, 0, 1, 4);
    grid->addWidget(repeat, 2, 0);
    grid->addWidget(label_for(context, form.repeat.lbl_RepeatInterval, interval), 2, 1);
    grid->addWidget(interval, 2, 2);
    grid->addWidget(bound<QLabel>(context, form.repeat.lbl_RepeatUnit), 2, 3);
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(0, 1);
    grid->setRowStretch(3, 1);
    bind(context, form.repeat.tmr_Repeat);
    return column;
}

/// What the last command came to, what a repeated one does, and how far a setup file is.
QHBoxLayout* status_line(const BindContext& context, frm_Pelvan5VB& form) {
    auto* status = bound<QLabel>(context, form.lbl_Status);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    status->setWordWrap(true); // the advice stands at the end of a sentence
    auto* repeated = bound<QLabel>(context, form.repeat.lbl_Repeat);
    repeated->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* progress = bound<QProgressBar>(context, form.script.prg_SetupFile);
    auto* cancel = bound<QPushButton>(context, form.script.cmd_CancelSetup);
    auto* line = new QHBoxLayout;
    line->addWidget(status, 1);
    line->addWidget(repeated);
    line->addWidget(progress);
    line->addWidget(cancel);
    return line;
}

} // namespace

QWidget* make_console(const BindContext& context, frm_Pelvan5VB& form) {
    auto* content = new QWidget;
    auto* fields = new QHBoxLayout;
    fields->setSpacing(2 * kSpacing);
    fields->addWidget(tight_options(context, form.fram_Protocol, form.opt_Protocol));
    for (QGroupBox* frame : {modbus_frame(context, form.modbus), text_frame(context, form.text),
                             tellura_frame(context, form.tellura)}) {
        // On a wide window what belongs together stays together.
        frame->setMaximumWidth(kFrameCharacters * frame->fontMetrics().averageCharWidth());
        fields->addWidget(frame, 1);
    }
    fields->addWidget(
        tight_options(context, form.modbus.fram_DataFormat, form.modbus.opt_DataFormat));
    fields->addWidget(send_column(context, form));
    fields->addStretch();

    auto* layout = tight(new QVBoxLayout(content));
    layout->addLayout(fields);
    layout->addLayout(status_line(context, form));
    layout->addStretch();
    return content;
}

} // namespace pelvan::desktop
