#include "desktop/windows/listen_window.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>

#include "desktop/bindings/qt_text.h"
#include "desktop/windows/frames_view.h"
#include "desktop/windows/traffic_view.h"

namespace pelvan::desktop {
namespace {

constexpr int kRightButton = 2;
constexpr int kBoxRows = 3;
constexpr int kTimesCharacters = 44; // "16:30:05.250  +1200 ms  reply after 12 ms"

QLayout* statistics(const BindContext& context, frm_Listen& form) {
    auto* grid = new QGridLayout;
    int at = 0;
    for (const auto& [caption, box] : form.statistic_boxes()) {
        auto* edit = bound<QLineEdit>(context, *box);
        const int column = 2 * (at / kBoxRows);
        grid->addWidget(label_for(context, *caption, edit), at % kBoxRows, column);
        grid->addWidget(edit, at % kBoxRows, column + 1);
        ++at;
    }
    return grid;
}

QListView* line_view(const BindContext& context, ListBox& list, const CheckBox& pause) {
    auto* view = new QListView;
    view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    // Both lists have the bar, or neither would keep its lines level with the other's.
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    bind(context, list, view, [&pause] { return pause.checked(); });
    return view;
}

/// The lines, with their times on the left when these are shown; both scroll together.
QWidget* captured_lines(const BindContext& context, frm_Listen& form) {
    auto* times = line_view(context, form.lst_Times, form.chk_Pause);
    times->setMinimumWidth(times->fontMetrics().averageCharWidth() * kTimesCharacters);
    auto* lines = line_view(context, form.lst_CommsCommand, form.chk_Pause);
    scroll_together(lines, times);
    for (QListView* view : {times, lines}) {
        auto* copy = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_C), view);
        copy->setContext(Qt::WidgetShortcut);
        QObject::connect(copy, &QShortcut::activated, view, [context, &form] {
            context.run([&form] { form.lst_CommsCommand_KeyDown(true, 'C'); });
        });
    }
    auto* splitter = new QSplitter;
    splitter->addWidget(times);
    splitter->addWidget(lines);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    return splitter;
}

QWidget* lines_tab(const BindContext& context, frm_Listen& form) {
    auto* tab = new QWidget;
    auto* top = new QHBoxLayout;
    top->addWidget(option_frame(context, form.fram_DataDirection, form.opt_DataDirection));
    top->addWidget(option_frame(context, form.fram_DataFormat, form.opt_DataFormat));
    top->addWidget(option_frame(context, form.fram_CharacterDelay, form.opt_CharacterDelay));
    top->addLayout(statistics(context, form), 1);
    auto* layout = new QVBoxLayout(tab);
    layout->addLayout(top);
    layout->addWidget(captured_lines(context, form), 1);
    return tab;
}

/// What is wanted in every tab.
QLayout* command_row(const BindContext& context, frm_Listen& form) {
    auto* row = new QHBoxLayout;
    row->addWidget(bound<QPushButton>(context, form.cmd_Start));
    row->addWidget(bound<QPushButton>(context, form.cmd_Stop));
    row->addWidget(bound<QCheckBox>(context, form.chk_Pause));
    row->addWidget(bound<QCheckBox>(context, form.chk_LogToFile));
    row->addWidget(bound<QLabel>(context, form.lbl_Log), 1);
    return row;
}

/// The pop-up of the right mouse button, which the menu key opens as well.
void add_pop_up(const BindContext& context, frm_Listen& form, QWidget* content) {
    auto* menu = make_menu(context, form.HiddenMenu, content);
    content->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(content, &QWidget::customContextMenuRequested, menu,
                     [context, &form, content, menu](const QPoint& at) {
                         const Subscription shown =
                             form.pop_up.subscribe([menu, place = content->mapToGlobal(at)](
                                                       MenuEntry&) { menu->popup(place); });
                         context.run([&form] { form.Form_MouseUp(kRightButton); });
                     });
}

} // namespace

QWidget* make_listen(const BindContext& context, frm_Listen& form) {
    auto* content = new QWidget;
    auto* traffic = new TrafficView(form.traffic());
    auto* tabs = new QTabWidget;
    tabs->setObjectName(QStringLiteral("tabs"));
    tabs->tabBar()->setAccessibleName(QStringLiteral("Views"));
    tabs->addTab(lines_tab(context, form), QStringLiteral("&Lines"));
    tabs->addTab(new FramesView(context, form.frames), QStringLiteral("Fra&mes"));
    tabs->addTab(traffic, QStringLiteral("T&raffic"));
    auto* status = new QHBoxLayout;
    status->addWidget(bound<QLabel>(context, form.lbl_Status), 1);
    status->addWidget(bound<QLabel>(context, form.lbl_LineErrors));
    auto* layout = new QVBoxLayout(content);
    layout->addLayout(command_row(context, form));
    layout->addWidget(tabs, 1);
    layout->addLayout(status);
    add_pop_up(context, form, content);
    bind(context, form.tmr_Settle);
    return content;
}

} // namespace pelvan::desktop
