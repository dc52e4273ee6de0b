#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class ListTest : public testing::WindowTest {
  protected:
    void show() {
        bind(context_, list_, view_);
        view_->resize(300, 200);
        window_.show();
    }

    ListBox list_{"lst_Command", "Commands"};
    QListView* view_ = new QListView(&window_);
    testing::WidgetsEnd end_{window_};
};

TEST_F(ListTest, TenThousandLinesArriveOneByOneAndTheSelectedOneIsInSight) {
    show();
    int inserts = 0;
    QObject::connect(view_->model(), &QAbstractItemModel::rowsInserted, view_,
                     [&](const QModelIndex&, int first, int last) { inserts += last - first + 1; });
    for (int i = 0; i < 10000; ++i) {
        list_.AddItem("line " + std::to_string(i));
        list_.set_ListIndex(i);
    }
    testing::run_events();
    EXPECT_EQ(inserts, 10000) << "never the whole list again";
    const QRect last = view_->visualRect(view_->currentIndex());
    EXPECT_TRUE(view_->viewport()->rect().contains(last));
    EXPECT_EQ(view_->indexAt(last.center()).data().toString(), "line 9999");
    QTest::keyClick(view_, Qt::Key_PageUp);
    EXPECT_NEAR(list_.ListIndex(), 9999 - view_->verticalScrollBar()->pageStep(), 1);
    EXPECT_EQ(view_->horizontalScrollBar()->maximum(), 0);
    list_.Clear();
    const std::string line(1000, 'W'); // can be seen in its whole length
    list_.AddItem(line);
    testing::run_events();
    const int width = view_->fontMetrics().horizontalAdvance(to_qt(line));
    EXPECT_GE(view_->horizontalScrollBar()->maximum(), width - view_->viewport()->width());
}

TEST_F(ListTest, SelectionGoesBothWaysWithoutEchoAndMayBeRefused) {
    for (const char* line : {"a", "b\nc", "d"})
        list_.AddItem(line);
    list_.set_ListIndex(1);
    std::vector<int> clicked;
    list_.Click = [&] {
        clicked.push_back(list_.ListIndex());
        if (list_.ListIndex() == 3) list_.set_ListIndex(0);
    };
    show();
    EXPECT_EQ(view_->currentIndex().data().toString(), QString::fromUtf16(u"b\u240Ac"));
    QTest::keyClick(view_, Qt::Key_Down);
    list_.AddItem("first", 0); // the selection stays on its line, the last one
    EXPECT_EQ(view_->currentIndex().row(), 3);
    list_.set_ListIndex(-1);
    testing::run_events();
    EXPECT_TRUE(view_->selectionModel()->selectedIndexes().isEmpty());
    QTest::mouseClick(view_->viewport(), Qt::LeftButton, {},
                      view_->visualRect(view_->model()->index(2, 0)).center());
    QTest::keyClick(view_, Qt::Key_Down);
    EXPECT_EQ(view_->currentIndex().row(), 0);
    EXPECT_EQ(clicked, (std::vector<int>{2, -1, 2, 3, 0}));
}

TEST_F(ListTest, SeveralLinesAreSelectedFromEitherSide) {
    list_.make_multi_select();
    for (int i = 0; i < 12; ++i)
        list_.AddItem("line " + std::to_string(i));
    show();
    const auto click = [&](int row, Qt::KeyboardModifiers held) {
        QTest::mouseClick(view_->viewport(), Qt::LeftButton, held,
                          view_->visualRect(view_->model()->index(row, 0)).center());
    };
    click(2, {});
    click(4, Qt::ShiftModifier);
    click(7, Qt::ControlModifier);
    EXPECT_EQ(list_.Selected(), (std::vector<LineRange>{{2, 4}, {7, 7}}));
    click(3, Qt::ControlModifier);
    EXPECT_EQ(list_.Selected(), (std::vector<LineRange>{{2, 2}, {4, 4}, {7, 7}}));
    EXPECT_EQ(list_.ListIndex(), 3) << "where the keyboard goes on";
    list_.set_Selected({{0, 1}, {5, 6}}, 6);
    testing::run_events();
    EXPECT_EQ(view_->selectionModel()->selectedIndexes().size(), 4);
    EXPECT_EQ(view_->currentIndex().row(), 6);
    QTest::keyClick(view_, Qt::Key_Down);
    EXPECT_EQ(list_.Selected(), (std::vector<LineRange>{{7, 7}}));
    int twice = 0;
    list_.DblClick = [&] { ++twice; };
    click(7, {}); // a double click begins as one
    QTest::mouseDClick(view_->viewport(), Qt::LeftButton, {},
                       view_->visualRect(view_->model()->index(7, 0)).center());
    testing::run_events();
    EXPECT_EQ(twice, 1);
    list_.Clear();
    testing::run_events();
    EXPECT_TRUE(list_.Selected().empty());
}

} // namespace
} // namespace pelvan::desktop
