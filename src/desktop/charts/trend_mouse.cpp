// What mouse and keys do in the trend window.
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>

#include "desktop/charts/trend_window.h"

namespace pelvan::desktop {
namespace {

constexpr double kZoomStep = 0.8;
constexpr double kPanStep = 0.1;
constexpr double kCursorStep = 0.01;
constexpr double kSmallestFrame = 5; // pixels: less is a hand that shook

} // namespace

bool TrendView::eventFilter(QObject* watched, QEvent* event) {
    if (watched != chart_) return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::Resize) refresh();
    if (event->type() == QEvent::KeyPress) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key_pressed(key.key(), key.modifiers())) return true;
    }
    return mouse_used(event) || QWidget::eventFilter(watched, event);
}

double TrendView::anchor() const {
    const TrendSpan& visible = range_.span();
    return std::clamp(cursor_ms_ > 0 ? cursor_ms_ : visible.to_ms, visible.from_ms, visible.to_ms);
}

bool TrendView::key_pressed(int key, Qt::KeyboardModifiers modifiers) {
    constexpr double kMiddle = 0.5;
    const bool values = modifiers.testFlag(Qt::ControlModifier);
    switch (key) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus: {
        const double factor = key == Qt::Key_Minus ? 1 / kZoomStep : kZoomStep;
        if (values)
            zoom_values(factor, kMiddle);
        else
            zoom(factor, anchor());
        return true;
    }
    case Qt::Key_Home:
        show_all();
        return true;
    case Qt::Key_End:
        follow();
        return true;
    default:
        return arrow_pressed(key, modifiers.testFlag(Qt::ShiftModifier));
    }
}

bool TrendView::arrow_pressed(int key, bool shift) {
    const bool across = key == Qt::Key_Left || key == Qt::Key_Right;
    const bool along = shift && (key == Qt::Key_Up || key == Qt::Key_Down);
    const double direction = key == Qt::Key_Left || key == Qt::Key_Down ? -1 : 1;
    if (along)
        pan_values(direction * kPanStep);
    else if (across && shift)
        pan(direction * kPanStep);
    else if (across)
        set_cursor(anchor() + direction * kCursorStep * range_.width());
    return across || along;
}

bool TrendView::mouse_used(QEvent* event) {
    switch (event->type()) {
    case QEvent::Wheel:
        return wheel_turned(*static_cast<QWheelEvent*>(event));
    case QEvent::MouseButtonPress: {
        const auto& mouse = *static_cast<QMouseEvent*>(event);
        if (mouse.button() != Qt::LeftButton) return false;
        drag_ = mouse.modifiers().testFlag(Qt::ShiftModifier) ? Drag::Frame : Drag::Pan;
        drag_from_ = dragged_to_ = mouse.position();
        return false;
    }
    case QEvent::MouseButtonRelease:
        return mouse_released();
    case QEvent::MouseMove:
        return mouse_moved(*static_cast<QMouseEvent*>(event));
    default:
        return false;
    }
}

bool TrendView::wheel_turned(const QWheelEvent& wheel) {
    if (wheel.angleDelta().y() == 0) return false;
    const double factor = wheel.angleDelta().y() > 0 ? kZoomStep : 1 / kZoomStep;
    const QPointF at = wheel.position();
    const bool on_scale = at.x() < chart_->plot().left() || at.x() > chart_->plot().right();
    if (on_scale || wheel.modifiers().testFlag(Qt::ControlModifier))
        zoom_values(factor, std::clamp(chart_->up(at.y()), 0.0, 1.0));
    else
        zoom(factor, time_at(at.x()));
    return true;
}

bool TrendView::mouse_moved(const QMouseEvent& mouse) {
    const QPointF at = mouse.position();
    const QPointF way = at - dragged_to_;
    switch (drag_) {
    case Drag::None:
        set_cursor(time_at(at.x()));
        return false;
    case Drag::Frame:
        chart_->show_frame(QRectF(drag_from_, at).normalized());
        break;
    case Drag::Pan:
        if (way.x() != 0) pan(-way.x() / std::max(chart_->plot().width(), 1.0));
        // Scales that fit stay where they are: a hand does not move straight across.
        if (!chart_->scales().fits()) pan_values(way.y() / std::max(chart_->plot().height(), 1.0));
        break;
    }
    dragged_to_ = at;
    return true;
}

bool TrendView::mouse_released() {
    const QRectF frame = QRectF(drag_from_, dragged_to_).normalized();
    const bool framed = drag_ == Drag::Frame;
    drag_ = Drag::None;
    chart_->show_frame({});
    if (framed && frame.width() > kSmallestFrame && frame.height() > kSmallestFrame)
        zoom_into(frame & chart_->plot());
    return false;
}

} // namespace pelvan::desktop
