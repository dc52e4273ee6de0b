#include "desktop/windows/mdi_frame.h"

#include <QAction>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScopedValueRollback>
#include <QShortcut>
#include <algorithm>

#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

/// A key that a menu has as well would run neither the one nor the other.
bool has_key(const std::vector<QMenu*>& menus, const QKeySequence& key) {
    return std::any_of(menus.begin(), menus.end(), [&key](const QMenu* menu) {
        const auto entries = menu->actions();
        return std::any_of(entries.begin(), entries.end(),
                           [&key](const QAction* entry) { return entry->shortcut() == key; });
    });
}

} // namespace

MdiFrame::MdiFrame(const BindContext& context, Form& form, DesktopServices& services,
                   WindowPlaces& places)
    : activation_(context.run), context_(context), form_(form), services_(services),
      places_(places), area_(new QMdiArea(this)), focus_(std::make_unique<FocusKeeper>(*area_)) {
    context_.activation = &activation_;
    if (context_.owner == nullptr) context_.owner = this;
    setObjectName(to_qt(form.Name()));
    setCentralWidget(area_);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    own_menus_ = make_menus(form);
    changes_ = form_.watch([this] {
        setWindowTitle(to_qt(form_.Caption()));
        if (isHidden() == form_.Visible()) setVisible(form_.Visible());
    });
    setWindowTitle(to_qt(form_.Caption()));
    connect(area_, &QMdiArea::subWindowActivated, this,
            [this](QMdiSubWindow* child) { child_activated(child); });
    area_->viewport()->installEventFilter(this);
    add_keys();
    show_menus();
}

MdiFrame::~MdiFrame() {
    // The children go first: they tell the tracker, and the area would announce each one's end.
    for (const auto& [window, child] : children_)
        if (window->isVisible()) child.place->keep();
    focus_.reset();
    area_->disconnect(this);
    area_->viewport()->removeEventFilter(this);
    delete area_;
}

QMdiSubWindow* MdiFrame::add_child(Form& form, QWidget* content, const QRect& place) {
    auto* child = new QMdiSubWindow(area_);
    child->setWidget(content);
    child->hide(); // until the form is shown
    // The keys are the frame's or a menu's.
    for (QAction* action : child->systemMenu()->actions())
        action->setShortcuts(QList<QKeySequence>());
    area_->addSubWindow(child);
    focus_->watch(child);
    auto* keeper = new PlaceKeeper(child, form.Name(), places_, [this] {
        return isVisible() ? area_->viewport()->rect() : QRect();
    });
    keeper->put(place.isEmpty() ? QRect(QPoint(), child->sizeHint()) : place);
    Child& made = children_[child];
    made.form = &form;
    made.menus = make_menus(form);
    made.place = keeper;
    bind(context_, form, child);
    if (form.Position() != TwipRect{}) keeper->put(child->geometry()); // there from the start
    made.moves = form.watch_move([child, keeper] { keeper->put(child->geometry()); });
    return child;
}

std::vector<PlaceKeeper*> MdiFrame::keepers_of(const std::vector<const Form*>& forms) const {
    std::vector<PlaceKeeper*> keepers;
    for (const auto& [window, child] : children_)
        if (std::find(forms.begin(), forms.end(), child.form) != forms.end())
            keepers.push_back(child.place);
    return keepers;
}

bool MdiFrame::stand_as_put(const std::vector<const Form*>& forms) const {
    const auto keepers = keepers_of(forms);
    return std::all_of(keepers.begin(), keepers.end(),
                       [](const PlaceKeeper* keeper) { return keeper->stands_as_put(); });
}

void MdiFrame::forget_places(const std::vector<const Form*>& forms) {
    for (PlaceKeeper* keeper : keepers_of(forms))
        keeper->forget();
}

bool MdiFrame::eventFilter(QObject* watched, QEvent* event) {
    // After the event: the windows are not to be moved from within the area's own laying out.
    if (watched == area_->viewport() && event->type() == QEvent::Resize)
        QMetaObject::invokeMethod(
            this, [this] { room_changed.raise(); }, Qt::QueuedConnection);
    return QMainWindow::eventFilter(watched, event);
}

void MdiFrame::add_window_entry(MenuEntry& entry) {
    if (window_menu_ == nullptr) {
        window_menu_ = new QMenu(tr("&Window"), this);
        window_menu_->setObjectName(QStringLiteral("window_menu"));
        connect(window_menu_, &QMenu::aboutToShow, this, [this] { list_children(); });
        menus_of_.reset();
        show_menus();
    }
    entries_.push_back(window_menu_->addAction(QString()));
    bind(context_, entry, entries_.back());
}

