#include "listen/frame_text.h"

#include "platform/tick.h"
#include "protocols/modbus/frame_length.h"
#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/modbus.h"
#include "text/bytes.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::size_t kHead = 2;
constexpr std::size_t kCrc = 2;
constexpr std::size_t kFixedFrame = 8;
constexpr std::size_t kWriteHead = 7; // of a request that writes several values
constexpr std::size_t kReplyHead = 3; // of a reply to a read
constexpr unsigned kOn = 0xFF00;

/// A frame's bytes without their check, by place.
class Fields {
  public:
    explicit Fields(const ListenedFrame& frame)
        : bytes_(std::string_view(frame.bytes).substr(0, frame.bytes.size() - kCrc)) {}
    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] unsigned byte(std::size_t at) const {
        return static_cast<unsigned char>(bytes_[at]);
    }
    [[nodiscard]] unsigned word(std::size_t at) const { return byte(at) << 8U | byte(at + 1); }
    [[nodiscard]] std::string number(std::size_t at) const {
        return std::to_string(static_cast<std::int16_t>(word(at)));
    }
    [[nodiscard]] std::string hex_from(std::size_t at) const {
        return hex_bytes(bytes_.substr(at));
    }

  private:
    std::string_view bytes_;
};

std::string range(unsigned first, unsigned count) {
    const std::string from = std::to_string(first);
    return count <= 1 ? from : from + "-" + std::to_string(first + count - 1);
}

/// Words from `at` to the end, with the numbers of their registers where these are known.
std::string words(const Fields& fields, std::size_t at, std::optional<unsigned> first) {
    std::string text;
    for (unsigned i = 0; at + 2 <= fields.size(); at += 2, ++i) {
        if (!text.empty()) text += first ? ", " : " ";
        if (first) text += std::to_string(*first + i) + " = ";
        text += fields.number(at);
    }
    return text;
}

/// `count` coils, the lowest number first; fewer when the bytes end before.
std::string coils(const Fields& fields, std::size_t at, unsigned first, unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count && at + i / 8 < fields.size(); ++i)
        text += (fields.byte(at + i / 8) >> i % 8 & 1U) != 0 ? '1' : '0';
    return range(first, count) + " = " + text;
}

std::string single_write(const Fields& fields) {
    const std::string to = std::to_string(fields.word(2)) + " = ";
    const bool coil = fields.byte(1) == 5;
    if (coil && fields.word(4) == kOn) return to + "on";
    if (coil && fields.word(4) == 0) return to + "off";
    return to + fields.number(4);
}

std::string request_values(const Fields& fields) {
    const unsigned first = fields.word(2);
    const unsigned count = fields.word(4);
    // A word a coil is what some masters write; packed coils are the standard.
    if (fields.byte(1) == 15 && fields.byte(6) == (count + 7) / 8 && fields.byte(6) != 2 * count)
        return coils(fields, kWriteHead, first, count);
    return words(fields, kWriteHead, first);
}

std::string values_of(const ListenedFrame& frame, const Fields& fields) {
    const bool request = frame.info.kind == FrameKind::Request;
    const bool fixed = frame.bytes.size() == kFixedFrame;
    switch (function_family(frame.info.function)) {
    case FunctionFamily::kReadBits:
        if (request && fixed) return range(fields.word(2), fields.word(4));
        if (request || !frame.asked) return fields.hex_from(kReplyHead);
        return coils(fields, kReplyHead, frame.asked->first, frame.asked->count);
    case FunctionFamily::kReadWords:
        if (request && fixed) return range(fields.word(2), fields.word(4));
        if (request || fields.size() % 2 == 0) return fields.hex_from(kReplyHead);
        return frame.asked ? words(fields, kReplyHead, frame.asked->first)
                           : words(fields, kReplyHead, std::nullopt);
    case FunctionFamily::kWriteSingle:
        if (fixed) return single_write(fields);
        break;
    case FunctionFamily::kLoopBack:
        if (fixed) return "test " + std::to_string(fields.word(2)) + ": " + fields.hex_from(4);
        break;
    case FunctionFamily::kWriteMultiple:
        if (request && frame.bytes.size() > kWriteHead + kCrc) return request_values(fields);
        if (fixed) return range(fields.word(2), fields.word(4));
        break;
    case FunctionFamily::kUnknown:
        break;
    }
    return fields.hex_from(kHead);
}

