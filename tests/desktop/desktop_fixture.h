// A bare window and a runner that collects run-time errors.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <QWidget>
#include <vector>

#include "desktop/bind.h"
#include "desktop/qt_text.h"
#include "platform/run_time_error.h"

namespace pelvan::desktop::testing {

inline void run_events() {
    QCoreApplication::processEvents();
}

/// Ends a window's widgets before the models that stand above it in the test.
class WidgetsEnd {
  public:
    explicit WidgetsEnd(QWidget& window) : window_(window) {}
    WidgetsEnd(const WidgetsEnd&) = delete;
    WidgetsEnd& operator=(const WidgetsEnd&) = delete;
    ~WidgetsEnd() { qDeleteAll(window_.children()); }

  private:
    QWidget& window_;
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

} // namespace pelvan::desktop::testing
