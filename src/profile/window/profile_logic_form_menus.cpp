#include "profile/window/profile_logic_form_menus.h"

namespace pelvan {

ProfileMenus::ProfileMenus() {
    mnuFile.children = {&mnuNew,   &mnuOpen,    nullptr, &mnuSave, &mnuSaveAs, nullptr,
                        &mnuPrint, &mnuPreview, &mnuPdf, nullptr,  &mnuClose};
    mnuEdit.children = {&mnuUndo,  &mnuRedo, nullptr, &mnuInsert, &mnuDelete, &mnuCopy,
                        &mnuPaste, nullptr,  &mnuUp,  &mnuDown,   nullptr,    &mnuRemove};
    mnuController.children = {&mnuRead,   nullptr, &mnuWrite, &mnuWriteAll,
                              &mnuCopyTo, nullptr, &mnuErase};
    mnuRun.children = {&mnuStart, nullptr,   &mnuHold, &mnuResume,  &mnuNext,   &mnuEnd,
                       nullptr,   &mnuWatch, nullptr,  &mnuSaveCsv, &mnuSavePng};
    mnuHelp.children = {&mnuHelpContents};
    mnuWatch.make_checkable();
}

std::vector<MenuEntry*> ProfileMenus::menus() {
    return {&mnuFile, &mnuEdit, &mnuController, &mnuRun, &mnuHelp};
}

std::vector<MenuEntry*> ProfileMenus::edit_bar() {
    return {&mnuRead, &mnuWrite,  nullptr,    &mnuOpen, &mnuSave,  nullptr,
            &mnuNew,  &mnuInsert, &mnuDelete, &mnuCopy, &mnuPaste, &mnuUp,
            &mnuDown, nullptr,    &mnuUndo,   &mnuRedo, nullptr,   &mnuPrint};
}

std::vector<MenuEntry*> ProfileMenus::run_bar() {
    return {&mnuStart, &mnuHold, &mnuResume, &mnuNext, &mnuEnd, nullptr, &mnuWatch};
}

void ProfileMenus::permit(const ProfilePermissions& can) {
    mnuNew.hold(can.create);
    mnuOpen.hold(can.open);
    mnuSave.hold(can.save);
    mnuSaveAs.hold(can.save);
    for (MenuEntry* entry : {&mnuPrint, &mnuPreview, &mnuPdf})
        entry->hold(can.print);
    mnuUndo.hold(can.undo);
    mnuRedo.hold(can.redo);
    mnuInsert.hold(can.insert);
    mnuDelete.hold(can.remove);
    mnuCopy.hold(can.copy);
    mnuPaste.hold(can.paste);
    mnuUp.hold(can.move_up);
    mnuDown.hold(can.move_down);
    mnuRemove.hold(can.edit);
    mnuRead.hold(can.read);
    mnuWrite.hold(can.write);
    mnuWriteAll.hold(can.write);
    mnuCopyTo.hold(can.copy_to);
    mnuErase.hold(can.erase);
    mnuStart.hold(can.start);
    mnuHold.hold(can.hold);
    mnuResume.hold(can.resume);
    mnuNext.hold(can.next);
    mnuEnd.hold(can.end);
    mnuWatch.hold(can.watch);
    mnuSaveCsv.hold(can.save_record);
    mnuSavePng.hold(can.save_record);
}

} // namespace pelvan
