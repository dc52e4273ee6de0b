// A table as a window shows it and a person edits it in place: texts, which cells can be edited and
// with which choices, and the line that is chosen. What the texts mean is the sheet's business.
//
// All functions are virtual, so that a library that is loaded while the program runs can call them
// without holding a copy of the code.
#pragma once

#include <string>
#include <vector>

#include "platform/event.h"

namespace pelvan {

struct SheetCell {
    std::string text;
    std::string tip;
    /// What can be chosen; empty for a cell that is typed into.
    std::vector<std::string> choices = {};
    bool editable = false;
    /// The line has no such value: shown empty and grey.
    bool absent = false;
};

class Sheet {
  public:
    Sheet() = default;
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;
    virtual ~Sheet() = default;

    [[nodiscard]] virtual int rows() const = 0;
    [[nodiscard]] virtual int columns() const = 0;
    [[nodiscard]] virtual std::string heading(int column) const = 0;
    [[nodiscard]] virtual SheetCell cell(int row, int column) const = 0;
    /// Whether any line has a value in the column.
    [[nodiscard]] virtual bool column_used(int column) const = 0;

    /// What is wrong with a text for a cell, as a sentence; empty when it can be entered.
    [[nodiscard]] virtual std::string problem(int row, int column,
                                              const std::string& text) const = 0;
    /// Enters a text without a problem; other texts change nothing.
    virtual void enter(int row, int column, const std::string& text) = 0;

    /// -1 when the sheet is empty.
    [[nodiscard]] virtual int chosen() const = 0;
    virtual void choose(int row) = 0;

    /// Texts or lines are others than before.
    Event<> changed;
    Event<> chosen_moved;
};

} // namespace pelvan
