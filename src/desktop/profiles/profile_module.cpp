// Entry point of the profile window's library: where everything stands in the window.
#include "desktop/profiles/profile_module.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>

#include "desktop/bindings/chart_colors.h"
#include "desktop/profiles/curve_view.h"
#include "desktop/profiles/run_view.h"
#include "desktop/profiles/sheet_view.h"

namespace pelvan::desktop {
namespace {

constexpr int kMargin = 6;
constexpr int kFindingLines = 4;
constexpr int kBoxWidth = 64;
constexpr int kListWidth = 244; // a name and a time can be read
constexpr int kProgressWidth = 160;
constexpr int kShares[] = {5, 11, 11}; // of the width: profiles, steps, curve
constexpr int kUnit = 50;
constexpr int kPaperWidth = 1000; // in pixels of its letters

/// A table below its title, which is its access key.
QWidget* titled(const QString& title, SheetView* view, const char* name) {
    view->setObjectName(QLatin1String(name));
    view->setAccessibleName(QString(title).remove(u'&'));
    auto* label = new QLabel(title);
    label->setBuddy(view);
    auto* whole = new QWidget;
    auto* column = new QVBoxLayout(whole);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addWidget(label);
    column->addWidget(view, 1);
    return whole;
}

template <class Box> void put(QBoxLayout& row, const Labelled<Box>& part) {
    row.addWidget(part.label);
    row.addWidget(part.box);
}

QLayout* make_head(const ProfileParts& parts) {
    parts.address.box->setMaximumWidth(kBoxWidth);
    parts.steepest.box->setMaximumWidth(kBoxWidth);
    parts.progress->setMaximumWidth(kProgressWidth);
    auto* row = new QHBoxLayout;
    put(*row, parts.address);
    put(*row, parts.model);
    put(*row, parts.interval);
    put(*row, parts.steepest);
    row->addStretch();
    row->addWidget(parts.progress);
    row->addWidget(parts.cancel);
    return row;
}

QLayout* make_run_row(const ProfileParts& parts) {
    QFont bold = parts.state->font();
    bold.setBold(true);
    parts.state->setFont(bold);
    // Two lines, so that nothing below moves when the text takes them.
    parts.values->setMinimumHeight(2 * parts.values->fontMetrics().lineSpacing());
    auto* row = new QHBoxLayout;
    row->addWidget(parts.run_bar);
    row->addSpacing(kMargin);
    row->addWidget(parts.state);
    row->addSpacing(kMargin);
    row->addWidget(parts.values, 1);
    return row;
}

void make_plain_lists(SheetView& profiles, SheetView& findings) {
    for (SheetView* view : {&profiles, &findings})
        view->horizontalHeader()->setStretchLastSection(true);
    profiles.setMinimumWidth(kListWidth);
    findings.horizontalHeader()->hide();
    findings.setFixedHeight(kFindingLines * findings.verticalHeader()->defaultSectionSize() + 4);
}

/// The paper has a shape of its own, whatever that of the view on the screen is.
void paint_on_paper(CurveDesk& desk, const EventRunner& run, QPainter& painter,
                    const QRectF& target) {
    CurveView paper(desk, run);
    paper.setPalette(paper_palette());
    paper.resize(kPaperWidth, qRound(kPaperWidth * target.height() / target.width()));
    static_cast<void>(paper.grab()); // lays it out
    paper.paint_plain(painter, target);
}

} // namespace
} // namespace pelvan::desktop

extern "C" Q_DECL_EXPORT pelvan::desktop::ProfileWindow
pelvan_make_profile_window(const pelvan::desktop::ProfileParts& parts) {
    using namespace pelvan::desktop;
    auto* profiles = new SheetView(parts.profiles, parts.run, parts.say);
    auto* steps = new SheetView(parts.steps, parts.run, parts.say);
    auto* findings = new SheetView(parts.findings, parts.run, parts.say);
    auto* curve = new CurveView(parts.curve, parts.run);
    auto* run = new RunView(parts.run_desk);
    steps->hide_unused_columns();
    make_plain_lists(*profiles, *findings);
    // A finding that is chosen already is gone to again.
    findings->on_activated([&sheet = parts.findings] { sheet.choose(sheet.chosen()); });

    auto* sides = new QTabWidget;
    sides->setObjectName(QStringLiteral("profile_sides"));
    sides->tabBar()->setAccessibleName(QStringLiteral("Views"));
    sides->addTab(curve, QStringLiteral("Cur&ve"));
    sides->addTab(run, QStringLiteral("&Run"));
    auto* splitter = new QSplitter;
    splitter->setObjectName(QStringLiteral("profile_splitter"));
    splitter->addWidget(titled(QStringLiteral("&Profiles"), profiles, "profile_list"));
    splitter->addWidget(titled(QStringLiteral("Pro&gram steps"), steps, "profile_steps"));
    splitter->addWidget(sides);
    for (int i = 0; i < splitter->count(); ++i)
        splitter->setStretchFactor(i, kShares[i]);
    splitter->setSizes({kShares[0] * kUnit, kShares[1] * kUnit, kShares[2] * kUnit});

    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(4);
    layout->addWidget(parts.edit_bar);
    layout->addLayout(make_head(parts));
    layout->addLayout(make_run_row(parts));
    layout->addWidget(splitter, 1);
    layout->addWidget(parts.message);
    layout->addWidget(titled(QStringLiteral("Fin&dings"), findings, "profile_findings"));

    return {content, [run](const QString& path) { return run->save(path); },
            [&desk = parts.curve, runner = parts.run](QPainter& painter, const QRectF& target) {
                paint_on_paper(desk, runner, painter, target);
            },
            [sides](bool show_run) { sides->setCurrentIndex(show_run ? 1 : 0); }};
}
