#include "desktop/windows/logging_window.h"

#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QColor>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <algorithm>

#include "desktop/bindings/qt_text.h"
#include "desktop/charts/trend_library.h"
#include "desktop/system/module.h"
#include "logging/log_objections.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 8;
constexpr int kNumberWidth = 44;
constexpr int kBarHeight = 40;
constexpr int kLogWidth = 150;
constexpr int kColumnWidth = 80;
constexpr int kNameWidth = 170;

struct StateLook {
    const char* mark; // behind the "Yes" of the row: colour alone says nothing to some
    const char* text;
    QColor background; // of a light desktop; without one the whole row is grey
};

const StateLook* look_of(RowState state) {
    static const StateLook answered{" \u2713", "The controller answered in the last pass.",
                                    QColor(214, 240, 214)};
    static const StateLook exception{" ! exception",
                                     "The controller answered the last pass with an exception.",
                                     QColor(255, 236, 179)};
    static const StateLook nothing{" \u2717 no reply",
                                   "No valid reply in the last pass, or nothing could be sent.",
                                   QColor(255, 214, 209)};
    static const StateLook in_use{" \u2013 skipped",
                                  "The last pass was skipped: another tool had the line.",
                                  QColor(225, 225, 235)};
    switch (state) {
    case RowState::LineInUse:
        return &in_use;
    case RowState::Answered:
        return &answered;
    case RowState::Exception:
        return &exception;
    case RowState::Nothing:
        return &nothing;
    case RowState::NotPolled:
        break;
    }
    return nullptr;
}

const StateLook* look_of(const DataLogger& logger, int row) {
    static const StateLook idle{" \u2013 not polled",
                                "This row is not polled: load the set again, or edit a cell of it.",
                                {}};
    static const StateLook unclear{
        " ! unclear",
        "A number of this row cannot be read as it stands: click its cell and type it again.",
        QColor(255, 236, 179)};
    const LogSetRow& entered = logger.set().row(row);
    if (!entered.in_use) return entered.filled() ? &idle : nullptr;
    if (!row_objection(entered).empty()) return &unclear;
    return look_of(logger.reading(row).state);
}

QColor ground_of(const StateLook& look) {
    const QPalette palette = QApplication::palette();
    if (palette.color(QPalette::Base).lightness() > palette.color(QPalette::Text).lightness())
        return look.background;
    constexpr int kDarkSaturation = 110;
    constexpr int kDarkValue = 80;
    return QColor::fromHsv(look.background.hsvHue(),
                           std::min(4 * look.background.hsvSaturation(), kDarkSaturation),
                           kDarkValue);
}

QVariant idle_look(int column, int role) {
    if (role == Qt::ForegroundRole)
        return QApplication::palette().color(QPalette::Disabled, QPalette::Text);
    if (role != Qt::FontRole || column != log_column::kLog) return {};
    QFont font = QApplication::font("QTableView");
    font.setItalic(true);
    return font;
}

QVariant cell_look(const DataLogger& logger, int row, int column, int role) {
    const StateLook* look = look_of(logger, row);
    if (look == nullptr) return {};
    const bool log = column == log_column::kLog;
    const bool text_role = role == Qt::DisplayRole || role == Qt::ToolTipRole;
    if (!look->background.isValid() && !text_role) return idle_look(column, role);
    switch (role) {
    case Qt::DisplayRole:
        if (!log) return {};
        return visible_line(logger.set().row(row).texts[log_column::kLog]) +
               QString::fromUtf8(look->mark);
    case Qt::ToolTipRole:
        return QString::fromUtf8(look->text);
    case Qt::BackgroundRole:
        if (log || column == log_column::kValue) return ground_of(*look);
        return {};
    default:
        return {};
    }
}

/// Paints the view again when the mark of a row may have changed.
void repaint_with_rows(QTableView* view, DataLogger& logger) {
    const auto repaint = [view] { view->viewport()->update(); };
    // The connection holds the subscriptions, and goes with the view.
    const auto rows =
        std::make_shared<Subscription>(logger.row_changed.subscribe([repaint](int) { repaint(); }));
    const auto sets = std::make_shared<Subscription>(logger.set_replaced.subscribe(repaint));
    QObject::connect(view, &QObject::destroyed, view, [rows, sets] {});
}

QTableView* make_grid(const BindContext& context, frm_DataLogging& form) {
    auto* view = new QTableView;
    view->setAccessibleName(QStringLiteral("Registers"));
    bind(context, form.MSFlexGrid1, view, [&logger = form.logger()](int row, int column, int role) {
        return cell_look(logger, row, column, role);
    });
    repaint_with_rows(view, form.logger());
    view->setAlternatingRowColors(true);
    view->setTabKeyNavigation(false); // Tab leaves the grid; the arrow keys move in it
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 6);
    for (int column = 0; column < form.MSFlexGrid1.Cols(); ++column)
        view->setColumnWidth(column, column == log_column::kLog    ? kLogWidth
                                     : column == log_column::kName ? kNameWidth
                                                                   : kColumnWidth);
    view->horizontalHeader()->setStretchLastSection(true);
    return view;
}

