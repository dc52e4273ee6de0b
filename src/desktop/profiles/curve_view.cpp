#include "desktop/profiles/curve_view.h"

#include <QChart>
#include <QKeyEvent>
#include <QLineSeries>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <algorithm>
#include <cmath>
#include <limits>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

constexpr double kReach = 9; // pixels from a handle that still take hold of it
constexpr double kHandle = 4;
constexpr double kStep_s = 60;
constexpr double kFineStep_s = 1;
constexpr double kStepValue = 10;
constexpr double kFineStepValue = 1;

bool moves(const CurvePiece& piece, int set_point) {
    return piece.time_moves || piece.value_moves[static_cast<std::size_t>(set_point)];
}

} // namespace

CurveView::CurveView(CurveDesk& desk, EventRunner run)
    : desk_(desk), run_(std::move(run)), changes_(desk.changed.subscribe([this] { draw(); })),
      choices_(desk.chosen_moved.subscribe([this] { viewport()->update(); })) {
    setObjectName(QStringLiteral("profile_curve"));
    setAccessibleName(tr("Curve of the profile"));
    setToolTip(tr("Drag a step's end, or choose a step with Page Up and Page Down and move its end "
                  "with the arrows (Shift: small steps; space bar: the other set point)."));
    viewport()->setMouseTracking(true);
    for (int i = 0; i < kSetPoints; ++i)
        lines_.push_back(add_line(i, false, 2));
    draw();
}

void CurveView::draw() {
    const CurvePicture& picture = desk_.picture();
    double to_s = 0;
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    include(picture, to_s, low, high);
    reserve_events(picture.pieces);
    // The ground stays still under a hand that drags: an end that the scale moved would run away.
    if (!dragged_) fit(to_s, low, high);
    show_set_points(picture, lines_);
    chart()->setTitle(to_qt(picture.cut));
    viewport()->update();
}

bool CurveView::is_chosen(const CurvePiece& piece) const {
    return piece.step == desk_.chosen_step() && piece.profile == desk_.chosen_profile();
}

void CurveView::drawForeground(QPainter* painter, const QRectF&) {
    painter->save();
    painter->setClipRect(plot());
    if (!plain_) paint_chosen(*painter);
    painter->setClipping(false);
    paint_events(*painter, desk_.picture().pieces);
    if (!plain_) paint_handles(*painter);
    painter->restore();
}

void CurveView::paint_chosen(QPainter& painter) const {
    const QRectF area = plot();
    for (const CurvePiece& piece : desk_.picture().pieces) {
        if (!is_chosen(piece)) continue;
        const double left = place_of(piece.from_s, 0).x();
        const double right = place_of(piece.to_s, 0).x();
        painter.fillRect(QRectF(left, area.top(), std::max(right - left, 1.0), area.height()),
                         QColor(255, 200, 0, 60));
        for (std::size_t i = 0; i < kSetPoints; ++i) {
            if (std::isnan(piece.from[i])) continue;
            painter.setPen(QPen(color(static_cast<int>(i), false), 4));
            painter.drawLine(place_of(piece.from_s, piece.from[i]),
                             place_of(piece.to_s, piece.to[i]));
        }
    }
}

QPointF CurveView::place_of_end(const Handle& handle) const {
    const CurvePiece& piece = desk_.picture().pieces[handle.piece];
    return place_of(piece.to_s, piece.to[static_cast<std::size_t>(handle.set_point)]);
}

std::vector<CurveView::Handle> CurveView::handles() const {
    std::vector<Handle> all;
    const auto& pieces = desk_.picture().pieces;
    for (std::size_t i = 0; i < pieces.size(); ++i)
        for (int set_point = 0; set_point < kSetPoints; ++set_point)
            if (moves(pieces[i], set_point) &&
                !std::isnan(pieces[i].to[static_cast<std::size_t>(set_point)]) &&
                pieces[i].profile == desk_.chosen_profile())
                all.push_back({i, set_point});
    return all;
}

void CurveView::paint_handles(QPainter& painter) const {
    const std::optional<Handle> keys = hasFocus() ? chosen_handle() : std::nullopt;
    for (const Handle& handle : handles()) {
        const bool by_keys =
            keys && keys->piece == handle.piece && keys->set_point == handle.set_point;
        const bool lit = is_chosen(desk_.picture().pieces[handle.piece]);
        const double radius = by_keys ? 1.6 * kHandle : lit ? 1.2 * kHandle : 0.75 * kHandle;
        painter.setPen(QPen(color(handle.set_point, false), by_keys ? 2 : 1));
        painter.setBrush(lit ? QColor(255, 200, 0) : palette().color(QPalette::Base));
        painter.drawEllipse(place_of_end(handle), radius, radius);
    }
}

