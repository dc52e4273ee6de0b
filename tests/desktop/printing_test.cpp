// The history on paper: its lines, and a PDF written through the module that the program loads.
#include "desktop/printing/history_table.h"
#include "desktop/printing/print_module.h"
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

TEST(PrintingTest, LongLinesGoOnBelowThemselvesInTheirColumn) {
    HistoryDocument document;
    document.rows = {{"16:30:05.007", "1 3 100 1", "16:30:05.250", std::string(400, 'r')},
                     {"", "? C1", "", "a\rb"}};
    QImage paper(600, 800, QImage::Format_Mono);
    for (const bool with_times : {false, true}) {
        document.with_times = with_times;
        const auto text = history_table(document, paper, paper.size());
        QTextTable* table = qobject_cast<QTextTable*>(text->rootFrame()->childFrames().first());
        ASSERT_EQ(table->columns(), with_times ? 4 : 2);
        EXPECT_EQ(table->format().headerRowCount(), 1);
        const auto cell = [&](int row, int column) {
            return table->cellAt(row, column).firstCursorPosition().block();
        };
        EXPECT_EQ(cell(0, with_times ? 1 : 0).text(), "Command");
        EXPECT_EQ(cell(1, 0).text(), with_times ? "16:30:05.007" : "1 3 100 1");
        const QTextBlock response = cell(1, with_times ? 3 : 1);
        EXPECT_EQ(response.text().size(), 400);
        ASSERT_GT(response.layout()->lineCount(), 4);
        for (int i = 0; i < response.layout()->lineCount(); ++i)
            EXPECT_LE(response.layout()->lineAt(i).naturalTextWidth(), paper.width());
        EXPECT_EQ(cell(1, 0).layout()->lineCount(), 1) << "a short one needs one line";
        EXPECT_EQ(cell(2, table->columns() - 1).text(), QString::fromUtf16(u"a\u240Db"));
        EXPECT_EQ(text->pageCount(), 1);
    }
}

TEST(PrintingTest, WritesAPdfOfManyPagesThroughTheModule) {
    const pelvan::testing::TempDir dir;
    HistoryDocument document{"Command History", "11-15-2026 16:30:05", false, {}};
    document.rows.assign(1000, {"", "1 3 100 1", "", "1 3 2 725"});
    const std::string file = dir.file("history.pdf");
    PrintRequest request{PrintAction::WritePdf, nullptr, to_qt(file)};
    EXPECT_EQ(print_with_module(PELVAN_PROGRAM_DIRECTORY, document, request), QString());
    const QString pdf = QString::fromLatin1(pelvan::testing::read_file(file));
    EXPECT_TRUE(pdf.startsWith("%PDF-"));
    const qsizetype pages = pdf.count(QRegularExpression("/Type */Page\\b"));
    EXPECT_TRUE(pages > 8 && pages < 40) << pages;

    request.pdf_file = to_qt(dir.file("no/such/place.pdf"));
    EXPECT_NE(print_with_module(PELVAN_PROGRAM_DIRECTORY, document, request), QString());
    EXPECT_NE(print_with_module("/nowhere", document, request), QString());
}

} // namespace
} // namespace pelvan::desktop
