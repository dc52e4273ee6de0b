#include "serial/line_use.h"

#include <utility>

namespace pelvan {

LineClaim::LineClaim(LineClaim&& other) noexcept : use_(std::exchange(other.use_, nullptr)) {}

LineClaim& LineClaim::operator=(LineClaim&& other) noexcept {
    if (this == &other) return *this;
    release();
    use_ = std::exchange(other.use_, nullptr);
    return *this;
}

void LineClaim::release() {
    if (LineUse* const use = std::exchange(use_, nullptr)) use->release();
}

LineClaim LineUse::claim(const LineUser& user) {
    if (holder_ && holder_ != &user) return {};
    LineClaim claim(*this);
    if (claims_++ > 0) return claim;
    holder_ = &user;
    changed.raise();
    return claim;
}

void LineUse::release() {
    if (--claims_ > 0) return;
    holder_ = nullptr;
    changed.raise();
}

std::string LineUse::refusal(const LineUser* user) const {
    if (!holder_ || holder_ == user) return {};
    return "The line is in use by " + holder_->name + ".";
}

} // namespace pelvan
