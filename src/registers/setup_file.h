// The saved setup file and the places of all files that a transfer works with: names, header lines,
// register lines, and the rules for reading them back. Nothing here talks to a controller or asks a
// person; what becomes of a line is its caller's.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text_file.h"
#include "platform/tick.h"

namespace pelvan {

inline constexpr char kRegDownloads[] = "Reg Downloads";
inline constexpr char kDownloadSequences[] = "Download Sequences";
inline constexpr char kSetupFileFilter[] = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|";

/// What a register read that failed gives instead of a value.
inline constexpr char kReadFailed[] = "ERROR";

/// Line of a setup file at which its register lines begin, and the line that names the model.
inline constexpr int kFirstSetupLine = 8;
inline constexpr int kModelLine = 2;

/// The last line of every complete setup file: restoring ends by setting register 25 to 0.
inline constexpr char kLastSetupLine[] = "25 0";

/// Registers that hold the texts of the digital inputs, a character each.
inline constexpr std::array<int, 16> kDigitalInputTexts{
    1060, 1061, 1062, 1063, 1064, 1065, 1066, 1067, 1075, 1076, 1077, 1078, 1079, 1080, 1081, 1082};

/// The texts of the five registers that identify a controller.
struct ControllerIdentity {
    std::string model;
    std::string serial_first;
    std::string serial_second;
    std::string software;
    std::string revision;
};

/// Register and value of a setup file's line.
struct SetupLine {
    float register_number = 0;
    float value = 0;
    /// What stands where the value should, when that is no whole number, cut to what can be shown;
    /// the value is then what it begins with, or 0.
    std::optional<std::string> no_number = {};
};

/// The register number in the digits that a line begins with; nothing without such a digit, which
/// ends a sequence file's list.
[[nodiscard]] std::optional<float> GetRegNumber(std::string_view TextLine);

/// Register and value of a line; nothing when it begins with no register number.
[[nodiscard]] std::optional<SetupLine> parse_setup_line(std::string_view line);

/// "m/d/yyyy hh:mm:ss", month and day without leading zeros.
[[nodiscard]] std::string header_date(const LocalTime& time);

/// The seven header lines.
[[nodiscard]] std::array<std::string, 7> setup_header(const ControllerIdentity& identity,
                                                      const LocalTime& time);

/// The model number of a setup file's model line.
///
/// It begins at the third character behind the first ":": two spaces stand between. A line with one
/// space loses its first digit, so that such a file, which this program did not write, is refused
/// as one of another model.
[[nodiscard]] float model_in_header(std::string_view line);

/// The beginning of a text from outside, as much as may be shown of it.
[[nodiscard]] std::string shown(std::string_view text);

/// A setup file, read whole before anything is done with it, so that nothing that happens to the
/// file meanwhile leaves a controller half restored.
class SetupFile {
  public:
    /// 53, 70, 75, 76 when the file cannot be read.
    explicit SetupFile(const std::string& path);

    /// False for a file with bytes that no text has; nothing else is known of it then.
    [[nodiscard]] bool is_text() const { return is_text_; }
    [[nodiscard]] bool is_empty() const { return lines_.empty(); }
    [[nodiscard]] float model() const;
    /// The lines behind the header.
    [[nodiscard]] std::span<const std::string> register_lines() const;
    /// Lines that say a register where the header should be, which nobody restores or compares.
    [[nodiscard]] std::vector<std::string> registers_in_header() const;
    /// What the file lacks, as the end of a sentence; nothing when it is complete.
    [[nodiscard]] std::optional<std::string> lacks() const;

    static constexpr char kNoText[] = "The setup file is no text file.";

  private:
    bool is_text_ = true;
    std::vector<std::string> lines_;
};

/// Whether a value stands for "nothing to save": such a register gets no line.
[[nodiscard]] bool is_skip_mark(std::string_view value);
[[nodiscard]] bool is_digital_input_text(float register_number);

/// A path in the folder of saved setups, or of sequence files.
[[nodiscard]] std::string reg_downloads_path(const std::string& application_directory,
                                             const std::string& name = {});
[[nodiscard]] std::string sequence_path(const std::string& application_directory,
                                        const std::string& name);

/// The path with ".txt" behind it when its file name has no ".".
[[nodiscard]] std::string with_text_extension(const std::string& path);

/// Reads until the reader's next line is `line`, or the file's end; the last line read, empty when
/// none was.
std::string skip_to_line(TextReader& reader, int line);

/// Lines of a file, read to its end.
[[nodiscard]] int count_lines(const std::string& path);

} // namespace pelvan
