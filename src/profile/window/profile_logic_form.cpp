#include "profile/window/profile_logic_form.h"

#include <algorithm>

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kTitle[] = "Series 742 Profile Logic";

} // namespace

frm_ProfileLogic::frm_ProfileLogic(Services& services, Link& link, Modbus& modbus)
    : Form("frm_ProfileLogic", kTitle), line(services, link, modbus), services_(services),
      run(services, link, modbus, work_, line.cmbAddress),
      cmbModel("cmbProfileModel", {}, -1, false,
               "The model that the profiles are made for; reading a controller chooses its own."),
      link_(link), files_(services, work_), profiles_(work_), steps_(work_), findings_(work_),
      curve_(work_) {
    set_help_page("profile_logic");
    menus = menu.menus();
    wire_files();
    wire_editing();
    wire_controller();
    follow();
    permit();
}

void frm_ProfileLogic::wire_files() {
    menu.mnuNew.Click = [this] { mnuNew_Click(); };
    menu.mnuOpen.Click = [this] { mnuOpen_Click(); };
    FileDropped = [this](const std::string& path) { file_dropped(path); };
    menu.mnuSave.Click = [this] { mnuSave_Click(); };
    menu.mnuSaveAs.Click = [this] { mnuSaveAs_Click(); };
    menu.mnuPrint.Click = [this] { mnuPrint_Click(ProfilePrint::Print); };
    menu.mnuPreview.Click = [this] { mnuPrint_Click(ProfilePrint::Preview); };
    menu.mnuPdf.Click = [this] { mnuPrint_Click(ProfilePrint::Pdf); };
    menu.mnuClose.Click = [this] { Unload(); };
    menu.mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
    cmbModel.Click = [this] { cmbModel_Click(); };
    txt_Steepest.Change = [this] { txt_Steepest_Change(); };
}

void frm_ProfileLogic::wire_editing() {
    const auto on = [this](MenuEntry& entry, std::string (ProfileEditor::*action)()) {
        entry.Click = [this, action] {
            edit([action](ProfileEditor& editor) { return (editor.*action)(); });
        };
    };
    menu.mnuInsert.Click = [this] { mnuInsert_Click(); };
    on(menu.mnuDelete, &ProfileEditor::delete_step);
    on(menu.mnuCopy, &ProfileEditor::copy_step);
    on(menu.mnuPaste, &ProfileEditor::paste_step);
    menu.mnuUp.Click = [this] { edit([](ProfileEditor& editor) { return editor.move_step(-1); }); };
    menu.mnuDown.Click = [this] {
        edit([](ProfileEditor& editor) { return editor.move_step(1); });
    };
    menu.mnuRemove.Click = [this] {
        edit([](ProfileEditor& editor) { return editor.erase_profile(editor.place().profile); });
    };
    menu.mnuUndo.Click = [this] {
        edit([](ProfileEditor& editor) {
            editor.undo();
            return std::string();
        });
    };
    menu.mnuRedo.Click = [this] {
        edit([](ProfileEditor& editor) {
            editor.redo();
            return std::string();
        });
    };
}

void frm_ProfileLogic::wire_controller() {
    menu.mnuRead.Click = [this] { mnuRead_Click(); };
    menu.mnuWrite.Click = [this] { mnuWrite_Click(false); };
    menu.mnuWriteAll.Click = [this] { mnuWrite_Click(true); };
    menu.mnuCopyTo.Click = [this] { mnuCopyTo_Click(); };
    menu.mnuErase.Click = [this] { mnuErase_Click(); };
    menu.mnuStart.Click = [this] { run.start(); };
    // What was read some time ago may be edited at the controller since, or another's.
    run.start_objection = [this](int profile) {
        const auto held = work_.editor().in_controller();
        return held ? line.changed_since_read(profile, *held) : std::string();
    };
    menu.mnuHold.Click = [this] { hold(); };
    menu.mnuResume.Click = [this] { run.resume(); };
    menu.mnuNext.Click = [this] { run.next(); };
    menu.mnuEnd.Click = [this] { run.end(); };
    menu.mnuWatch.Click = [this] { run.set_watching(!run.watching()); };
    menu.mnuSaveCsv.Click = [this] { run.save_record(); };
    menu.mnuSavePng.Click = [this] { mnuSavePng_Click(); };
}