QGroupBox* make_interval(const BindContext& context, frm_DataLogging& form) {
    auto* box = bound<QGroupBox>(context, form.fram_LoggingInterval);
    auto* row = new QHBoxLayout(box);
    for (std::size_t i = 0; i < form.scrl_LoggingInterval.size(); ++i) {
        auto* label = bound<QLabel>(context, form.lbl_LoggingInterval[i]);
        auto* text = bound<QLineEdit>(context, form.txt_LoggingInterval[i]);
        text->setFixedWidth(kNumberWidth);
        text->setAlignment(Qt::AlignRight);
        // Its focus goes on to the bar: the Tab key would never get past it backwards.
        text->setFocusPolicy(Qt::ClickFocus);
        auto* bar = new QScrollBar(Qt::Vertical);
        bind(context, form.scrl_LoggingInterval[i], bar);
        bar->setFocusPolicy(Qt::StrongFocus);
        bar->setFixedHeight(kBarHeight);
        bar->setAccessibleName(label->text().trimmed());
        row->addWidget(label);
        row->addWidget(text);
        row->addWidget(bar);
    }
    return box;
}

QLayout* make_file_options(const BindContext& context, frm_DataLogging& form) {
    auto* to_file = bound<QCheckBox>(context, form.chk_LogToFile);
    auto* single = bound<QCheckBox>(context, form.chk_SingleLine);
    auto* together = bound<QCheckBox>(context, form.chk_Together);
    auto* name = bound<QLineEdit>(context, form.txt_LogFilename);
    auto* checks = new QHBoxLayout;
    checks->addWidget(to_file);
    checks->addWidget(single);
    checks->addWidget(together);
    checks->addStretch();
    auto* line = new QHBoxLayout;
    line->addWidget(label_for(context, form.lbl_LogFilename, name));
    line->addWidget(name, 1);
    line->addWidget(bound<QPushButton>(context, form.cmd_Browse));
    auto* layout = new QVBoxLayout;
    layout->addLayout(checks);
    layout->addLayout(line);
    return layout;
}

QLabel* make_line(const BindContext& context, Label& model) {
    auto* label = bound<QLabel>(context, model);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

/// The line that says that nothing is polled, and the button that mends it.
QLayout* make_not_polled(const BindContext& context, frm_DataLogging& form) {
    auto* text = make_line(context, form.lbl_NotPolled);
    QFont bold = text->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    text->setFont(bold);
    auto* line = new QHBoxLayout;
    line->addWidget(text, 1);
    line->addWidget(bound<QPushButton>(context, form.cmd_LoadAgain));
    return line;
}

void open_trend_on_request(frm_DataLogging& form, Dialogs& dialogs, MdiFrame& frame) {
    form.mnuTrend.Click = [&form, &dialogs, &frame, window = QPointer<QWidget>()]() mutable {
        if (!window) {
            const TrendWindow made =
                make_trend_window(module_folder(), form.logger().trend(), &frame);
            if (made.window == nullptr) {
                dialogs.message_box("The trend cannot be shown: " + made.error.toStdString());
                return;
            }
            window = made.window;
            keep_place_on_screen(window, "trend", frame.places());
            on_key(frame.context(), window, Qt::Key_F1, [&frame] { frame.show_help("trend"); });
        }
        window->show();
        window->raise();
        window->activateWindow();
    };
}

} // namespace

QWidget* make_logging(const BindContext& context, frm_DataLogging& form, Dialogs& dialogs,
                      MdiFrame& frame) {
    auto* content = new QWidget;
    auto* grid = make_grid(context, form);
    auto* active = bound<QLabel>(context, form.Label4);
    QFont bold = active->font();
    bold.setBold(true);
    active->setFont(bold);
    auto* settings = new QHBoxLayout;
    settings->addWidget(make_interval(context, form));
    settings->addLayout(make_file_options(context, form), 1);
    settings->addWidget(active);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->addLayout(settings);
    layout->addLayout(make_not_polled(context, form));
    layout->addWidget(grid, 1);
    layout->addWidget(make_line(context, form.lbl_Status));
    layout->addWidget(make_line(context, form.lbl_Message));
    bind(context, form.tmr_LoggingInterval);
    open_trend_on_request(form, dialogs, frame);
    return content;
}

} // namespace pelvan::desktop
