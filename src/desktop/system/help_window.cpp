#include "desktop/system/help_window.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

namespace pelvan::desktop {
namespace {

constexpr char kContentsPage[] = "index.html";

QString file_of(const QString& name) {
    if (name.isEmpty()) return QString::fromLatin1(kContentsPage);
    return name.endsWith(QStringLiteral(".html")) ? name : name + QStringLiteral(".html");
}

QString read_file(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

HelpWindow::HelpWindow(QString folder)
    : folder_(std::move(folder)), search_(new QLineEdit), contents_(new QListWidget),
      browser_(new QTextBrowser) {
    setObjectName(QStringLiteral("help_window"));
    setWindowTitle(QStringLiteral("Pelvan 7 Help"));
    auto* left = new QWidget;
    auto* column = new QVBoxLayout(left);
    auto* label = new QLabel(QStringLiteral("&Search:"));
    label->setBuddy(search_);
    column->addWidget(label);
    column->addWidget(search_);
    column->addWidget(contents_);
    search_->setObjectName(QStringLiteral("help_search"));
    search_->setAccessibleName(QStringLiteral("Search"));
    contents_->setObjectName(QStringLiteral("help_contents"));
    contents_->setAccessibleName(QStringLiteral("Contents"));
    browser_->setObjectName(QStringLiteral("help_page"));
    browser_->setAccessibleName(QStringLiteral("Help page"));
    auto* halves = new QSplitter(this);
    halves->addWidget(left);
    halves->addWidget(browser_);
    halves->setStretchFactor(1, 1);
    (new QVBoxLayout(this))->addWidget(halves);
    resize(760, 520);
    read_pages();
    list_pages({});
    connect(search_, &QLineEdit::textChanged, this,
            [this](const QString& text) { list_pages(text); });
    connect(contents_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        if (item != nullptr) show_page(item->data(Qt::UserRole).toString());
    });
}

void HelpWindow::read_pages() {
    const QDir folder(folder_);
    for (const QString& file :
         folder.entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name)) {
        QTextDocument document;
        document.setHtml(read_file(folder.filePath(file)));
        const QString title = document.metaInformation(QTextDocument::DocumentTitle);
        pages_.push_back({file, title.isEmpty() ? file : title, document.toPlainText()});
    }
    const auto contents_first = [](const Page& page) {
        return page.file == QLatin1String(kContentsPage);
    };
    std::stable_partition(pages_.begin(), pages_.end(), contents_first);
}

void HelpWindow::list_pages(const QString& wanted) {
    const QSignalBlocker quiet(contents_); // the page that is read stays
    contents_->clear();
    for (const Page& page : pages_) {
        if (!page.title.contains(wanted, Qt::CaseInsensitive) &&
            !page.text.contains(wanted, Qt::CaseInsensitive))
            continue;
        auto* item = new QListWidgetItem(page.title, contents_);
        item->setData(Qt::UserRole, page.file);
    }
}

void HelpWindow::show_page(const QString& name) {
    const QString file = file_of(name);
    for (const Page& page : pages_) {
        if (page.file != file) continue;
        browser_->setSource(QUrl::fromLocalFile(QDir(folder_).filePath(file)));
        return;
    }
    show_missing(file);
}

void HelpWindow::show_missing(const QString& file) {
    browser_->setPlainText(QStringLiteral("There is no help page \"%1\".\n\nHelp pages are looked "
                                          "for in the folder\n%2")
                               .arg(file, QDir::toNativeSeparators(folder_)));
}

} // namespace pelvan::desktop
