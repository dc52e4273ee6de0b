// The menus of the profile window. What an entry does is wired by the window; which of them can be
// chosen, and why not, is told by `permit`.
#pragma once

#include "forms/form.h"
#include "profile/window/profile_permissions.h"

namespace pelvan {

struct ProfileMenus {
    ProfileMenus();

    MenuEntry mnuFile{"mnuProfileFile", "&File"};
    MenuEntry mnuNew{"mnuProfileNew", "&New Profile", "Ctrl+N", "A profile of an end alone."};
    MenuEntry mnuOpen{"mnuProfileOpen", "&Open...", "Ctrl+O",
                      "Profiles of a text file: one saved here, or a saved setup."};
    MenuEntry mnuSave{"mnuProfileSave", "&Save", "Ctrl+S", "All profiles into the text file."};
    MenuEntry mnuSaveAs{"mnuProfileSaveAs", "Save &As...", "",
                        "All profiles into a text file of another name."};
    MenuEntry mnuPrint{"mnuProfilePrint", "&Print...", "Ctrl+P",
                       "The chosen profile: its steps and its curve."};
    MenuEntry mnuPreview{"mnuProfilePreview", "Print Pre&view..."};
    MenuEntry mnuPdf{"mnuProfilePdf", "Print to P&DF...", "", "As printed, into a PDF file."};
    MenuEntry mnuClose{"mnuProfileClose", "E&xit Profile Logic", "Ctrl+W"};

    MenuEntry mnuEdit{"mnuProfileEdit", "&Edit"};
    MenuEntry mnuUndo{"mnuProfileUndo", "&Undo", "Ctrl+Z"};
    MenuEntry mnuRedo{"mnuProfileRedo", "&Redo", "Ctrl+Y"};
    MenuEntry mnuInsert{"mnuProfileInsert", "&Insert Step", "Ins", "A step before the chosen one."};
    MenuEntry mnuDelete{"mnuProfileDelete", "&Delete Step", "Ctrl+Del"};
    MenuEntry mnuCopy{"mnuProfileCopy", "&Copy Step", "Ctrl+C"};
    MenuEntry mnuPaste{"mnuProfilePaste", "&Paste Step", "Ctrl+V",
                       "The copied step before the chosen one."};
    MenuEntry mnuUp{"mnuProfileUp", "&Move Up", "Ctrl+Up"};
    MenuEntry mnuDown{"mnuProfileDown", "Move Do&wn", "Ctrl+Down"};
    MenuEntry mnuRemove{"mnuProfileRemove", "Remove Pro&file", "",
                        "Take the chosen profile out of this window; the controller keeps it."};

    MenuEntry mnuController{"mnuProfileController", "&Controller"};
    MenuEntry mnuRead{"mnuProfileRead", "&Read", "F5",
                      "All profiles of the controller; what is shown here goes."};
    MenuEntry mnuWrite{"mnuProfileWrite", "&Write...", "F6",
                       "The chosen profile into the controller. Says first what will change."};
    MenuEntry mnuWriteAll{"mnuProfileWriteAll", "Write &All...", "",
                          "All profiles into the controller. Says first what will change."};
    MenuEntry mnuCopyTo{"mnuProfileCopyTo", "Copy to &Number...", "",
                        "The chosen profile once more, under another number; write it then."};
    MenuEntry mnuErase{"mnuProfileErase", "&Erase Profile...", "",
                       "The chosen profile out of the controller."};

    MenuEntry mnuRun{"mnuProfileRun", "R&un"};
    MenuEntry mnuStart{"mnuProfileStart", "&Start...", "F7",
                       "The chosen profile. Says first what it will do, and asks."};
    MenuEntry mnuHold{"mnuProfileHold", "&Hold (F12)", "",
                      "Time stands still; the set points stay (F12 in every window)."};
    MenuEntry mnuResume{"mnuProfileResume", "&Resume", "Shift+F12", "Go on where it was held."};
    MenuEntry mnuNext{"mnuProfileNext", "&Next Step...", "",
                      "End the present step and begin the next one."};
    MenuEntry mnuEnd{"mnuProfileEnd", "&End...", "", "End the run."};
    MenuEntry mnuWatch{"mnuProfileWatch", "Wat&ch", "F8",
                       "Read the state at the interval, also of a run that was begun elsewhere."};
    MenuEntry mnuSaveCsv{"mnuProfileSaveCsv", "Save Record as CS&V...", "",
                         "All that was watched, as a table."};
    MenuEntry mnuSavePng{"mnuProfileSavePng", "Save Picture as &PNG...", "",
                         "The picture of the run as it stands."};

    MenuEntry mnuHelp{"mnuProfileHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuProfileHelpContents", "&Contents"};

    void permit(const ProfilePermissions& can);
    [[nodiscard]] std::vector<MenuEntry*> menus();
    /// What stands in the two bars of buttons; nullptr is a separator.
    [[nodiscard]] std::vector<MenuEntry*> edit_bar();
    [[nodiscard]] std::vector<MenuEntry*> run_bar();
};

} // namespace pelvan
