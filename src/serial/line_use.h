// Who may use the serial lines. A long operation claims them, so that no other tool puts requests
// between its own or changes the ports under it; short exchanges need no claim. For one thread.
#pragma once

#include <string>

#include "platform/event.h"

namespace pelvan {

class LineUse;

/// Identity of a tool that uses the lines; its name stands in sentences ("Save/Restore Setup").
struct LineUser {
    std::string name;
};

/// The lines are the claiming tool's alone for as long as this is held. Must not outlive what it
/// was got from.
class [[nodiscard]] LineClaim {
  public:
    LineClaim() = default;
    LineClaim(LineClaim&& other) noexcept;
    LineClaim& operator=(LineClaim&& other) noexcept;
    ~LineClaim() { release(); }

    /// Whether the lines were given.
    explicit operator bool() const { return use_ != nullptr; }
    void release();

  private:
    friend class LineUse;
    explicit LineClaim(LineUse& use) : use_(&use) {}
    LineUse* use_ = nullptr;
};

class LineUse {
  public:
    LineUse() = default;
    LineUse(const LineUse&) = delete;
    LineUse& operator=(const LineUse&) = delete;

    /// An empty claim when another user holds one; `refusal` says who. A user may claim again what
    /// it holds; the lines are free when its last claim ends. `user` must outlive the claim.
    LineClaim claim(const LineUser& user);

    /// "The line is in use by Save/Restore Setup." when somebody other than `user` holds a claim,
    /// else empty. Null asks for whoever is none of the users.
    [[nodiscard]] std::string refusal(const LineUser* user) const;

    /// Name of the user that holds a claim; empty while nobody does.
    [[nodiscard]] std::string holder() const { return holder_ ? holder_->name : std::string(); }

    /// Raised when a claim begins and when the last one of its user ends. Subscribers must not
    /// throw: a claim also ends while an error is on its way.
    Event<> changed;

  private:
    friend class LineClaim;
    void release();

    const LineUser* holder_ = nullptr;
    int claims_ = 0;
};

} // namespace pelvan
