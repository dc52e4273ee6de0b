#include "desktop/profiles/run_view.h"

#include <QChart>
#include <QLineSeries>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <limits>

#include "desktop/bindings/chart_colors.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr std::size_t kMaxPoints = 2000; // of a line: more than a screen is wide

constexpr int kFaded = 90;

} // namespace

RunView::RunView(RunDesk& desk)
    : desk_(desk), changes_(desk.changed.subscribe([this] {
          if (isVisible()) draw();
      })) {
    setObjectName(QStringLiteral("run_curve"));
    setAccessibleName(tr("Curve of the run"));
    for (int i = 0; i < kSetPoints; ++i)
        programmed_.push_back(add_line(i, false, 5, kFaded));
    for (int i = 0; i < kSetPoints; ++i)
        set_points_.push_back(add_line(i, false, 2));
    for (int i = 0; i < kSetPoints; ++i)
        process_.push_back(add_line(i, true, 2));
    draw();
}

void RunView::showEvent(QShowEvent* event) {
    ProfileChart::showEvent(event);
    draw();
}

void RunView::draw() {
    const RunPicture& picture = desk_.picture();
    double to_s = picture.now_s;
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    include(picture.programmed, to_s, low, high);
    for (const RunPoint& point : picture.points) {
        to_s = std::max(to_s, point.time_s);
        for (const SetPoints& values : {point.set_points, point.process})
            for (const double value : values) {
                if (std::isnan(value)) continue;
                low = std::min(low, value);
                high = std::max(high, value);
            }
    }
    reserve_events(picture.programmed.pieces);
    fit(to_s, low, high);
    CurvePicture programmed = picture.programmed;
    // Short names: six of them stand above the picture.
    for (std::size_t i = 0; i < kSetPoints; ++i)
        programmed.names[i] = "program " + std::to_string(i + 1);
    show_set_points(programmed, programmed_);
    draw_points();
    chart()->setTitle(to_qt(programmed.cut));
    viewport()->update();
}

void RunView::draw_points() {
    const RunPicture& picture = desk_.picture();
    const std::size_t every = picture.points.size() / kMaxPoints + 1;
    for (std::size_t i = 0; i < kSetPoints; ++i) {
        QList<QPointF> said;
        QList<QPointF> measured;
        for (std::size_t k = 0; k < picture.points.size(); ++k) {
            const RunPoint& point = picture.points[k];
            const bool last = k + 1 == picture.points.size();
            if (!point.seen || (k % every != 0 && !last)) continue;
            const double at = units(point.time_s);
            if (!std::isnan(point.set_points[i])) said.append({at, point.set_points[i]});
            if (!std::isnan(point.process[i])) measured.append({at, point.process[i]});
        }
        const QString number = QString::number(i + 1);
        show_line(*set_points_[i], said, tr("SP %1").arg(number));
        show_line(*process_[i], measured, tr("PV %1").arg(number));
    }
}

void RunView::drawForeground(QPainter* painter, const QRectF&) {
    painter->save();
    paint_losses(*painter);
    const RunPicture& picture = desk_.picture();
    paint_events(*painter, picture.programmed.pieces);
    if (!picture.points.empty()) {
        const QRectF area = plot();
        const double x = place_of(picture.now_s, 0).x();
        painter->setPen(QPen(palette().color(QPalette::Text), 1, Qt::DashLine));
        painter->drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        const bool left = x > area.center().x();
        painter->drawText(QRectF(left ? x - 64 : x + 4, area.top(), 60, 16),
                          left ? Qt::AlignRight : Qt::AlignLeft, tr("now"));
    }
    painter->restore();
}

/// From the last reading before the line was lost to the first one behind.
void RunView::paint_losses(QPainter& painter) const {
    const RunPicture& picture = desk_.picture();
    const QRectF area = plot();
    double seen_s = 0;
    bool lost = false;
    const auto paint = [&](double to_s) {
        const double left = place_of(seen_s, 0).x();
        painter.fillRect(QRectF(left, area.top(), place_of(to_s, 0).x() - left, area.height()),
                         QColor(120, 120, 120, 60));
    };
    for (const RunPoint& point : picture.points) {
        if (point.seen) {
            if (lost) paint(point.time_s);
            seen_s = point.time_s;
        }
        lost = !point.seen;
    }
    if (lost) paint(picture.now_s);
}

bool RunView::save(const QString& path) {
    draw();
    setPalette(paper_palette());
    const QPixmap picture = grab();
    setPalette(QPalette());
    return picture.save(path, "PNG");
}

} // namespace pelvan::desktop
