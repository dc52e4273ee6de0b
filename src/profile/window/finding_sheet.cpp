#include "profile/window/finding_sheet.h"

#include <algorithm>

namespace pelvan {

FindingSheet::FindingSheet(ProfileWork& work)
    : work_(work), changes_(work.changed.subscribe([this] {
          if (chosen_ >= rows()) chosen_ = -1;
          changed.raise();
      })) {}

void FindingSheet::set_results(std::vector<ProfileFinding> results) {
    results_ = std::move(results);
    chosen_ = -1;
    changed.raise();
}

int FindingSheet::rows() const {
    return static_cast<int>(results_.size() + work_.findings().size());
}

const ProfileFinding* FindingSheet::finding_of(int row) const {
    if (row < 0 || row >= rows()) return nullptr;
    const auto at = static_cast<std::size_t>(row);
    return at < results_.size() ? &results_[at] : &work_.findings()[at - results_.size()];
}

SheetCell FindingSheet::cell(int row, int) const {
    const ProfileFinding* finding = finding_of(row);
    return finding == nullptr ? SheetCell{} : SheetCell{finding->sentence, finding->sentence};
}

void FindingSheet::choose(int row) {
    const ProfileFinding* finding = finding_of(row);
    if (finding == nullptr) return;
    chosen_ = row;
    chosen_moved.raise();
    if (!work_.editor().profiles().contains(finding->profile)) return;
    work_.choose(finding->profile, std::max(finding->step, 1));
}

} // namespace pelvan
