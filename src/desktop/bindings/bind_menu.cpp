#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QWidget>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

class ActionBinding : public QObject {
  public:
    ActionBinding(MenuEntry& entry, QAction* action) : QObject(action), entry_(entry) {
        action->setObjectName(to_qt(entry.Name()));
        QString keys = to_qt(entry.shortcut());
        action->setShortcuts({QKeySequence(keys, QKeySequence::PortableText)});
        // A keyboard has this key twice, under two names.
        if (keys.contains(QStringLiteral("Enter")))
            action->setShortcuts(
                {QKeySequence(keys, QKeySequence::PortableText),
                 QKeySequence(keys.replace(QStringLiteral("Enter"), QStringLiteral("Return")),
                              QKeySequence::PortableText)});
        changes_ = entry.watch([this, action] { show(*action); });
        show(*action);
    }

    void show(QAction& action) {
        action.setText(to_qt(entry_.Caption()));
        action.setToolTip(plain_tip(entry_.ToolTipText()));
        action.setEnabled(entry_.Enabled());
        action.setVisible(entry_.Visible());
        action.setCheckable(entry_.checkable() || entry_.Checked());
        action.setChecked(entry_.Checked());
    }

  private:
    MenuEntry& entry_;
    Subscription changes_;
};

void add_entry(const BindContext& context, MenuEntry* entry, QMenu* menu) {
    if (entry == nullptr || (entry->Caption().empty() && entry->children.empty()))
        menu->addSeparator();
    else if (!entry->children.empty())
        menu->addMenu(make_menu(context, *entry, menu));
    else
        bind(context, *entry, menu->addAction(QString()));
}

} // namespace

void bind(const BindContext& context, MenuEntry& model, QAction* action) {
    auto* binding = new ActionBinding(model, action);
    if (auto* window = qobject_cast<QWidget*>(context.owner); window && model.everywhere()) {
        action->setShortcutContext(Qt::ApplicationShortcut);
        window->addAction(action); // a menu that is not shown has no keys
    }
    // Qt has ticked the action by itself when this arrives; the model decides what it shows.
    QObject::connect(action, &QAction::triggered, binding, [context, &model, action, binding] {
        const QPointer<ActionBinding> alive(binding);
        context.run([&model] { model.choose(); });
        if (alive) binding->show(*action);
    });
}

QMenu* make_menu(const BindContext& context, MenuEntry& model, QWidget* parent) {
    auto* menu = new QMenu(parent);
    menu->setObjectName(to_qt(model.Name()) + QStringLiteral("_menu"));
    menu->setToolTipsVisible(true);
    new ActionBinding(model, menu->menuAction());
    if (model.Opening)
        QObject::connect(menu, &QMenu::aboutToShow, menu,
                         [run = context.run_unasked, &model] { run(model.Opening); });
    for (MenuEntry* child : model.children)
        add_entry(context, child, menu);
    return menu;
}

} // namespace pelvan::desktop
