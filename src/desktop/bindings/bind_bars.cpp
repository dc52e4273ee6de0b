#include <QProgressBar>
#include <QScrollBar>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/update_throttle.h"

namespace pelvan::desktop {

void bind(const BindContext& context, ScrollBar& model, QAbstractSlider* bar) {
    const auto sign = [&model] { return model.Max() < model.Min() ? -1 : 1; };
    auto* binding = new Binding(context, model, bar, [&model, bar, sign] {
        bar->setRange(sign() * model.Min(), sign() * model.Max());
        bar->setPageStep(std::max(1, (bar->maximum() - bar->minimum()) / 10));
        bar->setValue(sign() * model.Value());
    });
    QObject::connect(bar, &QAbstractSlider::valueChanged, binding, [binding, &model, sign](int at) {
        binding->tell([&model, value = sign() * at] { model.set_Value(value); });
    });
}

void bind(const BindContext& context, ProgressBar& model, QProgressBar* bar) {
    constexpr int kSteps = 1000;
    bar->setRange(0, kSteps);
    auto* throttle = new UpdateThrottle(bar, [&model, bar] {
        bar->setValue(static_cast<int>(std::lround(model.Value() / model.Max() * kSteps)));
    });
    new Binding(context, model, bar, [throttle] { throttle->request(); });
}

namespace {

class TickingTimer : public QTimer {
  public:
    TickingTimer(const BindContext& context, Timer& model)
        : QTimer(context.owner), context_(context), model_(model) {
        setTimerType(Qt::PreciseTimer);
        connect(this, &QTimer::timeout, this, [this] { tick(); });
        follow();
    }

  private:
    void follow() {
        const bool wanted = model_.running() && model_.Enabled() && model_.Interval() > 0;
        if (!wanted)
            stop();
        else if (!isActive() || interval() != model_.Interval())
            start(model_.Interval());
    }

    void tick() {
        if (ticking_ || !model_.Tick) return;
        const QPointer<TickingTimer> self(this);
        ticking_ = true;
        const EventRunner run = context_.run_unasked; // outlives this, which the handler may end
        run(model_.Tick);
        if (self) ticking_ = false;
    }

    BindContext context_;
    Timer& model_;
    bool ticking_ = false;
    Subscription changes_ = model_.watch([this] { follow(); });
};

} // namespace

QTimer* bind(const BindContext& context, Timer& model) {
    auto* timer = new TickingTimer(context, model);
    timer->setObjectName(QString::fromStdString(model.Name()));
    return timer;
}

} // namespace pelvan::desktop
