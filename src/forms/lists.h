// Control models that hold many texts: list, drop-down list, grid. The watchers of the first and
// the last are told which line or cell changed, so that none of them reads 10,000 lines for one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "forms/controls.h"

namespace pelvan {

/// What changed in a list, so that a watcher need not read 10,000 lines for one.
enum class ListChange { Added, Inserted, Cleared, Selected };

/// Lines `first` to `last` of a list.
struct LineRange {
    int first = 0;
    int last = 0;
    bool operator==(const LineRange&) const = default;
};

class ListBox : public Control {
  public:
    using Control::Control;
    [[nodiscard]] int ListCount() const { return static_cast<int>(items_.size()); }
    [[nodiscard]] const std::string& List(int index) const;
    void AddItem(const std::string& text);
    /// At a position 0..ListCount; 5 outside.
    void AddItem(const std::string& text, int index);
    void Clear();
    /// Selected line, -1 for none; setting it raises Click; 5 outside -1..ListCount-1.
    [[nodiscard]] int ListIndex() const { return list_index_; }
    void set_ListIndex(int index);
    std::function<void()> Click;
    /// A line was clicked twice; the first click has selected it.
    std::function<void()> DblClick;

    /// Lets a person select several lines; said before the list is bound.
    void make_multi_select() { multi_select_ = true; }
    [[nodiscard]] bool multi_select() const { return multi_select_; }
    /// The selected lines, from top to bottom and apart from each other. `set_ListIndex` selects
    /// its line alone; of several, the line at ListIndex is the one that the keyboard moves.
    [[nodiscard]] const std::vector<LineRange>& Selected() const { return selected_; }
    /// Selects these lines, and makes one (or none, -1) the one that the keyboard moves. Raises
    /// Click when anything changed; 5 outside the list.
    void set_Selected(const std::vector<LineRange>& lines, int index);

    /// Is notified of line changes with the index that they concern, instead of `watch`.
    Subscription watch_lines(std::function<void(ListChange, int)> watcher) {
        return lines_changed_.subscribe(std::move(watcher));
    }

  private:
    std::vector<std::string> items_;
    int list_index_ = -1;
    std::vector<LineRange> selected_;
    bool multi_select_ = false;
    Event<ListChange, int> lines_changed_;
};

/// A drop-down list; with `editable` its text may be typed as well.
class ComboBox : public Control {
  public:
    ComboBox(std::string name, std::vector<std::string> items, int list_index, bool editable,
             std::string tool_tip = {});
    [[nodiscard]] const std::vector<std::string>& items() const { return items_; }
    void set_items(std::vector<std::string> items);
    [[nodiscard]] int ListIndex() const { return list_index_; }
    /// -1 (none) to the last item, else 380 (invalid property value); raises Click.
    void set_ListIndex(int index);
    [[nodiscard]] const std::string& Text() const { return text_; }
    /// Typed text of an editable box; selects the item of that text if there is one. Raises Change.
    void set_Text(const std::string& text);
    [[nodiscard]] bool editable() const { return editable_; }
    std::function<void()> Click;
    std::function<void()> Change;

    /// Selects the text of an editable box, so that typing replaces it.
    void select_all() { select_all_.raise(); }
    Subscription watch_select_all(std::function<void()> watcher) {
        return select_all_.subscribe(std::move(watcher));
    }

  private:
    std::vector<std::string> items_;
    int list_index_;
    std::string text_;
    bool editable_;
    Event<> select_all_;
};

/// A grid of texts with a 32-bit data word a row. Row 0 is the header.
class Grid : public Control {
  public:
    /// The header line's titles stand between "|"; `rows` counts the header row too.
    Grid(std::string name, const std::string& header, int rows);
    [[nodiscard]] int Rows() const { return rows_; }
    [[nodiscard]] int Cols() const { return cols_; }
    [[nodiscard]] const std::string& TextMatrix(int row, int column) const; // 9 outside
    void set_TextMatrix(int row, int column, const std::string& text);
    [[nodiscard]] std::int32_t RowData(int row) const;
    void set_RowData(int row, std::int32_t word);
    /// Current cell.
    [[nodiscard]] int Row() const { return row_; }
    [[nodiscard]] int Col() const { return col_; }
    void set_cell(int row, int column);
    /// Mouse pressed in the current cell; `left` tells the button.
    std::function<void(bool left)> MouseUp;
    /// Is notified which cell changed (column -1: the row's data word), instead of `watch`.
    Subscription watch_cells(std::function<void(int row, int column)> watcher) {
        return cell_changed_.subscribe(std::move(watcher));
    }

  private:
    [[nodiscard]] std::size_t cell(int row, int column) const;
    int rows_;
    int cols_;
    int row_ = 1;
    int col_ = 0;
    std::vector<std::string> cells_;
    std::vector<std::int32_t> row_data_;
    Event<int, int> cell_changed_;
};

} // namespace pelvan
