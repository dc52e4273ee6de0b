// The curves of the trend's chart, one a row of the log set. A curve breaks where its row gave no
// value; the chart draws each unbroken piece as a series of its own.
#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <map>
#include <vector>

class QAbstractAxis;
class QChart;
class QLineSeries;

namespace pelvan::desktop {

class TrendCurves {
  public:
    /// All three must outlive this.
    TrendCurves(QChart* chart, QAbstractAxis* times, QAbstractAxis* values)
        : chart_(chart), times_(times), values_(values) {}

    /// Drops the curves of other rows.
    void keep(const std::vector<int>& rows);
    /// Empties every curve. The chart computes all of them again whenever an axis moves, so they
    /// are best empty then.
    void clear();
    /// Draws a row; a point without value (not-a-number) is a gap. Of very many gaps only the
    /// widest break the curve.
    void draw(int row, const QList<QPointF>& points);

    [[nodiscard]] static QColor color(int row);

  private:
    using Pieces = std::vector<QLineSeries*>;
    QLineSeries* piece(int row, std::size_t number);

    QChart* chart_;
    QAbstractAxis* times_;
    QAbstractAxis* values_;
    std::map<int, Pieces> curves_;
    int pen_width_ = 2;
};

} // namespace pelvan::desktop
