#include "transfer/transfer_errors.h"

#include "text/numbers.h"

namespace pelvan {
namespace {

std::string entry(const std::string& response, float register_number, const std::string& value,
                  const std::string& kind) {
    return response + "               " + plain_single(register_number) + "           " + value +
           "    " + kind;
}

} // namespace

void TransferErrors::close_file() {
    if (file_) file_->Close();
    file_.reset();
}

void TransferErrors::record(const std::string& response, float register_number, float value) {
    const std::string number = plain_single(register_number);
    const std::string text = plain_single(value);
    if (file_) {
        if (refusals_ == 0) file_->writeline("Response From Control\tReg No\tValue\t");
        file_->writeline(response + "\t" + number + "\t" + text + "\tError");
    }
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

void TransferErrors::list_line(const std::string& line) {
    constexpr std::size_t kShown = 80;
    listener_.list_error("Line without a register number: " + line.substr(0, kShown), {});
    ++faults_;
}

} // namespace pelvan
