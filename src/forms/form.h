// The window as a control model: its menus, place, pointer shape, and what happens when it is shown
// and closed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "forms/controls.h"

namespace pelvan {

enum class MousePointer { Normal, Hourglass };
enum class WindowState { Normal, Minimized, Maximized };

/// Place and size in twips (1/1440 inch, 15 to the pixel at 96 dots per inch).
struct TwipRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool operator==(const TwipRect&) const = default;
};

/// A window. Derived forms hold the controls and override the handlers.
class Form : public Control {
  public:
    explicit Form(std::string name, std::string caption = {})
        : Control(std::move(name), std::move(caption)) {
        set_Visible(false);
    }

    /// The window's menus; borrowed entries, as in `MenuEntry::children`.
    std::vector<MenuEntry*> menus;

    [[nodiscard]] MousePointer Pointer() const { return pointer_; }
    void set_Pointer(MousePointer pointer) { assign(pointer_, pointer); }
    /// What the title bar says behind the caption, which keeps its words; empty for nothing.
    [[nodiscard]] const std::string& Note() const { return note_; }
    void set_Note(const std::string& note) { assign(note_, note); }
    [[nodiscard]] WindowState State() const { return state_; }
    void set_State(WindowState state) { assign(state_, state); }
    [[nodiscard]] const TwipRect& Position() const { return position_; }
    /// Told to the move watcher also when unchanged: the window may have been moved by hand.
    void Move(const TwipRect& position);
    [[nodiscard]] const std::string& help_page() const { return help_page_; }

    [[nodiscard]] bool loaded() const { return loaded_; }
    /// Runs Form_Load when the form is not loaded, makes it visible and runs Form_Activate, the
    /// last not when the person is in this window already.
    void Show();
    /// Loads without showing; nothing when loaded.
    void Load();
    /// Runs Form_Unload and, when that allows it, hides the form. False when it stays.
    bool Unload();

    virtual void Form_Load() {}
    /// The user came here from another window of the program.
    virtual void Form_Activate() {}
    /// False keeps the window open.
    virtual bool Form_Unload() { return true; }
    /// Whether the keys that close a child window close this one as well.
    [[nodiscard]] virtual bool closes_by_key() const { return true; }

    /// A file was dropped on the window; without a handler the window takes none.
    std::function<void(const std::string& path)> FileDropped;

    /// Is notified of `Move` alone: a new caption must not put a window back that was moved by
    /// hand.
    Subscription watch_move(std::function<void()> watcher) {
        return moved_.subscribe(std::move(watcher));
    }
    /// Is notified of every `Show`, also of a window that is visible already: it comes to the
    /// front. Called before `Form_Activate`, which `Show` runs itself. Sets `was_active` when the
    /// window was the active one of the program before.
    Subscription watch_show(std::function<void(bool& was_active)> watcher) {
        return shown_.subscribe(std::move(watcher));
    }

  protected:
    void set_help_page(std::string page) { help_page_ = std::move(page); }

  private:
    MousePointer pointer_ = MousePointer::Normal;
    WindowState state_ = WindowState::Normal;
    TwipRect position_;
    std::string note_;
    std::string help_page_;
    bool loaded_ = false;
    Event<> moved_;
    Event<bool&> shown_;
};

/// Shows the hourglass on a form for as long as it lives.
class Hourglass {
  public:
    explicit Hourglass(Form& form) : form_(form) { form_.set_Pointer(MousePointer::Hourglass); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;
    ~Hourglass() { form_.set_Pointer(MousePointer::Normal); }

  private:
    Form& form_;
};

} // namespace pelvan
