// A sheet on the screen: its cells are edited in place, its chosen line is the view's.
#pragma once

#include <QTableView>
#include <QTimer>
#include <functional>

#include "desktop/profiles/sheet_model.h"

namespace pelvan::desktop {

class SheetDelegate;

class SheetView : public QTableView {
  public:
    /// `say` shows what is wrong with what was typed. The sheet must outlive the view.
    SheetView(Sheet& sheet, const EventRunner& run, std::function<void(const QString&)> say);

    /// Columns without any value are left out of sight.
    void hide_unused_columns();
    /// Is told when a line is chosen by hand, also the one that is chosen already.
    void on_activated(std::function<void()> handler);

  protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    void follow();
    void show_chosen();
    void fit_columns();

    Sheet& sheet_;
    EventRunner run_;
    SheetModel* model_;
    SheetDelegate* delegate_;
    bool showing_ = false;
    bool hides_unused_ = false;
    QTimer fitting_; // not while something is dragged
    Subscription changes_;
    Subscription choices_;
};

} // namespace pelvan::desktop
