#include "registers/sequence_file.h"

#include <algorithm>
#include <array>

#include "registers/setup_file.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kFirstRegisterLine = 5;

std::string next_line(TextReader& reader) {
    return reader.AtEndOfStream() ? std::string() : reader.readline();
}

std::size_t digits_at_start(std::string_view text) {
    return std::min(text.find_first_not_of("0123456789"), text.size());
}

/// The selecting registers, one a line, in this order at the head of a .pds.
constexpr std::array<ProfileRegister ProfileSequence::*, 6> kSelectors{
    &ProfileSequence::profile_number, &ProfileSequence::step_number,
    &ProfileSequence::action,         &ProfileSequence::step_type,
    &ProfileSequence::step_count,     &ProfileSequence::highest_profile};

/// Takes the lines of a .pds one by one.
class ProfileSequenceReader {
  public:
    explicit ProfileSequenceReader(SequenceFault& fault) : fault_(fault) {}

    bool take(const std::string& line) {
        if (trim(line).empty()) return true;
        const auto number = GetRegNumber(line);
        const bool selecting = selectors_read_ < kSelectors.size();
        if (!number) return !selecting && open_section(line);
        if (!selecting && section_ == nullptr) return false;
        RegisterText text =
            parse_register_text(std::string_view(line).substr(digits_at_start(line)));
        fault_.reason = text.problem;
        ProfileRegister read{*number, std::move(text.text), std::move(text.attributes),
                             fault_.line};
        if (selecting)
            sequence.*kSelectors[selectors_read_++] = std::move(read);
        else
            section_->push_back(std::move(read));
        return fault_.reason.empty();
    }
    [[nodiscard]] bool complete() const { return selectors_read_ == kSelectors.size(); }

    ProfileSequence sequence;

  private:
    bool open_section(const std::string& line) {
        constexpr std::string_view kProfile = "PROFILE";
        constexpr std::string_view kType = "TYPE ";
        const std::string upper = upper_case(line);
        if (upper.starts_with(kProfile)) {
            section_ = &sequence.profile_registers;
            return true;
        }
        if (upper == "RUN" || upper.starts_with("RUN ")) {
            section_ = &sequence.run_registers;
            return true;
        }
        return upper.starts_with(kType) && open_type(trim(line.substr(kType.size())));
    }

    bool open_type(const std::string& text) {
        const auto type = GetRegNumber(text);
        if (!type || *type > 32767) return false;
        const std::string name = trim(std::string_view(text).substr(digits_at_start(text)));
        StepSection& section = sequence.step_types[static_cast<int>(*type)];
        if (section.line == 0) section.line = fault_.line;
        if (section.name.empty()) section.name = name;
        section_ = &section.registers;
        return true;
    }

    SequenceFault& fault_;
    std::size_t selectors_read_ = 0;
    std::vector<ProfileRegister>* section_ = nullptr;
};

} // namespace

std::string without_mark(std::string text) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (text.starts_with(kMark)) text.erase(0, kMark.size());
    return text;
}

SequenceFile::SequenceFile(const std::string& path) : reader_(opentextfile(path)) {
    // Only the first three characters count, trimmed: a space ahead of the word hides it.
    const std::string line = upper_case(without_mark(next_line(*reader_)));
    has_profiles_ = trim(line.substr(0, 3)) == "YES";
    hides_profiles_ = !has_profiles_ && trim(line).starts_with("YES");
}

ProfileRegisters SequenceFile::read_profile_registers() {
    ProfileRegisters registers;
    for (float* place : {&registers.number, &registers.action, &registers.step_count})
        *place = GetRegNumber(next_line(*reader_)).value_or(*place);
    return registers;
}

std::optional<float> SequenceFile::next_register() {
    skip_to_line(*reader_, kFirstRegisterLine);
    if (reader_->AtEndOfStream()) return std::nullopt;
    return GetRegNumber(reader_->readline());
}

std::string SequenceFile::lost_behind() {
    const int line = reader_->Line() - 1;
    int lost = 0;
    while (!reader_->AtEndOfStream())
        if (GetRegNumber(trim(reader_->readline()))) ++lost;
    if (lost == 0) return {};
    return "Line " + std::to_string(line) + " ends the list of registers; " + std::to_string(lost) +
           (lost == 1 ? " line" : " lines") + " with a register behind it: not saved.";
}

int register_lines(int cds_lines) {
    return std::max(0, cds_lines - (kFirstRegisterLine - 1));
}

std::optional<ProfileSequence> read_profile_sequence(const std::string& path,
                                                     SequenceFault& fault) {
    const auto reader = opentextfile(path);
    fault = {};
    ProfileSequenceReader lines(fault);
    while (!reader->AtEndOfStream()) {
        fault.line = reader->Line();
        if (!lines.take(without_mark(reader->readline()))) return std::nullopt;
    }
    fault.line = reader->Line();
    if (!lines.complete()) return std::nullopt;
    return std::move(lines.sequence);
}

} // namespace pelvan