std::optional<CurveView::Handle> CurveView::handle_at(const QPointF& scene) const {
    std::optional<Handle> best;
    double nearest = kReach;
    for (const Handle& handle : handles()) {
        const QPointF way = place_of_end(handle) - scene;
        const double distance = std::hypot(way.x(), way.y());
        // Of two at the same place the chosen step's.
        const bool lit = is_chosen(desk_.picture().pieces[handle.piece]);
        if (distance > nearest || (distance == nearest && best && !lit)) continue;
        nearest = distance;
        best = handle;
    }
    return best;
}

std::optional<CurveView::Handle> CurveView::chosen_handle() const {
    std::optional<Handle> found;
    for (const Handle& handle : handles()) {
        if (!is_chosen(desk_.picture().pieces[handle.piece])) continue;
        if (!found || (handle.piece == found->piece && handle.set_point == keys_move_))
            found = handle;
    }
    return found;
}

void CurveView::choose_at(const QPointF& scene) {
    const double time_s = time_at(scene.x());
    for (const CurvePiece& piece : desk_.picture().pieces) {
        if (piece.profile != desk_.chosen_profile() || time_s < piece.from_s || time_s > piece.to_s)
            continue;
        run_([this, step = piece.step] { desk_.choose_step(step); });
        return;
    }
}

void CurveView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return ProfileChart::mousePressEvent(event);
    const QPointF scene = mapToScene(event->pos());
    const std::optional<Handle> handle = handle_at(scene);
    if (!handle) return choose_at(scene);
    keys_move_ = handle->set_point;
    run_([&] {
        desk_.choose_step(desk_.picture().pieces[handle->piece].step);
        desk_.begin_drag(handle->piece);
        dragged_ = handle;
    });
}

void CurveView::mouseMoveEvent(QMouseEvent* event) {
    const QPointF scene = mapToScene(event->pos());
    if (!dragged_) return show_cursor(scene);
    run_([&] { desk_.drag_to(dragged_->set_point, time_at(scene.x()), value_at(scene.y())); });
}

void CurveView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !dragged_) return;
    dragged_.reset();
    run_([this] { desk_.end_drag(); });
    draw();
}

void CurveView::show_cursor(const QPointF& scene) {
    const std::optional<Handle> handle = handle_at(scene);
    if (!handle) {
        viewport()->unsetCursor();
        return;
    }
    const CurvePiece& piece = desk_.picture().pieces[handle->piece];
    const bool up = piece.value_moves[static_cast<std::size_t>(handle->set_point)];
    viewport()->setCursor(!up                ? Qt::SizeHorCursor
                          : piece.time_moves ? Qt::SizeAllCursor
                                             : Qt::SizeVerCursor);
}

void CurveView::choose_beside(int distance) {
    run_([&] { desk_.choose_step(desk_.chosen_step() + distance); });
}

bool CurveView::move_end(int key, bool fine) {
    const std::optional<Handle> handle = chosen_handle();
    if (!handle) return false;
    const CurvePiece piece = desk_.picture().pieces[handle->piece];
    double time_s = piece.to_s;
    double value = piece.to[static_cast<std::size_t>(handle->set_point)];
    const double seconds = fine ? kFineStep_s : kStep_s;
    const double units = fine ? kFineStepValue : kStepValue;
    if (key == Qt::Key_Left) time_s -= seconds;
    if (key == Qt::Key_Right) time_s += seconds;
    if (key == Qt::Key_Up) value += units;
    if (key == Qt::Key_Down) value -= units;
    run_([&] {
        desk_.begin_drag(handle->piece);
        desk_.drag_to(handle->set_point, time_s, value);
        desk_.end_drag();
    });
    return true;
}

void CurveView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_PageUp:
        return choose_beside(-1);
    case Qt::Key_PageDown:
        return choose_beside(1);
    case Qt::Key_Space:
        keys_move_ = 1 - keys_move_;
        viewport()->update();
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (move_end(event->key(), event->modifiers().testFlag(Qt::ShiftModifier))) return;
        break;
    default:
        break;
    }
    // The view's own keys would scroll what cannot be scrolled.
    event->ignore();
}

void CurveView::paint_plain(QPainter& painter, const QRectF& target) {
    const QScopedValueRollback<bool> plain(plain_, true);
    render(&painter, target, viewport()->rect(), Qt::KeepAspectRatio);
}

} // namespace pelvan::desktop
