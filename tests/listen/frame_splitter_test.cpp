// Streams of frames and noise, cut into lumps at random places. What is in them is known, because
// the test put it there.
#include "listen/frame_splitter.h"

#include <gtest/gtest.h>

#include <random>

#include "support/frames.h"

namespace pelvan::testing {

using Pieces = std::vector<std::string>;

struct Splitting {
    void add(double ms, std::string_view lump) { splitter.add(ms, ms, lump); }
    /// Everything that can be cut. A request waits for the reply behind it.
    std::vector<CutFrame> cut(bool is_rest) {
        std::vector<CutFrame> all;
        while (auto next = is_rest ? splitter.next_of_rest(pending) : splitter.next(pending)) {
            if (next->info.kind == FrameKind::Request) pending = next->bytes;
            if (is_reply(next->info.kind)) pending.clear();
            all.push_back(std::move(*next));
        }
        return all;
    }
    /// Each piece as kind ("?" noise, "q" request, "r" reply, "x" exception) and bytes.
    Pieces take(bool is_rest = false) {
        Pieces pieces;
        for (const CutFrame& each : cut(is_rest))
            pieces.push_back("?qrx"[static_cast<int>(each.info.kind)] + (" " + hex_of(each.bytes)));
        return pieces;
    }

    FrameSplitter splitter;
    std::string pending;
};

TEST(FrameSplitterTest, CutsBothDirectionsWhereOneLengthWouldLieOrMislead) {
    Splitting line;
    double now = 0;
    const auto check = [&](const Pieces& hex_with_kind) {
        std::string stream;
        Pieces wanted;
        for (const std::string& each : hex_with_kind) {
            const bool noise = each[0] == '?';
            const std::string piece = noise ? bytes(each.substr(2)) : frame(each.substr(2));
            stream += piece;
            wanted.push_back(each.substr(0, 2) + hex_of(piece));
        }
        line.add(now += 1000, stream);
        EXPECT_EQ(line.take(true), wanted);
    };
    check({"q 01 03 00 64 00 02", "r 01 03 04 02 D5 FF FF", "q 01 06 00 07 00 01",
           "r 01 06 00 07 00 01"});
    check({"q 01 03 06 00 00 03", "q 01 03 06 00 00 03", "r 01 03 06 00 00 00 00 00 00"}); // again
    check({"q 01 10 00 00 00 01 02 00 05", "r 01 10 00 00 00 01",
           "q 01 0F 00 00 00 02 04 00 01 00 00", "x 01 8F 02"});
    check({"r 01 10 00 00 00 01", "r 01 03 02 00 07"}); // one direction alone
    check({"? FF", "q 01 03 00 00 00 01", "? 00 81", "r 01 03 02 00 05"});
    check({"q 01 16 00 04 00 F2 00 25", "r 01 16 00 04 00 F2 00 25", "q 01 07", "r 01 07 6D"});
}

TEST(FrameSplitterTest, WaitsForTheRestOfAFrameAndGivesUpWhenTheLinePauses) {
    const std::string reply = frame("01 03 04 02 D5 FF FF");
    const std::string request = frame("02 03 00 00 00 01");
    Splitting line;
    line.add(0, frame("01 03 00 64 00 02"));
    EXPECT_EQ(line.take().size(), 1U);
    line.add(100, reply.substr(0, 6));
    EXPECT_EQ(line.take(), Pieces());
    line.add(900, reply.substr(6)); // read late, and whole
    EXPECT_EQ(line.take(), Pieces{"r " + hex_of(reply)});
    line.add(1000, reply.substr(0, 6));
    line.add(1400, request);
    EXPECT_EQ(line.take(), (Pieces{"? " + hex_of(reply.substr(0, 6)), "q " + hex_of(request)}));
    // Noise before and behind a pause is two pieces; 16 ms are no pause.
    line.add(2000, "\xFF");
    line.add(2016, "\xFF");
    line.add(2300, "\xFF");
    EXPECT_EQ(line.take(), Pieces{"? FF FF"});
    EXPECT_EQ(line.take(true), Pieces{"? FF"});
    // The length that a stray byte promises delays what is behind it, and loses nothing.
    line.add(3000, bytes("01 03 F0"));
    line.add(3001, request);
    EXPECT_EQ(line.take(), Pieces());
    EXPECT_EQ(line.take(true), (Pieces{"? 01 03 F0", "q " + hex_of(request)}));
    // A function that does not tell its length needs a pause at both ends; in between are none.
    for (const auto& [ms, hex] :
         {std::pair{5000, "01 41 07 07"}, {5020, "01 41 09"}, {5022, "01 41"}}) {
        line.add(ms, frame(hex).substr(0, 3));
        line.add(ms + 1, frame(hex).substr(3));
    }
    EXPECT_EQ(line.take(), Pieces{"q " + hex_of(frame("01 41 07 07"))});
    EXPECT_EQ(line.take(true), Pieces{"? " + hex_of(frame("01 41 09") + frame("01 41"))});
}

/// A frame that a master or a controller might send, as random as it can be.
std::string random_frame(std::mt19937& random, bool reply) {
    const auto byte = [&](unsigned limit) { return static_cast<char>(random() % limit); };
    std::string body{static_cast<char>(1 + random() % 247), "\1\2\3\4\5\6\17\20"[random() % 8]};
    const bool write_many = body[1] >= 15;
    const bool counted = write_many ? !reply : reply && body[1] <= 4;
    const std::size_t words = 1 + random() % 100;
    if (!counted || write_many) body += {byte(4), byte(256), 0, static_cast<char>(words)};
    if (counted) body += static_cast<char>(2 * words);
    for (std::size_t i = 0; counted && i < 2 * words; ++i)
        body += byte(random() % 2 == 0 ? 4 : 256);
    return sealed(body);
}

TEST(FrameSplitterTest, GivesEveryByteOnceWhateverComesInWhateverLumps) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        std::string stream;
        Pieces frames;
        // Garbage begins no frame by itself: a frame behind it is found.
        for (int i = 0; i < 40; ++i) {
            if (seed % 2 == 0 && random() % 4 == 0)
                stream += std::string(1 + random() % 40, static_cast<char>(0xE0 + random() % 32));
            frames.push_back(random_frame(random, i % 2 == 1));
            stream += frames.back();
        }
        Splitting line;
        std::string all;
        Pieces found;
        const auto take = [&](bool is_rest) {
            for (const CutFrame& cut : line.cut(is_rest)) {
                all += cut.bytes;
                if (cut.info.kind != FrameKind::Damaged) found.push_back(cut.bytes);
                EXPECT_LE(cut.first_lump, cut.last_lump);
            }
        };
        for (std::size_t at = 0, size = 0; at < stream.size(); at += size) {
            size = 1 + random() % 64;
            line.add(static_cast<double>(at), std::string_view(stream).substr(at, size));
            take(false);
        }
        take(true);
        EXPECT_EQ(all, stream) << seed;
        EXPECT_EQ(found, frames) << seed;
    }
}

// Bytes that begin a long frame at every place where one can begin; quadratic work would come to no
// end.
TEST(FrameSplitterTest, HostileBytesCostAMomentAndNoRoom) {
    for (const char* pattern :
         {"01 03 FA", "01 10 00 00 00 FF FF", "02 02 02", "05 18 00 FF", "FF"}) {
        std::string stream;
        while (stream.size() < std::size_t{1} << 17)
            stream += bytes(pattern);
        for (const std::size_t lump : {stream.size(), std::size_t{61}}) {
            FrameSplitter splitter;
            std::size_t out = 0;
            for (std::size_t at = 0; at < stream.size(); at += lump) {
                splitter.add(0, 0, std::string_view(stream).substr(at, lump));
                while (const auto cut = splitter.next("")) {
                    EXPECT_LE(cut->bytes.size(), 268U);
                    out += cut->bytes.size();
                }
                EXPECT_LT(std::min(at + lump, stream.size()) - out, 600U) << pattern;
            }
        }
    }
}

} // namespace pelvan::testing
