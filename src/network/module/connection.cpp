#include "network/module/connection.h"

#include <fcntl.h>
#include <gensio/gensio_unix.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "platform/uninterrupted.h"

namespace pelvan {
namespace {

constexpr int kPiecesPerCall = 16;
constexpr double kWorkMs = 20; // between looks at the deadline
constexpr int kCloseMs = 50;

// A host that has gone without a word is noticed after so long, while it is written to and while
// nothing is sent; the system itself would try for a quarter of an hour, and never look.
constexpr unsigned kVanishedMs = 6000;
constexpr int kProbeAfterSeconds = 5;
constexpr int kProbeEverySeconds = 2;
constexpr int kProbes = 3;

gensio_time library_time(double ms) {
    const auto nanoseconds = std::llround(std::max(ms, 0.0) * 1e6);
    return {nanoseconds / 1'000'000'000, static_cast<std::int32_t>(nanoseconds % 1'000'000'000)};
}

double ms_until(Deadline deadline) {
    return std::chrono::duration<double, std::milli>(deadline - std::chrono::steady_clock::now())
        .count();
}

template <class Value> void set_option(int socket, int level, int option, Value value) {
    static_cast<void>(::setsockopt(socket, level, option, &value, sizeof value));
}

/// What cannot be set stays as it is: the connection works without.
void watch_the_peer(int socket) {
    set_option(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    set_option(socket, IPPROTO_TCP, TCP_KEEPIDLE, kProbeAfterSeconds);
    set_option(socket, IPPROTO_TCP, TCP_KEEPINTVL, kProbeEverySeconds);
    set_option(socket, IPPROTO_TCP, TCP_KEEPCNT, kProbes);
    set_option(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, kVanishedMs);
}

void log_nothing(gensio_os_funcs*, gensio_log_levels, const char*, va_list) {}

gensio_os_funcs* new_system() {
    gensio_os_funcs* system = nullptr;
    if (gensio_unix_funcs_alloc(nullptr, 0, &system) != 0) throw std::bad_alloc();
    gensio_os_funcs_set_vlog(system, log_nothing);
    return system;
}

/// A stream that is not open yet. The library's own text for one would have it look up even a
/// numeric address, which fails on a machine that is on no network.
int make_stream(gensio_os_funcs* system, const sockaddr_in6& six, bool rfc2217, gensio_event event,
                void* data, gensio*& stream) {
    const auto& four = reinterpret_cast<const sockaddr_in&>(six);
    const bool ipv6 = six.sin6_family == AF_INET6;
    gensio_addr* address = nullptr;
    if (const int error =
            ipv6 ? gensio_addr_create(system, GENSIO_NETTYPE_IPV6, &six, sizeof six,
                                      ntohs(six.sin6_port), &address)
                 : gensio_addr_create(system, GENSIO_NETTYPE_IPV4, &four.sin_addr,
                                      sizeof four.sin_addr, ntohs(four.sin_port), &address))
        return error;
    constexpr const char* kAtOnce[] = {"nodelay", nullptr};
    gensio* tcp = nullptr;
    const int error = gensio_terminal_alloc("tcp", address, kAtOnce, system, event, data, &tcp);
    gensio_addr_free(address);
    if (error != 0 || !rfc2217) {
        stream = tcp;
        return error;
    }
    constexpr const char* kOptions[] = {"rfc2217", nullptr};
    const int refused = gensio_filter_alloc("telnet", tcp, kOptions, system, event, data, &stream);
    if (refused != 0) gensio_free(tcp);
    return refused;
}

/// The library keeps for good what it is given first, for each kind of stream. Connections have
/// something of their own each, so that two threads can work on two.
void prepare_library() {
    static const bool prepared = [] {
        sockaddr_in6 nowhere{};
        nowhere.sin6_family = AF_INET6;
        const auto ignore = [](gensio*, void*, int, int, unsigned char*, gensiods*,
                               const char* const*) { return GE_NOTSUP; };
        gensio* stream = nullptr;
        if (make_stream(new_system(), nowhere, true, ignore, nullptr, stream) == 0)
            gensio_free(stream);
        return true;
    }();
    static_cast<void>(prepared);
}

} // namespace

// The library gives nobody its sockets and reads them ahead of its filters, so it is met where it
// asks the system.
Connection::Connection() {
    prepare_library();
    system_ = new_system();
    gensio_os_funcs_set_data(system_, this);
    original_ = *system_;
    system_->socket_open = open_socket;
    system_->read = read_socket;
    system_->send = send_socket;
}

Connection::~Connection() {
    end_stream();
    gensio_os_funcs_free(system_);
}

Connection& Connection::of(gensio_iod* socket) {
    return *static_cast<Connection*>(gensio_os_funcs_get_data(socket->f));
}

int Connection::open_socket(gensio_os_funcs* system, const gensio_addr* address, int protocol,
                            gensio_iod** socket) {
    auto& self = *static_cast<Connection*>(gensio_os_funcs_get_data(system));
    const int error = self.original_.socket_open(system, address, protocol, socket);
    if (error != 0) return error;
    const int theirs = system->iod_get_fd(*socket);
    watch_the_peer(theirs);
    if (self.descriptor_ >= 0) ::close(self.descriptor_);
    // One of our own: the library closes its one when it likes, and the number may be another's.
    self.descriptor_ = ::fcntl(theirs, F_DUPFD_CLOEXEC, 0);
    return 0;
}

int Connection::read_socket(gensio_iod* socket, void* bytes, gensiods room, gensiods* count) {
    Connection& self = of(socket);
    return self.read_commands(socket, static_cast<unsigned char*>(bytes), room, count);
}

/// The library's own way ends the program with a signal when the server has gone.
int Connection::send_socket(gensio_iod* socket, const gensio_sg* pieces, gensiods count,
                            gensiods* written, int) {
    std::array<iovec, 8> parts{};
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = std::min<std::size_t>(count, parts.size());
    for (std::size_t i = 0; i < message.msg_iovlen; ++i)
        parts[i] = {const_cast<void*>(pieces[i].buf), pieces[i].buflen};
    const int theirs = socket->f->iod_get_fd(socket);
    const ssize_t result = uninterrupted([&] { return ::sendmsg(theirs, &message, MSG_NOSIGNAL); });
    if (written) *written = result > 0 ? static_cast<gensiods>(result) : 0;
    if (result >= 0 || errno == EAGAIN) return 0;
    return gensio_os_err_to_err(socket->f, errno);
}

int Connection::read_commands(gensio_iod* socket, unsigned char* bytes, gensiods room,
                              gensiods* count) {
    const bool as_it_is = !opening_rfc2217_ && !commands_.holds_escape();
    if (as_it_is || room < 2) return original_.read(socket, bytes, room, count);
    gensiods arrived = 0;
    const int error = original_.read(socket, bytes, room - 1, &arrived);
    if (error != 0) arrived = 0;
    *count = opening_rfc2217_ ? commands_.keep(bytes, arrived) : commands_.rest(bytes, arrived);
    return error;
}

int Connection::open(const sockaddr_in6& address, bool rfc2217, Deadline deadline,
                     const std::function<void()>& connecting_ended) {
    end_stream();
    opening_rfc2217_ = rfc2217;
    if (const int error = make_stream(system_, address, rfc2217, on_event, this, stream_))
        return error;
    opened_ = false;
    const auto note = [](gensio*, int error, void* data) {
        auto& self = *static_cast<Connection*>(data);
        self.opened_ = true;
        self.open_error_ = error;
    };
    if (const int error = gensio_open(stream_, note, this)) return error;
    while (!opened_ && ms_until(deadline) > 0) {
        work(std::min(ms_until(deadline), kWorkMs));
        if (connected()) connecting_ended();
    }
    opening_rfc2217_ = false;
    if (!opened_) return GE_TIMEDOUT;
    if (open_error_ != 0) return open_error_;
    if (rfc2217) far_port_ = gensio_to_sergensio(stream_);
    gensio_set_read_callback_enable(stream_, true);
    return 0;
}

bool Connection::connected() const {
    sockaddr_storage peer{};
    socklen_t size = sizeof peer;
    return ::getpeername(descriptor_, reinterpret_cast<sockaddr*>(&peer), &size) == 0;
}

bool Connection::work(double timeout_ms) {
    gensio_time time = library_time(timeout_ms);
    return gensio_os_funcs_service(system_, &time) == 0;
}

void Connection::work_off() {
    for (int i = 0; i < kPiecesPerCall; ++i)
        if (!work(0)) return;
}

std::size_t Connection::send(const char* bytes, std::size_t count) {
    gensiods taken = 0;
    if (lost_ == 0) lost_ = gensio_write(stream_, &taken, bytes, count, nullptr);
    return lost_ == 0 ? taken : 0;
}

int Connection::on_event(gensio* stream, void* data, int event, int error, unsigned char* bytes,
                         gensiods* count, const char* const*) {
    auto& self = *static_cast<Connection*>(data);
    unsigned state = 0;
    if (event > SERGENSIO_EVENT_BASE && bytes) std::memcpy(&state, bytes, sizeof state);
    switch (event) {
    case GENSIO_EVENT_READ:
        if (error == 0) {
            self.received.append(reinterpret_cast<const char*>(bytes), *count);
        } else {
            if (self.lost_ == 0) self.lost_ = error;
            gensio_set_read_callback_enable(stream, false);
        }
        return 0;
    case GENSIO_EVENT_SER_LINESTATE:
        if (self.line_state) self.line_state(state);
        return 0;
    case GENSIO_EVENT_SER_FLOW_STATE:
        self.held_ = state != 0;
        return 0;
    default:
        return GE_NOTSUP;
    }
}

/// A close tells the server, and takes no time unless that does not read.
void Connection::end_stream() {
    if (!stream_) return;
    bool closed = false;
    const auto note = [](gensio*, void* data) { *static_cast<bool*>(data) = true; };
    const Deadline deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(kCloseMs);
    if (gensio_close(stream_, note, &closed) == 0)
        while (!closed && ms_until(deadline) > 0)
            work(ms_until(deadline));
    gensio_free(stream_);
    work_off(); // what the library has put off
    stream_ = nullptr;
    far_port_ = nullptr;
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

} // namespace pelvan
