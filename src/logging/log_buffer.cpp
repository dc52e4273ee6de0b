#include "logging/log_buffer.h"

#include <algorithm>

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace pelvan {

void LogBuffer::append(const std::string& line) {
    std::int16_t& count = state_.gLogBufferCount;
    if (count == -1) count = 0;
    state_.gLogBuffer[checked_index(count, kLogBufferSize)] = line;
    ++count;
}

bool LogBuffer::FlushLogBuffer() {
    try {
        append_lines(state_.gLogFileName, state_.gLogBuffer.data(),
                     static_cast<std::size_t>(waiting()), true);
        return true;
    } catch (const RunTimeError&) {
        dialogs_.message_box("The data could not be written to the specified file.", "WARNING",
                             MessageButtons::Ok, MessageIcon::Exclamation);
        return false;
    }
}

void LogBuffer::make_room(std::size_t lines) {
    const std::size_t held = static_cast<std::size_t>(waiting());
    const std::size_t most = kLogBufferSize - std::min(lines, kLogBufferSize);
    if (held <= most) return;
    const auto begin = state_.gLogBuffer.begin();
    std::move(begin + static_cast<std::ptrdiff_t>(held - most),
              begin + static_cast<std::ptrdiff_t>(held), begin);
    state_.gLogBufferCount = static_cast<std::int16_t>(most);
}

int LogBuffer::waiting() const {
    return state_.gLogBufferCount > 0 ? state_.gLogBufferCount : 0;
}

} // namespace pelvan
