#include "simulator/line/simulator_registry.h"

#include "platform/run_time_error.h"

namespace pelvan::simulator {

std::shared_ptr<Station> make_station(const SimulatedDevice& device) {
    return std::make_shared<Station>(Station{Controller(device.model, device.speed, device.refused),
                                             device.address, device.delay_ms, device.queues,
                                             FaultSource(device.faults), 0, device.echoes,
                                             device.xoff_after, device.faults.xoff_ms});
}

SimulatorRegistry::SimulatorRegistry(TickSource& tick)
    : clock_(std::make_shared<LineClock>(tick)), jumper_in_(std::make_shared<bool>(true)) {}

std::unique_ptr<SerialLine> SimulatorRegistry::open(const std::string& device,
                                                    const LineSettings& settings) {
    const std::optional<SimulatedDevice> meant = parse_simulated_device(device);
    if (!meant) throw RunTimeError(error_number::kInvalidPortNumber, device);
    if (meant->loopback) {
        const std::shared_ptr<const bool> jumper =
            meant->jumper_in ? std::make_shared<const bool>(*meant->jumper_in) : jumper_in_;
        return std::make_unique<LoopbackLine>(clock_, jumper, settings);
    }
    // A plug without its jumper: nothing comes back.
    if (!hears(*meant, settings))
        return std::make_unique<LoopbackLine>(clock_, std::make_shared<const bool>(false),
                                              settings);
    std::shared_ptr<Station>& station = stations_[device];
    if (!station) station = make_station(*meant);
    return std::make_unique<SimulatedLine>(clock_, station, settings);
}

} // namespace pelvan::simulator
