// A disk that fills up: for its lifetime no file of this process grows beyond the limit, and a
// write that would fails with an error instead of a signal.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace pelvan::testing {

class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : old_handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &old_);
        rlimit limited = old_;
        limited.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    FileSizeLimit(FileSizeLimit&&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, old_handler_);
    }

  private:
    rlimit old_{};
    void (*old_handler_)(int);
};

} // namespace pelvan::testing
