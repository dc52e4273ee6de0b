// The table beside the trend's curves: a line for each row with its colour, a tick that hides its
// curve, and its value at the cursor.
#pragma once

#include <QTableWidget>
#include <functional>
#include <set>
#include <vector>

#include "logging/trend.h"

namespace pelvan::desktop {

class TrendLegend : public QTableWidget {
  public:
    /// `ticked` is called when somebody shows or hides a curve.
    explicit TrendLegend(std::function<void()> ticked);

    /// One line for each row that has a curve.
    void show_rows(const Trend& trend);
    void show_values(const Trend& trend, double time_ms);

    /// Row of each line.
    [[nodiscard]] const std::vector<int>& rows() const { return rows_; }
    [[nodiscard]] bool is_hidden(int row) const { return hidden_.count(row) > 0; }

  private:
    void take_tick(const QTableWidgetItem& item);
    /// The cell, made when it is not there.
    QTableWidgetItem& cell(int line, int column);

    std::function<void()> ticked_;
    std::vector<int> rows_;
    std::set<int> hidden_;
};

} // namespace pelvan::desktop
