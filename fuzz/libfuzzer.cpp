// Joins the one target of the program to libFuzzer, which brings main().
#include "harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const pelvan::fuzz::Target& target = *pelvan::fuzz::Target::all().front();
    pelvan::fuzz::Input input({reinterpret_cast<const char*>(data), size});
    target.run(input);
    return 0;
}
