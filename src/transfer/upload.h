// A setup file back into a controller of the same model: the controller is erased, then every line
// of the file is written.
#pragma once

#include <string>

#include "registers/setup_file.h"
#include "registers/transfer_run.h"
#include "transfer/profile_upload.h"

namespace pelvan {

class Upload {
  public:
    explicit Upload(const TransferContext& context) : run_(context) {}

    /// Asks, erases and restores. Raises the errors of files before it asks.
    [[nodiscard]] TransferResult run(const std::string& file);

  private:
    /// What is known when the questions are answered.
    struct Plan {
        SetupFile file;
        float model = 0;
        bool has_profiles = false;
        ProfileRegisters registers;
    };

    [[nodiscard]] std::optional<Plan> prepare(const std::string& file);
    [[nodiscard]] bool find_profiles(Plan& plan);
    [[nodiscard]] bool confirm(const Plan& plan);
    void restore(const Plan& plan);
    [[nodiscard]] bool erase_settings(const Plan& plan, ProfileUpload& profiles);
    [[nodiscard]] bool put_presets_back();
    [[nodiscard]] bool restore_all(const Plan& plan, ProfileUpload& profiles);
    void tell_partly_restored(const Plan& plan);
    void upload_lines(const Plan& plan, ProfileUpload& profiles);
    void upload_line(const Plan& plan, ProfileUpload& profiles, const std::string& text);
    void end(const Plan& plan);

    TransferRun run_;
    bool completed_ = false;
    int restored_ = 0; // lines
};

} // namespace pelvan
