#include "badrequests/report.h"

#include <array>

#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;

constexpr std::array kVerdicts{ReactionVerdict::Passed, ReactionVerdict::Failed,
                               ReactionVerdict::Unclear, ReactionVerdict::NotTested};

} // namespace

std::vector<std::string> report_head(const BadRequestResult& result, const LocalTime& time) {
    return {"Bad requests, " + date_text(time) + " " + time_text(time),
            result.title + "; " + result.port + "; answers waited for " +
                plain_number(result.wait_ms / kMsPerSecond) + " s"};
}

std::vector<std::string> report_lines(const BadRequestLine& line) {
    std::vector<std::string> lines{line.name + ": " + line.verdict_text()};
    if (!line.sent.empty())
        lines.push_back("    sent " + line.sent + "; expected " + line.expected + "; came " +
                        line.answer);
    return lines;
}

std::string report_sum(const BadRequestResult& result) {
    std::string text;
    for (const ReactionVerdict verdict : kVerdicts) {
        int count = 0;
        for (const BadRequestLine& line : result.lines)
            count += line.verdict == verdict ? 1 : 0;
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + word_of(verdict);
    }
    if (!text.empty()) text += ".";
    if (!result.end.empty()) text += (text.empty() ? "" : " ") + result.end;
    return text;
}

std::string confirmation(const ProtocolSeries& series) {
    return "Send requests that are wrong on purpose?\n" + series.title() +
           "\n\nThey only read, but a controller that cannot cope with them may stop answering, "
           "and so may others on the same line. Not while a process depends on them.";
}

std::vector<std::string> report_text(const BadRequestResult& result, const LocalTime& time) {
    std::vector<std::string> all = report_head(result, time);
    all.emplace_back();
    for (const BadRequestLine& line : result.lines)
        for (std::string& text : report_lines(line))
            all.push_back(std::move(text));
    all.emplace_back();
    all.push_back(report_sum(result));
    return all;
}

void save_report(const BadRequestResult& result, const LocalTime& time, const std::string& path) {
    const auto file = CreateTextFile(path, true);
    for (const std::string& line : report_text(result, time))
        file->writeline(line);
    file->Close();
}

} // namespace pelvan
