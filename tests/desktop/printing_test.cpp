// The history on paper: its lines, and a PDF written through the module that the program loads.
#include "desktop/printing/page_lines.h"
#include "desktop/printing/print_module.h"
#include "desktop_fixture.h"

namespace pelvan::desktop {
namespace {

TEST(PrintingTest, LongLinesGoOnBelowThemselvesInTheirColumn) {
    HistoryDocument document;
    document.rows = {{"16:30:05.007", "0123456789abcdef", "16:30:05.250", std::string(40, 'r')},
                     {"", "? C1", "", "a\rb"}};
    EXPECT_EQ(page_lines(document, 38),
              (QStringList{"Command       Response", "0123456789ab  " + QString(24, u'r'),
                           "cdef          " + QString(16, u'r'),
                           QString::fromUtf16(u"? C1          a\u240Db")}));
    document.with_times = true;
    EXPECT_EQ(page_lines(document, 100)[1],
              "16:30:05.007  0123456789abcdef  16:30:05.250  " + QString(40, u'r'));
    EXPECT_FALSE(page_lines(document, 1).isEmpty()) << "the narrowest paper";
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
