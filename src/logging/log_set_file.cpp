#include "logging/log_set_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "config/ini.h"
#include "platform/run_time_error.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kSection[] = "LOGGING DATA DEVICE AND REGISTER SET";
constexpr char kInterval[] = "LOGGING INTERVAL";
constexpr char kFileName[] = "LOGGING FILENAME";
constexpr char kLogToFile[] = "LOG TO FILE";
constexpr char kStartMode[] = "START MODE";
constexpr char kNoAddress[] = "NO DEVICE ADDRESS";

/// Behind the row's number, from column 1 on.
constexpr std::array<const char*, 4> kRowKeys{"DEVICEADDRESS", "DEVICECOMMAND", "DEVICEREGISTER",
                                              "DEVICEREGISTERDECIMAL"};

std::string row_key(int row, std::size_t column) {
    return std::to_string(row) + kRowKeys[column - log_column::kAddress];
}

bool is_control(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 || code == 0x7F;
}

/// The key's value on one line: control characters, which only a damaged file holds, are spaces,
/// for what has a carriage return in it cannot be written again.
std::string read_text(const std::string& key, const std::string& default_value,
                      const std::string& file) {
    std::string text = ini_read_string(kSection, key, default_value, file);
    if (std::none_of(text.begin(), text.end(), is_control)) return text;
    std::replace_if(text.begin(), text.end(), is_control, ' ');
    return trim(text);
}

/// These keys came later: a set without names has none of them.
constexpr char kName[] = "DEVICENAME";
constexpr char kUnit[] = "DEVICEUNIT";

/// So did this one.
constexpr char kTogether[] = "NEIGHBOURS TOGETHER";

std::string label_key(int row, const char* key) {
    return std::to_string(row) + key;
}

/// Cut where a file that was written by hand holds more than can be entered.
std::string read_label(const std::string& file, int row, const char* key, std::size_t length) {
    const std::string text = read_text(label_key(row, key), "", file);
    return text.size() <= length ? text : shortened(text, length);
}

/// A file that has no such key gets one only when there is something to say.
void write_label(const std::string& file, int row, const char* key, const std::string& text) {
    if (text.empty() && ini_read_string(kSection, label_key(row, key), "", file).empty()) return;
    // Reading takes one pair of quotes away.
    const bool quoted =
        text.size() > 1 && text.front() == text.back() && (text[0] == '"' || text[0] == '\'');
    ini_write_string(kSection, label_key(row, key), quoted ? '"' + text + '"' : text, file);
}

std::int32_t read_interval(const std::string& file) {
    const std::string text =
        ini_read_string(kSection, kInterval, plain_number(kDefaultLogInterval), file);
    const double number = round_half_even(leading_number(text));
    const std::string what = file + ": " + kInterval + " \"" + text + "\" ";
    if (std::abs(number) > std::numeric_limits<std::int16_t>::max())
        throw RunTimeError(error_number::kOverflow, what + "is beyond 32767 seconds.");
    if (number < 0) throw RunTimeError(error_number::kInvalidPropertyValue, what + "is below 0.");
    return number == 0 ? 1 : static_cast<std::int32_t>(number); // zero is never allowed
}

bool read_rows(const std::string& file, LogSet& set) {
    // Required: the first missing address ends the list, so rows behind a gap are not found again.
    for (int number = 1;; ++number) {
        const std::string address =
            read_text(row_key(number, log_column::kAddress), kNoAddress, file);
        if (address == kNoAddress) return true;
        if (number > kLogRows) return false;
        LogSetRow& row = set.row(number);
        row.texts[log_column::kAddress] = address;
        for (std::size_t column = log_column::kCommand; column < row.texts.size(); ++column)
            row.texts[column] = read_text(row_key(number, column), "", file);
        row.name = read_label(file, number, kName, kMaxRowName);
        row.unit = read_label(file, number, kUnit, kMaxRowUnit);
        row.in_use = true;
        row.texts[log_column::kLog] = "Yes";
    }
}

} // namespace

bool read_log_set(const std::string& file, const std::string& default_log_file, LogSet& set) {
    set.interval_seconds = read_interval(file);
    set.file_name = read_text(kFileName, default_log_file, file);
    set.log_to_file = ini_read_string(kSection, kLogToFile, "FALSE", file) == "TRUE";
    set.together = ini_read_string(kSection, kTogether, "FALSE", file) == "TRUE";
    for (LogSetRow& row : set.rows) {
        // Required: column 0 keeps its old marks.
        LogSetRow cleared;
        cleared.texts[log_column::kLog] = row.texts[log_column::kLog];
        row = cleared;
    }
    return read_rows(file, set);
}

bool starts_when_loaded(const std::string& file) {
    return ini_read_string(kSection, kStartMode, "MANUAL", file) == "AUTO";
}

void write_log_set(const LogSet& set, const std::string& file) {
    ini_write_string(kSection, kInterval, plain_number(set.interval_seconds), file);
    ini_write_string(kSection, kFileName, set.file_name, file);
    ini_write_string(kSection, kLogToFile, set.log_to_file ? "TRUE" : "FALSE", file);
    if (set.together || !ini_read_string(kSection, kTogether, "", file).empty())
        ini_write_string(kSection, kTogether, set.together ? "TRUE" : "FALSE", file);
    // Required: rows keep their numbers, and keys of rows that are no longer in use stay in a file
    // that had them.
    for (int number = 1; number <= kLogRows; ++number) {
        const LogSetRow& row = set.row(number);
        if (!row.in_use) continue;
        for (std::size_t column = log_column::kAddress; column < row.texts.size(); ++column)
            ini_write_string(kSection, row_key(number, column), row.texts[column], file);
        write_label(file, number, kName, row.name);
        write_label(file, number, kUnit, row.unit);
    }
}

} // namespace pelvan
