#include "forms/lists.h"

#include <algorithm>

#include "platform/run_time_error.h"
#include "text/strings.h"

namespace pelvan {
namespace {

/// What is selected when one line is, or (at -1) none.
std::vector<LineRange> only(int index) {
    return index < 0 ? std::vector<LineRange>() : std::vector<LineRange>{{index, index}};
}

} // namespace

const std::string& ListBox::List(int index) const {
    return items_[checked_index(index, items_.size())];
}

void ListBox::AddItem(const std::string& text) {
    items_.push_back(text);
    lines_changed_.raise(ListChange::Added, ListCount() - 1);
}

void ListBox::AddItem(const std::string& text, int index) {
    if (index < 0 || index > ListCount()) throw RunTimeError(error_number::kIllegalCall);
    items_.insert(items_.begin() + index, text);
    if (list_index_ >= index) ++list_index_;
    selected_ = only(list_index_);
    lines_changed_.raise(ListChange::Inserted, index);
}

void ListBox::Clear() {
    items_.clear();
    list_index_ = -1;
    selected_.clear();
    lines_changed_.raise(ListChange::Cleared, -1);
}

void ListBox::set_ListIndex(int index) {
    set_Selected(only(index), index);
}

void ListBox::set_Selected(const std::vector<LineRange>& lines, int index) {
    const bool fits =
        lines.empty() || (lines.front().first >= 0 && lines.back().last < ListCount());
    if (!fits || index < -1 || index >= ListCount()) throw RunTimeError(error_number::kIllegalCall);
    if (index == list_index_ && lines == selected_) return;
    list_index_ = index;
    selected_ = lines;
    lines_changed_.raise(ListChange::Selected, index);
    raise(Click);
}

ComboBox::ComboBox(std::string name, std::vector<std::string> items, int list_index, bool editable,
                   std::string tool_tip)
    : Control(std::move(name), {}, std::move(tool_tip)), items_(std::move(items)),
      list_index_(list_index), editable_(editable) {
    if (list_index_ >= 0) text_ = items_[checked_index(list_index_, items_.size())];
}

void ComboBox::set_items(std::vector<std::string> items) {
    items_ = std::move(items);
    const auto found = std::find(items_.begin(), items_.end(), text_);
    list_index_ = found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
    if (list_index_ < 0 && !editable_) text_.clear();
    notify();
}

void ComboBox::set_ListIndex(int index) {
    if (index < -1 || index >= static_cast<int>(items_.size()))
        throw RunTimeError(error_number::kInvalidPropertyValue);
    if (index == list_index_) return;
    list_index_ = index;
    text_ = index < 0 ? std::string() : items_[static_cast<std::size_t>(index)];
    notify();
    raise(Click);
}

void ComboBox::set_Text(const std::string& text) {
    if (text == text_) return;
    text_ = text;
    const auto found = std::find(items_.begin(), items_.end(), text);
    list_index_ = found == items_.end() ? -1 : static_cast<int>(found - items_.begin());
    notify();
    raise(Change);
}

Grid::Grid(std::string name, const std::string& header, int rows)
    : Control(std::move(name)), rows_(rows), cols_(0) {
    const auto titles = split(header, '|');
    cols_ = static_cast<int>(titles.size());
    cells_.resize(static_cast<std::size_t>(rows_) * titles.size());
    std::copy(titles.begin(), titles.end(), cells_.begin());
    row_data_.resize(static_cast<std::size_t>(rows_));
}

std::size_t Grid::cell(int row, int column) const {
    return checked_index(row, static_cast<std::size_t>(rows_)) * static_cast<std::size_t>(cols_) +
           checked_index(column, static_cast<std::size_t>(cols_));
}

const std::string& Grid::TextMatrix(int row, int column) const {
    return cells_[cell(row, column)];
}

void Grid::set_TextMatrix(int row, int column, const std::string& text) {
    std::string& there = cells_[cell(row, column)];
    if (there == text) return;
    there = text;
    cell_changed_.raise(row, column);
}

std::int32_t Grid::RowData(int row) const {
    return row_data_[checked_index(row, row_data_.size())];
}

void Grid::set_RowData(int row, std::int32_t word) {
    row_data_[checked_index(row, row_data_.size())] = word;
    cell_changed_.raise(row, -1);
}

void Grid::set_cell(int row, int column) {
    static_cast<void>(cell(row, column));
    row_ = row;
    col_ = column;
    notify();
}

} // namespace pelvan
