// What can be done in the profile window in which state, and why not, in one place from plain data.
#pragma once

#include <optional>
#include <string>

#include "profile/profile_format.h"

namespace pelvan {

struct ProfileSituation {
    bool format = false; // a model's .pds is there
    bool runs = false;   // and it tells how its profiles are run
    /// "The line is in use by ..." while another tool has the lines.
    std::string line_refusal = {};
    bool working = false; // this window reads or writes

    bool profile = false; // one is chosen
    int number = 0;       // its number
    int steps = 0;        // its steps
    int step = 0;         // chosen; 1 is the first
    int max_steps = 0;
    bool copied = false; // a step can be pasted
    bool can_undo = false;
    bool can_redo = false;
    bool any_profiles = false;

    /// A command's reply was lost, and the state was not read since.
    bool not_known = false;
    std::optional<RunState> state = {}; // last read; nothing before that and when the line is lost
    int running_profile = 0;            // last read; 0 when none runs
    bool record = false;                // there is something to save
};

/// A reason each, as a sentence; empty where the command can be given.
struct ProfilePermissions {
    std::string edit; // of the chosen profile's steps
    std::string insert, remove, copy, paste, move_up, move_down;
    std::string undo, redo;
    std::string open, create, save, print;
    std::string read, write, copy_to, erase;
    std::string start, hold, resume, next, end, watch;
    std::string save_record;
};

[[nodiscard]] ProfilePermissions profile_permissions(const ProfileSituation& now);

/// A profile that is under way can be started, edited or erased by nobody.
[[nodiscard]] bool under_way(RunState state);

} // namespace pelvan
