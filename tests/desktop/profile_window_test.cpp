// The window of ramp profiles with its library: what a person types, drags and presses.
#include "desktop/windows/profile_window.h"

#include <QGraphicsTextItem>
#include <QGraphicsView>

#include "desktop_fixture.h"
#include "support/simulated_program.h"

namespace pelvan::desktop::testing {
namespace {

class ProfileWindowTest : public WindowTest, protected pelvan::testing::SimulatedProgram {
  protected:
    ProfileWindowTest() : SimulatedProgram({"simulated:742", "simulated:742"}, 1) {
        tick.step_ms = 0.5;
        desktop.on_turn = run_events;
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
        frame.resize(1366, 768);
        frame.show();
        frame.activateWindow();
        form().Show();
        add_profile_window(PELVAN_PROGRAM_DIRECTORY, form(), dialogs, frame);
        run_events();
    }
    frm_ProfileLogic& form() { return app.profile_logic; }
    template <class Object = QWidget> Object* part(const char* name) {
        return frame.findChild<Object*>(QLatin1String(name));
    }
    void choose(const char* entry) {
        part<QAction>(entry)->trigger();
        run_events();
    }
    /// The column with that head.
    int column(const QString& head) {
        for (int i = 0; i < steps()->model()->columnCount(); ++i)
            if (steps()->model()->headerData(i, Qt::Horizontal).toString().startsWith(head))
                return i;
        ADD_FAILURE() << head.toStdString();
        return 0;
    }
    QTableView* steps() { return part<QTableView>("profile_steps"); }
    QModelIndex cell(int row, const QString& head) {
        return steps()->model()->index(row, column(head));
    }
    template <class Editor> Editor* edit(int row, const QString& head) {
        steps()->setFocus();
        steps()->setCurrentIndex(cell(row, head));
        QTest::keyClick(steps(), Qt::Key_F2);
        run_events();
        return steps()->findChild<Editor*>(QStringLiteral("cell_editor"));
    }
    void make_profile() {
        choose("mnuProfileNew");
        choose("mnuProfileInsert");
        choose("mnuProfileInsert");
    }

    PersonalSettings personal;
    WindowPlaces places{personal};
    MdiFrame frame{context_, app.frame, desktop, places};
};

TEST_F(ProfileWindowTest, ABadValueStaysInItsCellWithTheFocus) {
    make_profile();
    auto* editor = edit<QLineEdit>(0, "min");
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "1x");
    QTest::keyClick(editor, Qt::Key_Return);
    run_events();
    EXPECT_TRUE(part<QLabel>("lbl_ProfileMessage")->text().endsWith("not \"1x\"."));
    QTest::mouseClick(steps()->viewport(), Qt::LeftButton, {},
                      steps()->visualRect(cell(1, "h")).center());
    run_events();
    EXPECT_EQ(frame.focusWidget(), editor);
    EXPECT_EQ(editor->text(), "1x");
    editor->selectAll();
    QTest::keyClicks(editor, "45");
    QTest::keyClick(editor, Qt::Key_Return);
    run_events();
    EXPECT_EQ(cell(0, "min").data().toString(), "45");
    EXPECT_TRUE(part<QLabel>("lbl_ProfileMessage")->text().isEmpty());
    EXPECT_FALSE(cell(2, "min").flags().testFlag(Qt::ItemIsEditable)) << "the end has no time";
    EXPECT_TRUE(cell(2, "min").data(Qt::BackgroundRole).isValid());
    auto* kinds = edit<QComboBox>(0, "Kind");
    ASSERT_NE(kinds, nullptr);
    kinds->setCurrentText("ramp in a time");
    Q_EMIT kinds->activated(kinds->currentIndex());
    run_events();
    EXPECT_EQ(cell(0, "Kind").data().toString(), "ramp in a time");
    EXPECT_EQ(cell(0, "min").data().toString(), "45") << "both kinds have it";
    choose("mnuProfileUndo");
    EXPECT_EQ(cell(0, "Kind").data().toString(), "soak");
}

TEST_F(ProfileWindowTest, ALowCurveHasNumbersAtItsScale) {
    constexpr double kLeftOfPlot = 28;
    make_profile();
    form().step_sheet().enter(0, column("Kind"), "ramp in a time");
    form().step_sheet().enter(0, column("set point 1"), "50");
    auto* curve = part<QGraphicsView>("profile_curve");
    curve->setFixedHeight(175);
    run_events();
    QStringList numbers;
    for (const QGraphicsItem* item : curve->scene()->items()) {
        const auto* text = dynamic_cast<const QGraphicsTextItem*>(item);
        if (text && text->isVisible() && text->scenePos().x() < kLeftOfPlot)
            numbers << text->toPlainText();
    }
    EXPECT_TRUE(numbers.contains("50") && !numbers.contains("..."))
        << numbers.join(' ').toStdString();
}

TEST_F(ProfileWindowTest, KeysMoveTheEndOfAStepInTheCurve) {
    make_profile();
    auto* curve = part("profile_curve");
    QTest::keyClick(curve, Qt::Key_PageUp);
    QTest::keyClick(curve, Qt::Key_PageUp);
    EXPECT_EQ(steps()->currentIndex().row(), 0);
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(curve, Qt::Key_Right);
    QTest::keyClick(curve, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(cell(0, "min").data().toString(), "2");
    EXPECT_EQ(cell(0, "s").data().toString(), "59");
}

TEST_F(ProfileWindowTest, F12HoldsFromEveryWindowAndTheWindowClosesWhileItRuns) {
    make_profile();
    form().step_sheet().enter(0, column("h"), "1");
    dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Yes};
    dialogs.inputs = {"1"};
    choose("mnuProfileWrite");
    choose("mnuProfileStart");
    auto* state = part<QLabel>("lbl_ProfileState");
    EXPECT_TRUE(state->text().startsWith("Profile 1, step 1 is running")) << from_qt(state->text());
    EXPECT_FALSE(cell(0, "min").flags().testFlag(Qt::ItemIsEditable));
    EXPECT_EQ(part<QTabWidget>("profile_sides")->currentIndex(), 1);
    auto* other = new QLineEdit;
    Form elsewhere("elsewhere");
    frame.add_child(elsewhere, other);
    elsewhere.Show();
    run_events();
    QTest::keyClick(other, Qt::Key_F12);
    run_events();
    EXPECT_TRUE(state->text().startsWith("Profile 1, step 1 is held")) << from_qt(state->text());
    dialogs.files = {dir.file("run.png"), dir.file("steps.pdf")};
    choose("mnuProfileSavePng");
    choose("mnuProfilePdf");
    EXPECT_FALSE(QImage(to_qt(dir.file("run.png"))).isNull());
    const QString pdf = QString::fromLatin1(pelvan::testing::read_file(dir.file("steps.pdf")));
    EXPECT_EQ(pdf.count(QRegularExpression("/Type */Page\\b")), 1) << "curve and three steps";
    part<QMdiSubWindow>("frm_ProfileLogic")->close();
    run_events();
    EXPECT_FALSE(form().Visible());
    elsewhere.Unload();
}

TEST_F(ProfileWindowTest, SaysThatTheLibraryIsMissing) {
    frm_ProfileLogic lonely(app.services, app.profile_link, app.modbus);
    lonely.Show();
    add_profile_window("/nowhere", lonely, dialogs, frame);
    EXPECT_TRUE(dialogs.texts().back().starts_with("The profiles cannot be shown: "));
    EXPECT_FALSE(lonely.Visible());
}

} // namespace
} // namespace pelvan::desktop::testing
