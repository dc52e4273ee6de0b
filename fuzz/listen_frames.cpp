// What is listened to, in lumps of any bytes at any times: frames, pairs and counts, their texts,
// and the capture of them.
#include <filesystem>
#include <map>

#include "harness.h"
#include "listen/burst.h"
#include "listen/capture_file.h"
#include "listen/frame_selection.h"
#include "listen/frame_text.h"
#include "listen/listen_statistics.h"
#include "protocols/modbus/crc.h"
#include "scratch_file.h"
#include "simulator/slaves/checks.h"

namespace pelvan::fuzz {
namespace {

constexpr double kBegin = 1.76e12; // ms since 1970

/// Bytes that came together.
struct Lump {
    double start_ms;
    double end_ms;
    std::string bytes;
};

std::vector<Lump> lumps_of(Input& input) {
    std::vector<Lump> lumps;
    double now = kBegin;
    while (!input.empty()) {
        const unsigned kind = input.byte();
        const double unit = (kind & 1U) != 0 ? 0.5 : 60;
        now += input.byte() * unit;
        const double begin = now;
        now += kind % 16;
        std::string bytes(input.piece());
        if ((kind & 0x10U) != 0) bytes = simulator::with_modbus_crc(std::move(bytes));
        // A frame that came in two lumps.
        if ((kind & 0x20U) != 0 && bytes.size() > 1) {
            lumps.push_back({begin, now, bytes.substr(0, bytes.size() / 2)});
            bytes.erase(0, bytes.size() / 2);
            now += kind % 8;
        }
        lumps.push_back({begin, now, bytes});
    }
    return lumps;
}

void split_frames(const std::vector<Lump>& lumps) {
    FrameSplitter splitter;
    std::string in;
    std::string out;
    std::string pending;
    const auto take = [&](const CutFrame& cut) {
        require(!cut.bytes.empty(), "a piece has bytes");
        require(cut.start_ms <= cut.end_ms && cut.first_lump <= cut.last_lump, "times go forward");
        if (cut.info.kind != FrameKind::Damaged)
            require(has_valid_crc(cut.bytes), "a frame has its check");
        if (cut.info.kind == FrameKind::Request) pending = cut.bytes;
        out += cut.bytes;
    };
    for (const Lump& lump : lumps) {
        splitter.add(lump.start_ms, lump.end_ms, lump.bytes);
        in += lump.bytes;
        while (const auto cut = splitter.next(pending))
            take(*cut);
        require(in.compare(0, out.size(), out) == 0, "bytes come out in order");
        require(in.size() - out.size() <= 600, "no more than a frame waits");
    }
    while (const auto cut = splitter.next_of_rest(pending))
        take(*cut);
    require(in == out && splitter.empty(), "every byte comes out once");
}

void check_counts(const Traffic& traffic) {
    std::map<FrameKind, long> kinds;
    long awaited = 0;
    long came = 0;
    for (const ListenedFrame& frame : traffic.frames()) {
        ++kinds[frame.info.kind];
        awaited += frame.answer == Answer::Awaited ? 1 : 0;
        came += frame.answer == Answer::Came ? 1 : 0;
    }
    const TrafficRow& all = traffic.counts().all();
    require(all.requests == kinds[FrameKind::Request], "every request is counted");
    require(all.replies == kinds[FrameKind::Reply] + kinds[FrameKind::ExceptionReply],
            "every reply is counted");
    require(traffic.counts().damaged() == kinds[FrameKind::Damaged], "all noise is counted");
    require(awaited <= 1 && came <= all.replies, "one request waits, replies answer one each");
    long by_address = 0;
    for (const auto& [address, row] : traffic.counts().by_address())
        by_address += row.requests;
    require(by_address == all.requests, "addresses add up");
}

void check_texts(const ListenedFrame& frame) {
    for (const std::string& line : {frame_line(frame), frame_csv_line(frame)})
        require(is_printable(line), "a row is one line");
    const std::string tabs = frame_tab_line(frame);
    require(std::count(tabs.begin(), tabs.end(), '\t') == kFrameColumns - 1, "a row has its cells");
}

unsigned little_endian(std::string_view bytes, std::size_t at) {
    unsigned value = 0;
    for (std::size_t i = 4; i > 0; --i)
        value = value << 8U | static_cast<unsigned char>(bytes[at + i - 1]);
    return value;
}

/// Blocks of the capture, one a frame behind the two of the head.
void check_capture(const Traffic& traffic) {
    const std::string path = scratch_file("");
    save_capture(path, traffic.frames());
    const std::string bytes = testing::read_file(path);
    std::size_t blocks = 0;
    for (std::size_t at = 0; at < bytes.size(); ++blocks) {
        require(bytes.size() - at >= 12, "a block has its head");
        const std::size_t length = little_endian(bytes, at + 4);
        require(length % 4 == 0 && length >= 12 && length <= bytes.size() - at,
                "a block has a length");
        require(little_endian(bytes, at + length - 4) == length, "both lengths are the same");
        at += length;
    }
    require(blocks == traffic.frames().size() + 2, "every frame has its block");
}

void hear(const std::vector<Lump>& lumps, bool capture) {
    Traffic traffic;
    FrameSelection selection(traffic);
    ListenStats record;
    ListenStatistics statistics(record);
    BurstTimes times;
    times.start(0, {2026, 11, 22, 9, 0, 0});
    std::size_t bytes = 0;
    statistics.begin(0);
    for (const Lump& lump : lumps) {
        traffic.hear(lump.start_ms, lump.end_ms, lump.bytes);
        bytes += lump.bytes.size();
        traffic.settle(lump.end_ms + 30);
        statistics.add(lump.start_ms - kBegin, lump.end_ms - kBegin);
        static_cast<void>(
            burst_note(times.add(lump.start_ms - kBegin, lump.end_ms - lump.start_ms, lump.bytes)));
        selection.set_paused(lump.bytes.size() % 7 == 0);
        if (lump.bytes.size() % 5 == 0) selection.set_filter(ByteFilter(0x1E), ByteFilter().set());
        require(selection.paused() || selection.fresh() <= selection.behind(),
                "new rows are frames");
        selection.drop_gone();
        selection.take_new();
    }
    traffic.finish();
    traffic.settle(kBegin * 2);
    std::size_t number = traffic.first_number();
    for (const ListenedFrame& frame : traffic.frames()) {
        require(frame.number == number++, "numbers are given in order");
        check_texts(frame);
        bytes -= frame.bytes.size();
    }
    require(bytes == 0, "every byte is in a frame");
    check_counts(traffic);
    for (const Statistic* statistic : statistics.all())
        require(is_printable(statistic->text()), "statistics are numbers");
    for (std::size_t row = 0; row < selection.size(); ++row)
        require(selection.row(row) != nullptr, "nothing went");
    if (capture) check_capture(traffic);
}

void run(Input& input) {
    const unsigned what = input.below(16);
    const std::vector<Lump> lumps = lumps_of(input);
    what < 8 ? split_frames(lumps) : hear(lumps, what == 15);
}

const Target target("listen_frames", run);

} // namespace
} // namespace pelvan::fuzz
