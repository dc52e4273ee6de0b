#include <QProgressBar>
#include <QScrollBar>
#include <QSpinBox>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "desktop/bindings/bind.h"
#include "desktop/bindings/pacer.h"

namespace pelvan::desktop {

void bind(const BindContext& context, ScrollBar& model, QAbstractSlider* bar) {
    const auto sign = [&model] { return model.Max() < model.Min() ? -1 : 1; };
    auto* mirror = new Mirror(context, model, bar, [&model, bar, sign] {
        bar->setRange(sign() * model.Min(), sign() * model.Max());
        bar->setPageStep(std::max(1, (bar->maximum() - bar->minimum()) / 10));
        bar->setValue(sign() * model.Value());
    });
    QObject::connect(bar, &QAbstractSlider::valueChanged, mirror, [mirror, &model, sign](int at) {
        mirror->tell([&model, value = sign() * at] { model.set_Value(value); });
    });
}

void bind(const BindContext& context, ScrollBar& model, QSpinBox* box) {
    auto* mirror = new Mirror(context, model, box, [&model, box] {
        const auto [low, high] = std::minmax({model.Min(), model.Max()});
        box->setRange(low, high);
        box->setValue(model.Value());
    });
    QObject::connect(box, &QSpinBox::valueChanged, mirror, [mirror, &model](int value) {
        mirror->tell([&model, value] { model.set_Value(value); });
    });
}

void bind(const BindContext& context, ProgressBar& model, QProgressBar* bar) {
    constexpr int kSteps = 1000;
    bar->setRange(0, kSteps);
    auto* pacer = new Pacer(bar, [&model, bar] {
        bar->setValue(static_cast<int>(std::lround(model.Value() / model.Max() * kSteps)));
    });
    new Mirror(context, model, bar, [pacer] { pacer->request(); });
}

namespace {

class TickingTimer : public QTimer {
  public:
    TickingTimer(const BindContext& context, Timer& model)
        : QTimer(context.owner), context_(context), model_(model) {
        setTimerType(Qt::PreciseTimer);
        connect(this, &QTimer::timeout, this, [this] { tick(); });
        model_.watch([this] { follow(); });
        follow();
    }
    ~TickingTimer() override { model_.watch({}); }

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
        const EventRunner run = context_.run; // outlives this, which the handler may end
        run(model_.Tick);
        if (self) ticking_ = false;
    }

    BindContext context_;
    Timer& model_;
    bool ticking_ = false;
};

} // namespace

QTimer* bind(const BindContext& context, Timer& model) {
    auto* timer = new TickingTimer(context, model);
    timer->setObjectName(QString::fromStdString(model.Name()));
    return timer;
}

} // namespace pelvan::desktop
