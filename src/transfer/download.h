// A controller's whole setup into a text file, as the model's .cds says.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "registers/sequence_file.h"
#include "registers/setup_file.h"
#include "registers/transfer_run.h"

namespace pelvan {

class Download {
  public:
    explicit Download(const TransferContext& context) : run_(context), clock_(context.clock) {}

    /// Reads the model, asks where to save, and saves. A cancelled download leaves the lines
    /// written so far. Raises the errors of files.
    [[nodiscard]] TransferResult run();

  private:
    /// What is known, and open, before the registers are read.
    struct Plan {
        std::string model;
        SequenceFile sequence;
        int registers = 0; // lines that may hold one
        std::unique_ptr<TextWriter> setup;
    };
    /// Lines that are written behind the profiles; one more can be held than is written.
    struct HeldBack {
        std::array<std::string, 17> lines;
        std::size_t count = 0;
    };

    void save();
    [[nodiscard]] std::optional<Plan> prepare();
    [[nodiscard]] std::unique_ptr<TextWriter> CreateTextFile();
    [[nodiscard]] bool read_serial_number(ControllerIdentity& identity);
    [[nodiscard]] std::optional<std::string> choose_path(const ControllerIdentity& identity);
    void write_header(TextWriter& setup, ControllerIdentity& identity);
    [[nodiscard]] std::string read_for_header(float register_number);
    void download_registers(Plan& plan);
    [[nodiscard]] bool download_register(float register_number, Plan& plan);
    [[nodiscard]] std::vector<float> registers_of(Plan& plan);
    [[nodiscard]] bool hold_back(const std::string& line);
    void download_profiles(Plan& plan);
    void keep_former(const std::string& path);
    void end(Plan& plan);
    void settle_former();

    TransferRun run_;
    Clock& clock_;
    HeldBack held_;
    int listed_ = 0; // registers that the .cds names
    bool completed_ = false;
    std::string former_;  // what the file was before, under another name; empty: nothing
    std::string written_; // the setup file
};

} // namespace pelvan
