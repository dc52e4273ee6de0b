#include "desktop/windows/status_bar.h"

#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QStatusBar>
#include <QStyleOptionToolButton>
#include <QTimer>
#include <QToolButton>
#include <functional>

namespace pelvan::desktop {
namespace {

constexpr int kTextMargin = 4;

/// A flat button that makes no window wider: what has no room of its text is left out. Its text is
/// bold while `emphasized` says so, without making it higher.
class ElidedButton : public QToolButton {
  public:
    ElidedButton() {
        setAutoRaise(true);
        setFocusPolicy(Qt::NoFocus); // a key leads there, too, and typing goes on where it was
        setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    }
    QSize minimumSizeHint() const override { return {0, QToolButton::minimumSizeHint().height()}; }
    QSize sizeHint() const override {
        const QFontMetrics shown(shown_font());
        const int wider = shown.horizontalAdvance(text()) - fontMetrics().horizontalAdvance(text());
        return QToolButton::sizeHint() + QSize(wider, 0);
    }

    /// Asked whenever the text is shown.
    std::function<bool()> emphasized = [] { return false; };

  protected:
    void initStyleOption(QStyleOptionToolButton* option) const override {
        QToolButton::initStyleOption(option);
        option->font = shown_font();
        const QFontMetrics shown(option->font);
        const int room = width() - 2 * style()->pixelMetric(QStyle::PM_ButtonMargin, option, this);
        option->text = shown.elidedText(option->text, Qt::ElideRight, room);
    }

  private:
    [[nodiscard]] QFont shown_font() const {
        QFont shown = font();
        shown.setBold(emphasized());
        return shown;
    }
};

} // namespace

void add_status_bar(const BindContext& context, LinePanel& panel, QMainWindow& window) {
    QStatusBar* bar = window.statusBar();
    auto* line = bound<ElidedButton>(context, panel.cmd_Line);
    line->emphasized = [&panel] { return panel.trouble(); };
    bar->addWidget(line);
    const auto painting = std::make_shared<Subscription>(panel.before_block.subscribe([bar] {
        bar->layout()->activate();
        bar->repaint();
    }));
    QObject::connect(bar, &QObject::destroyed, bar, [painting] {});
    auto* checksum = bound<QLabel>(context, panel.lbl_BadChecksum);
    checksum->setMargin(kTextMargin);
    bar->addPermanentWidget(checksum);
    // A moment earlier or later is no matter, and spares the machine wake-ups.
    bind(context, panel.tmr_Line)->setTimerType(Qt::CoarseTimer);
}

} // namespace pelvan::desktop
