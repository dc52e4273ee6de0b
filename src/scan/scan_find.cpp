#include "scan/scan_find.h"

#include <cmath>

namespace pelvan {
namespace {

std::string name_of(const ScanFind& find) {
    const std::string name = scan_protocol_name(find.protocol);
    return find.protocol == ScanProtocol::Tellura ? name + (find.crc ? " (CRC)" : " (BCC)") : name;
}

} // namespace

FindColumns columns_of(const ScanFind& find) {
    const bool addressed = find.protocol != ScanProtocol::Xon;
    return {name_of(find),
            addressed ? std::to_string(find.address) : "none",
            settings_text(find.line),
            find.answer.model.empty() ? "not told" : find.answer.model,
            find.answer.words,
            std::to_string(std::lround(find.reply_ms)) + " ms",
            scan_time_text(find.after_ms)};
}

const FindColumns& find_headings() {
    static const FindColumns headings{"Protocol", "Address", "Settings",   "Model",
                                      "Answer",   "Reply",   "Found after"};
    return headings;
}

std::string find_text(const ScanFind& find) {
    std::string text = name_of(find);
    if (find.protocol != ScanProtocol::Xon) text += ", address " + std::to_string(find.address);
    return text + ", " + settings_text(find.line);
}

bool may_be_same(const ScanFind& find, const ScanStep& step, int address) {
    return find.protocol == step.protocol && find.address == address &&
           find.line.baud_rate == step.line.baud_rate && find.line.parity == step.line.parity &&
           find.line.data_bits == step.line.data_bits;
}

} // namespace pelvan
