#include <gtest/gtest.h>

#include <QScrollBar>

#include "desktop/line_view.h"
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

class ListTest : public testing::WindowTest {
  protected:
    ~ListTest() override { delete view_; }

    ListBox list_{"lst_Command", "Commands"};
    LineView* view_ = new LineView(&window_);
};

TEST_F(ListTest, TenThousandLinesArriveOneByOneAndTheSelectedOneIsInSight) {
    bind(context_, list_, view_);
    view_->resize(300, 200);
    window_.show();
    int inserts = 0;
    int resets = 0;
    QObject::connect(view_->model(), &QAbstractItemModel::rowsInserted, view_,
                     [&](const QModelIndex&, int first, int last) { inserts += last - first + 1; });
    QObject::connect(view_->model(), &QAbstractItemModel::modelReset, view_, [&] { ++resets; });
    for (int i = 0; i < 10000; ++i) {
        list_.AddItem("line " + std::to_string(i));
        list_.set_ListIndex(i);
    }
    testing::run_events();
    EXPECT_EQ(inserts, 10000);
    EXPECT_EQ(resets, 0);
    EXPECT_EQ(view_->currentIndex().row(), 9999);
    EXPECT_TRUE(view_->viewport()->rect().contains(view_->visualRect(view_->currentIndex())));
    EXPECT_EQ(view_->currentIndex().data().toString(), "line 9999");
    EXPECT_EQ(view_->indexAt(view_->visualRect(view_->currentIndex()).center()).row(), 9999);
    QTest::keyClick(view_, Qt::Key_PageUp);
    EXPECT_EQ(list_.ListIndex(), 9999 - view_->verticalScrollBar()->pageStep());
    QTest::keyClick(view_, Qt::Key_Home);
    EXPECT_EQ(list_.ListIndex(), 0);
    EXPECT_EQ(view_->verticalScrollBar()->value(), 0);
    list_.Clear();
    EXPECT_EQ(view_->model()->rowCount(), 0);
    EXPECT_EQ(list_.ListIndex(), -1);
    list_.AddItem("after");
    EXPECT_EQ(view_->model()->rowCount(), 1);
}

TEST_F(ListTest, SelectionGoesBothWaysWithoutEcho) {
    for (const char* line : {"a", "b\nc", "d"})
        list_.AddItem(line);
    std::vector<int> clicked;
    list_.Click = [&] { clicked.push_back(list_.ListIndex()); };
    list_.set_ListIndex(1);
    bind(context_, list_, view_);
    window_.show();
    EXPECT_EQ(view_->currentIndex().row(), 1);
    EXPECT_EQ(view_->currentIndex().data().toString(), QString::fromUtf8("b\xE2\x90\x8A"
                                                                         "c"));
    QTest::keyClick(view_, Qt::Key_Down);
    EXPECT_EQ(list_.ListIndex(), 2);
    list_.AddItem("first", 0);
    EXPECT_EQ(view_->currentIndex().row(), 3);
    list_.set_ListIndex(-1);
    EXPECT_TRUE(view_->selectionModel()->selectedIndexes().isEmpty());
    QTest::mouseClick(view_->viewport(), Qt::LeftButton, {},
                      view_->visualRect(view_->model()->index(0, 0)).center());
    EXPECT_EQ(clicked, (std::vector<int>{1, 2, -1, 0}));
}

TEST_F(ListTest, WholeLengthOfALongLineCanBeSeen) {
    bind(context_, list_, view_);
    view_->resize(300, 200);
    window_.show();
    EXPECT_EQ(view_->horizontalScrollBar()->maximum(), 0);
    const std::string line(1000, 'W');
    list_.AddItem(line);
    const int width = view_->fontMetrics().horizontalAdvance(to_qt(line));
    EXPECT_GE(view_->horizontalScrollBar()->maximum(), width - view_->viewport()->width());
    list_.set_ListIndex(0);
    QTest::keyClick(view_, Qt::Key_Right);
    EXPECT_GT(view_->horizontalScrollBar()->value(), 0);
    EXPECT_FALSE(view_->grab().isNull()); // draws
}

TEST_F(ListTest, HandlerMayRefuseASelection) {
    list_.AddItem("a");
    list_.AddItem("b");
    list_.Click = [&] {
        if (list_.ListIndex() == 1) list_.set_ListIndex(0);
    };
    bind(context_, list_, view_);
    list_.set_ListIndex(0);
    QTest::keyClick(view_, Qt::Key_Down);
    EXPECT_EQ(list_.ListIndex(), 0);
    EXPECT_EQ(view_->currentIndex().row(), 0);
}

} // namespace
} // namespace pelvan::desktop
