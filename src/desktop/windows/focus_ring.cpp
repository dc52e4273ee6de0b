#include "desktop/windows/focus_ring.h"

#include <QEvent>
#include <QPainter>

namespace pelvan::desktop {

FocusRing::FocusRing(QAbstractScrollArea* around) : QWidget(around) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    around->installEventFilter(this);
    fit();
    show();
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) fit();
    return QWidget::eventFilter(watched, event);
}

void FocusRing::fit() {
    constexpr int kWidth = 2; // pixels
    setGeometry(parentWidget()->rect());
    // Nothing below it but the line itself is painted anew because of it.
    setMask(QRegion(rect()) - QRegion(rect().adjusted(kWidth, kWidth, -kWidth, -kWidth)));
}

void FocusRing::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), palette().color(QPalette::Active, QPalette::Highlight));
}

} // namespace pelvan::desktop
