// A small window that shows the help pages of a folder: their list, a box that narrows the list to
// the pages in which a text stands, and the page with that text marked. Pages are HTML files,
// "index.html" the contents.
#pragma once

#include <QWidget>
#include <vector>

class QLineEdit;
class QListWidget;
class QTextBrowser;
class QToolBar;

namespace pelvan::desktop {

class HelpWindow : public QWidget {
  public:
    explicit HelpWindow(QString folder);

    /// Shows a page, "listen" or "listen.html"; the contents for an empty name. A page that is not
    /// there is replaced by one that says so.
    void show_page(const QString& name);

  private:
    struct Page {
        QString file;
        QString title;
        QString text; // for the search
    };

    QWidget* make_list();
    QToolBar* make_bar();
    void add_keys();
    void read_pages();
    void list_pages(const QString& wanted);
    void show_missing(const QString& file);
    void page_changed();
    void mark_found();
    void find_next(bool backward);

    QString folder_;
    std::vector<Page> pages_;
    QString shown_; // file
    QLineEdit* search_;
    QListWidget* contents_;
    QTextBrowser* browser_;
};

} // namespace pelvan::desktop
