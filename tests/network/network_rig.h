// A port object whose lines go over the network, by the real library.
#pragma once

#include <chrono>

#include "network/network_lines.h"
#include "platform/line_port.h"
#include "platform/tick.h"
#include "support/error_of.h"

namespace pelvan::testing {

struct NetworkRig {
    explicit NetworkRig(std::string device_text, NetworkPatience patience = {})
        : device(std::move(device_text)),
          lines(*tick, network_module_in(PELVAN_MODULES), patience) {}

    int open() {
        return error_of([this] { port.set_PortOpen(true); });
    }
    /// So many bytes, or what comes in two seconds.
    std::string read(std::size_t count) {
        std::string bytes;
        const double end = tick->precise_ms() + 2000;
        while (bytes.size() < count && tick->precise_ms() < end) {
            port.wait_for_input(50);
            if (port.InBufferCount() > 0) bytes += port.Input();
        }
        return bytes;
    }
    std::string exchange(const std::string& request, std::size_t count) {
        port.set_Output(request);
        return read(count);
    }

    std::unique_ptr<TickSource> tick = make_system_tick();
    std::string device;
    NetworkLines lines;
    LinePort port{[this](int) { return device; },
                  [this](const std::string& text, const LineSettings& settings) {
                      return lines.open(text, settings);
                  }};
};

} // namespace pelvan::testing
