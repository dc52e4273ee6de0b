#include "desktop/windows/transfer_window.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QPushButton>

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
    row->addStretch();
    return row;
}

/// A list below its title, with the button that clears it; `titles` stand between.
QLayout* titled_list(const BindContext& context, Label& title, ListBox& list, Button& clear,
                     const std::vector<Label*>& titles) {
    QListView* view = list_for(context, list);
    auto* head = new QHBoxLayout;
    head->addWidget(label_for(context, title, view));
    head->addStretch();
    head->addWidget(button_for(context, clear));
    auto* column = new QVBoxLayout;
    column->addLayout(head);
    auto* row = new QHBoxLayout;
    for (Label* each : titles)
        row->addWidget(bound<QLabel>(context, *each), 1);
    column->addLayout(row);
    column->addWidget(view, 1);
    return column;
}

QLayout* bottom(const BindContext& context, frm_DownloadParm& form) {
    auto* bar = bound<QProgressBar>(context, form.ProgressBar1);
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
    lists->addLayout(titled_list(context, form.Label1, form.List1, form.cmdClearListBox, {}), 2);
    lists->addLayout(titled_list(context, form.Label2, form.List2, form.cmdClearList2,
                                 {&form.Label3, &form.Label4}),
                     3);
    layout->addLayout(lists, 1);
    layout->addLayout(bottom(context, form));
    return content;
}

} // namespace pelvan::desktop
