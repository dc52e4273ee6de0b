#include <dlfcn.h>

#include "platform/shared_library.h"

namespace pelvan {

LibraryFunction find_in_library(const std::string& path, const char* function, std::string& error) {
    // Bound at once: a symbol that is missing shows here and not in the middle of the work.
    void* const library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const found = library ? ::dlsym(library, function) : nullptr;
    if (!found) error = ::dlerror();
    return reinterpret_cast<LibraryFunction>(found);
}

} // namespace pelvan
