// Control models: a window without pixels. A form holds its controls as values of these kinds and
// its event handlers as functions; a front end mirrors them (desktop/) or drives them (terminal/,
// tests). Two rules hold for every kind:
//  * a property that changes raises the control's event, whoever changed it, as the classic toolkit
//    does; setting a property to the value that it has raises nothing;
//  * whoever watches a control is notified of every change and re-reads what it shows.
// Handlers may throw RunTimeError; it passes through to whoever raised the outermost event.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/event.h"

namespace pelvan {

/// Name of an element of a control array: "txt_Port(2)".
[[nodiscard]] std::string control_name(const std::string& array, int index);

/// Keys that forms handle themselves; everything else is the front end's.
enum class Key { Up, Down, Enter, Escape };

class Control {
  public:
    explicit Control(std::string name, std::string caption = {}, std::string tool_tip = {})
        : name_(std::move(name)), caption_(std::move(caption)), tool_tip_(std::move(tool_tip)) {}
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    [[nodiscard]] const std::string& Name() const { return name_; }
    [[nodiscard]] const std::string& Caption() const { return caption_; }
    [[nodiscard]] const std::string& ToolTipText() const {
        return held_because_.empty() ? tool_tip_ : held_because_;
    }
    [[nodiscard]] bool Enabled() const { return enabled_ && held_because_.empty(); }
    [[nodiscard]] bool Visible() const { return visible_; }
    void set_Caption(const std::string& text) { assign(caption_, text); }
    void set_ToolTipText(const std::string& text) { assign(tool_tip_, text); }
    void set_Enabled(bool on) { assign(enabled_, on); }
    void set_Visible(bool on) { assign(visible_, on); }
    /// Disables the control, whatever its property says, and lets its tool tip tell the reason; an
    /// empty reason gives both back.
    void hold(const std::string& reason) { assign(held_because_, reason); }

    /// Asks the front end to move the focus here; without one, the GotFocus event comes at once.
    void SetFocus();
    std::function<void()> GotFocus;
    /// A key pressed while the focus is here; false leaves it to the front end.
    std::function<bool(Key)> KeyDown;

    /// Is notified after a property has changed.
    Subscription watch(std::function<void()> watcher) {
        return changed_.subscribe(std::move(watcher));
    }
    /// Moves the focus to the control, raises GotFocus itself, and says so by setting `moved`.
    Subscription watch_focus(std::function<void(bool& moved)> mover) {
        return focus_wanted_.subscribe(std::move(mover));
    }

  protected:
    template <class T> bool assign(T& property, const T& value) {
        if (property == value) return false;
        property = value;
        notify();
        return true;
    }
    void notify() { changed_.raise(); }
    static void raise(const std::function<void()>& event) {
        if (event) event();
    }

  private:
    std::string name_;
    std::string caption_;
    std::string tool_tip_;
    std::string held_because_;
    bool enabled_ = true;
    bool visible_ = true;
    Event<> changed_;
    Event<bool&> focus_wanted_;
};

class Label : public Control {
  public:
    using Control::Control;
    /// Asks the front end to show the label as it is now, before work that lets no event run.
    void Refresh() { refresh_.raise(); }
    Subscription watch_refresh(std::function<void()> painter) {
        return refresh_.subscribe(std::move(painter));
    }

  private:
    Event<> refresh_;
};

/// A frame round other controls.
class Frame : public Control {
  public:
    using Control::Control;
};

class Button : public Control {
  public:
    using Control::Control;
    std::function<void()> Click;
    /// What a press does: nothing while disabled.
    void press();
};

class TextBox : public Control {
  public:
    explicit TextBox(std::string name, std::string text = {}, std::string tool_tip = {})
        : Control(std::move(name), {}, std::move(tool_tip)), text_(std::move(text)) {}

    [[nodiscard]] const std::string& Text() const { return text_; }
    void set_Text(const std::string& text);
    std::function<void()> Change;

    [[nodiscard]] bool Locked() const { return locked_; }
    void set_Locked(bool locked) { assign(locked_, locked); }

    /// Selection start 0, length of the whole text. What a person selects is the front end's.
    void select_all() { select_all_.raise(); }
    Subscription watch_select_all(std::function<void()> watcher) {
        return select_all_.subscribe(std::move(watcher));
    }

