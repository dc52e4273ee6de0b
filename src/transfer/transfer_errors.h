// What went wrong with single registers in one transfer: the lines of the list of errors, and the
// error file for refused writes.
#pragma once

#include <memory>
#include <string>

#include "platform/text_file.h"
#include "transfer/transfer_listener.h"

namespace pelvan {

class TransferErrors {
  public:
    explicit TransferErrors(TransferListener& listener) : listener_(listener) {}

    /// Creates the file for refused writes, emptied when it is there.
    void open_file(const std::string& path) { file_ = CreateTextFile(path, true); }
    void close_file();

    /// A write that the controller refused: a line of the error file, and one of the list of errors
    /// ahead of everything else.
    void record(const std::string& response, float register_number, float value);
    /// Anything else, at the end of the list.
    void list(const std::string& response, float register_number, const std::string& value,
              const std::string& kind = "Error");
    void list(const std::string& response, float register_number, float value);
    /// A line of the setup file that says nothing.
    void list_line(const std::string& line);

    [[nodiscard]] int refusals() const { return refusals_; }
    /// Refusals included.
    [[nodiscard]] int faults() const { return faults_; }

  private:
    TransferListener& listener_;
    std::unique_ptr<TextWriter> file_;
    int refusals_ = 0;
    int faults_ = 0;
};

} // namespace pelvan
