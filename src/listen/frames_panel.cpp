#include "listen/frames_panel.h"

#include <numeric>

#include "listen/frame_text.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// So many pieces of noise to a frame are no accident any more.
constexpr long kMuchNoise = 5;

} // namespace

FramesPanel::FramesPanel(Services& services, ListenMonitor& monitor)
    : selection(monitor.traffic()), services_(services), monitor_(monitor) {
    txt_FrameAddress.Change = [this] { filter_changed(); };
    txt_FrameFunction.Change = [this] { filter_changed(); };
    cmd_AllFrames.Click = [this] {
        txt_FrameAddress.set_Text("");
        txt_FrameFunction.set_Text("");
    };
    refresh_note();
}

void FramesPanel::filter_changed() {
    const auto addresses = byte_filter(txt_FrameAddress.Text());
    const auto functions = byte_filter(txt_FrameFunction.Text());
    bad_filter_ = !addresses || !functions;
    if (!bad_filter_ && selection.set_filter(*addresses, *functions)) rows_changed.raise();
    refresh_note();
}

void FramesPanel::set_paused(bool paused) {
    selection.set_paused(paused);
    refresh_note();
}

void FramesPanel::clear() {
    refresh_note();
    rows_changed.raise();
}

void FramesPanel::refresh_note() {
    lbl_Frames.set_Caption(note());
}

std::string FramesPanel::note() const {
    if (bad_filter_) return "Write numbers from 0 to 255, such as 1, 3-5.";
    const std::size_t kept = traffic().frames().size();
    if (kept == 0) return note_without_frames();
    const TrafficCounts& counts = traffic().counts();
    if (counts.damaged() >= kMuchNoise * (1 + counts.all().requests + counts.all().replies))
        return "Bytes come, but hardly a Modbus RTU frame is among them: check baud rate, parity "
               "and wiring.";
    std::string text = count_text(kept, "frame");
    if (selection.filtered()) text += ", " + std::to_string(selection.size()) + " of them shown";
    if (selection.paused())
        return "Paused: " + count_text(selection.behind(), "frame") + " came since. " + text + ".";
    return text + ". Times are those of the lumps in which the adapter delivers the bytes.";
}

std::string FramesPanel::note_without_frames() const {
    if (!monitor_.listening())
        return "Modbus RTU frames of both directions are shown here. Start listens (F5).";
    if (monitor_.channel() != kModbusChannel)
        return "Modbus RTU frames are shown here; on channel " +
               std::to_string(monitor_.channel()) +
               " bursts are only counted. Select Modbus in the Command Center and start again.";
    return "Nothing heard yet. Modbus RTU frames of both directions are shown here.";
}

void FramesPanel::copy(bool as_csv) {
    std::vector<std::size_t> rows;
    if (selected_rows) rows = selected_rows();
    if (rows.empty()) {
        rows.resize(selection.size());
        std::iota(rows.begin(), rows.end(), std::size_t{0});
    }
    std::string text = (as_csv ? frame_csv_head() : frame_tab_head()) + "\r\n";
    for (const std::size_t row : rows) {
        const ListenedFrame* frame = selection.row(row);
        if (frame) text += (as_csv ? frame_csv_line(*frame) : frame_tab_line(*frame)) + "\r\n";
    }
    services_.desktop.set_clipboard_text(text);
    lbl_Frames.set_Caption(count_text(rows.size(), "frame") + " copied.");
}

} // namespace pelvan
