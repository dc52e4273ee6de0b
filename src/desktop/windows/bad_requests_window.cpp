#include "desktop/windows/bad_requests_window.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>

#include "desktop/bindings/qt_text.h"
#include "desktop/windows/list_table.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 8;
constexpr int kNumberWidth = 64;
constexpr int kReadWidth = 110;
constexpr int kVerdictColumn = 4;

QWidget* put(QBoxLayout* row, const BindContext& context, Label& label, QWidget* box) {
    row->addWidget(label_for(context, label, box));
    row->addWidget(box);
    return box;
}

QLayout* choices(const BindContext& context, frm_BadRequests& form) {
    auto* row = new QHBoxLayout;
    put(row, context, form.lbl_Protocol, bound<QComboBox>(context, form.cmb_Protocol));
    put(row, context, form.lbl_Address, bound<QLineEdit>(context, form.txt_Address))
        ->setMaximumWidth(kNumberWidth);
    put(row, context, form.lbl_Read, bound<QLineEdit>(context, form.txt_Read))
        ->setMaximumWidth(kReadWidth);
    put(row, context, form.lbl_Other, bound<QLineEdit>(context, form.txt_Other))
        ->setMaximumWidth(kNumberWidth);
    put(row, context, form.lbl_Check, bound<QComboBox>(context, form.cmb_Check));
    put(row, context, form.lbl_Wait, bound<QLineEdit>(context, form.txt_Wait))
        ->setMaximumWidth(kNumberWidth);
    row->addStretch();
    return row;
}

QLayout* bottom(const BindContext& context, frm_BadRequests& form) {
    auto* bar = bound<QProgressBar>(context, form.ProgressBar1);
    bar->setAccessibleName(QStringLiteral("Progress"));
    auto* row = new QHBoxLayout;
    row->addWidget(bar, 1);
    for (Button* button : {&form.cmdStart, &form.cmdCancel, &form.cmdSave})
        row->addWidget(bound<QPushButton>(context, *button));
    return row;
}

} // namespace

QWidget* make_bad_requests(const BindContext& context, frm_BadRequests& form) {
    QStringList titles;
    for (const std::string& title : frm_BadRequests::column_titles())
        titles << to_qt(title);
    QTableView* table = make_list_table(context, form.lst_Lines, titles,
                                        frm_BadRequests::columns_of, kVerdictColumn);
    auto* status = bound<QLabel>(context, form.lbl_Status);
    status->setWordWrap(true);
    status->setTextFormat(Qt::PlainText);
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->addLayout(choices(context, form));
    layout->addWidget(label_for(context, form.lbl_Lines, table));
    layout->addWidget(table, 1);
    layout->addWidget(status);
    layout->addLayout(bottom(context, form));
    return content;
}

} // namespace pelvan::desktop
