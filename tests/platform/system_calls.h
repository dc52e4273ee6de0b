// Stands between the code under test and the system, in this test program alone: counts the calls
// that must not be left out, and answers for hardware that a test does not have.
#pragma once

#include <functional>
#include <optional>
#include <utility>

namespace pelvan::testing {

/// Calls of fsync so far.
extern int syncs;

/// Answers the program's ioctl calls for as long as it lives: a result, with errno set for -1;
/// nothing leaves the call to the system.
class IoctlAnswers {
  public:
    using Answer = std::function<std::optional<int>(unsigned long request, int* argument)>;
    explicit IoctlAnswers(Answer answer);
    IoctlAnswers(const IoctlAnswers&) = delete;
    IoctlAnswers& operator=(const IoctlAnswers&) = delete;
    ~IoctlAnswers();
};

} // namespace pelvan::testing
