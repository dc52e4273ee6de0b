// A server on the loopback that does with its client what a test says, in a thread of its own.
#pragma once

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace pelvan::testing {

/// A socket that listens on 127.0.0.1, or on ::1, at a port of the system's choice.
class Listener {
  public:
    explicit Listener(int backlog = 4, bool ipv6 = false)
        : socket_(::socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in6 address{};
        auto& four = reinterpret_cast<sockaddr_in&>(address);
        address.sin6_family = ipv6 ? AF_INET6 : AF_INET;
        if (ipv6)
            address.sin6_addr = in6addr_loopback;
        else
            four.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = ipv6 ? sizeof address : sizeof four;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        good_ = ::bind(socket_, any, size) == 0 && ::listen(socket_, backlog) == 0 &&
                ::getsockname(socket_, any, &size) == 0;
        port_ = ntohs(four.sin_port); // at the same place in both
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { ::close(socket_); }

    [[nodiscard]] bool good() const { return good_; }
    [[nodiscard]] int socket() const { return socket_; }
    [[nodiscard]] int port() const { return port_; }
    [[nodiscard]] std::string device(const std::string& scheme) const {
        return scheme + "://127.0.0.1:" + std::to_string(port_);
    }

  private:
    int socket_;
    int port_ = 0;
    bool good_ = false;
};

/// One client after another. `serve` gets the connection, which is closed behind it.
class TcpServer : public Listener {
  public:
    explicit TcpServer(std::function<void(int client)> serve, bool ipv6 = false)
        : Listener(4, ipv6), thread_([this, serve = std::move(serve)] {
              for (;;) {
                  const int client = ::accept(socket(), nullptr, nullptr);
                  if (client < 0) return;
                  serve(client);
                  ::close(client);
              }
          }) {}
    ~TcpServer() {
        ::shutdown(socket(), SHUT_RDWR);
        thread_.join();
    }

  private:
    std::thread thread_;
};

inline void send_all(int client, const std::string& bytes) {
    static_cast<void>(::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

/// What the client sends until that ends with a text, or until it goes or says nothing for long.
inline std::string receive_until(int client, const std::string& end) {
    std::string bytes;
    pollfd watched{client, POLLIN, 0};
    char byte = 0;
    while (!bytes.ends_with(end) && ::poll(&watched, 1, 3000) > 0 &&
           ::recv(client, &byte, 1, 0) == 1)
        bytes += byte;
    return bytes;
}

/// Waits until the client goes.
inline void wait_for_end(int client) {
    receive_until(client, "no client sends this");
}

} // namespace pelvan::testing
