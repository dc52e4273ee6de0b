// The controls of the tab "Frames": which frames are shown, what is said above them, and what is
// copied. The frames themselves are the monitor's `Traffic`; the front end shows the rows of
// `selection` and brings it up to date.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "forms/controls.h"
#include "listen/frame_selection.h"
#include "listen/listen_monitor.h"
#include "platform/services.h"

namespace pelvan {

class FramesPanel {
  public:
    FramesPanel(Services& services, ListenMonitor& monitor);

    Label lbl_FrameAddress{"lbl_FrameAddress", "&Address"};
    TextBox txt_FrameAddress{"txt_FrameAddress", "",
                             "Show frames of these addresses only, such as 1, 3-5; empty for all."};
    Label lbl_FrameFunction{"lbl_FrameFunction", "Fu&nction"};
    TextBox txt_FrameFunction{
        "txt_FrameFunction", "",
        "Show frames of these functions only, such as 3, 15-16; empty for all."};
    Button cmd_AllFrames{"cmd_AllFrames", "Show All", "Empty both boxes: show every frame."};
    /// How many frames there are, or why there are none.
    Label lbl_Frames{"lbl_Frames"};

    [[nodiscard]] const Traffic& traffic() const { return monitor_.traffic(); }
    FrameSelection selection;
    /// The rows of `selection` are others altogether.
    Event<> rows_changed;
    /// Rows that a person has selected; set by the front end while it has a view.
    std::function<std::vector<std::size_t>()> selected_rows;

    void set_paused(bool paused);
    /// Says what there is to say of the frames; to be called when `traffic` has changed.
    void refresh_note();
    /// The selected rows, or all when none is, to the clipboard.
    void copy(bool as_csv);
    void clear();

  private:
    void filter_changed();
    [[nodiscard]] std::string note() const;
    [[nodiscard]] std::string note_without_frames() const;

    Services& services_;
    ListenMonitor& monitor_;
    bool bad_filter_ = false;
};

} // namespace pelvan
