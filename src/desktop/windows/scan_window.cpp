#include "desktop/windows/scan_window.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>

#include "desktop/bindings/qt_text.h"
#include "desktop/windows/list_table.h"
#include "text/strings.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 8;
constexpr int kBoxWidth = 60;
constexpr int kRateColumns = 2;
constexpr int kAnswerColumn = 4; // of the table, the one with the longest texts
constexpr int kTableHeight = 120;

QLabel* sentence(const BindContext& context, Label& model, int lines) {
    auto* label = bound<QLabel>(context, model);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    // Nothing below moves when the text takes them.
    label->setMinimumHeight(lines * label->fontMetrics().lineSpacing());
    return label;
}

template <std::size_t Count>
QGroupBox* box_frame(const BindContext& context, Frame& frame, std::array<CheckBox, Count>& boxes,
                     int columns = 1) {
    auto* group = bound<QGroupBox>(context, frame);
    auto* grid = new QGridLayout(group);
    const int rows = (static_cast<int>(Count) + columns - 1) / columns;
    for (int i = 0; i < static_cast<int>(Count); ++i)
        grid->addWidget(bound<QCheckBox>(context, boxes[static_cast<std::size_t>(i)]), i % rows,
                        i / rows);
    grid->setRowStretch(rows, 1);
    return group;
}

QGroupBox* format_frame(const BindContext& context, frm_BusScan& form) {
    QGroupBox* group = box_frame(context, form.fram_Format, form.chk_Parity);
    auto* grid = qobject_cast<QGridLayout*>(group->layout());
    grid->addWidget(bound<QCheckBox>(context, form.chk_TwoStopBits), 0, 1);
    grid->addWidget(bound<QCheckBox>(context, form.chk_SevenBits), 1, 1);
    return group;
}

QLineEdit* number_box(const BindContext& context, TextBox& model) {
    auto* edit = bound<QLineEdit>(context, model);
    edit->setFixedWidth(kBoxWidth);
    return edit;
}

QGroupBox* address_frame(const BindContext& context, frm_BusScan& form) {
    auto* group = bound<QGroupBox>(context, form.fram_Addresses);
    auto* grid = new QGridLayout(group);
    auto* first = number_box(context, form.txt_First);
    auto* last = number_box(context, form.txt_Last);
    auto* patience = number_box(context, form.txt_Patience);
    grid->addWidget(label_for(context, form.lbl_First, first), 0, 0);
    grid->addWidget(first, 0, 1);
    grid->addWidget(label_for(context, form.lbl_Last, last), 0, 2);
    grid->addWidget(last, 0, 3);
    grid->addWidget(label_for(context, form.lbl_Patience, patience), 1, 0, 1, 3);
    grid->addWidget(patience, 1, 3);
    grid->addWidget(bound<QCheckBox>(context, form.chk_StopAtFirst), 2, 0, 1, 4);
    grid->setRowStretch(3, 1);
    return group;
}

QLayout* choices(const BindContext& context, frm_BusScan& form) {
    auto* row = new QHBoxLayout;
    row->addWidget(box_frame(context, form.fram_Protocols, form.chk_Protocol));
    row->addWidget(box_frame(context, form.fram_Baud, form.chk_Baud, kRateColumns));
    row->addWidget(format_frame(context, form));
    row->addWidget(address_frame(context, form));
    row->addStretch();
    return row;
}

QLayout* command_row(const BindContext& context, frm_BusScan& form) {
    auto* start = bound<QPushButton>(context, form.cmd_Start);
    auto* row = new QHBoxLayout;
    row->addWidget(sentence(context, form.lbl_Estimate, 1), 1);
    row->addWidget(start);
    row->addWidget(bound<QPushButton>(context, form.cmd_Cancel));
    return row;
}

QTableView* found_table(const BindContext& context, frm_BusScan& form) {
    QStringList titles;
    for (const std::string& heading : find_headings())
        titles += to_qt(heading);
    QTableView* table = make_list_table(
        context, form.lst_Found, titles, [](const std::string& line) { return split(line, '\t'); },
        kAnswerColumn);
    table->setMinimumHeight(kTableHeight);
    return table;
}

QLayout* bottom(const BindContext& context, frm_BusScan& form) {
    auto* row = new QHBoxLayout;
    row->addWidget(sentence(context, form.lbl_Remarks, 1), 1);
    row->addWidget(bound<QPushButton>(context, form.cmd_Use));
    row->addWidget(bound<QPushButton>(context, form.cmd_Exit));
    return row;
}

} // namespace

QWidget* make_scan(const BindContext& context, frm_BusScan& form) {
    auto* content = new QWidget;
    auto* port = bound<QComboBox>(context, form.cmb_Port);
    port->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    auto* head = new QHBoxLayout;
    head->addWidget(label_for(context, form.lbl_Port, port));
    head->addWidget(port);
    head->addStretch();
    auto* bar = bound<QProgressBar>(context, form.pgb_Scan);
    bar->setAccessibleName(QStringLiteral("Progress"));
    QTableView* table = found_table(context, form);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->addLayout(head);
    layout->addLayout(choices(context, form));
    layout->addLayout(command_row(context, form));
    layout->addWidget(bar);
    layout->addWidget(sentence(context, form.lbl_Status, 2));
    layout->addWidget(label_for(context, form.lbl_Found, table));
    layout->addWidget(table, 1);
    layout->addLayout(bottom(context, form));
    on_key(context, content, Qt::Key_Escape, [&form] { form.cmd_Cancel.press(); });
    return content;
}

} // namespace pelvan::desktop
