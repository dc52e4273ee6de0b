#include "profile/window/profile_list_sheet.h"

#include <iterator>

#include "profile/window/curve_picture.h"

namespace pelvan {
namespace {

enum Column { kNumber, kName, kSteps, kTime };

} // namespace

ProfileListSheet::ProfileListSheet(ProfileWork& work)
    : work_(work), changes_(work.changed.subscribe([this] {
          find_times();
          changed.raise();
      })),
      choices_(work.chosen_moved.subscribe([this] { chosen_moved.raise(); })) {}

void ProfileListSheet::find_times() {
    times_.clear();
    for (const auto& [number, profile] : work_.editor().profiles())
        times_[number] = total_time_text(work_.curve_from(number, 1));
}

int ProfileListSheet::rows() const {
    return static_cast<int>(work_.editor().profiles().size());
}

std::string ProfileListSheet::heading(int column) const {
    constexpr std::array<const char*, 4> kHeadings{"No.", "Name", "Steps", "Total time"};
    return kHeadings.at(static_cast<std::size_t>(column));
}

const Profile* ProfileListSheet::profile_of(int row) const {
    if (row < 0 || row >= rows()) return nullptr;
    return &std::next(work_.editor().profiles().begin(), row)->second;
}

SheetCell ProfileListSheet::cell(int row, int column) const {
    const Profile* profile = profile_of(row);
    if (profile == nullptr) return {};
    SheetCell cell;
    switch (column) {
    case kNumber:
        cell.text =
            std::to_string(profile->number) + (profile->number == running_ ? " \u25b6" : "");
        if (profile->number == running_) cell.tip = "This profile is running.";
        break;
    case kName:
        cell.text = profile_name(work_.format(), *profile);
        cell.editable = name_length(work_.format()) > 0 && (locked_.empty() || row != chosen());
        break;
    case kSteps:
        cell.text = std::to_string(profile->steps.size());
        break;
    default: {
        const auto time = times_.find(profile->number);
        if (time != times_.end()) cell.text = time->second;
        cell.tip = "Jumps included, waiting for an input not.";
    }
    }
    return cell;
}

std::string ProfileListSheet::problem(int row, int column, const std::string& text) const {
    const Profile* profile = profile_of(row);
    if (profile == nullptr || column != kName || text == cell(row, column).text) return {};
    if (!locked_.empty() && row == chosen()) return locked_;
    Profile copy = *profile;
    return set_profile_name(work_.format(), copy, text);
}

void ProfileListSheet::enter(int row, int column, const std::string& text) {
    const Profile* profile = profile_of(row);
    if (profile == nullptr || column != kName || !problem(row, column, text).empty()) return;
    work_.choose(profile->number);
    work_.edit([&text](ProfileEditor& editor) { return editor.set_name(text); });
}

int ProfileListSheet::chosen() const {
    const Profile* profile = work_.editor().profile();
    if (profile == nullptr) return -1;
    const ProfileSet& all = work_.editor().profiles();
    return static_cast<int>(std::distance(all.begin(), all.find(profile->number)));
}

void ProfileListSheet::choose(int row) {
    const Profile* profile = profile_of(row);
    if (profile != nullptr && row != chosen()) work_.choose(profile->number);
}

void ProfileListSheet::mark_running(int number) {
    if (running_ == number) return;
    running_ = number;
    changed.raise();
}

} // namespace pelvan
