#include "registers/transfer_errors.h"

#include <filesystem>
#include <iterator>
#include <utility>

#include "platform/run_time_error.h"
#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

// What stands between the columns of an entry.
constexpr char kBeforeRegister[] = "               ";
constexpr char kBeforeValue[] = "           ";
constexpr char kBeforeKind[] = "    ";

std::string entry(const std::string& response, float register_number, const std::string& value,
                  const std::string& kind) {
    return response + kBeforeRegister + plain_single(register_number) + kBeforeValue + value +
           kBeforeKind + kind;
}

} // namespace

ErrorColumns columns_of_error(const std::string& entry) {
    const std::size_t first = entry.find(kBeforeRegister);
    if (first == entry.npos) return {entry};
    // What the controller said may end with a space.
    const std::size_t number = entry.find_first_not_of(' ', first);
    if (number == entry.npos) return {entry};
    const std::size_t second = entry.find(kBeforeValue, number);
    if (second == entry.npos) return {entry};
    const std::size_t value = second + std::size(kBeforeValue) - 1;
    // A value that is no number may hold anything.
    const std::size_t third = entry.rfind(kBeforeKind);
    if (third < value) return {entry};
    return {entry.substr(0, first), entry.substr(number, second - number),
            entry.substr(value, third - value), entry.substr(third + std::size(kBeforeKind) - 1)};
}

void TransferErrors::open_file(const std::string& path) {
    std::error_code ignored; // the file's own error tells it
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    file_ = CreateTextFile(path, true);
    path_ = path;
}

template <class Action> void TransferErrors::on_file(Action action) {
    try {
        if (file_) action();
    } catch (const RunTimeError&) {
        file_failed_ = true;
        file_.reset();
    }
}

void TransferErrors::close_file() {
    on_file([this] { file_->Close(); });
    file_.reset();
    if (!std::exchange(file_failed_, false)) return;
    listener_.tell("The error file " + path_ + " could not be written: see the list of errors.");
}

void TransferErrors::record(const std::string& response, float register_number, float value) {
    const std::string number = plain_single(register_number);
    const std::string text = plain_single(value);
    on_file([&] {
        if (refusals_ == 0) file_->writeline("Response From Control\tReg No\tValue\t");
        file_->writeline(response + "\t" + number + "\t" + text + "\tError");
    });
    listener_.list_error(entry(response, register_number, text, "Error"), refusals_);
    ++refusals_;
    ++faults_;
}

void TransferErrors::list(const std::string& response, float register_number,
                          const std::string& value, const std::string& kind) {
    listener_.list_error(entry(response, register_number, value, kind), {});
    ++faults_;
}

void TransferErrors::list(const std::string& response, float register_number, float value) {
    list(response, register_number, plain_single(value));
}

void TransferErrors::note(const std::string& text) {
    if (text == last_note_) return;
    last_note_ = text;
    listener_.list_error(text, {});
}

void TransferErrors::end_with(const std::string& sentence) {
    on_file([&] { file_->writeline(sentence); });
}

void TransferErrors::list_in_header(const std::vector<std::string>& lines) {
    for (const std::string& line : lines)
        list_sentence("Stands in the header and is passed over: " + shown(line));
}

void TransferErrors::list_line(const std::string& line) {
    list_sentence("Line without a register number: " + shown(line));
}

void TransferErrors::list_sentence(const std::string& sentence) {
    listener_.list_error(sentence, {});
    ++faults_;
}

} // namespace pelvan
