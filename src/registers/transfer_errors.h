// What went wrong with single registers in one transfer: the lines of the list of errors, and the
// error file for refused writes.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "platform/text_file.h"
#include "registers/transfer_listener.h"

namespace pelvan {

/// What the controller said, register, value and kind of an entry of the list of errors; a line of
/// another kind is the first of them alone.
using ErrorColumns = std::array<std::string, 4>;
[[nodiscard]] ErrorColumns columns_of_error(const std::string& entry);

class TransferErrors {
  public:
    explicit TransferErrors(TransferListener& listener) : listener_(listener) {}

    /// Creates the file for refused writes, emptied when it is there, and its folder.
    void open_file(const std::string& path);
    /// Closes it, and tells when something could not be written to it.
    void close_file();

    /// A write that the controller refused, or that should not have been in the setup file: a line
    /// of the error file, and one of the list of errors ahead of everything else. A file that
    /// cannot be written ends nothing.
    void record(const std::string& response, float register_number, float value);
    /// Anything else, at the end of the list.
    void list(const std::string& response, float register_number, const std::string& value,
              const std::string& kind = "Error");
    void list(const std::string& response, float register_number, float value);
    /// What is no fault of a register: a line of its own, once for each text in a row.
    void note(const std::string& text);
    /// How the transfer ended, as the last line of the error file.
    void end_with(const std::string& sentence);
    /// A line of the setup file that names no register.
    void list_line(const std::string& line);
    /// The same for lines with one where the header should be.
    void list_in_header(const std::vector<std::string>& lines);
    /// A fault of no register.
    void list_sentence(const std::string& sentence);

    [[nodiscard]] int refusals() const { return refusals_; }
    /// Refusals included.
    [[nodiscard]] int faults() const { return faults_; }

  private:
    template <class Action> void on_file(Action action);

    TransferListener& listener_;
    std::string path_;
    std::string last_note_;
    std::unique_ptr<TextWriter> file_;
    bool file_failed_ = false;
    int refusals_ = 0;
    int faults_ = 0;
};

} // namespace pelvan
