// The table beside the trend's curves: a line for each row with its colour, a tick that hides its
// curve, and its value at the cursor. The current line's curve stands out.
#pragma once

#include <QTableWidget>
#include <functional>
#include <set>
#include <vector>

#include "logging/trend.h"

namespace pelvan::desktop {

class TrendLegend : public QTableWidget {
  public:
    /// `changed` is called when somebody shows or hides a curve, or goes to another line.
    explicit TrendLegend(std::function<void()> changed);

    /// One line for each row that has a curve.
    void show_rows(const Trend& trend);
    void show_values(const Trend& trend, double time_ms);

    /// Rows with a curve that are not hidden.
    [[nodiscard]] std::vector<int> drawn() const;
    /// Row of the current line, -1 when there is none.
    [[nodiscard]] int current() const;
    [[nodiscard]] bool empty() const { return rows_.empty(); }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void take_tick(const QTableWidgetItem& item);
    void show_colors();
    /// The cell, made when it is not there.
    QTableWidgetItem& cell(int line, int column);

    std::function<void()> changed_;
    std::vector<int> rows_; // of each line
    std::set<int> hidden_;
};

} // namespace pelvan::desktop
