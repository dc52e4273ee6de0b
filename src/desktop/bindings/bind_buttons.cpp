#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QRadioButton>
#include <algorithm>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/qt_text.h"

namespace pelvan::desktop {
namespace {

/// The last letter may reach beyond the width that its font tells; a label would cut it.
class WholeLabel : public QLabel {
  public:
    [[nodiscard]] QSize sizeHint() const override { return widened(QLabel::sizeHint()); }
    [[nodiscard]] QSize minimumSizeHint() const override {
        return widened(QLabel::minimumSizeHint());
    }

  private:
    static QSize widened(const QSize& size) {
        constexpr int kOverhang = 2; // pixels
        return size + QSize(kOverhang, 0);
    }
};

/// An option group has no widget of its own: its options' buttons show it together.
class OptionBinding : public QObject {
  public:
    OptionBinding(const BindContext& context, OptionGroup& model, std::vector<QRadioButton*> radios)
        : QObject(radios.front()), context_(context), model_(model), radios_(std::move(radios)),
          group_(new QButtonGroup(this)) {
        for (std::size_t i = 0; i < radios_.size(); ++i)
            adopt(radios_[i], static_cast<int>(i));
        refresh();
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::FocusIn)
            lead_to_choice(static_cast<QFocusEvent*>(event)->reason());
        if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
        return hand_key(model_, *static_cast<QKeyEvent*>(event),
                        [this](const std::function<void()>& action) { tell(action); });
    }

  private:
    /// Keys lead into the group to the option that is chosen, not to the first one, or the one that
    /// had the focus before the model chose another.
    void lead_to_choice(Qt::FocusReason reason) {
        if (reason != Qt::TabFocusReason && reason != Qt::BacktabFocusReason &&
            reason != Qt::ShortcutFocusReason)
            return;
        QMetaObject::invokeMethod(
            this,
            [this, reason] {
                // It may only have passed through, on its way back to where it was.
                const bool stays =
                    std::any_of(radios_.begin(), radios_.end(),
                                [](QRadioButton* radio) { return radio->hasFocus(); });
                QAbstractButton* chosen = group_->checkedButton();
                if (stays && chosen != nullptr && chosen->isEnabled()) chosen->setFocus(reason);
            },
            Qt::QueuedConnection);
    }

    void adopt(QRadioButton* radio, int index) {
        const OptionGroup::Option& option = model_.option(index);
        radio->setObjectName(to_qt(control_name(model_.Name(), index)));
        radio->setText(to_qt(option.caption));
        QString spoken =
            option.caption.empty() ? to_qt(option.tool_tip) : without_marks(radio->text());
        // Two groups of a window may have options of the same names.
        if (!model_.Caption().empty())
            spoken = without_marks(to_qt(model_.Caption())) + QStringLiteral(": ") + spoken;
        radio->setAccessibleName(spoken);
        group_->addButton(radio, index);
        radio->installEventFilter(this);
        connect(radio, &QRadioButton::clicked, this,
                [this, index] { tell([this, index] { model_.set_Value(index); }); });
    }

    void tell(const std::function<void()>& action) {
        const QPointer<OptionBinding> self(this);
        const EventRunner run = context_.run; // outlives this, which the handler may end
        run(action);
        if (self) refresh();
    }

    void refresh() {
        // An exclusive group refuses to have no button set.
        group_->setExclusive(false);
        for (std::size_t i = 0; i < radios_.size(); ++i)
            show(*radios_[i], static_cast<int>(i));
        group_->setExclusive(true);
    }

    void show(QRadioButton& radio, int index) {
        radio.setChecked(model_.Value() == index);
        // The Tab key stops once in a group: at what is chosen, or at the first option.
        const bool stop = index == std::max(0, model_.Value());
        radio.setFocusPolicy(stop ? Qt::StrongFocus : Qt::ClickFocus);
        radio.setEnabled(model_.Enabled() && model_.option(index).enabled);
        // A group has a tip of its own only while it is held.
        const std::string& held = model_.ToolTipText();
        radio.setToolTip(plain_tip(held.empty() ? model_.option(index).tool_tip : held));
        if (shown_visible_.at(static_cast<std::size_t>(index)) == model_.Visible()) return;
        shown_visible_[static_cast<std::size_t>(index)] = model_.Visible();
        radio.setVisible(model_.Visible());
    }

