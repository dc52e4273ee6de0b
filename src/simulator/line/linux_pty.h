// A pseudo-terminal that stands for a serial device, and a symbolic link by which programs find it.
#pragma once

#include <string>

namespace pelvan::simulator {

class Pty {
  public:
    /// Raw and at 9600,N,8,1 until a client sets it otherwise; `good` tells whether it could be
    /// made, `errno` why not.
    Pty();
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;
    ~Pty();

    [[nodiscard]] bool good() const { return !path_.empty(); }
    /// The controlling side: closed at a program that is started meanwhile, and never blocks.
    [[nodiscard]] int master() const { return master_; }
    /// What clients open.
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    int master_ = -1;
    // Held open to the end: without any open end the controlling side sees nothing but a hang-up.
    int slave_ = -1;
    std::string path_;
};

/// A symbolic link that goes when its maker goes, unless it has been made another's meanwhile.
class PtyLink {
  public:
    PtyLink(std::string path, std::string target)
        : path_(std::move(path)), target_(std::move(target)) {}
    PtyLink(const PtyLink&) = delete;
    PtyLink& operator=(const PtyLink&) = delete;
    ~PtyLink();

    /// Empty when made, else why not.
    [[nodiscard]] std::string make();

  private:
    std::string path_;
    std::string target_;
    bool made_ = false;
};

} // namespace pelvan::simulator
