// The second tab of the listen window: counts, reply times and gaps by address and by function as a
// table, and their spread as a histogram. It reads what the monitor has gathered, at most twice a
// second and only while it is seen, so that a busy line costs the window nothing.
#pragma once

#include <QWidget>

#include "listen/traffic.h"

class QComboBox;
class QTableWidget;

namespace pelvan::desktop {

/// Bars for the classes of a histogram, with the counts above and the limits below them.
class HistogramView : public QWidget {
  public:
    explicit HistogramView(QWidget* parent = nullptr);
    void show_times(const Histogram& times);

    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Histogram times_;
};

class TrafficView : public QWidget {
  public:
    /// `traffic` is borrowed.
    explicit TrafficView(const Traffic& traffic, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void fill();
    void fill_row(int row, const QString& name, const TrafficRow& from);

    const Traffic& traffic_;
    unsigned long shown_ = 0; // revision of what is shown
    QTableWidget* table_;
    QComboBox* which_;
    HistogramView* histogram_;
};

} // namespace pelvan::desktop
