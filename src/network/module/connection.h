// A connection of the library for streams: TCP, or RFC 2217 over telnet over TCP. The library calls
// back only from within the functions here, so everything runs in the caller's thread; it may be
// another one later, but never two at a time.
#pragma once

#include <gensio/gensio.h>
#include <gensio/sergensio.h>
#include <netinet/in.h>

#include <chrono>
#include <functional>
#include <string>

#include "network/module/telnet_commands.h"

namespace pelvan {

using Deadline = std::chrono::steady_clock::time_point;

class Connection {
  public:
    Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    /// Connects to an address, which may be a sockaddr_in too; 0 or an error of the library,
    /// GE_TIMEDOUT when the deadline has passed. With RFC 2217 it is open when the server has
    /// agreed to it, or refused; before that `connecting_ended` is called while the connection
    /// stands.
    [[nodiscard]] int open(const sockaddr_in6& address, bool rfc2217, Deadline deadline,
                           const std::function<void()>& connecting_ended);
    /// Whether the network connection stands, agreed on or not.
    [[nodiscard]] bool connected() const;

    /// Lets the library do what there is to do, waiting for that for `timeout_ms` at most; false
    /// when there was nothing.
    bool work(double timeout_ms);
    /// Takes what is there without waiting, in pieces and so many of them at most that a stream
    /// without end does not hold the caller.
    void work_off();
    /// Sends what the connection takes now; the number of bytes. None once it is lost.
    [[nodiscard]] std::size_t send(const char* bytes, std::size_t count);

    /// What has arrived; whoever uses it takes it out.
    std::string received;
    /// An error of the library once the connection is lost, else 0.
    [[nodiscard]] int lost() const { return lost_; }
    /// The server has asked to stop sending.
    [[nodiscard]] bool held() const { return held_; }
    /// The far port's functions; null without RFC 2217.
    [[nodiscard]] sergensio* far_port() const { return far_port_; }
    /// Readable when something has arrived; this object's own.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    /// Called with SERGENSIO_LINESTATE_... bits.
    std::function<void(unsigned)> line_state;

  private:
    static Connection& of(gensio_iod* socket);
    static int open_socket(gensio_os_funcs* system, const gensio_addr* address, int protocol,
                           gensio_iod** socket);
    static int read_socket(gensio_iod* socket, void* bytes, gensiods room, gensiods* count);
    static int send_socket(gensio_iod* socket, const gensio_sg* pieces, gensiods count,
                           gensiods* written, int flags);
    static int on_event(gensio* stream, void* self, int event, int error, unsigned char* bytes,
                        gensiods* count, const char* const* details);
    int read_commands(gensio_iod* socket, unsigned char* bytes, gensiods room, gensiods* count);
    void end_stream();

    gensio_os_funcs* system_ = nullptr;
    gensio_os_funcs original_{}; // the library's own functions
    gensio* stream_ = nullptr;
    sergensio* far_port_ = nullptr;
    int descriptor_ = -1;
    bool opened_ = false; // or has failed to
    int open_error_ = 0;
    int lost_ = 0;
    bool held_ = false;
    bool opening_rfc2217_ = false;
    TelnetCommands commands_;
};

} // namespace pelvan