void frm_ProfileLogic::follow() {
    subscriptions_.push_back(work_.changed.subscribe([this] { permit(); }));
    subscriptions_.push_back(work_.chosen_moved.subscribe([this] { permit(); }));
    subscriptions_.push_back(line.busy_changed.subscribe([this] { permit(); }));
    subscriptions_.push_back(line.told.subscribe([this](const std::string& text) { say(text); }));
    subscriptions_.push_back(run.changed.subscribe([this] { permit(); }));
    subscriptions_.push_back(run.started.subscribe([this] { side_wanted.raise(true); }));
}

ProfileSituation frm_ProfileLogic::situation() const {
    const ProfileEditor& editor = work_.editor();
    ProfileSituation now;
    now.format = work_.has_model();
    now.runs = now.format && work_.format().runs();
    now.line_refusal = link_.refusal();
    now.working = line.busy();
    const Profile* profile = editor.profile();
    now.profile = profile != nullptr;
    now.number = editor.place().profile;
    now.step = editor.place().step;
    now.steps = profile == nullptr ? 0 : static_cast<int>(profile->steps.size());
    now.max_steps = work_.format().max_steps();
    now.copied = editor.copied_step().has_value();
    now.can_undo = editor.can_undo();
    now.can_redo = editor.can_redo();
    now.any_profiles = !editor.profiles().empty();
    now.not_known = run.not_known();
    now.state = run.state();
    now.running_profile = run.running_profile();
    now.record = run.has_record();
    return now;
}

void frm_ProfileLogic::permit() {
    can_ = profile_permissions(situation());
    menu.permit(can_);
    menu.mnuWatch.set_Checked(run.watching());
    cmbModel.hold(line.busy() ? "The window is at work with the controller." : "");
    const std::string lock = work_.editor().profile() == nullptr ? std::string() : can_.edit;
    steps_.lock(lock);
    profiles_.lock(lock);
    curve_.lock(lock);
    profiles_.mark_running(run.running_profile());
    show_title();
    permitted.raise();
}

void frm_ProfileLogic::show_title() {
    std::string title = kTitle;
    if (!files_.name().empty()) title += " - " + files_.name();
    if (work_.editor().dirty()) title += " *";
    set_Caption(title);
    const auto& models = cmbModel.items();
    const auto found = std::ranges::find(models, std::to_string(work_.model()));
    if (found != models.end()) cmbModel.set_ListIndex(static_cast<int>(found - models.begin()));
}

void frm_ProfileLogic::Form_Load() {
    const std::vector<int> models = profile_models(services_.application_directory);
    std::vector<std::string> texts;
    texts.reserve(models.size());
    for (const int model : models)
        texts.push_back(std::to_string(model));
    cmbModel.set_items(texts);
    if (models.empty())
        say("There is no .pds file in the folder \"Download Sequences\": no model's profiles can "
            "be "
            "edited.");
    else if (!work_.has_model())
        files_.use_model(models.front());
    permit();
}

bool frm_ProfileLogic::Form_Unload() {
    if (line.busy()) {
        line.ask_to_cancel();
        close_when_done_ = line.canceled();
        return false;
    }
    if (!files_.may_lose("Close all the same?")) return false;
    run.stop();
    // What is shown at the next opening begins anew.
    files_.forget();
    work_.edit([](ProfileEditor& editor) {
        editor = ProfileEditor(editor.format());
        return std::string();
    });
    return true;
}

void frm_ProfileLogic::edit(const std::function<std::string(ProfileEditor&)>& action) {
    say(work_.edit(action));
    permit(); // a copied step changes nothing else
}

void frm_ProfileLogic::cmbModel_Click() {
    const auto model = whole_number(cmbModel.Text(), 1, 65535);
    if (model) files_.use_model(static_cast<int>(*model));
    show_title(); // it may have stayed
}

void frm_ProfileLogic::txt_Steepest_Change() {
    const std::string& text = txt_Steepest.Text();
    const double rate = leading_number(text);
    if (is_numeric(text) && rate > 0)
        work_.set_steepest(rate);
    else
        work_.set_steepest(std::nullopt);
}

} // namespace pelvan
