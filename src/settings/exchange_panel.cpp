#include "settings/exchange_panel.h"

#include "config/device_map.h"
#include "network/network_address.h"
#include "platform/serial_devices.h"
#include "settings/channel_choices.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kXonChannel = 2;

} // namespace

std::string exchange_advice(double baud_rate, bool complete, bool networked, const Lumps& lumps,
                            std::optional<int> latency_timer_ms) {
    std::string text;
    const auto add = [&](const std::string& sentence) {
        text += (text.empty() ? "" : " ") + sentence;
    };
    if (!complete && baud_rate >= kNoPauseBaud)
        add("Recommended: at this baud rate the pause is 0 ms, and replies come cut.");
    else if (!complete && networked)
        add("Recommended: over a network replies come in pieces, and pauses cut them.");
    else if (!complete && lumps.seen())
        add("Recommended: the adapter delivers in lumps.");
    if (lumps.seen()) {
        std::string sentence = "Up to " + std::to_string(lumps.bytes) + " bytes came at once";
        if (lumps.gap_ms >= 1)
            sentence += ", with up to " + plain_number(round_half_even(lumps.gap_ms)) +
                        " ms between two lumps of a reply";
        add(sentence + ".");
    }
    if (latency_timer_ms)
        add("The adapter's latency timer is " + std::to_string(*latency_timer_ms) + " ms.");
    return text;
}

ExchangePanel::ExchangePanel(const ConfigState& config, ChannelTable& channels)
    : config_(config), channels_(channels) {
    chk_Complete.Click = [this] {
        show_advice();
        if (changed) changed();
    };
    for (CheckBox* each : {&chk_Echo, &chk_OwnHandshake})
        each->Click = [this] {
            if (changed) changed();
        };
}

void ExchangePanel::fill(int channel) {
    const ChannelChoices choices = read_choices(config_, channel);
    chk_Complete.set_Value(choices.complete ? 1 : 0);
    chk_Echo.set_Value(choices.echo ? 1 : 0);
    chk_OwnHandshake.set_Value(choices.own_handshake ? 1 : 0);
    chk_OwnHandshake.set_Visible(channel == kXonChannel);
}

void ExchangePanel::advise(const std::string& port, const std::string& baud_rate) {
    port_ = port;
    baud_rate_ = baud_rate;
    show_advice();
}

void ExchangePanel::show_advice() {
    Lumps lumps;
    bool networked = false;
    std::optional<int> latency;
    if (const double number = leading_number(port_); is_port_number(number)) {
        const auto port = static_cast<std::int16_t>(number);
        lumps = channels_.lumps(port);
        const auto device = device_for_port(port, config_.gIniFile);
        networked = device && is_network(*device);
        if (device && !networked) latency = latency_timer_ms(*device);
    }
    lbl_Advice.set_Caption(exchange_advice(leading_number(baud_rate_), chk_Complete.checked(),
                                           networked, lumps, latency));
}

bool ExchangePanel::store(int channel) const {
    return store_choices(config_, channel,
                         {chk_Complete.checked(), chk_Echo.checked(), chk_OwnHandshake.checked()});
}

} // namespace pelvan
