// The whole program without a screen, under any actions of a person on lines that do anything:
// what can be seen and is enabled is pressed, typed into and chosen, also while work lets events
// run; timers tick and ports are looked at in the middle of message boxes, as in a window system.
#include <map>

#include "any_answers.h"
#include "app/application.h"
#include "harness.h"
#include "hostile_line.h"
#include "support/fake_time.h"
#include "working_directory.h"

namespace pelvan::fuzz {
namespace {

constexpr int kMaxDepth = 3;

class Person {
  public:
    explicit Person(Input& input)
        : input_(input), answers_(input),
          app_(Services{tick_, clock_, answers_, answers_, working_directory()},
               HostileLine::opener(input_, tick_, controllers_)) {
        tick_.step_ms = 2;
        answers_.directory = working_directory();
        answers_.in_box = [this] { meanwhile(false); };
        answers_.in_turn = [this] { meanwhile(true); };
        fill_working_directory(input);
        app_.frame.Load();
        for (Form* form :
             std::vector<Form*>{&app_.console, &app_.history.frmCommand, &app_.history.frmResponse,
                                &app_.listen, &app_.transfer, &app_.logging, &app_.profile_logic,
                                &app_.comms_settings, &app_.serial_devices})
            forms_.push_back(form);
        gather();
    }

    void act_until_the_end() {
        while (!input_.empty() && !ended_) {
            act();
            require(app_.channels.line_use().holder().empty(), "nobody keeps the line");
            const History& history = app_.history;
            require(history.frmCommand.list.ListCount() == history.frmResponse.list.ListCount(),
                    "every command has its reply");
        }
    }

  private:
    /// Of one group of controls: its window, and something to do with it.
    struct Action {
        Form* form;
        std::function<bool()> possible;
        std::function<void()> act;
    };

    void add(Form& form, Button& button) {
        add(form, button, [&button] { button.press(); });
    }
    template <class Act> void add(Form& form, const Control& control, Act act) {
        actions_.push_back(
            {&form, [&control] { return control.Enabled() && control.Visible(); }, act});
    }
    void add(Form& form, TextBox& box) {
        add(form, box, [this, &box] {
            if (!box.Locked()) box.set_Text(answers_.text());
            if (box.GotFocus) box.GotFocus();
        });
    }
    void add(Form& form, CheckBox& box) {
        add(form, box, [&box] { box.set_Value(1 - box.Value()); });
    }
    void add(Form& form, OptionGroup& group) {
        add(form, group, [this, &group] {
            const int index = static_cast<int>(input_.below(static_cast<unsigned>(group.count())));
            if (group.option(index).enabled) group.set_Value(index);
        });
    }
    void add(Form& form, ComboBox& box) {
        add(form, box, [this, &box] {
            if (box.editable() && input_.flag()) return box.set_Text(answers_.text());
            const auto count = static_cast<unsigned>(box.items().size());
            if (count > 0) box.set_ListIndex(static_cast<int>(input_.below(count)));
        });
    }
    void add(Form& form, ListBox& list) {
        add(form, list, [this, &list] {
            if (list.ListCount() == 0) return;
            const auto lines = static_cast<unsigned>(std::min(list.ListCount(), 256));
            list.set_ListIndex(static_cast<int>(input_.below(lines)));
            if (list.DblClick && input_.flag()) list.DblClick();
        });
    }
    void add(Form& form, MenuEntry& entry) {
        if (entry.Click)
            add(form, entry, [&entry] {
                if (entry.Opening) entry.Opening();
                entry.choose();
            });
        for (MenuEntry* child : entry.children)
            if (child) add(form, *child);
    }
    void add(Timer& timer) { timers_[&timer] = false; }
    void add(Form& form, Sheet& sheet) {
        actions_.push_back({&form, [] { return true; },
                            [this, &sheet] {
                                if (sheet.rows() == 0 || sheet.columns() == 0) return;
                                const auto below = [this](int limit) {
                                    return input_.byte() % std::min(limit, 256);
                                };
                                const int row = below(sheet.rows());
                                const int column = below(sheet.columns());
                                if (input_.flag()) return sheet.choose(row);
                                const SheetCell cell = sheet.cell(row, column);
                                if (!cell.editable) return;
                                const std::string text = answers_.text();
                                if (sheet.problem(row, column, text).empty())
                                    sheet.enter(row, column, text);
                            }});
    }

