#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <utility>
#include <variant>
#include <vector>

#include "simulator/line/plug.h"
#include "simulator/line/simulator_registry.h"
#include "simulator/line/tcp_server.h"
#include "simulator/line/wire.h"

namespace pelvan::simulator {
namespace {

constexpr double kMaxWaitMs = 100; // how late a stop is noticed at most
constexpr std::size_t kMaxClients = 16;

double now_ms() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

class Socket {
  public:
    explicit Socket(int number = -1) : number_(number) {}
    Socket(Socket&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Socket& operator=(Socket&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Socket() {
        if (number_ >= 0) ::close(number_);
    }
    [[nodiscard]] int get() const { return number_; }

  private:
    int number_;
};

using Peer = std::variant<Wire, Plug>;

struct Client {
    Socket socket;
    Peer peer;
};

/// Listens on the first address of that name; else why it does not, in `fault`.
Socket listen_on(const std::string& address, int port, std::string& fault) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_PASSIVE;
    addrinfo* list = nullptr;
    const std::string service = std::to_string(port);
    if (const int error = ::getaddrinfo(address.c_str(), service.c_str(), &wanted, &list)) {
        fault = ::gai_strerror(error);
        return Socket();
    }
    Socket listener(::socket(list->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int yes = 1; // a server that was stopped a moment ago is no hindrance
    ::setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const bool listens = ::bind(listener.get(), list->ai_addr, list->ai_addrlen) == 0 &&
                         ::listen(listener.get(), static_cast<int>(kMaxClients)) == 0;
    if (!listens) fault = std::strerror(errno);
    ::freeaddrinfo(list);
    return listens ? std::move(listener) : Socket();
}

/// "tcp://127.0.0.1:4001 ..., to this machine alone".
std::string where(int listener, const LineSettings& settings) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> port{};
    ::getsockname(listener, any, &size);
    ::getnameinfo(any, size, host.data(), host.size(), port.data(), port.size(),
                  NI_NUMERICHOST | NI_NUMERICSERV);
    const bool ipv6 = address.ss_family == AF_INET6;
    const std::string name = host.data();
    const bool alone = name.starts_with("127.") || name == "::1";
    return "tcp://" + (ipv6 ? "[" + name + "]" : name) + ":" + port.data() + " at the pace of " +
           std::to_string(settings.baud_rate) + " baud, to " +
           (alone ? "this machine alone" : "every machine that reaches this address");
}

class Server {
  public:
    Server(const TcpServerOptions& options, Socket listener)
        : device_(options.device), char_ms_(character_time_us(options.settings) / 1000),
          listener_(std::move(listener)) {
        if (!device_.loopback) station_ = make_station(device_);
    }

    void serve(const std::atomic<bool>& stop) {
        while (!stop) {
            wait();
            accept_client();
            std::erase_if(clients_, [](const auto& client) { return !carry(*client); });
        }
    }

  private:
    /// Until somebody sends something, or the next byte to somebody is due.
    void wait() {
        double wait_ms = kMaxWaitMs;
        std::vector<pollfd> watched{{listener_.get(), POLLIN, 0}};
        for (const auto& client : clients_) {
            watched.push_back({client->socket.get(), POLLIN, 0});
            const double next =
                std::visit([](const auto& peer) { return peer.next_ms(); }, client->peer);
            if (next >= 0) wait_ms = std::min(wait_ms, next - now_ms());
        }
        const auto nanoseconds = std::llround(std::max(wait_ms, 0.0) * 1e6);
        const timespec time{0, static_cast<long>(nanoseconds)};
        ::ppoll(watched.data(), watched.size(), &time, nullptr);
    }

    void accept_client() {
        Socket socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket.get() < 0 || clients_.size() >= kMaxClients) return;
        const int yes = 1;
        ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        ::setsockopt(socket.get(), SOL_SOCKET, SO_KEEPALIVE, &yes, sizeof yes);
        Peer peer = device_.loopback ? Peer(Plug(device_.jumper_in.value_or(true), char_ms_))
                                     : Peer(Wire(station_, char_ms_));
        clients_.push_back(std::make_unique<Client>(Client{std::move(socket), std::move(peer)}));
    }

    /// What has come to the device, and what is due from it; false when the client has gone.
    static bool carry(Client& client) {
        std::array<char, 4096> bytes{};
        const ssize_t count = ::recv(client.socket.get(), bytes.data(), bytes.size(), 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return false;
        const std::string_view sent(bytes.data(),
                                    static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        const std::string due = std::visit(
            [sent](auto& peer) {
                peer.host_writes(sent, now_ms());
                return peer.arrived(now_ms());
            },
            client.peer);
        // What a client does not read while its end is full is lost, as on a real line.
        if (!due.empty())
            static_cast<void>(::send(client.socket.get(), due.data(), due.size(), MSG_NOSIGNAL));
        return true;
    }

    SimulatedDevice device_;
    double char_ms_;
    Socket listener_;
    std::shared_ptr<Station> station_;
    std::vector<std::unique_ptr<Client>> clients_;
};

} // namespace

int serve_on_tcp(const TcpServerOptions& options, std::atomic<bool>& stop,
                 const std::function<void(const std::string&)>& report) {
    std::string fault;
    Socket listener = listen_on(options.address, options.port, fault);
    if (listener.get() < 0) {
        report("Cannot listen on " + options.address + ", port " + std::to_string(options.port) +
               ": " + fault);
        return 1;
    }
    const std::string place = where(listener.get(), options.settings);
    Server server(options, std::move(listener));
    report("Serving " + served_device_text(options.device) + " on " + place);
    server.serve(stop);
    return 0;
}

} // namespace pelvan::simulator
