// Puts a window where it was when it was closed last, and remembers where it is when it is closed.
// A window that nobody has moved or sized by hand stays the program's to place. Whatever asks for a
// place, no part of the window comes to lie outside the room that it has.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "personal/window_places.h"

namespace pelvan::desktop {

class PlaceKeeper : public QObject {
  public:
    /// Belongs to the window. `room` gives the rectangle that the window may stand in, in the
    /// coordinates of its place; an empty one holds nothing back.
    PlaceKeeper(QWidget* window, std::string name, WindowPlaces& places,
                std::function<QRect()> room);

    /// The program wants the window there: it goes there, or where the person had it.
    void put(const QRect& wanted);
    /// Whether the window stands where `put` put it.
    [[nodiscard]] bool stands_as_put() const;
    /// From now on the window is the program's to place again.
    void forget();
    /// Remembers the place, when it is not the program's; done by itself when the window goes.
    void keep();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    [[nodiscard]] QRect place() const { return {window_->pos(), window_->size()}; }

    QWidget* window_;
    std::string name_;
    WindowPlaces& places_;
    std::function<QRect()> room_;
    QRect put_; // where it was put last
};

/// Keeps the place of a window of its own, which is not shown yet, on the screen that it is on.
void keep_place_on_screen(QWidget* window, const std::string& name, WindowPlaces& places);

} // namespace pelvan::desktop