    template <class... Controls> void add_all(Form& form, Controls&... controls) {
        (add(form, controls), ...);
    }

    void gather();
    void gather_settings();
    void gather_forms();
    void act();
    void meanwhile(bool all);
    void run_timers(double ms);
    void look_at_ports();

    Input& input_;
    testing::FakeTick tick_;
    testing::FakeClock clock_;
    simulator::SimulatorRegistry controllers_{tick_};
    AnyAnswers answers_;
    Application app_;
    std::vector<Form*> forms_;
    std::vector<Action> actions_;
    std::map<Timer*, bool> timers_; // whether it is ticking
    bool looking_ = false;
    bool ended_ = false;
    int depth_ = 0;
    Subscription closed_ = app_.console.closed.subscribe([this] { ended_ = true; });
};

void Person::gather_settings() {
    auto& form = app_.comms_settings;
    for (std::size_t i = 0; i < form.txt_Port.size(); ++i)
        add_all(form, form.txt_Port[i], form.txt_Baud[i], form.txt_Parity[i], form.txt_DataBits[i],
                form.txt_StopBits[i], form.ComboRTSMode[i], form.cmd_SaveChanges[i],
                form.cmd_OK[i]);
    add_all(form, form.picker.cmb_Device, form.picker.cmd_AssignDevice,
            form.picker.cmd_RefreshDevices, form.exchange.chk_Complete, form.chk_GivePorts,
            form.Hiddenmenu);
    auto& devices = app_.serial_devices;
    add_all(devices, devices.lst_Ports, devices.cmd_Close);
}

void Person::gather() {
    auto& console = app_.console;
    add_all(console, console.opt_Protocol, console.cmd_SendCommand, console.script.cmd_CancelSetup,
            console.repeat.cmd_Repeat, console.repeat.txt_RepeatInterval);
    auto& modbus = console.modbus;
    add_all(console, modbus.cmb_CommandType, modbus.txt_Address, modbus.txt_Register,
            modbus.txt_Values, modbus.opt_NumberBase, modbus.opt_DataFormat);
    add_all(console, console.text.txt_DeviceAddress, console.text.txt_CommsCommand);
    auto& tellura = console.tellura;
    add_all(console, tellura.TxtTelluraAddress, tellura.TxtParameterAddress, tellura.TxtNoBytes,
            tellura.TxtData, tellura.OptReadWrite, tellura.OptErrorChecking);
    for (HistoryForm* history : {&app_.history.frmCommand, &app_.history.frmResponse})
        add_all(*history, history->list, history->mnuPopUp);
    auto& listen = app_.listen;
    add_all(listen, listen.opt_DataDirection, listen.opt_DataFormat, listen.opt_CharacterDelay,
            listen.cmd_Start, listen.cmd_Stop, listen.chk_Pause, listen.chk_LogToFile,
            listen.frames.txt_FrameAddress, listen.frames.txt_FrameFunction,
            listen.frames.cmd_AllFrames);
    auto& transfer = app_.transfer;
    add_all(transfer, transfer.cmbAddress, transfer.cmdDownload, transfer.cmdUpload,
            transfer.cmdCompare, transfer.chkCompare, transfer.cmdCancel, transfer.cmdClearListBox,
            transfer.cmdClearList2, transfer.cmdOpenFolder, transfer.cmdExit);
    auto& logging = app_.logging;
    add_all(logging, logging.txt_LogFilename, logging.cmd_Browse, logging.chk_LogToFile,
            logging.chk_SingleLine, logging.cmd_LoadAgain);
    for (std::size_t i = 0; i < logging.txt_LoggingInterval.size(); ++i)
        add(logging, logging.txt_LoggingInterval[i]);
    add(logging, logging.MSFlexGrid1, [this, &logging] {
        logging.MSFlexGrid1.set_cell(1 + static_cast<int>(input_.below(5)),
                                     static_cast<int>(input_.below(8)));
        if (logging.MSFlexGrid1.MouseUp) logging.MSFlexGrid1.MouseUp(input_.flag());
    });
    auto& profiles = app_.profile_logic;
    add_all(profiles, profiles.cmbModel, profiles.txt_Steepest, profiles.line.cmbAddress,
            profiles.line.cmdCancel, profiles.run.cmbInterval, profiles.profile_sheet(),
            profiles.step_sheet(), profiles.finding_sheet());
    gather_settings();
    gather_forms();
    for (Timer* timer : {&app_.frame.line.tmr_Line, &console.repeat.tmr_Repeat, &listen.tmr_Settle,
                         &logging.tmr_LoggingInterval, &profiles.run.tmr_Poll})
        add(*timer);
}

/// Menus, keys, closing and dropped files.
void Person::gather_forms() {
    for (Form* form : forms_) {
        for (MenuEntry* menu : form->menus)
            if (menu) add(*form, *menu);
        for (MenuEntry* menu : app_.frame.menus)
            add(*form, *menu);
        actions_.push_back({form, [] { return true; }, [form] { form->Unload(); }});
        actions_.push_back({form, [form] { return form->FileDropped != nullptr; },
                            [this, form] { form->FileDropped(answers_.file()); }});
        actions_.push_back({form, [form] { return form->KeyDown != nullptr; },
                            [this, form] { form->KeyDown(static_cast<Key>(input_.below(4))); }});
    }
}

void Person::run_timers(double ms) {
    tick_.advance(ms);
    for (auto& [timer, ticking] : timers_) {
        if (ticking || !timer->running() || timer->Interval() <= 0 || !timer->Tick) continue;
        ticking = true;
        app_.events.run(timer->Tick);
        ticking = false;
    }
}

void Person::look_at_ports() {
    if (looking_) return;
    looking_ = true;
    // A handler may end the ports.
    const std::vector<SerialPort*> ports = app_.session.serial.gCommDevice;
    for (SerialPort* port : ports) {
        const auto& present = app_.session.serial.gCommDevice;
        if (std::find(present.begin(), present.end(), port) == present.end()) continue;
        if (port->PortOpen() && port->RThreshold() > 0)
            app_.events.run([port] { port->check_receive(); });
    }
    looking_ = false;
}

/// While something else is under way: timers and ports, and people where nothing is modal.
void Person::meanwhile(bool all) {
    if (depth_ >= kMaxDepth || input_.empty() || ended_) return;
    ++depth_;
    const unsigned what = input_.below(8);
    if (what == 0) run_timers(input_.byte() * 10);
    if (what == 1) look_at_ports();
    if (what == 2 && all) act();
    --depth_;
}

void Person::act() {
    const unsigned choice = input_.word();
    if (choice % 8 == 0) return run_timers(static_cast<double>(choice / 8 % 256) * 20);
    if (choice % 8 == 1) return look_at_ports();
    // Port settings are modal.
    Action& action = actions_[choice / 8 % actions_.size()];
    Form* const modal = app_.comms_settings.Visible()   ? static_cast<Form*>(&app_.comms_settings)
                        : app_.serial_devices.Visible() ? &app_.serial_devices
                                                        : nullptr;
    if (!action.form->Visible() || (modal && action.form != modal) || !action.possible()) return;
    app_.events.run(action.act);
}

void run(Input& input) {
    Person person(input);
    person.act_until_the_end();
}

const Target target("program", run);

} // namespace
} // namespace pelvan::fuzz
