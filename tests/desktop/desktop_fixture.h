// A bare window with a runner that collects run-time errors, and the whole windowed program.
#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <QtWidgets>
#include <functional>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"
#include "desktop/windows/main_window.h"
#include "platform/run_time_error.h"
#include "support/configuration.h"

namespace pelvan::desktop::testing {

/// Also what a widget puts off, to be painted less often.
inline void run_events() {
    for (const QWidget* window : QApplication::topLevelWidgets())
        for (QTimer* throttle : window->findChildren<QTimer*>(QStringLiteral("update_throttle")))
            throttle->setInterval(0);
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

/// Acts on the next modal dialog of the kind, as soon as a blocking call has opened it.
template <class Dialog> void when_asked(std::function<void(Dialog&)> answer) {
    auto* look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, look, [look, answer = std::move(answer)] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) return;
        look->stop();
        look->deleteLater();
        answer(*dialog);
    });
    look->start(0);
}

/// Ends a window's widgets before the models that stand above it in the test.
struct WidgetsEnd {
    QWidget& window;
    ~WidgetsEnd() { qDeleteAll(window.children()); }
};

class WindowTest : public ::testing::Test {
  protected:
    template <class Object> Object* find(const std::string& name) {
        return window_.findChild<Object*>(to_qt(name));
    }
    void show_active() {
        window_.show();
        window_.activateWindow();
        run_events();
    }

    std::vector<int> errors_;
    QWidget window_;
    BindContext context_{[this](const std::function<void()>& handler) {
                             try {
                                 handler();
                             } catch (const RunTimeError& error) {
                                 errors_.push_back(error.number());
                             }
                         },
                         &window_, nullptr};
};

class ProgramTest : public ::testing::Test {
  protected:
    void open(const std::vector<std::string>& devices, int protocol = 1) {
        pelvan::testing::configure_devices(dir_, devices,
                                           "DEFAULT PROTOCOL=" + std::to_string(protocol) + "\r\n");
        main_ = std::make_unique<MainWindow>(dir_.path());
        main_->open();
        run_events();
    }
    Application& app() { return main_->application(); }
    template <class Object = QWidget> Object* find(const char* name) {
        return main_->frame().findChild<Object*>(QLatin1String(name));
    }

    pelvan::testing::TempDir dir_;
    std::unique_ptr<MainWindow> main_;
};

} // namespace pelvan::desktop::testing