QWidget& MdiFrame::canvas() const {
    return *area_->viewport();
}

Form* MdiFrame::active_form() const {
    const auto found = children_.find(area_->activeSubWindow());
    return found == children_.end() ? nullptr : found->second.form;
}

void MdiFrame::setVisible(bool visible) {
    // The area activates one of its windows when it appears: nobody came to it.
    const QScopedValueRollback<bool> guard(becoming_visible_, visible);
    QMainWindow::setVisible(visible);
}

void MdiFrame::closeEvent(QCloseEvent* event) {
    bool may_close = true;
    context_.run([this, &may_close] { may_close = form_.Unload(); });
    event->setAccepted(may_close);
}

void MdiFrame::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    // Back from a window of the program that is no child of this one.
    if (event->type() != QEvent::ActivationChange || !isActiveWindow() || becoming_visible_) return;
    if (Form* form = active_form()) activation_.entered(*form);
}

void MdiFrame::child_activated(QMdiSubWindow* child) {
    show_menus();
    const auto found = children_.find(child);
    if (found == children_.end()) return;
    if (becoming_visible_)
        activation_.shown(*found->second.form);
    else
        activation_.entered(*found->second.form);
}

void MdiFrame::show_help(const std::string& page) {
    context_.run([this, page] { services_.show_help(page); });
}

std::vector<QMenu*> MdiFrame::make_menus(Form& form) {
    std::vector<QMenu*> menus;
    for (MenuEntry* entry : form.menus)
        if (entry != nullptr) menus.push_back(make_menu(context_, *entry, this));
    return menus;
}

/// The one that is active when the frame is: a box above it leaves the menus as they are.
QMdiSubWindow* MdiFrame::current_child() const {
    QMdiSubWindow* child = area_->currentSubWindow();
    return child == nullptr || child->isHidden() ? nullptr : child;
}

void MdiFrame::show_menus() {
    if (menus_of_ == current_child()) return;
    menus_of_ = current_child();
    const auto found = children_.find(*menus_of_);
    std::vector<QMenu*> menus;
    if (found != children_.end()) menus = found->second.menus;
    // The frame's own before the help menu, where everybody looks for it.
    const bool help_is_last =
        !menus.empty() && without_marks(menus.back()->title()) == QStringLiteral("Help");
    auto at = menus.end() - (help_is_last ? 1 : 0);
    at = menus.insert(at, own_menus_.begin(), own_menus_.end());
    if (window_menu_ != nullptr)
        menus.insert(at + static_cast<std::ptrdiff_t>(own_menus_.size()), window_menu_);
    for (QAction* action : menuBar()->actions())
        menuBar()->removeAction(action);
    for (QMenu* menu : menus)
        menuBar()->addMenu(menu);
    for (QShortcut* key : close_keys_)
        key->setEnabled(found != children_.end() && found->second.form->closes_by_key() &&
                        !has_key(menus, key->key()));
}

bool MdiFrame::has_entry(const QMdiSubWindow& child) const {
    return std::any_of(entries_.begin(), entries_.end(), [&child](const QAction* entry) {
        return without_marks(entry->text()) == child.windowTitle();
    });
}

void MdiFrame::list_children() {
    for (QAction* action : listed_)
        delete action;
    listed_ = {window_menu_->addSeparator()};
    for (QMdiSubWindow* child : area_->subWindowList()) {
        if (child->isHidden() || has_entry(*child)) continue;
        QAction* action =
            window_menu_->addAction(child->windowTitle().replace(u'&', QStringLiteral("&&")));
        action->setCheckable(true);
        action->setChecked(child == area_->activeSubWindow());
        connect(action, &QAction::triggered, child,
                [this, child] { area_->setActiveSubWindow(child); });
        listed_.push_back(action);
    }
}

void MdiFrame::add_keys() {
    const auto on = [this](const char* key, auto handler) {
        auto* shortcut = new QShortcut(QKeySequence(QLatin1String(key)), this);
        connect(shortcut, &QShortcut::activated, this, handler);
        return shortcut;
    };
    for (const char* key : {"Ctrl+F4", "Ctrl+W"})
        close_keys_.push_back(on(key, [this] {
            if (QMdiSubWindow* child = area_->activeSubWindow()) child->close();
        }));
    on("Ctrl+F6", [this] { area_->activateNextSubWindow(); });
    on("Ctrl+Shift+F6", [this] { area_->activatePreviousSubWindow(); });
    on("F1", [this] {
        const Form* form = active_form();
        show_help(form == nullptr ? form_.help_page() : form->help_page());
    });
}

} // namespace pelvan::desktop
