// The window "Listening Mode": captures what arrives on one serial channel without sending
// anything. Every burst is a hit, counted in six boxes, and on the Modbus channel a line in the
// list and, if wanted, in a text file. Collecting a burst is the link's business, rendering it the
// Modbus decoders', telling requests from replies `Traffic`'s.
//
// The handlers of the window are in listen_form.cpp, the listening itself in listen_process.cpp.
#pragma once

#include <functional>
#include <optional>

#include "forms/form.h"
#include "forms/lists.h"
#include "listen/listen_state.h"
#include "listen/traffic.h"
#include "platform/run_time_error.h"
#include "platform/services.h"
#include "protocols/modbus/modbus.h"
#include "serial/link.h"

namespace pelvan {

class frm_Listen : public Form {
  public:
    /// `selected_channel` answers the channel that is selected on the console.
    frm_Listen(Services& services, Link& link, Modbus& modbus, ListenState& state,
               std::function<std::int16_t()> selected_channel);

    Frame fram_DataDirection;
    OptionGroup opt_DataDirection;
    Frame fram_DataFormat;
    OptionGroup opt_DataFormat;
    Frame fram_CharacterDelay;
    OptionGroup opt_CharacterDelay;
    ListBox lst_CommsCommand;
    /// Time, gap and kind of the line of the same number; hidden at first.
    ListBox lst_Times;
    Label lbl_HitCount{"lbl_HitCount", "Hits"};
    TextBox txt_HitCount;
    Label lbl_LastHitTime{"lbl_LastHitTime", "Hit Time (mS)"};
    TextBox txt_LastHitTime;
    Label lbl_TotalHitTime{"lbl_TotalHitTime", "Time (sec)"};
    TextBox txt_TotalHitTime;
    Label lbl_HitsPerMinute{"lbl_HitsPerMinute", "Avg Hits/Min"};
    TextBox txt_HitsPerMinute;
    Label lbl_MaxHits{"lbl_MaxHits", "Max Hits/Min"};
    TextBox txt_MaxHits;
    Label lbl_BurstHitRate{"lbl_BurstHitRate", "Burst Hit Rate"};
    TextBox txt_BurstHitRate;
    /// Whether the window listens, to what, and why it stopped.
    Label lbl_Status{"lbl_Status"};

    MenuEntry mnuFile{"mnuFile", "&File"};
    MenuEntry mnuClearScreen;
    MenuEntry mnuStartListen;
    MenuEntry mnuStopListen;
    MenuEntry mnuExitListen;
    MenuEntry mnuCapture{"mnuCapture", "&Capture"};
    MenuEntry mnuShowTimes;
    MenuEntry mnuSaveCapture;
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnucontents{"mnucontents", "Contents"};
    MenuEntry mnuIndexHelp{"mnuIndexHelp", "Search For Help On..."};
    /// Belongs to no menu bar: it pops up under the right mouse button.
    MenuEntry HiddenMenu{"HiddenMenu"};
    MenuEntry Loglistenlist;

    void Form_Load() override;
    bool Form_Unload() override;
    /// `button` 2 is the right one.
    void Form_MouseUp(int button);
    void mnuStartListen_Click();
    void mnuStopListen_Click();
    void mnuClearScreen_Click();
    void mnuExitListen_Click();
    void mnuSaveCapture_Click();
    void mnucontents_Click();
    void mnuIndexHelp_Click();
    void opt_CharacterDelay_Click(int index);
    void opt_DataFormat_Click(int index);
    void Loglistenlist_Click();
    /// True when the key was Ctrl+C and all lines are on the clipboard.
    bool lst_CommsCommand_KeyDown(bool control, char key);

    /// Opens the channel's port and lets its receive event come here. Not listening afterwards when
    /// the port did not open; its message was shown then.
    void ListenStart(std::int16_t channel);
    void ListenStop();
    /// Takes in one burst. Blocks as `Link::receive_reply` does, up to the chosen time-out. An
    /// error of the port ends the listening and is raised.
    void ListenProcessEvent();
    /// Appends one line to "listenlog.txt"; opens and closes the file for it. Raises file errors.
    void ListenLogLine(const std::string& line);

    /// The ports are about to be destroyed: ends the listening and says so.
    void ports_rebuilt();
    /// The port is about to be closed for another channel: ends the listening on it and says so.
    void port_closing(const SerialPort& port);

    [[nodiscard]] const Traffic& traffic() const { return traffic_; }
    /// Called when `traffic()` has changed; the burst, or null when everything was cleared. What it
    /// raises is passed on and disturbs nothing.
    std::function<void(const Burst*)> traffic_changed;
    /// The front end's way to pop up a menu.
    std::function<void(MenuEntry&)> pop_up;

    static constexpr char kLogFileName[] = "listenlog.txt";

  private:
    void join_menus();
    void close_lost(std::int16_t channel);
    void begin_session();
    std::string collect(SerialPort& port);
    const Burst& record(double start_tick, double spent_ms, const std::string& text);
    [[nodiscard]] double wire_time(std::size_t bytes) const;
    [[nodiscard]] std::optional<RunTimeError> show_burst(const std::string& text);
    [[nodiscard]] std::string render(const std::string& text);
    void count_hit(double start_tick);
    void clear_list();

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    ListenState& state_;
    std::function<std::int16_t()> selected_channel_;
    Traffic traffic_;
};

} // namespace pelvan
