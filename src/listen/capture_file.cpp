#include "listen/capture_file.h"

#include <fcntl.h>

#include <cerrno>
#include <cmath>
#include <cstdint>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

// Block and option codes of the pcapng format; numbers in blocks are little-endian here.
constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint16_t kPacketFlags = 2;
constexpr std::uint32_t kInbound = 1;
constexpr std::uint32_t kOutbound = 2;
/// LINKTYPE_WIRESHARK_UPPER_PDU; its tags are big-endian.
constexpr std::uint16_t kExportedPdu = 252;
constexpr unsigned char kProtocolNameTag = 12;

void put(std::string& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(value >> (8 * i) & 0xFF);
}

void pad(std::string& out) {
    while (out.size() % 4 != 0)
        out += '\0';
}

/// Type and length round a body whose own length is a multiple of four.
std::string block(std::uint32_t type, const std::string& body) {
    const auto length = static_cast<std::uint32_t>(body.size() + 12);
    std::string out;
    put(out, type, 4);
    put(out, length, 4);
    out += body;
    put(out, length, 4);
    return out;
}

std::string file_header() {
    std::string section;
    put(section, kByteOrderMagic, 4);
    put(section, 1, 2); // version 1.0
    put(section, 0, 2);
    section.append(8, '\xFF'); // length of the section: not given
    std::string interface;
    put(interface, kExportedPdu, 2);
    put(interface, 0, 2);
    put(interface, 0, 4); // no limit; times are in microseconds, the format's default
    return block(kSectionHeader, section) + block(kInterfaceDescription, interface);
}

/// The name of the protocol, the end of the tags, and the bytes.
std::string exported_pdu(const ListenedFrame& frame) {
    std::string name = frame.info.kind == FrameKind::Damaged ? "data" : "mbrtu";
    pad(name);
    std::string out{'\0', static_cast<char>(kProtocolNameTag), '\0',
                    static_cast<char>(name.size())};
    out += name;
    out.append(4, '\0');
    return out + frame.bytes;
}

std::string packet(const ListenedFrame& frame) {
    const std::string pdu = exported_pdu(frame);
    const auto micros = static_cast<std::uint64_t>(std::llround(frame.start_ms * 1000));
    std::string body;
    put(body, 0, 4); // the only interface
    put(body, static_cast<std::uint32_t>(micros >> 32), 4);
    put(body, static_cast<std::uint32_t>(micros), 4);
    put(body, static_cast<std::uint32_t>(pdu.size()), 4);
    put(body, static_cast<std::uint32_t>(pdu.size()), 4);
    body += pdu;
    pad(body);
    if (frame.info.kind != FrameKind::Damaged) {
        put(body, kPacketFlags, 2);
        put(body, 4, 2);
        put(body, is_reply(frame.info.kind) ? kInbound : kOutbound, 4);
        put(body, 0, 4); // end of the options
    }
    return block(kEnhancedPacket, body);
}

} // namespace

CaptureWriter::CaptureWriter(std::string path) : path_(std::move(path)) {
    const int error = file_.open(path_, O_WRONLY | O_CREAT | O_TRUNC);
    // Only a directory can be missing where a missing file is created.
    if (error != 0) throw_file_error(error == ENOENT ? ENOTDIR : error, path_);
    write(file_header());
}

void CaptureWriter::add(const ListenedFrame& frame) {
    write(packet(frame));
}

void CaptureWriter::write(const std::string& block) {
    if (const int error = file_.write_all(block)) throw_file_error(error, path_);
}

void save_capture(const std::string& path, const std::deque<ListenedFrame>& frames) {
    CaptureWriter writer(path);
    for (const ListenedFrame& frame : frames)
        writer.add(frame);
}

} // namespace pelvan
