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

/// A first line without the mark that some editors put before UTF-8.
std::string without_mark(std::string line) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (line.starts_with(kMark)) line.erase(0, kMark.size());
    return line;
}

/// The selecting registers, one a line, in this order at the head of a .pds.
constexpr std::array<float ProfileSequence::*, 6> kSelectors{
    &ProfileSequence::profile_number, &ProfileSequence::step_number,
    &ProfileSequence::action,         &ProfileSequence::step_type,
    &ProfileSequence::step_count,     &ProfileSequence::highest_profile};

/// Takes the lines of a .pds one by one.
class ProfileSequenceReader {
  public:
    bool take(const std::string& line) {
        if (trim(line).empty()) return true;
        const auto number = GetRegNumber(line);
        if (selectors_read_ < kSelectors.size()) {
            if (number) sequence.*kSelectors[selectors_read_++] = *number;
            return number.has_value();
        }
        if (!number) return open_section(upper_case(line));
        if (section_) section_->push_back(*number);
        return section_ != nullptr;
    }
    [[nodiscard]] bool complete() const { return selectors_read_ == kSelectors.size(); }

    ProfileSequence sequence;

  private:
    bool open_section(const std::string& line) {
        constexpr std::string_view kProfile = "PROFILE";
        constexpr std::string_view kType = "TYPE ";
        if (line.starts_with(kProfile)) {
            section_ = &sequence.profile_registers;
            return true;
        }
        if (!line.starts_with(kType)) return false;
        const auto type = GetRegNumber(trim(line.substr(kType.size())));
        if (!type || *type > 32767) return false;
        section_ = &sequence.step_registers[static_cast<int>(*type)];
        return true;
    }

    std::size_t selectors_read_ = 0;
    std::vector<float>* section_ = nullptr;
};

} // namespace

SequenceFile::SequenceFile(const std::string& path) : reader_(opentextfile(path)) {
    // Only the first three characters count, trimmed: a space ahead of the word hides it.
    has_profiles_ = upper_case(trim(without_mark(next_line(*reader_)).substr(0, 3))) == "YES";
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

int register_lines(int cds_lines) {
    return std::max(0, cds_lines - (kFirstRegisterLine - 1));
}

std::optional<ProfileSequence> read_profile_sequence(const std::string& path, int& bad_line) {
    const auto reader = opentextfile(path);
    ProfileSequenceReader lines;
    while (!reader->AtEndOfStream()) {
        bad_line = reader->Line();
        if (!lines.take(without_mark(reader->readline()))) return std::nullopt;
    }
    bad_line = reader->Line();
    if (!lines.complete()) return std::nullopt;
    return lines.sequence;
}

} // namespace pelvan
