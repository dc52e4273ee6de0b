#include "desktop/windows/transfer_window.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>

#include "desktop/bindings/qt_text.h"
#include "desktop/windows/list_table.h"
#include "registers/transfer_errors.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 8;
constexpr int kListHeight = 160;
constexpr int kListWidth = 300;

QPushButton* button_for(const BindContext& context, Button& model, const char* shortcut = nullptr) {
    auto* button = bound<QPushButton>(context, model);
    if (shortcut) button->setShortcut(QKeySequence(QLatin1String(shortcut)));
    return button;
}

QListView* list_for(const BindContext& context, ListBox& model) {
    auto* view = new QListView;
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    view->setMinimumSize(kListWidth, kListHeight);
    bind(context, model, view);
    return view;
}

QLayout* choices(const BindContext& context, frm_DownloadParm& form) {
    auto* address = bound<QComboBox>(context, form.cmbAddress);
    auto* compare = bound<QCheckBox>(context, form.chkCompare);
    auto* row = new QHBoxLayout;
    row->addWidget(label_for(context, form.LblAddress, address));
    row->addWidget(address);
    row->addSpacing(2 * kMargin);
    row->addWidget(button_for(context, form.cmdDownload, "Alt+D"));
    row->addWidget(button_for(context, form.cmdUpload, "Alt+U"));
    row->addWidget(compare);
    row->addWidget(button_for(context, form.cmdCompare));
    row->addWidget(bound<QCheckBox>(context, form.chkTogether));
    row->addStretch();
    return row;
}

/// A title with the button that clears the list below it.
QLayout* head_for(const BindContext& context, Label& title, QWidget* list, Button& clear) {
    auto* head = new QHBoxLayout;
    head->addWidget(label_for(context, title, list));
    head->addStretch();
    head->addWidget(button_for(context, clear));
    return head;
}

QLayout* history(const BindContext& context, frm_DownloadParm& form) {
    QListView* list = list_for(context, form.List1);
    auto* column = new QVBoxLayout;
    column->addLayout(head_for(context, form.Label1, list, form.cmdClearListBox));
    column->addWidget(list, 1);
    return column;
}

QLayout* errors(const BindContext& context, frm_DownloadParm& form) {
    // One title stands over two columns.
    QStringList titles{to_qt(form.Label3.Caption())};
    titles += to_qt(form.Label4.Caption()).split(QStringLiteral("    "));
    QTableView* table = make_list_table(
        context, form.List2, titles << QStringLiteral("Kind"),
        [](const std::string& line) {
            const ErrorColumns columns = columns_of_error(line);
            return std::vector<std::string>(columns.begin(), columns.end());
        },
        0);
    table->setMinimumSize(kListWidth, kListHeight);
    auto* column = new QVBoxLayout;
    column->addLayout(head_for(context, form.Label2, table, form.cmdClearList2));
    column->addWidget(table, 1);
    return column;
}

/// Where the file lies.
QLayout* file_line(const BindContext& context, frm_DownloadParm& form) {
    auto* path = bound<QLineEdit>(context, form.txt_File);
    auto* row = new QHBoxLayout;
    row->addWidget(label_for(context, form.lbl_File, path));
    row->addWidget(path, 1);
    row->addWidget(button_for(context, form.cmdOpenFolder));
    return row;
}

QLayout* bottom(const BindContext& context, frm_DownloadParm& form) {
    auto* bar = bound<QProgressBar>(context, form.ProgressBar1);
    bar->setAccessibleName(QStringLiteral("Progress"));
    auto* row = new QHBoxLayout;
    row->addWidget(bar, 1);
    row->addWidget(button_for(context, form.cmdCancel));
    row->addWidget(button_for(context, form.cmdExit));
    return row;
}

} // namespace

QWidget* make_transfer(const BindContext& context, frm_DownloadParm& form) {
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->addLayout(choices(context, form));
    auto* lists = new QHBoxLayout;
    lists->addLayout(history(context, form), 2);
    lists->addLayout(errors(context, form), 3);
    layout->addLayout(lists, 1);
    layout->addLayout(file_line(context, form));
    layout->addLayout(bottom(context, form));
    return content;
}

} // namespace pelvan::desktop
