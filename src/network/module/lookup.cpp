#include "network/module/lookup.h"

#include <netdb.h>
#include <sys/socket.h>

#include <array>
#include <memory>

#include "platform/run_time_error.h"

namespace pelvan {

Lookup look_up(const std::string& host) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int error = ::getaddrinfo(host.c_str(), nullptr, &wanted, &list);
    if (error == EAI_NONAME || error == EAI_NODATA)
        return {{}, error_number::kInvalidPortNumber, "no host is called " + host};
    if (error != 0)
        return {{},
                error_number::kHardwareNotAvailable,
                "the name " + host + " cannot be looked up: " + ::gai_strerror(error)};
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(list, ::freeaddrinfo);
    Lookup found;
    for (const addrinfo* each = list; each; each = each->ai_next) {
        std::array<char, NI_MAXHOST> text{};
        if (::getnameinfo(each->ai_addr, each->ai_addrlen, text.data(), text.size(), nullptr, 0,
                          NI_NUMERICHOST) == 0)
            found.addresses.emplace_back(text.data());
    }
    return found;
}

} // namespace pelvan
