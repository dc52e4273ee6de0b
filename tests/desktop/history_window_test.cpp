// A history window: the times stay beside their lines wherever the list is scrolled.
#include <gtest/gtest.h>

#include <QAbstractItemView>

#include "desktop/console_window.h"
#include "desktop_fixture.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"

namespace pelvan::desktop {
namespace {

class HistoryWindowTest : public testing::WindowTest {
  protected:
    ~HistoryWindowTest() override { delete content_; }
    int top(const char* name) { return find<QAbstractItemView>(name)->indexAt(QPoint(2, 2)).row(); }

    pelvan::testing::FakeTick tick_;
    pelvan::testing::FakeClock clock_;
    pelvan::testing::FakeDialogs dialogs_;
    pelvan::testing::FakeDesktop desktop_;
    Services services_{tick_, clock_, dialogs_, desktop_, "."};
    History history_{services_};
    QWidget* content_ = make_history(context_, history_.frmResponse);
};

TEST_F(HistoryWindowTest, TimesStayBesideTheirLines) {
    content_->setParent(&window_);
    content_->resize(400, 200);
    show_active();
    for (int i = 0; i < 1000; ++i)
        history_.add("command", "response " + std::to_string(i));
    testing::run_events();
    EXPECT_FALSE(find<QWidget>("lst_CommsResponseTimes")->isVisible());
    EXPECT_GT(top("lst_CommsResponse"), 900);
    history_.frmCommand.mnuTimes.choose();
    testing::run_events();
    EXPECT_EQ(top("lst_CommsResponseTimes"), top("lst_CommsResponse"));

    history_.frmCommand.mnuTimes.choose(); // hidden, the times take no part
    history_.frmResponse.list.set_ListIndex(500);
    EXPECT_EQ(top("lst_CommsResponse"), 500);
    history_.frmCommand.mnuTimes.choose();
    testing::run_events();
    EXPECT_EQ(top("lst_CommsResponse"), 500);
    EXPECT_EQ(top("lst_CommsResponseTimes"), 500);
    find<QAbstractItemView>("lst_CommsResponseTimes")->scrollToTop();
    EXPECT_EQ(top("lst_CommsResponse"), 0);
}

} // namespace
} // namespace pelvan::desktop
