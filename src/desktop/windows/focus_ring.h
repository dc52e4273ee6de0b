// A line around a list or grid that has the focus: styles show it in boxes and buttons alone.
#pragma once

#include <QAbstractScrollArea>
#include <QWidget>

namespace pelvan::desktop {

/// Owned by what it goes around; there for as long as it exists.
class FocusRing : public QWidget {
  public:
    explicit FocusRing(QAbstractScrollArea* around);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void fit();
};

} // namespace pelvan::desktop
