// Data Logging as a technician sees it, and the trend library beside the program.
#include "desktop/charts/trend_library.h"
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class LoggingWindowTest : public testing::ProgramTest {
  protected:
    LoggingWindowTest() {
        open({"simulated:742", "simulated:742"});
        pelvan::testing::write_file(
            dir_.file("set.PV5"),
            "[LOGGING DATA DEVICE AND REGISTER SET]\n1DEVICEADDRESS=1\n1DEVICECOMMAND=3\n"
            "1DEVICEREGISTER=0\n2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n2DEVICEREGISTER=60000\n"
            "3DEVICEADDRESS=300\n3DEVICECOMMAND=3\n3DEVICEREGISTER=0\n");
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_D,
                        Qt::ControlModifier | Qt::ShiftModifier);
        testing::run_events();
    }
    QVariant cell(int row, int column, int role = Qt::DisplayRole) {
        const QAbstractItemModel* cells = find<QTableView>("MSFlexGrid1")->model();
        return cells->data(cells->index(row - 1, column), role);
    }
    frm_DataLogging& form() { return app().logging; }
};

TEST_F(LoggingWindowTest, ShowsAtAGlanceWhatBecameOfEachRow) {
    EXPECT_TRUE(find("frm_DataLogging")->isVisible());
    form().logger().ReadLogSet(dir_.file("set.PV5"));
    form().mnuStartLogging.choose();
    EXPECT_EQ(cell(1, 0).toString(), QStringLiteral("Yes \u2713"));
    EXPECT_EQ(cell(2, 0).toString(), QStringLiteral("Yes ! exception"));
    EXPECT_EQ(cell(3, 0).toString(), QStringLiteral("Yes \u2717 no reply"));
    EXPECT_NE(cell(1, 5, Qt::BackgroundRole), cell(2, 5, Qt::BackgroundRole));
    EXPECT_EQ(cell(4, 0).toString(), QString());
    EXPECT_TRUE(find("Label4")->isVisible());
    EXPECT_FALSE(find("scrl_LoggingInterval(2)")->isEnabled());
    EXPECT_TRUE(find<QTimer>("tmr_LoggingInterval")->isActive());
    // Back from another window: what is not polled does not look as if it were.
    form().Form_Activate();
    EXPECT_EQ(cell(1, 0).toString(), QStringLiteral("Yes \u2013 not polled"));
    EXPECT_FALSE(cell(1, 5, Qt::BackgroundRole).isValid());
    EXPECT_TRUE(find("lbl_NotPolled")->isVisible() && find("cmd_LoadAgain")->isVisible());
    EXPECT_FALSE(find("Label4")->isEnabled());
    EXPECT_TRUE(find("frm_DataLogging")->windowTitle().endsWith("(no row is polled)"));
    form().mnuStopLogging.choose();
    EXPECT_FALSE(find("Label4")->isVisible());
    // The upper arrow of a bar adds.
    find<QScrollBar>("scrl_LoggingInterval(2)")
        ->triggerAction(QAbstractSlider::SliderSingleStepSub);
    EXPECT_EQ(form().txt_LoggingInterval[2].Text(), "11");
}

TEST_F(LoggingWindowTest, TheTrendFollowsAndLeavesTheRowsInUse) {
    const TrendWindow trend =
        make_trend_window(PELVAN_PROGRAM_DIRECTORY, form().logger().trend(), &main_->frame());
    ASSERT_NE(trend.window, nullptr) << trend.error.toStdString();
    trend.window->show();
    testing::run_events();
    auto* chart = trend.window->findChild<QWidget*>("trend_chart");
    QTest::keyClick(chart, Qt::Key_Plus); // there is nothing to zoom or pan yet
    QTest::keyClick(chart, Qt::Key_Left, Qt::ShiftModifier);
    const auto pass = [&] {
        form().logger().RunLoggingPass();
        QTest::keyClick(chart, Qt::Key_Home);
    };
    form().logger().ReadLogSet(dir_.file("set.PV5"));
    pass();
    auto* legend = trend.window->findChild<QTableWidget*>("trend_legend");
    ASSERT_EQ(legend->rowCount(), 3);
    EXPECT_EQ(legend->item(0, 0)->text(), "Register 0 at 1");
    EXPECT_EQ(legend->item(0, 1)->text(), "742");
    EXPECT_EQ(legend->item(1, 1)->text(), "no value");
    const auto drawn = [&] { return chart->grab().toImage(); };
    const QImage with_all = drawn();
    legend->item(0, 0)->setCheckState(Qt::Unchecked);
    EXPECT_NE(drawn(), with_all);
    legend->item(0, 0)->setCheckState(Qt::Checked);
    EXPECT_EQ(drawn(), with_all);
    QTest::keyClick(chart, Qt::Key_Plus, Qt::ControlModifier); // the values
    EXPECT_NE(drawn(), with_all);
    QTest::keyClick(chart, Qt::Key_Home);
    EXPECT_EQ(drawn(), with_all);
    for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Left, Qt::Key_Home, Qt::Key_End})
        QTest::keyClick(chart, key);
    testing::when_asked<QFileDialog>([this](QFileDialog& dialog) {
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(to_qt(dir_.file("picture")));
        static_cast<QDialog&>(dialog).accept();
    });
    for (QPushButton* button : trend.window->findChildren<QPushButton*>())
        if (button->text() == "Save &PNG...") button->click();
    EXPECT_FALSE(QImage(to_qt(dir_.file("picture.png"))).isNull());
    EXPECT_TRUE(form().logger().set().row(1).in_use);
    find<QAction>("mnuDataLogging")->trigger();
    EXPECT_TRUE(form().logger().set().row(1).in_use) << "the window was the active one already";
    form().Form_Activate();
    pass();
    QTest::keyClick(chart, Qt::Key_Home);
    EXPECT_EQ(legend->rowCount(), 0);
    EXPECT_NE(make_trend_window("/nowhere", form().logger().trend(), nullptr).error, QString());
}

} // namespace
} // namespace pelvan::desktop
