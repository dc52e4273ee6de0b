// "Series 742 Profile Logic": ramp profiles are read, edited, checked, written, started, held and
// watched. The window joins its parts, each of which has a class of its own: the profiles that are
// edited (ProfileWork) with their tables and curve, their files, reading and writing, and running.
#pragma once

#include <string>

#include "forms/form.h"
#include "forms/lists.h"
#include "profile/window/curve_editing.h"
#include "profile/window/finding_sheet.h"
#include "profile/window/profile_document.h"
#include "profile/window/profile_files.h"
#include "profile/window/profile_line_panel.h"
#include "profile/window/profile_list_sheet.h"
#include "profile/window/profile_logic_form_menus.h"
#include "profile/window/profile_run_panel.h"
#include "profile/window/step_sheet.h"

namespace pelvan {

enum class ProfilePrint { Print, Preview, Pdf };

class frm_ProfileLogic : public Form {
  public:
    /// All must outlive this.
    frm_ProfileLogic(Services& services, Link& link, Modbus& modbus);

    ProfileMenus menu;
    ProfileLinePanel line;

  private:
    void show_opened(const std::optional<std::string>& told);
    // Before the panel that follows it.
    Services& services_;
    ProfileWork work_;

  public:
    ProfileRunPanel run;
    Label lbl_Model{"lbl_ProfileModel", "&Model"};
    ComboBox cmbModel;
    Label lbl_Steepest{"lbl_ProfileSteepest", "Ma&x. ramp a minute"};
    TextBox txt_Steepest{"txt_ProfileSteepest", "",
                         "What the oven stands: steeper ramps become findings. Empty: any."};
    Label lbl_Message{"lbl_ProfileMessage"};

    void Form_Load() override;
    /// Asks whether to stop what is under way with the controller, and about what is not saved.
    bool Form_Unload() override;

    void mnuNew_Click();
    void mnuOpen_Click();
    /// As opened; nothing while profiles cannot be opened.
    void file_dropped(const std::string& path);
    void mnuSave_Click();
    void mnuSaveAs_Click();
    void mnuPrint_Click(ProfilePrint how);
    void mnuInsert_Click();
    void mnuRead_Click();
    void mnuWrite_Click(bool all);
    void mnuCopyTo_Click();
    void mnuErase_Click();
    void mnuSavePng_Click();
    void cmbModel_Click();
    void txt_Steepest_Change();

    /// Sends the hold command at once, whatever else the window is doing.
    void hold() { run.hold(); }
    /// Why it cannot be sent; empty when it can.
    [[nodiscard]] std::string hold_refusal() const { return can_.hold; }
    /// Finds out anew what can be done. For whoever knows that the line's use has changed.
    void permit();
    /// The message line.
    void say(const std::string& text) { lbl_Message.set_Caption(text); }

    [[nodiscard]] Sheet& profile_sheet() { return profiles_; }
    [[nodiscard]] Sheet& step_sheet() { return steps_; }
    [[nodiscard]] Sheet& finding_sheet() { return findings_; }
    [[nodiscard]] CurveDesk& curve_desk() { return curve_; }
    [[nodiscard]] RunDesk& run_desk() { return run.desk(); }
    [[nodiscard]] const ProfileWork& work() const { return work_; }

    /// What can be done has been found out.
    Event<> permitted;
    /// The window is asked for what only it has: the picture of the run into a file, one of the two
    /// pictures in front, a printed profile.
    Event<const std::string&> picture_wanted;
    Event<bool> side_wanted;
    Event<const ProfileDocument&, ProfilePrint, const std::string&> print_wanted;

  private:
    void wire_files();
    void wire_editing();
    void wire_controller();
    void follow();
    /// Runs an edit; what it refuses stands in the message line.
    void edit(const std::function<std::string(ProfileEditor&)>& action);
    /// Runs work with the controller; an error of a file or the port ends it with its message.
    void with_controller(const std::function<void()>& action);
    void show_report(const LineReport& report);
    void take_read(ProfileReadResult result);
    void take_written(const ProfileSet& written, const std::vector<int>& erased);
    void show_title();
    [[nodiscard]] ProfileSituation situation() const;
    [[nodiscard]] ProfileDocument document() const;

    Link& link_;
    ProfileFiles files_;
    ProfileListSheet profiles_;
    StepSheet steps_;
    FindingSheet findings_;
    CurveEditing curve_;
    ProfilePermissions can_;
    std::vector<Subscription> subscriptions_;
    bool close_when_done_ = false;
};

} // namespace pelvan