    void move_focus(bool& moved) {
        moved = true;
        radios_[static_cast<std::size_t>(std::max(0, model_.Value()))]->setFocus();
        if (model_.GotFocus) model_.GotFocus();
    }

    BindContext context_;
    OptionGroup& model_;
    std::vector<QRadioButton*> radios_;
    QButtonGroup* group_;
    std::vector<bool> shown_visible_ = std::vector<bool>(radios_.size(), true);
    Subscription changes_ = model_.watch([this] { refresh(); });
    Subscription focus_ = model_.watch_focus([this](bool& moved) { move_focus(moved); });
};

/// A label whose widget can be told to paint itself at once.
class LabelBinding : public Binding {
  public:
    LabelBinding(const BindContext& context, Label& model, QLabel* label)
        : Binding(context, model, label,
                  [&model, label] { label->setText(to_qt(model.Caption())); }),
          refresh_(model.watch_refresh([label] { label->repaint(); })) {}

  private:
    Subscription refresh_;
};

} // namespace

void bind(const BindContext& context, Label& model, QLabel* label) {
    label->setTextFormat(Qt::PlainText);
    new LabelBinding(context, model, label);
}

void bind(const BindContext& context, Frame& model, QGroupBox* box) {
    new Binding(context, model, box, [&model, box] { box->setTitle(to_qt(model.Caption())); });
}

void bind(const BindContext& context, Button& model, QAbstractButton* button) {
    auto* binding = new Binding(context, model, button,
                                [&model, button] { button->setText(to_qt(model.Caption())); });
    QObject::connect(button, &QAbstractButton::clicked, binding,
                     [binding, &model] { binding->tell([&model] { model.press(); }); });
}

void bind(const BindContext& context, CheckBox& model, QCheckBox* box) {
    auto* binding = new Binding(context, model, box, [&model, box] {
        constexpr Qt::CheckState kStates[] = {Qt::Unchecked, Qt::Checked, Qt::PartiallyChecked};
        box->setText(to_qt(model.Caption()));
        box->setTristate(model.Value() == 2);
        box->setCheckState(kStates[model.Value()]);
    });
    // A press clears a greyed box; it never makes one.
    QObject::connect(box, &QCheckBox::clicked, binding, [binding, &model] {
        binding->tell([&model] { model.set_Value(model.Value() == 0 ? 1 : 0); });
    });
}

void bind_options(const BindContext& context, OptionGroup& model,
                  const std::vector<QRadioButton*>& radios) {
    if (!radios.empty()) new OptionBinding(context, model, radios);
}

std::vector<QRadioButton*> make_radios(const BindContext& context, OptionGroup& model,
                                       QWidget* parent) {
    std::vector<QRadioButton*> radios;
    radios.reserve(static_cast<std::size_t>(model.count()));
    for (int i = 0; i < model.count(); ++i)
        radios.push_back(new QRadioButton(parent));
    bind_options(context, model, radios);
    return radios;
}

QGroupBox* option_frame(const BindContext& context, Frame& frame, OptionGroup& options) {
    auto* box = bound<QGroupBox>(context, frame);
    auto* layout = new QVBoxLayout(box);
    for (QRadioButton* radio : make_radios(context, options, box))
        layout->addWidget(radio);
    layout->addStretch();
    return box;
}

QLabel* label_for(const BindContext& context, Label& model, QWidget* widget) {
    auto* label = bound<WholeLabel>(context, model);
    set_label(label, widget);
    return label;
}

void set_label(QLabel* label, QWidget* widget) {
    label->setBuddy(widget);
    if (widget->accessibleName().isEmpty()) widget->setAccessibleName(without_marks(label->text()));
}

} // namespace pelvan::desktop
