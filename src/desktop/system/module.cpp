#include "desktop/system/module.h"

#include <QLibrary>

namespace pelvan::desktop {

ModuleEntry find_in_module(const QString& directory, const char* module, const char* function) {
    QLibrary library(directory + u'/' + QLatin1String(module));
    const QFunctionPointer address = library.resolve(function);
    return {address, address ? QString() : library.errorString()};
}

} // namespace pelvan::desktop
