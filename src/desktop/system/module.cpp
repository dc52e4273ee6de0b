#include "desktop/system/module.h"

#include <QCoreApplication>
#include <QLibrary>

#include "config/application_directory.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {

QString module_folder() {
    return to_qt(find_installation(from_qt(QCoreApplication::applicationDirPath())).modules);
}

ModuleEntry find_in_module(const QString& directory, const char* module, const char* function) {
    QLibrary library(directory + u'/' + QLatin1String(module));
    const QFunctionPointer address = library.resolve(function);
    return {address, address ? QString() : library.errorString()};
}

} // namespace pelvan::desktop
