// The history on paper: its lines, and a PDF written through the module that the program loads.
#include <gtest/gtest.h>

#include <QRegularExpression>

#include "desktop/print_module.h"
#include "desktop/printing/page_lines.h"
#include "desktop/qt_text.h"
#include "support/temp_dir.h"

namespace pelvan::desktop {
namespace {

TEST(PrintingTest, LongLinesGoOnBelowThemselvesInTheirColumn) {
    HistoryDocument document;
    document.rows = {{"16:30:05.007", "0123456789abcdef", "16:30:05.250", std::string(40, 'r')},
                     {"", "? C1", "", "a\rb"}};
    EXPECT_EQ(
        page_lines(document, 38),
        (QStringList{"Command       Response", //
                     "0123456789ab  " + QString(24, u'r'), "cdef          " + QString(16, u'r'),
                     "? C1          a" + QString(QChar(0x240D)) + "b"}));
    document.with_times = true;
    EXPECT_EQ(page_lines(document, 100)[1],
              "16:30:05.007  0123456789abcdef  16:30:05.250  " + QString(40, u'r'));
    EXPECT_FALSE(page_lines(document, 1).isEmpty()) << "the narrowest paper";
}

TEST(PrintingTest, WritesAPdfOfManyPagesThroughTheModule) {
    const pelvan::testing::TempDir dir;
    HistoryDocument document{
        "Command History and Command Response", "11-15-2026 16:30:05", false, {}};
    for (int i = 0; i < 1000; ++i)
        document.rows.push_back({"", "1 3 " + std::to_string(i), "", "1 3 2 725"});
    const std::string file = dir.file("history.pdf");
    PrintRequest request{PrintAction::WritePdf, nullptr, to_qt(file)};
    EXPECT_EQ(print_with_module(PELVAN_PROGRAM_DIRECTORY, document, request), QString());
    const QString pdf =
        QString::fromLatin1(QByteArray::fromStdString(pelvan::testing::read_file(file)));
    EXPECT_TRUE(pdf.startsWith("%PDF-"));
    const qsizetype pages = pdf.count(QRegularExpression("/Type */Page\\b"));
    EXPECT_GT(pages, 8);
    EXPECT_LT(pages, 40);

    request.pdf_file = to_qt(dir.file("no/such/place.pdf"));
    EXPECT_FALSE(print_with_module(PELVAN_PROGRAM_DIRECTORY, document, request).isEmpty());
    EXPECT_TRUE(
        print_with_module("/nowhere", document, request).startsWith("Printing is not available"));
}

} // namespace
} // namespace pelvan::desktop
