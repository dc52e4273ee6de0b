// Where the focus was in each child window of the frame, and that it can be seen there.
#pragma once

#include <QMdiArea>
#include <QPointer>
#include <map>
#include <set>

class QMdiSubWindow;

namespace pelvan::desktop {

/// Gives a child window that one comes back to the focus where it was, by whatever way one comes.
class FocusKeeper : public QObject {
  public:
    /// `area` must outlive this.
    explicit FocusKeeper(QMdiArea& area);

    void watch(QMdiSubWindow* child);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void focus_moved(QWidget* now);
    void show_focus(QWidget& now);
    void give_back(QMdiSubWindow* child);

    QMdiArea& area_;
    std::map<QMdiSubWindow*, QPointer<QWidget>> kept_;
    QPointer<QWidget> ring_;
    std::set<QObject*> hidden_; // and, until the focus is back, shown again
};

} // namespace pelvan::desktop
