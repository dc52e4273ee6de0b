#include "desktop/system/place_keeper.h"

#include <QEvent>
#include <QScreen>
#include <utility>

namespace pelvan::desktop {
namespace {

/// What the window manager puts round a window, generously.
constexpr int kTitleBar = 40;

WindowPlace place_of(const QRect& rect) {
    return {rect.left(), rect.top(), rect.width(), rect.height(), false};
}

} // namespace

PlaceKeeper::PlaceKeeper(QWidget* window, std::string name, WindowPlaces& places,
                         std::function<QRect()> room)
    : QObject(window), window_(window), name_(std::move(name)), places_(places),
      room_(std::move(room)) {
    window->installEventFilter(this);
}

void PlaceKeeper::put(const QRect& wanted) {
    const auto remembered = places_.of(name_);
    WindowPlace place = remembered.value_or(place_of(wanted));
    if (const QRect room = room_(); !room.isEmpty()) place = fitted(place, place_of(room));
    window_->move(place.left, place.top);
    window_->resize(place.width, place.height);
    put_ = this->place();
}

bool PlaceKeeper::stands_as_put() const {
    return place() == put_;
}

void PlaceKeeper::forget() {
    places_.forget(name_);
}

void PlaceKeeper::keep() {
    // A maximized child has no place of its own to go back to; the one before stays remembered.
    if (stands_as_put() || window_->isMaximized() || window_->isMinimized()) return;
    places_.keep(name_, place_of(place()));
    put_ = place();
}

bool PlaceKeeper::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide) keep();
    return QObject::eventFilter(watched, event);
}

void keep_place_on_screen(QWidget* window, const std::string& name, WindowPlaces& places) {
    auto* keeper = new PlaceKeeper(window, name, places, [window] {
        const QScreen* screen = window->screen();
        return screen == nullptr ? QRect()
                                 : screen->availableGeometry().adjusted(0, 0, 0, -kTitleBar);
    });
    if (places.of(name)) keeper->put({});
}

} // namespace pelvan::desktop
