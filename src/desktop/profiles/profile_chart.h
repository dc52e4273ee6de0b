// What the curve of a profile and the picture of a run have in common: a line of time in seconds,
// minutes or hours, a scale of values, lines with names, and the event outputs as bars below.
#pragma once

#include <QChartView>
#include <vector>

#include "profile/window/profile_picture.h"

class QLineSeries;
class QValueAxis;

namespace pelvan::desktop {

class ProfileChart : public QChartView {
  public:
    ProfileChart();

  protected:
    /// Set points in blue and red, process values in the lighter colours of the same.
    [[nodiscard]] QColor color(int set_point, bool process) const;
    /// A line in such a colour, with less than 255 as `alpha` faded.
    [[nodiscard]] QLineSeries* add_line(int set_point, bool process, int width, int alpha = 255);
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// Both set points of the pieces; a line without a value is hidden, also from the legend.
    void show_set_points(const CurvePicture& picture, const std::vector<QLineSeries*>& lines);
    static void show_line(QLineSeries& line, const QList<QPointF>& points, const QString& name);

    /// Fits both axes to times from 0 and to values.
    void fit(double to_s, double low, double high);
    static void include(const CurvePicture& picture, double& to_s, double& low, double& high);

    /// Points of the scene.
    [[nodiscard]] QPointF place_of(double time_s, double value) const;
    [[nodiscard]] double time_at(double scene_x) const;
    [[nodiscard]] double value_at(double scene_y) const;
    [[nodiscard]] QRectF plot() const;

    /// A bar for each event output that is on in a piece, numbered at its left.
    void paint_events(QPainter& painter, const std::vector<CurvePiece>& pieces) const;
    /// Makes room below the axis for these outputs.
    void reserve_events(const std::vector<CurvePiece>& pieces);

    /// A time in what the line of time counts, as the points of lines are given.
    [[nodiscard]] double units(double time_s) const { return time_s / unit_s_; }

  private:
    struct Line {
        QLineSeries* series;
        int set_point;
        bool process;
        int width;
        int alpha;
    };
    void dress();
    void dress(const Line& line) const;
    void scale_values();

    std::vector<Line> dressed_;
    QValueAxis* times_;
    QValueAxis* values_;
    double unit_s_ = 60; // seconds of what the line of time counts
    double low_ = 0;     // of the values that are shown
    double high_ = 1;
    int events_ = 0; // outputs that are on anywhere
};

} // namespace pelvan::desktop
