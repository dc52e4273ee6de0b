// The guided loop-back test of a serial port and its wiring, "Verify Communications Port": with the
// transmit and receive pins joined a text must come back, without the jumper it must not.
#pragma once

#include "console/history_document.h"
#include "platform/tick.h"
#include "serial/link.h"

namespace pelvan {

/// Whoever runs the test: shows its messages, has the jumper moved, lists what was exchanged.
class LoopbackListener {
  public:
    virtual ~LoopbackListener() = default;
    /// Returns when the message was read and, where it asks for something, that was done.
    virtual void message(const char* text, const char* title) = 0;
    /// The jumper should be in (or out) now, as the message before has asked.
    virtual void jumper_expected(bool in) = 0;
    /// The line is busy from here to `exchanged`.
    virtual void sending() {}
    virtual void exchanged(const HistoryRow& row) = 0;
};

enum class LoopbackResult { Passed, Failed, EchoesWithoutJumper };

/// Runs the test on a channel.
///
/// Blocks up to two seconds for each half, beside the messages; every outcome is one of these.
LoopbackResult verify_port(Link& link, Clock& clock, std::int16_t channel,
                           LoopbackListener& listener);

/// After a test that found bytes coming back without the jumper: asks whether the channel is to
/// take them for the echo of a two-wire converter, and sets and rebuilds it so. Asks nothing where
/// it does so already. A file that cannot be written is told.
void offer_echo(const ConfigState& config, ChannelTable& channels, std::int16_t channel,
                Dialogs& dialogs);

} // namespace pelvan
