// The program with windows: every form, on top of what both front ends share (core.h). A window
// system mirrors the forms; tests drive them with fakes.
#pragma once

#include "app/core.h"
#include "app/frame_form.h"
#include "badrequests/bad_requests_form.h"
#include "console/console_form.h"
#include "console/history_form.h"
#include "listen/listen_form.h"
#include "logging/logging_form.h"
#include "profile/window/profile_logic_form.h"
#include "scan/scan_form.h"
#include "settings/comms_settings_form.h"
#include "settings/serial_devices_form.h"
#include "transfer/download_parm_form.h"

namespace pelvan {

class Application : public Core, private SettingsHost, private ScanHost {
  public:
    /// `opener` opens the devices of this machine.
    Application(Services services, LineOpener opener);

    History history;
    frm_Pelvan5VB console;
    frm_Listen listen;
    frm_DownloadParm transfer;
    frm_DataLogging logging;
    frm_ProfileLogic profile_logic;
    frm_BusScan scan;
    frm_BadRequests bad_requests;
    frm_CommsSettings comms_settings;
    frm_SerialDevices serial_devices;
    MDIPelvan6 frame;

  private:
    [[nodiscard]] int selected_protocol() const override { return console.opt_Protocol.Value(); }
    void hold_windows(bool held) override;
    std::string use_settings(const ScanFind& find, std::int16_t port, int line_mode) override;
    void restore_windows();
    void hold_menus();
    void join_menus();
    void show_jumper_menu();
    Subscription logging_closed_;
    Subscription line_use_;
    Subscription jumper_moved_;
    Subscription hold_permitted_;
};

} // namespace pelvan