/// Whether bytes without a right check are as long as they say.
bool is_broken_frame(const ListenedFrame& frame) {
    const auto fits = [&frame](const ExpectedLength& expected) {
        return expected.known() && expected.bytes == frame.bytes.size();
    };
    return fits(expected_request_length(frame.bytes)) || fits(expected_reply_length(frame.bytes));
}

std::string whole_ms(const std::optional<double>& ms) {
    return ms ? plain_number(round_half_even(*ms)) : std::string();
}

template <class Cell> std::string joined(char separator, Cell cell) {
    std::string line;
    for (std::size_t i = 0; i < kFrameColumns; ++i) {
        if (i > 0) line += separator;
        line += cell(i);
    }
    return line;
}

} // namespace

std::string frame_kind_text(const ListenedFrame& frame) {
    switch (frame.info.kind) {
    case FrameKind::Request:
        return frame.answer == Answer::Missing ? "request, no reply" : "request";
    case FrameKind::Reply:
        return "reply";
    case FrameKind::ExceptionReply:
        return "exception";
    case FrameKind::Damaged:
        break;
    }
    return is_broken_frame(frame) ? "broken" : "noise";
}

std::string frame_values(const ListenedFrame& frame) {
    if (frame.info.kind == FrameKind::Damaged) return hex_bytes(frame.bytes);
    const Fields fields(frame);
    if (frame.info.kind == FrameKind::ExceptionReply)
        return exception_text(static_cast<int>(fields.byte(2)));
    return values_of(frame, fields);
}

std::string frame_cell(const ListenedFrame& frame, FrameColumn column) {
    const bool damaged = frame.info.kind == FrameKind::Damaged;
    switch (column) {
    case FrameColumn::Time:
        return time_ms_text(local_time(frame.start_ms));
    case FrameColumn::Gap:
        return whole_ms(frame.gap_ms);
    case FrameColumn::ReplyTime:
        return whole_ms(frame.reply_ms);
    case FrameColumn::Kind:
        return frame_kind_text(frame);
    case FrameColumn::Address:
        return damaged ? std::string() : std::to_string(frame.info.address);
    case FrameColumn::Function:
        return damaged ? std::string() : std::to_string(frame.info.function);
    case FrameColumn::Values:
        return frame_values(frame);
    case FrameColumn::Check:
        if (!damaged) return "CRC ok";
        return is_broken_frame(frame) ? "CRC wrong" : "no frame";
    }
    return {};
}

std::string frame_line(const ListenedFrame& frame) {
    constexpr std::array<std::size_t, kFrameColumns> kWidths{12, 6, 6, 17, 3, 3, 0, 0};
    std::string line;
    for (std::size_t i = 0; i < kFrameColumns; ++i) {
        const auto column = static_cast<FrameColumn>(i);
        if (i > 0) line += "  ";
        if (column == FrameColumn::Check) break;
        const std::string cell = frame_cell(frame, column);
        const std::string gap(cell.size() < kWidths[i] ? kWidths[i] - cell.size() : 0, ' ');
        line += column == FrameColumn::Kind ? cell + gap : gap + cell;
    }
    return line + "[" + frame_cell(frame, FrameColumn::Check) + "]";
}

std::string frame_tab_head() {
    return joined('\t', [](std::size_t i) { return kFrameTitles[i]; });
}

std::string frame_tab_line(const ListenedFrame& frame) {
    return joined(
        '\t', [&frame](std::size_t i) { return frame_cell(frame, static_cast<FrameColumn>(i)); });
}

std::string frame_csv_head() {
    return joined(',', [](std::size_t i) { return kFrameTitles[i]; }) + ",Bytes";
}

std::string frame_csv_line(const ListenedFrame& frame) {
    const auto cell = [&frame](std::size_t i) {
        const auto column = static_cast<FrameColumn>(i);
        std::string text = frame_cell(frame, column);
        if (column == FrameColumn::Time)
            text = iso_date_text(local_time(frame.start_ms)) + " " + text;
        return text.find(',') == std::string::npos ? text : '"' + text + '"';
    };
    return joined(',', cell) + "," + hex_bytes(frame.bytes);
}

} // namespace pelvan
