#include "profile/window/step_sheet.h"

#include <algorithm>
#include <tuple>

#include "registers/setup_file.h"

namespace pelvan {
namespace {

constexpr int kNumber = 0;
constexpr int kKind = 1;
constexpr int kFirstField = 2;

} // namespace

StepSheet::StepSheet(ProfileWork& work)
    : work_(work), changes_(work.changed.subscribe([this] {
          find_columns();
          changed.raise();
      })),
      choices_(work.chosen_moved.subscribe([this] { chosen_moved.raise(); })) {}

void StepSheet::find_columns() {
    if (model_ == work_.model()) return;
    model_ = work_.model();
    fields_.clear();
    for (const auto& [type, kind] : work_.format().kinds)
        for (const ProfileField& field : kind.fields)
            if (std::ranges::find(fields_, field.number, &ProfileField::number) == fields_.end())
                fields_.push_back(field);
    // What belongs together stands together, and what has no role behind it.
    std::ranges::sort(fields_, {}, [](const ProfileField& field) {
        return std::tuple(field.role == RegisterRole::None, field.role, field.number);
    });
}

int StepSheet::rows() const {
    const Profile* profile = work_.editor().profile();
    return profile == nullptr ? 0 : static_cast<int>(profile->steps.size());
}

int StepSheet::columns() const {
    return kFirstField + static_cast<int>(fields_.size());
}

std::string StepSheet::heading(int column) const {
    if (column == kNumber) return "Step";
    if (column == kKind) return "Kind";
    const ProfileField& field = fields_.at(static_cast<std::size_t>(column - kFirstField));
    if (field.role == RegisterRole::Hours) return "h";
    if (field.role == RegisterRole::Minutes) return "min";
    if (field.role == RegisterRole::Seconds) return "s";
    return field.unit.empty() ? field.name : field.name + "\n" + field.unit;
}

const ProfileStep* StepSheet::step_of(int row) const {
    const Profile* profile = work_.editor().profile();
    if (profile == nullptr || row < 0 || row >= rows()) return nullptr;
    return &profile->steps[static_cast<std::size_t>(row)];
}

const ProfileField* StepSheet::field_of(int row, int column) const {
    const ProfileStep* step = step_of(row);
    if (step == nullptr || column < kFirstField || column >= columns()) return nullptr;
    const StepKind* kind = work_.format().kind(step->type);
    return kind == nullptr
               ? nullptr
               : kind->find(fields_[static_cast<std::size_t>(column - kFirstField)].number);
}

SheetCell StepSheet::kind_cell(int row, const ProfileStep& step) const {
    const ProfileFormat& format = work_.format();
    const StepKind* kind = format.kind(step.type);
    SheetCell cell{kind != nullptr ? kind->name : "type " + std::to_string(step.type), locked_};
    if (row + 1 == rows()) {
        if (cell.tip.empty()) cell.tip = "The end stays the last step.";
        return cell;
    }
    for (const auto& [type, other] : format.kinds)
        if (other.shape != StepShape::End) cell.choices.push_back(other.name);
    cell.editable = locked_.empty();
    return cell;
}

SheetCell StepSheet::cell(int row, int column) const {
    const ProfileStep* step = step_of(row);
    if (step == nullptr) return {};
    if (column == kNumber) return {std::to_string(row + 1), {}};
    if (column == kKind) return kind_cell(row, *step);
    const ProfileField* field = field_of(row, column);
    if (field == nullptr)
        return {.text = {}, .tip = "This kind of step has no such value.", .absent = true};
    SheetCell cell{{}, locked_.empty() ? ProfileFormat::limits_text(*field) + "." : locked_};
    const auto value = step->fields.find(field->number);
    if (value != step->fields.end()) cell.text = ProfileFormat::value_text(*field, value->second);
    for (const auto& [number, word] : field->choices)
        cell.choices.push_back(word);
    cell.editable = locked_.empty();
    return cell;
}

bool StepSheet::column_used(int column) const {
    if (column < kFirstField) return true;
    for (int row = 0; row < rows(); ++row)
        if (field_of(row, column) != nullptr) return true;
    return false;
}

std::string StepSheet::problem(int row, int column, const std::string& text) const {
    if (step_of(row) == nullptr) return {};
    if (text == cell(row, column).text) return {};
    if (!locked_.empty()) return locked_;
    if (column == kKind) {
        const std::vector<std::string> kinds = cell(row, column).choices;
        const bool known = std::ranges::find(kinds, text) != kinds.end();
        return known ? std::string() : "There is no kind of step \"" + shown(text) + "\" here.";
    }
    const ProfileField* field = field_of(row, column);
    return field == nullptr ? "This kind of step has no such value."
                            : ProfileFormat::parse_value(*field, text).problem;
}

void StepSheet::enter(int row, int column, const std::string& text) {
    if (step_of(row) == nullptr || !problem(row, column, text).empty()) return;
    const ProfileField* field = field_of(row, column);
    work_.choose_step(row + 1);
    work_.edit([&](ProfileEditor& editor) -> std::string {
        if (field != nullptr) return editor.set_field(field->number, text);
        for (const auto& [type, kind] : work_.format().kinds)
            if (kind.name == text && kind.shape != StepShape::End) return editor.change_kind(type);
        return {};
    });
}

int StepSheet::chosen() const {
    return work_.editor().place().step - 1;
}

void StepSheet::choose(int row) {
    if (step_of(row) != nullptr) work_.choose_step(row + 1);
}

void StepSheet::lock(const std::string& reason) {
    if (locked_ == reason) return;
    locked_ = reason;
    changed.raise();
}

} // namespace pelvan
