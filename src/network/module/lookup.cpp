#include "network/module/lookup.h"

#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/run_time_error.h"

namespace pelvan {

Lookup look_up(const std::string& host, int port) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int error = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &list);
    if (error == EAI_NONAME || error == EAI_NODATA)
        return {{}, error_number::kInvalidPortNumber, "no host is called " + host};
    if (error != 0)
        return {{},
                error_number::kHardwareNotAvailable,
                "the name " + host + " cannot be looked up: " + ::gai_strerror(error)};
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(list, ::freeaddrinfo);
    Lookup found;
    for (const addrinfo* each = list; each; each = each->ai_next) {
        if (each->ai_family != AF_INET && each->ai_family != AF_INET6) continue;
        std::memcpy(&found.addresses.emplace_back(), each->ai_addr,
                    std::min<std::size_t>(each->ai_addrlen, sizeof(sockaddr_in6)));
    }
    return found;
}

} // namespace pelvan