  private:
    std::string text_;
    bool locked_ = false;
    Event<> select_all_;
};

class CheckBox : public Control {
  public:
    using Control::Control;
    [[nodiscard]] int Value() const { return value_; } // 0 clear, 1 checked, 2 greyed
    void set_Value(int value);
    [[nodiscard]] bool checked() const { return value_ == 1; }
    std::function<void()> Click;

  private:
    int value_ = 0;
};

/// A group of option buttons, a control array of which at most one is set; -1 means none.
class OptionGroup : public Control {
  public:
    struct Option {
        std::string caption;
        std::string tool_tip;
        bool enabled = true;
    };

    OptionGroup(std::string name, std::vector<Option> options, int value = -1)
        : Control(std::move(name)), options_(std::move(options)), value_(value) {}

    [[nodiscard]] int Value() const { return value_; }
    /// Sets one option and raises Click with its index when it was not set; 9 outside the group.
    void set_Value(int index);
    std::function<void(int)> Click;

    [[nodiscard]] int count() const { return static_cast<int>(options_.size()); }
    [[nodiscard]] const Option& option(int index) const;
    void set_option_enabled(int index, bool on);

  private:
    std::vector<Option> options_;
    int value_;
};

class ScrollBar : public Control {
  public:
    ScrollBar(std::string name, int min, int max, int value = 0, std::string tool_tip = {})
        : Control(std::move(name), {}, std::move(tool_tip)), min_(min), max_(max), value_(value) {}
    /// Max may lie below Min: the bar then counts downwards.
    [[nodiscard]] int Min() const { return min_; }
    [[nodiscard]] int Max() const { return max_; }
    void set_Max(int max) { assign(max_, max); }
    [[nodiscard]] int Value() const { return value_; }
    /// Raises Change; 380 outside the range.
    void set_Value(int value);
    std::function<void()> Change;

  private:
    int min_;
    int max_;
    int value_;
};

class ProgressBar : public Control {
  public:
    using Control::Control;
    [[nodiscard]] double Min() const { return 0; }
    [[nodiscard]] double Max() const { return max_; }
    void set_Max(double max) { assign(max_, max > 0 ? max : 1.0); }
    [[nodiscard]] double Value() const { return value_; }
    /// Clipped to 0..Max.
    void set_Value(double value);

  private:
    double max_ = 100;
    double value_ = 0;
};

class Timer : public Control {
  public:
    using Control::Control;
    [[nodiscard]] int Interval() const { return interval_; } // ms
    void set_Interval(int ms) { assign(interval_, ms); }
    /// "Running"; a timer with interval 0 never ticks.
    [[nodiscard]] bool running() const { return running_; }
    void start() { assign(running_, true); }
    void stop() { assign(running_, false); }
    std::function<void()> Tick;

  private:
    int interval_ = 0;
    bool running_ = false;
};

/// An entry of a menu; one with children is a sub-menu, one without caption a separator.
class MenuEntry : public Control {
  public:
    /// `caption` marks its access key with "&"; `shortcut` is written "Ctrl+S".
    explicit MenuEntry(std::string name, std::string caption = {}, std::string shortcut = {},
                       std::string tool_tip = {})
        : Control(std::move(name), std::move(caption), std::move(tool_tip)),
          shortcut_(std::move(shortcut)) {}

    [[nodiscard]] const std::string& shortcut() const { return shortcut_; }
    [[nodiscard]] bool Checked() const { return checked_; }
    void set_Checked(bool on) { assign(checked_, on); }
    /// Shown with a tick even while it is not set.
    [[nodiscard]] bool checkable() const { return checkable_; }
    MenuEntry& make_checkable() {
        checkable_ = true;
        return *this;
    }
    /// The menu is about to be shown.
    std::function<void()> Opening;
    /// Its key works in every window of the program, not only where its menu is shown.
    [[nodiscard]] bool everywhere() const { return everywhere_; }
    MenuEntry& reach_everywhere() {
        everywhere_ = true;
        return *this;
    }
    std::function<void()> Click;
    /// What choosing the entry does: nothing while disabled.
    void choose();

    /// Sub-entries, in order; nullptr is a separator. Borrowed: the form owns them.
    std::vector<MenuEntry*> children;

  private:
    std::string shortcut_;
    bool checked_ = false;
    bool checkable_ = false;
    bool everywhere_ = false;
};

} // namespace pelvan
