// The tab "Frames" of the listen window: a table of the frames with a filter above it. It reads
// what the monitor has gathered, at most five times a second and only while it is seen. The table
// follows the newest frame unless somebody has scrolled up or paused it: then it stands still.
#pragma once

#include "desktop/bindings/bind.h"
#include "listen/frames_panel.h"

class QTableView;

namespace pelvan::desktop {

class FramesModel;

class FramesView : public QWidget {
  public:
    /// `panel` is borrowed; one view at a time.
    FramesView(const BindContext& context, FramesPanel& panel);
    FramesView(const FramesView&) = delete;
    FramesView& operator=(const FramesView&) = delete;
    ~FramesView() override;

  protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void make_table();
    void add_copying();
    void lay_out();
    void catch_up();
    void show_all_again();
    void fit_rows();
    [[nodiscard]] std::vector<std::size_t> selected() const;

    BindContext context_;
    FramesPanel& panel_;
    FramesModel* model_;
    QTableView* table_;
    unsigned long shown_ = 0; // revision of what is shown
    bool was_paused_ = false;
    Subscription rows_changed_;
};

} // namespace pelvan::desktop
