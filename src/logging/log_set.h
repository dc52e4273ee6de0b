// What is polled and where it is logged, as values: the rows, the interval and the file options;
// and what each column of a row may hold. Set files are log_set_file.h's, the polling is
// DataLogger's.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace pelvan {

/// Columns of a row, and of the grid that shows it.
namespace log_column {
inline constexpr int kLog = 0;
inline constexpr int kAddress = 1;
inline constexpr int kCommand = 2;
inline constexpr int kRegister = 3;
inline constexpr int kDecimals = 4;
inline constexpr int kValue = 5;
inline constexpr int kName = 6;
inline constexpr int kUnit = 7;
} // namespace log_column

/// What the Command column may hold; 1, 2, 3 and 4 are Modbus functions.
namespace log_command {
inline constexpr double kReadCoils = 1;
inline constexpr double kReadInputStatus = 2;
inline constexpr double kReadHoldingRegisters = 3;
inline constexpr double kReadInputRegisters = 4;
inline constexpr double kRead32 = 32; // two holding registers as one value
} // namespace log_command

inline constexpr int kLogRows = 100;
inline constexpr std::int32_t kDefaultLogInterval = 10; // seconds

/// A row's columns as numbers.
struct LogRow {
    std::int16_t address = 0;
    double command = 0;
    float start_register = 0;
    double decimals = 0; // negative: the value is multiplied
};

/// A row as it was entered or read from a file.
struct LogSetRow {
    /// Rows in use are polled and saved. The mark of column 0 may say otherwise.
    bool in_use = false;
    /// By column, up to `kDecimals`; column 0 holds "Yes", "No" or nothing.
    std::array<std::string, log_column::kValue> texts;
    /// What people call the value and what it is measured in; both may be empty. Nothing that is
    /// polled or logged depends on them.
    std::string name = {};
    std::string unit = {};

    /// A column without a number counts as 0; 6 (overflow) for an address beyond 16 bits.
    [[nodiscard]] LogRow numbers() const;
    /// Whether the command is one that reads holding registers.
    [[nodiscard]] bool reads_holding_registers() const;
    /// Whether anything was entered, the mark of column 0 aside.
    [[nodiscard]] bool filled() const;
};

struct LogSet {
    std::int32_t interval_seconds = kDefaultLogInterval;
    std::string file_name;
    bool log_to_file = false;
    bool single_line = false;
    /// Rows whose registers follow one another are read with one request.
    bool together = false;
    std::array<LogSetRow, kLogRows> rows; // row 1 first

    /// By its number, 1 to `kLogRows`; 9 outside.
    [[nodiscard]] const LogSetRow& row(int number) const;
    [[nodiscard]] LogSetRow& row(int number);
    void take_rows_out_of_use();
    [[nodiscard]] int rows_in_use() const;
    [[nodiscard]] bool any_row_filled() const;
    /// Whether the rows of both hold the same, whatever is in use and marked.
    [[nodiscard]] bool same_rows(const LogSet& other) const;
    /// Numbers of the rows in use whose command does not read but writes. Only a file can hold
    /// them: the editor takes read commands alone.
    [[nodiscard]] std::vector<int> writing_rows() const;
};

/// By row number: how many rows in use, itself included, ask one controller for registers of one
/// kind that follow one another. 1 where the next row in use asks for something else.
[[nodiscard]] std::array<int, kLogRows + 1> neighbours_in(const LogSet& set);

/// Hours, minutes and seconds of an interval.
[[nodiscard]] std::array<int, 3> interval_parts(std::int32_t seconds);

/// How a column is asked for.
struct CellQuestion {
    const char* prompt;
    const char* default_text;
};

/// The question for a column that is polled with; nullptr for another one.
[[nodiscard]] const CellQuestion* cell_question(int column);

/// Puts an answer into a column that is polled with, as typed; an empty one empties it. The row is
/// then in use if nothing is missing. False when the answer is out of range: the column keeps what
/// it held.
[[nodiscard]] bool enter_cell(LogSetRow& row, int column, const std::string& answer);

inline constexpr std::size_t kMaxRowName = 60; // bytes
inline constexpr std::size_t kMaxRowUnit = 16;

/// Puts a name or a unit (`kName`, `kUnit`) into the row, spaces round it aside; the row is then in
/// use if nothing is missing, as after any entry. False when it is too long or has control
/// characters.
[[nodiscard]] bool enter_label(LogSetRow& row, int column, const std::string& answer);

} // namespace pelvan
