#include "scan/scan_asking.h"

#include <algorithm>

namespace pelvan {

bool ScanAsking::has_asked(int address) const {
    return std::any_of(requests_.begin(), requests_.end(),
                       [address](const Request& request) { return request.address == address; });
}

std::vector<int> ScanAsking::asked_lately(double before_ms) const {
    std::vector<int> addresses;
    const double since_ms = requests_.empty() ? 0 : requests_.back().at_ms - before_ms;
    for (auto request = requests_.rbegin();
         request != requests_.rend() && request->at_ms >= since_ms; ++request)
        if (std::find(addresses.begin(), addresses.end(), request->address) == addresses.end())
            addresses.push_back(request->address);
    return addresses;
}

AnswerTime ScanAsking::answered(int address, double at_ms) {
    Request* first = nullptr;
    AnswerTime time;
    for (Request& request : requests_) {
        if (request.address != address || !request.open) continue;
        request.open = at_ms - request.at_ms <= kLatestAnswerMs;
        if (!request.open) continue;
        time.unsure = first != nullptr;
        if (first == nullptr) first = &request;
    }
    if (first == nullptr) return {};
    first->open = false;
    time.ms = std::max(at_ms - first->at_ms, 0.0);
    return time;
}

void ScanAsking::forget_requests(int address) {
    for (Request& request : requests_)
        if (request.address == address) request.open = false;
}

const ProbeAnswer* ScanAsking::contradicted(int address, const ProbeAnswer& answer) {
    const auto [said, is_first] = said_.try_emplace(address, answer);
    return !is_first && are_of_two(said->second, answer) ? &said->second : nullptr;
}

} // namespace pelvan
