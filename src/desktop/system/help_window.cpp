#include "desktop/system/help_window.h"

#include <QAction>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolBar>
#include <QVBoxLayout>

namespace pelvan::desktop {
namespace {

constexpr char kContentsPage[] = "index.html";
constexpr int kLines = 40; // of the window, as high as the letters are
constexpr int kLetters = 120;
constexpr int kListLetters = 40;

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
    browser_->setObjectName(QStringLiteral("help_page"));
    browser_->setAccessibleName(QStringLiteral("Help page"));
    auto* halves = new QSplitter(this);
    halves->addWidget(make_list());
    halves->addWidget(browser_);
    halves->setStretchFactor(1, 1);
    halves->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(make_bar());
    layout->addWidget(halves, 1);
    resize(QSize(fontMetrics().averageCharWidth() * kLetters, fontMetrics().height() * kLines)
               .boundedTo(screen()->availableSize() * 9 / 10));
    const int list = fontMetrics().averageCharWidth() * kListLetters;
    halves->setSizes({list, width() - list});
    read_pages();
    list_pages({});
    add_keys();
    connect(search_, &QLineEdit::textChanged, this,
            [this](const QString& text) { list_pages(text); });
    connect(contents_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
        if (item != nullptr) show_page(item->data(Qt::UserRole).toString());
    });
    connect(browser_, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) {
        shown_ = url.fileName();
        page_changed();
    });
}

QWidget* HelpWindow::make_list() {
    auto* left = new QWidget;
    auto* column = new QVBoxLayout(left);
    column->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(QStringLiteral("&Search:"));
    label->setBuddy(search_);
    search_->setObjectName(QStringLiteral("help_search"));
    search_->setAccessibleName(QStringLiteral("Search"));
    search_->setClearButtonEnabled(true);
    search_->setToolTip(QStringLiteral("Pages that hold this text; Enter and F3 go from one place "
                                       "in the page to the next, Shift+F3 back."));
    contents_->setObjectName(QStringLiteral("help_contents"));
    contents_->setAccessibleName(QStringLiteral("Contents"));
    column->addWidget(label);
    column->addWidget(search_);
    column->addWidget(contents_);
    return left;
}

QToolBar* HelpWindow::make_bar() {
    auto* bar = new QToolBar;
    bar->setAccessibleName(QStringLiteral("Pages"));
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    const auto add = [this, bar](const char* text, QKeySequence::StandardKey key, auto go) {
        QAction* action = bar->addAction(QLatin1String(text));
        action->setShortcut(QKeySequence(key));
        action->setToolTip(action->iconText() + QStringLiteral(" (") +
                           action->shortcut().toString(QKeySequence::NativeText) + u')');
        connect(action, &QAction::triggered, browser_, go);
        return action;
    };
    QAction* back = add("&Back", QKeySequence::Back, &QTextBrowser::backward);
    QAction* forward = add("&Forward", QKeySequence::Forward, &QTextBrowser::forward);
    QAction* home = add("&Home", QKeySequence::UnknownKey, [this] { show_page({}); });
    home->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Home));
    home->setToolTip(QStringLiteral("The contents (Alt+Home)"));
    for (QAction* action : {back, forward})
        action->setEnabled(false);
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
    // Reached by Tab, as everything is.
    for (QWidget* button : bar->findChildren<QWidget*>())
        if (button->inherits("QToolButton")) button->setFocusPolicy(Qt::StrongFocus);
    return bar;
}

void HelpWindow::add_keys() {
    const auto on = [this](const QKeySequence& key, auto handler) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, handler);
    };
    on(QKeySequence(Qt::Key_Escape), [this] { close(); });
    on(QKeySequence(Qt::Key_F3), [this] { find_next(false); });
    on(QKeySequence(Qt::SHIFT | Qt::Key_F3), [this] { find_next(true); });
    on(QKeySequence(Qt::CTRL | Qt::Key_F), [this] {
        search_->setFocus();
        search_->selectAll();
    });
    connect(search_, &QLineEdit::returnPressed, this, [this] { find_next(false); });
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

/// The first page that holds the text comes up, unless the one that is read holds it.
void HelpWindow::list_pages(const QString& wanted) {
    {
        const QSignalBlocker quiet(contents_);
        contents_->clear();
        for (const Page& page : pages_) {
            if (!page.title.contains(wanted, Qt::CaseInsensitive) &&
                !page.text.contains(wanted, Qt::CaseInsensitive))
                continue;
            auto* item = new QListWidgetItem(page.title, contents_);
            item->setData(Qt::UserRole, page.file);
            if (page.file == shown_) contents_->setCurrentItem(item);
        }
    }
    const bool any = contents_->count() > 0;
    if (!any) {
        auto* none = new QListWidgetItem(QStringLiteral("No page holds this text."), contents_);
        none->setFlags(Qt::NoItemFlags);
    }
    const bool first = any && contents_->currentRow() < 0 && !shown_.isEmpty();
    if (first) contents_->setCurrentRow(0);
    mark_found();
}

/// The list follows the page, wherever a link or the way back led to.
void HelpWindow::page_changed() {
    const QSignalBlocker quiet(contents_);
    contents_->setCurrentItem(nullptr);
    for (int row = 0; row < contents_->count(); ++row)
        if (contents_->item(row)->data(Qt::UserRole).toString() == shown_)
            contents_->setCurrentRow(row);
    mark_found();
}

void HelpWindow::mark_found() {
    QList<QTextEdit::ExtraSelection> marks;
    const QString wanted = search_->text();
    QTextCursor at(browser_->document());
    while (!wanted.isEmpty() && !(at = browser_->document()->find(wanted, at)).isNull()) {
        QTextEdit::ExtraSelection mark;
        mark.cursor = at;
        mark.format.setBackground(QColor(255, 220, 90));
        mark.format.setForeground(Qt::black); // readable on it in a dark theme too
        marks.append(mark);
    }
    browser_->setExtraSelections(marks);
    if (marks.isEmpty()) return;
    QTextCursor first = marks.constFirst().cursor;
    first.clearSelection();
    browser_->setTextCursor(first); // scrolls there
}

void HelpWindow::find_next(bool backward) {
    const QString wanted = search_->text();
    if (wanted.isEmpty()) return;
    const auto way = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    if (browser_->find(wanted, way)) return;
    browser_->moveCursor(backward ? QTextCursor::End : QTextCursor::Start); // and round again
    browser_->find(wanted, way);
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
    const QSignalBlocker quiet(contents_);
    contents_->setCurrentItem(nullptr);
    browser_->setPlainText(QStringLiteral("There is no help page \"%1\".\n\nHelp pages are looked "
                                          "for in the folder\n%2")
                               .arg(file, QDir::toNativeSeparators(folder_)));
}

} // namespace pelvan::desktop
