// Libraries beside the program that are loaded on first use, because the start would pay in memory
// and time for what they link.
#pragma once

#include <QFunctionPointer>
#include <QString>

namespace pelvan::desktop {

/// Where the libraries of this program lie.
[[nodiscard]] QString module_folder();

struct ModuleEntry {
    QFunctionPointer address = nullptr; // null when the module or the function is missing
    QString error;                      // then why
};

/// The module's function of that name; the module stays loaded.
[[nodiscard]] ModuleEntry find_in_module(const QString& directory, const char* module,
                                         const char* function);

} // namespace pelvan::desktop
