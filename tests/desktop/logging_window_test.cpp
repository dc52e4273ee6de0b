// Data Logging as a technician sees it, and the trend library beside the program.
#include <gtest/gtest.h>

#include <QAbstractItemModel>
#include <QGraphicsView>
#include <QScrollBar>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include "desktop/main_window.h"
#include "desktop/trend_library.h"
#include "desktop_fixture.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

class LoggingWindowTest : public ::testing::Test {
  protected:
    LoggingWindowTest() {
        pelvan::testing::write_file(
            dir_.file("pelvan7.ini"),
            "[COMMS CONTROLS]\nDEVICE 0 COMM PORT =1\nDEVICE 0 PORT SETTING =9600,N,8,1\n"
            "DEVICE 1 COMM PORT =2\nDEVICE 1 PORT SETTING =9600,N,8,1\n[SERIAL DEVICES]\n"
            "PORT 1=simulated:742\nPORT 2=simulated:742\n");
        pelvan::testing::write_file(
            dir_.file("set.PV5"),
            "[LOGGING DATA DEVICE AND REGISTER SET]\n1DEVICEADDRESS=1\n1DEVICECOMMAND=3\n"
            "1DEVICEREGISTER=0\n2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n2DEVICEREGISTER=60000\n"
            "3DEVICEADDRESS=300\n3DEVICECOMMAND=3\n3DEVICEREGISTER=0\n");
        window_ = std::make_unique<MainWindow>(dir_.path());
        window_->open();
        testing::run_events();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_D,
                        Qt::ControlModifier | Qt::ShiftModifier);
        testing::run_events();
    }
    template <class Object = QWidget> Object* find(const char* name) {
        return window_->frame().findChild<Object*>(QLatin1String(name));
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole) {
        const QAbstractItemModel* cells = find<QTableView>("MSFlexGrid1")->model();
        return cells->data(cells->index(row - 1, column), role);
    }
    frm_DataLogging& form() { return window_->application().logging; }

    pelvan::testing::TempDir dir_;
    std::unique_ptr<MainWindow> window_;
};

TEST_F(LoggingWindowTest, ShowsAtAGlanceWhatBecameOfEachRow) {
    EXPECT_TRUE(find("frm_DataLogging")->isVisible());
    form().ReadLogSet(dir_.file("set.PV5"));
    form().mnuStartLogging.choose();
    EXPECT_EQ(cell(1, 0).toString(), QStringLiteral("Yes \u2713"));
    EXPECT_EQ(cell(2, 0).toString(), QStringLiteral("Yes ! exception"));
    EXPECT_EQ(cell(3, 0).toString(), QStringLiteral("Yes \u2717 no reply"));
    EXPECT_NE(cell(1, 5, Qt::BackgroundRole), cell(2, 5, Qt::BackgroundRole));
    EXPECT_EQ(cell(4, 0).toString(), QString());
    EXPECT_EQ(cell(1, 5).toString(), QStringLiteral(" 742"));
    EXPECT_TRUE(find("Label4")->isVisible());
    EXPECT_FALSE(find("scrl_LoggingInterval(2)")->isEnabled());
    EXPECT_TRUE(window_->frame().findChild<QTimer*>("tmr_LoggingInterval")->isActive());
    form().mnuStopLogging.choose();
    EXPECT_FALSE(find("Label4")->isVisible());
}

TEST_F(LoggingWindowTest, TheUpperArrowOfABarAdds) {
    auto* bar = find<QScrollBar>("scrl_LoggingInterval(2)");
    bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
    EXPECT_EQ(form().txt_LoggingInterval[2].Text(), "11");
    EXPECT_EQ(form().trend().passes(), 0U);
}

TEST_F(LoggingWindowTest, TheTrendFollowsAndLeavesTheRowsInUse) {
    const TrendWindow trend = make_trend_window(QStringLiteral(PELVAN_PROGRAM_DIRECTORY),
                                                form().trend(), &window_->frame());
    ASSERT_NE(trend.window, nullptr) << trend.error.toStdString();
    trend.window->show();
    testing::run_events();
    auto* chart = trend.window->findChild<QWidget*>("trend_chart");
    QTest::keyClick(chart, Qt::Key_Plus); // there is nothing to zoom or pan yet
    QTest::keyClick(chart, Qt::Key_Left, Qt::ShiftModifier);
    const auto pass = [&] {
        form().RunLoggingPass();
        QTest::keyClick(chart, Qt::Key_Home);
    };
    form().ReadLogSet(dir_.file("set.PV5"));
    pass();
    auto* legend = trend.window->findChild<QTableWidget*>("trend_legend");
    ASSERT_EQ(legend->rowCount(), 3);
    EXPECT_EQ(legend->item(0, 0)->text(), QStringLiteral("Address 1 register 0"));
    EXPECT_EQ(legend->item(0, 1)->text(), QStringLiteral("742"));
    EXPECT_EQ(legend->item(1, 1)->text(), QStringLiteral("no value"));
    auto* values = trend.window->findChild<QGraphicsView*>("trend_chart");
    const auto drawn = [&] { return values->grab().toImage(); };
    const QImage with_all = drawn();
    legend->item(0, 0)->setCheckState(Qt::Unchecked);
    EXPECT_NE(drawn(), with_all);
    legend->item(0, 0)->setCheckState(Qt::Checked);
    EXPECT_EQ(drawn(), with_all);
    for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Left, Qt::Key_Home, Qt::Key_End})
        QTest::keyClick(chart, key);
    EXPECT_TRUE(form().in_use(1));
    find<QAction>("mnuDataLogging")->trigger();
    EXPECT_TRUE(form().in_use(1)) << "the window was the active one already";
    form().Form_Activate();
    pass();
    QTest::keyClick(chart, Qt::Key_Left);
    EXPECT_EQ(legend->rowCount(), 0);
    EXPECT_NE(make_trend_window(QStringLiteral("/nowhere"), form().trend(), nullptr).error,
              QString());
}

} // namespace
} // namespace pelvan::desktop
