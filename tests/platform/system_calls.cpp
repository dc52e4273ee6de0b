#include "platform/system_calls.h"

#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

namespace pelvan::testing {
namespace {
IoctlAnswers::Answer current_answer;
} // namespace

int syncs = 0;

IoctlAnswers::IoctlAnswers(Answer answer) {
    current_answer = std::move(answer);
}
IoctlAnswers::~IoctlAnswers() {
    current_answer = nullptr;
}

} // namespace pelvan::testing

// A definition in the program goes before the C library's.
extern "C" int fsync(int descriptor) {
    ++pelvan::testing::syncs;
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (pelvan::testing::current_answer)
        if (const auto result =
                pelvan::testing::current_answer(request, static_cast<int*>(argument)))
            return *result;
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}
