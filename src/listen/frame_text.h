// A frame of a line as text: the columns of the tab "Frames" and of the terminal, and lines for the
// clipboard. Bytes come from the line: everything is printable, and a row is one line.
#pragma once

#include <array>
#include <string>

#include "listen/traffic.h"

namespace pelvan {

enum class FrameColumn { Time, Gap, ReplyTime, Kind, Address, Function, Values, Check };
inline constexpr std::size_t kFrameColumns = 8;
inline constexpr std::array<const char*, kFrameColumns> kFrameTitles{
    "Time", "Gap ms", "Reply ms", "Kind", "Address", "Function", "Registers = values", "Check"};

/// "request", "request, no reply", "reply", "exception", "broken" (as long as a frame, but its
/// check is wrong) or "noise".
[[nodiscard]] std::string frame_kind_text(const ListenedFrame& frame);

/// "0-4" (registers that are read), "0 = 742, 1 = -5", "19-28 = 1011001110" (coils), or the bytes
/// in hexadecimal where nothing more can be told.
[[nodiscard]] std::string frame_values(const ListenedFrame& frame);

/// What stands in one column; times in whole milliseconds, empty where there is none.
[[nodiscard]] std::string frame_cell(const ListenedFrame& frame, FrameColumn column);

/// The columns in fixed widths, for a terminal.
[[nodiscard]] std::string frame_line(const ListenedFrame& frame);

/// With tabs between the columns, or as a line of a CSV file: date and time, cells with commas in
/// quotation marks, the bytes in hexadecimal as a last column. The heads are without a frame.
[[nodiscard]] std::string frame_tab_head();
[[nodiscard]] std::string frame_tab_line(const ListenedFrame& frame);
[[nodiscard]] std::string frame_csv_head();
[[nodiscard]] std::string frame_csv_line(const ListenedFrame& frame);

} // namespace pelvan
