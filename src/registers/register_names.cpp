#include "registers/register_names.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/run_time_error.h"
#include "registers/sequence_file.h"
#include "registers/setup_file.h"
#include "text/strings.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;

constexpr int kFirstRegisterLine = 5; // of a .cds

class Names {
  public:
    explicit Names(float wanted) : wanted_(wanted) {}

    void offer(float number, std::string_view text) {
        std::string name = trim(text.substr(0, text.find('{')));
        if (number != wanted_ || name.empty()) return;
        if (std::find(found_.begin(), found_.end(), name) == found_.end())
            found_.push_back(std::move(name));
    }
    void offer(const ProfileRegister& each) { offer(each.number, each.text); }

    void read_configuration_sequence(const std::string& path) {
        const auto reader = opentextfile(path);
        skip_to_line(*reader, kFirstRegisterLine);
        while (!reader->AtEndOfStream()) {
            const std::string line = reader->readline();
            const auto number = GetRegNumber(line);
            if (!number) return;
            const std::size_t digits = line.find_first_not_of("0123456789");
            if (digits != std::string::npos) offer(*number, std::string_view(line).substr(digits));
        }
    }

    void read_profile_registers(const std::string& path) {
        SequenceFault fault;
        const auto sequence = read_profile_sequence(path, fault);
        if (!sequence) return;
        for (const ProfileRegister& each : sequence->run_registers)
            offer(each);
        for (const ProfileRegister& each : sequence->profile_registers)
            offer(each);
        for (const auto& [type, section] : sequence->step_types)
            for (const ProfileRegister& each : section.registers)
                offer(each);
    }

    [[nodiscard]] std::vector<std::string> take() { return std::move(found_); }

  private:
    float wanted_;
    std::vector<std::string> found_;
};

} // namespace

std::vector<std::string> register_names(const std::string& application_directory,
                                        float register_number) {
    std::vector<fs::path> files;
    std::error_code error;
    const fs::path folder = path_in(application_directory, kDownloadSequences);
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        files.push_back(it->path());
    std::sort(files.begin(), files.end());
    Names names(register_number);
    for (const fs::path& file : files) {
        try {
            if (file.extension() == ".cds") names.read_configuration_sequence(file.string());
            if (file.extension() == ".pds") names.read_profile_registers(file.string());
        } catch (const RunTimeError&) {
            continue; // it offers nothing
        }
    }
    return names.take();
}

} // namespace pelvan
