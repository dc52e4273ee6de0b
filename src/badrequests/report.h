// The report of a series of bad requests as text: for the terminal as it comes, and for a file.
#pragma once

#include <string>
#include <vector>

#include "badrequests/bad_request_run.h"
#include "text/date_time.h"

namespace pelvan {

/// Two lines: what was tested, and when and on which line.
[[nodiscard]] std::vector<std::string> report_head(const BadRequestResult& result,
                                                   const LocalTime& time);
/// A request with its verdict; below it what was sent and what came, when anything was sent.
[[nodiscard]] std::vector<std::string> report_lines(const BadRequestLine& line);
/// "12 passed, 1 failed, 2 not tested.", and why the series ended early.
[[nodiscard]] std::string report_sum(const BadRequestResult& result);

/// The question before anything is sent.
[[nodiscard]] std::string confirmation(const ProtocolSeries& series);

/// All of it.
[[nodiscard]] std::vector<std::string> report_text(const BadRequestResult& result,
                                                   const LocalTime& time);

/// Writes the report; raises what cannot be written.
void save_report(const BadRequestResult& result, const LocalTime& time, const std::string& path);

} // namespace pelvan
