// The document that is edited: a set of profiles with a chosen profile and step, every change of
// which can be undone, and what the file and the controller hold of it. No control, no line.
//
// Edits give what is wrong as a sentence, and nothing is changed then; an empty text is success.
// The end stays the last step. Jumps go on leading to the same step when steps get other numbers.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "profile/edit_history.h"
#include "profile/step_editing.h"

namespace pelvan {

class ProfileEditor {
  public:
    explicit ProfileEditor(ProfileFormat format) : format_(std::move(format)) {}

    [[nodiscard]] const ProfileFormat& format() const { return format_; }
    [[nodiscard]] const ProfileSet& profiles() const { return profiles_; }
    /// Changes with every change of the profiles or of the choice.
    [[nodiscard]] int revision() const { return revision_; }

    [[nodiscard]] ProfilePlace place() const { return place_; }
    /// Nothing when none is chosen.
    [[nodiscard]] const Profile* profile() const;
    [[nodiscard]] const ProfileStep* step() const;
    /// Chooses the profile, or none when it is not there, and of its steps the nearest to `step`.
    void choose(int profile, int step = 1);

    /// Takes the profiles of a file; they are what is saved then. Can be undone.
    void open(ProfileSet profiles);
    /// Takes the profiles of a controller; they are what it holds then. Can be undone.
    void read(ProfileSet profiles);
    /// The present profiles are in the file now.
    void mark_saved() { saved_ = profiles_; }
    /// What the controller holds, as read back from it after a write.
    void mark_in_controller(ProfileSet profiles) { controller_ = std::move(profiles); }

    /// What the controller was found to hold; nothing before the first read.
    [[nodiscard]] const std::optional<ProfileSet>& in_controller() const { return controller_; }
    [[nodiscard]] bool differs_from_file() const { return profiles_ != saved_; }
    [[nodiscard]] bool differs_from_controller() const { return profiles_ != controller_; }
    /// Numbers of the profiles that a write would create, change or erase; all before a read.
    [[nodiscard]] std::vector<int> changed_profiles() const;
    /// Whether something would be lost: it is neither in the file nor in the controller.
    [[nodiscard]] bool dirty() const;

    /// The lowest number without a profile; 0 when all are in use.
    [[nodiscard]] int free_number() const;
    std::string add_profile(int number);
    std::string erase_profile(int number);
    /// Jumps of the profile to itself lead to the copy's own steps.
    std::string copy_profile(int from, int to, bool replace = false);

    /// These work on the chosen profile, and on its chosen step.
    std::string set_name(const std::string& name);
    std::string set_own(int register_number, const std::string& text);
    /// Inserts before the chosen step. An end is put behind the last step where there is no end.
    std::string insert_step(int type);
    std::string delete_step();
    std::string copy_step();
    /// Inserts what was copied before the chosen step.
    std::string paste_step();
    [[nodiscard]] const std::optional<ProfileStep>& copied_step() const { return copied_; }
    /// Moves it so many places down, or up when negative; it stays before the end.
    std::string move_step(int places);
    std::string change_kind(int type);
    std::string set_field(int register_number, const std::string& text);
    /// Moves its end. What follows without `end_drag` between is undone together with it.
    std::string drag_end(const StepEnd& end);
    void end_drag() { ++drag_; }

    [[nodiscard]] bool can_undo() const { return history_.can_undo(); }
    [[nodiscard]] bool can_redo() const { return history_.can_redo(); }
    [[nodiscard]] std::string undo_text() const { return history_.undo_text(); }
    [[nodiscard]] std::string redo_text() const { return history_.redo_text(); }
    void undo();
    void redo();

  private:
    [[nodiscard]] std::string no_step() const;
    [[nodiscard]] bool is_end(int step) const;
    [[nodiscard]] bool has_end() const;
    [[nodiscard]] std::string room_for_a_step() const;
    [[nodiscard]] Profile& change(int number);
    [[nodiscard]] ProfileStep& changed_step();
    void replace_all(ProfileSet profiles, const std::string& what);
    std::string insert(const ProfileStep& step, const std::string& what);
    void lead_jumps(const std::function<int(int)>& step_now);
    void commit(const std::string& what, ProfilePlace place, int drag = 0);
    void restore(const ProfileStates& states, ProfilePlace place);

    ProfileFormat format_;
    ProfileSet profiles_;
    ProfileSet saved_;
    std::optional<ProfileSet> controller_;
    ProfilePlace place_;
    std::optional<ProfileStep> copied_;
    EditHistory history_;
    ProfileStates before_; // of the edit that is being made
    int drag_ = 1;
    int revision_ = 0;
};

} // namespace pelvan
