// Set files of data logging: any file is read or refused, and what was read is written so that it
// is read again.
#include "harness.h"
#include "logging/log_set_file.h"
#include "platform/run_time_error.h"
#include "scratch_file.h"
#include "text/strings.h"

namespace pelvan::fuzz {
namespace {

/// Quotes and spaces round a text belong to the file.
bool is_wrapped(const std::string& text) {
    const bool quoted = text.size() > 1 && text.front() == text.back() &&
                        (text.front() == '"' || text.front() == '\'');
    return quoted || trim(text) != text;
}

/// False when the file is refused.
bool read(const std::string& path, LogSet& set) {
    try {
        require(read_log_set(path, "default.log", set) || set.rows_in_use() == kLogRows,
                "too many rows are a hundred");
        return true;
    } catch (const RunTimeError& error) {
        require(error.number() == error_number::kOverflow ||
                    error.number() == error_number::kInvalidPropertyValue,
                "only the interval refuses a file");
        return false;
    }
}

void run(Input& input) {
    const std::string path = scratch_file(input.rest());
    LogSet set;
    static_cast<void>(starts_when_loaded(path));
    if (!read(path, set)) return;
    require(set.interval_seconds > 0, "an interval takes time");
    bool wrapped = is_wrapped(set.file_name);
    for (const LogSetRow& row : set.rows) {
        require(row.name.size() <= kMaxRowName && row.unit.size() <= kMaxRowUnit,
                "labels are short");
        for (const std::string& text : row.texts)
            wrapped = wrapped || is_wrapped(text);
        wrapped = wrapped || trim(row.name) != row.name || trim(row.unit) != row.unit;
        try {
            static_cast<void>(row.numbers());
        } catch (const RunTimeError& error) {
            require(error.number() == error_number::kOverflow, "only a number may be too large");
        }
    }
    static_cast<void>(set.writing_rows());
    if (set.rows_in_use() > 3) return; // the files are written key by key
    const std::string copy = scratch_file("", "copy");
    write_log_set(set, copy);
    LogSet again;
    require(read(copy, again), "what was written is read");
    if (wrapped) return;
    require(again.same_rows(set) && again.rows_in_use() == set.rows_in_use(), "rows are kept");
    require(again.file_name == set.file_name && again.log_to_file == set.log_to_file &&
                again.interval_seconds == set.interval_seconds,
            "options are kept");
}

const Target target("log_set_files", run);

} // namespace
} // namespace pelvan::fuzz
